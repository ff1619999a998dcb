// tav_trace_compression.cpp - the 6-bit text compression of trace records.
//
// Texts made of blanks, letters and a little punctuation shrink to three quarters: each such
// character is a 6-bit code, every other byte the escape code 63 followed by its 8 bits. Bits
// are numbered from the top of each byte, so bit position p is bit 7 - p % 8 of byte p / 8.

#include <array>

#include "tav_trace_entry.h"

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

// The codes are collected in a bit accumulator and stored a byte at a time; the bytes are those
// that compressWriteBits would write code by code, at a fraction of the cost.
size_t TavClTraceEntry::compressCString(uint8_t* destination, const char* source, size_t capacity) {
  if (capacity == 0 || source == nullptr) return 0;
  // A character that starts at or below this mark is written whole, so the result may be one
  // byte longer than the capacity.
  const uint64_t lastStartBit =
      capacity - 1 > UINT64_MAX / 8 ? UINT64_MAX : static_cast<uint64_t>(capacity - 1) * 8;
  uint64_t bits = 0;
  uint32_t pending = 0;  // bits not yet stored, in the low pendingCount bits
  unsigned pendingCount = 0;
  size_t stored = 0;
  for (const unsigned char* next = reinterpret_cast<const unsigned char*>(source); *next != 0;
       ++next) {
    const uint8_t code = kCodeOf[*next];
    if (code != kEscapeCode) {
      pending = pending << kCodeBits | code;
      pendingCount += kCodeBits;
      bits += kCodeBits;
    } else {
      pending =
          pending << (kCodeBits + kLiteralBits) | uint32_t{kEscapeCode} << kLiteralBits | *next;
      pendingCount += kCodeBits + kLiteralBits;
      bits += kCodeBits + kLiteralBits;
    }
    while (pendingCount >= 8) {
      pendingCount -= 8;
      destination[stored++] = static_cast<uint8_t>(pending >> pendingCount);
    }
    pending &= (1u << pendingCount) - 1;
    if (bits > lastStartBit) break;
  }
  // Fill the last byte with 1-bits: an escape code cut short, which expansion takes as the end.
  if (pendingCount != 0) {
    destination[stored++] =
        static_cast<uint8_t>(pending << (8 - pendingCount) | (0xFFu >> pendingCount));
  }
  return stored;
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
