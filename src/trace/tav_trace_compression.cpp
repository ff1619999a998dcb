// tav_trace_compression.cpp - the 6-bit text compression of trace records.
//
// Texts made of blanks, letters and a little punctuation shrink to three quarters: each such
// character is a 6-bit code, every other byte the escape code 63 followed by its 8 bits. Bits
// are numbered from the top of each byte, so bit position p is bit 7 - p % 8 of byte p / 8.

#include <array>
#include <cstdint>
#include <cstring>

#include "tav_trace_entry.h"
#include "tav_trace_text_copy.h"

namespace {

constexpr uint8_t kEscapeCode = 63;
constexpr unsigned kCodeBits = 6;
constexpr unsigned kLiteralBits = 8;

// The code of every byte value; kEscapeCode for bytes outside the alphabet. 0xFF shares code 0
// with the blank: texts have always been stored that way, and files written so read back so.
constexpr std::array<uint8_t, 256> makeCodeTable() {
  std::array<uint8_t, 256> codes{};
  for (auto& code : codes) code = kEscapeCode;
  const char* alphabet = TavClTraceEntry::kTraceAlphabet;
  for (uint8_t code = 0; alphabet[code] != '\0'; ++code) {
    codes[static_cast<unsigned char>(alphabet[code])] = code;
  }
  codes[0xFF] = 0;
  return codes;
}

constexpr std::array<uint8_t, 256> kCodeOf = makeCodeTable();
static_assert(kCodeOf[' '] == 0 && kCodeOf['A'] == 11 && kCodeOf['z'] == 62,
              "codes are positions in the alphabet");
static_assert(kCodeOf['1'] == kEscapeCode, "digits are not in the alphabet");

}  // namespace

void TavClTraceEntry::compressWriteBits(uint8_t* buffer, uint64_t bitPosition, uint8_t value,
                                        unsigned bitCount) {
  if (bitCount == 0 || bitCount > 8) return;
  // The value moved to the top of a byte; the shift also drops bits above bitCount.
  const auto top = static_cast<uint8_t>(value << (8 - bitCount));
  const uint64_t byte = bitPosition / 8;
  const unsigned offset = static_cast<unsigned>(bitPosition % 8);
  if (offset == 0) {
    buffer[byte] = top;
    return;
  }
  buffer[byte] |= static_cast<uint8_t>(top >> offset);
  // The next byte is stored whole, so that its lower bits are 0 for the write that follows;
  // it is touched only when the value reaches into it.
  if (offset + bitCount > 8) buffer[byte + 1] = static_cast<uint8_t>(top << (8 - offset));
}

uint8_t TavClTraceEntry::deCompressReadBits(const uint8_t* buffer, uint64_t bitPosition,
                                            unsigned bitCount) {
  if (bitCount == 0 || bitCount > 8) return 0;
  const uint64_t byte = bitPosition / 8;
  const unsigned offset = static_cast<unsigned>(bitPosition % 8);
  unsigned window = static_cast<unsigned>(buffer[byte]) << 8;
  if (offset + bitCount > 8) window |= buffer[byte + 1];
  const auto eightBits = static_cast<uint8_t>(window >> (8 - offset));
  return static_cast<uint8_t>(eightBits >> (8 - bitCount));
}

namespace {

// Codes collected in a bit accumulator and stored a byte at a time; the bytes are those that
// compressWriteBits would write code by code, at a fraction of the cost.
struct BitCollector {
  uint8_t* destination;
  size_t stored = 0;
  uint64_t pending = 0;  // bits not yet stored, in the low pendingCount bits
  unsigned pendingCount = 0;

  void storeWholeBytes() {
    while (pendingCount >= 8) {
      pendingCount -= 8;
      destination[stored++] = static_cast<uint8_t>(pending >> pendingCount);
    }
    pending &= (uint64_t{1} << pendingCount) - 1;
  }
  // Adds one character; returns the bits it took.
  unsigned add(unsigned char character) {
    const uint8_t code = kCodeOf[character];
    if (code != kEscapeCode) {
      pending = pending << kCodeBits | code;
      pendingCount += kCodeBits;
      storeWholeBytes();
      return kCodeBits;
    }
    pending =
        pending << (kCodeBits + kLiteralBits) | uint64_t{kEscapeCode} << kLiteralBits | character;
    pendingCount += kCodeBits + kLiteralBits;
    storeWholeBytes();
    return kCodeBits + kLiteralBits;
  }
  // Adds four characters of the alphabet at once: 24 bits, so exactly three whole bytes.
  void addFourCodes(uint32_t codes) {
    pending = pending << 24 | codes;
    pendingCount += 24;
    destination[stored] = static_cast<uint8_t>(pending >> (pendingCount - 8));
    destination[stored + 1] = static_cast<uint8_t>(pending >> (pendingCount - 16));
    destination[stored + 2] = static_cast<uint8_t>(pending >> (pendingCount - 24));
    stored += 3;
    pendingCount -= 24;
    pending &= (uint64_t{1} << pendingCount) - 1;
  }
  // Adds eight characters of the alphabet at once: 48 bits, so exactly six whole bytes.
  void addEightCodes(uint64_t codes) {
    pending = pending << 48 | codes;
    pendingCount += 48;
    const uint64_t whole = pending >> (pendingCount - 48);
    const uint8_t bytes[6] = {static_cast<uint8_t>(whole >> 40), static_cast<uint8_t>(whole >> 32),
                              static_cast<uint8_t>(whole >> 24), static_cast<uint8_t>(whole >> 16),
                              static_cast<uint8_t>(whole >> 8),  static_cast<uint8_t>(whole)};
    std::memcpy(destination + stored, bytes, sizeof bytes);
    stored += 6;
    pendingCount -= 48;
    pending &= (uint64_t{1} << pendingCount) - 1;
  }
  // Fills the last byte with 1-bits: an escape code cut short, which expansion takes as the end.
  size_t finish() {
    if (pendingCount != 0) {
      destination[stored++] =
          static_cast<uint8_t>(pending << (8 - pendingCount) | (0xFFu >> pendingCount));
    }
    return stored;
  }
};

constexpr unsigned kLongestCharacterBits = kCodeBits + kLiteralBits;

}  // namespace

size_t TavClTraceEntry::compressCString(uint8_t* destination, const char* source, size_t capacity) {
  if (capacity == 0 || source == nullptr) return 0;
  // A character that starts at or below this mark is written whole, so the result may be one
  // byte longer than the capacity.
  const uint64_t lastStartBit =
      capacity - 1 > UINT64_MAX / 8 ? UINT64_MAX : static_cast<uint64_t>(capacity - 1) * 8;
  const auto* text = reinterpret_cast<const unsigned char*>(source);
  BitCollector bits{destination};

  // A text too short to pass the mark even if every character were escaped needs no count of
  // its bits, and goes four characters at a time while none of them is escaped.
  const uint64_t shortLimit = lastStartBit / kLongestCharacterBits;
  const size_t length =
      tav::trace::boundedTextLength(source, shortLimit < SIZE_MAX ? shortLimit + 1 : SIZE_MAX);
  if (length <= shortLimit) {
    size_t next = 0;
    for (; next + 8 <= length; next += 8) {
      const unsigned char* group = text + next;
      const uint64_t c0 = kCodeOf[group[0]], c1 = kCodeOf[group[1]], c2 = kCodeOf[group[2]],
                     c3 = kCodeOf[group[3]], c4 = kCodeOf[group[4]], c5 = kCodeOf[group[5]],
                     c6 = kCodeOf[group[6]], c7 = kCodeOf[group[7]];
      // Only the escape code (63) carries into bit 6 when 1 is added.
      const uint64_t escapes =
          ((c0 + 1) | (c1 + 1) | (c2 + 1) | (c3 + 1) | (c4 + 1) | (c5 + 1) | (c6 + 1) | (c7 + 1)) &
          (uint64_t{1} << kCodeBits);
      if (escapes != 0) break;  // the four-character steps below take it from here
      // Shifted apart in two independent halves, so that the eight codes need not wait for each
      // other.
      const uint64_t high = c0 << 18 | c1 << 12 | c2 << 6 | c3;
      const uint64_t low = c4 << 18 | c5 << 12 | c6 << 6 | c7;
      bits.addEightCodes(high << 24 | low);
    }
    for (; next + 4 <= length; next += 4) {
      const uint8_t c0 = kCodeOf[text[next]];
      const uint8_t c1 = kCodeOf[text[next + 1]];
      const uint8_t c2 = kCodeOf[text[next + 2]];
      const uint8_t c3 = kCodeOf[text[next + 3]];
      if (c0 != kEscapeCode && c1 != kEscapeCode && c2 != kEscapeCode && c3 != kEscapeCode) {
        bits.addFourCodes(uint32_t{c0} << 18 | uint32_t{c1} << 12 | uint32_t{c2} << 6 | c3);
        continue;
      }
      for (size_t i = 0; i < 4; ++i) bits.add(text[next + i]);
    }
    for (; next < length; ++next) bits.add(text[next]);
    return bits.finish();
  }

  uint64_t bitCount = 0;
  for (; *text != 0; ++text) {
    bitCount += bits.add(*text);
    if (bitCount > lastStartBit) break;
  }
  return bits.finish();
}

size_t TavClTraceEntry::deCompressCString(char* destination, const uint8_t* source,
                                          size_t sourceLength) {
  const uint64_t totalBits = static_cast<uint64_t>(sourceLength) * 8;
  uint64_t position = 0;
  size_t count = 0;
  while (totalBits - position >= kCodeBits) {
    const uint8_t code = deCompressReadBits(source, position, kCodeBits);
    position += kCodeBits;
    if (code != kEscapeCode) {
      destination[count++] = kTraceAlphabet[code];
      continue;
    }
    // An escape without the eight bits of a literal behind it is the padding at the end. (A
    // well-formed text never leaves 6 or 7 bits after an escape; reading a literal there would
    // take bits from beyond the source.)
    if (totalBits - position < kLiteralBits) break;
    destination[count++] = static_cast<char>(deCompressReadBits(source, position, kLiteralBits));
    position += kLiteralBits;
  }
  destination[count] = '\0';
  return count;
}
