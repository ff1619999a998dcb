// tav_utils_text.cpp - numbers to decimal text, 16-bit byte swapping and small string functions.

#include <cctype>
#include <cstring>

#include "tav_utils.h"

namespace {

constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

template <typename Unsigned>
int decimalLength(Unsigned value) {
  int length = 1;
  for (;;) {
    if (value < 10) return length;
    if (value < 100) return length + 1;
    if (value < 1000) return length + 2;
    if (value < 10000) return length + 3;
    value /= 10000;
    length += 4;
  }
}

// Produces the digits least significant first, two at a time, from the end of the text
// backwards, so that they come out in reading order; returns the length.
template <typename Unsigned>
int writeDigits(Unsigned magnitude, char* out) {
  const int length = decimalLength(magnitude);
  out[length] = '\0';
  char* position = out + length;
  while (magnitude >= 100) {
    const auto pair = static_cast<size_t>(magnitude % 100) * 2;
    magnitude /= 100;
    position -= 2;
    std::memcpy(position, kDigitPairs + pair, 2);
  }
  if (magnitude >= 10) {
    std::memcpy(position - 2, kDigitPairs + static_cast<size_t>(magnitude) * 2, 2);
  } else {
    position[-1] = static_cast<char>('0' + magnitude);
  }
  return length;
}

// The minus sign goes first and is not part of the reversal; the most negative value is
// converted through its unsigned magnitude, which exists for every value.
template <typename Signed, typename Unsigned>
int writeSigned(Signed value, char* out) {
  if (value >= 0) return writeDigits(static_cast<Unsigned>(value), out);
  *out = '-';
  const Unsigned magnitude = Unsigned{0} - static_cast<Unsigned>(value);
  return 1 + writeDigits(magnitude, out + 1);
}

void swapByteOrder16(void* buffer, size_t length) {
  auto* bytes = static_cast<unsigned char*>(buffer);
  for (size_t unit = length / 2; unit-- > 0;) {
    const unsigned char first = bytes[2 * unit];
    bytes[2 * unit] = bytes[2 * unit + 1];
    bytes[2 * unit + 1] = first;
  }
}

int lowerCase(char c) { return std::tolower(static_cast<unsigned char>(c)); }

}  // namespace

int tavItoa(int32_t value, char* buffer) { return writeSigned<int32_t, uint32_t>(value, buffer); }
int tavLtoa(int32_t value, char* buffer) { return writeSigned<int32_t, uint32_t>(value, buffer); }
int tavULtoa(uint32_t value, char* buffer) { return writeDigits(value, buffer); }
int tavI64toa(int64_t value, char* buffer) { return writeSigned<int64_t, uint64_t>(value, buffer); }
int tavW64toa(uint64_t value, char* buffer) { return writeDigits(value, buffer); }

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__,
              "the host byte-order functions assume a little-endian host");

void tavEndianConvertW16LittleToBig(void* buffer, size_t length) {
  swapByteOrder16(buffer, length);
}
void tavEndianConvertW16BigToLittle(void* buffer, size_t length) {
  swapByteOrder16(buffer, length);
}
void tavEndianConvertW16HostToBig(void* buffer, size_t length) { swapByteOrder16(buffer, length); }
void tavEndianConvertW16BigToHost(void* buffer, size_t length) { swapByteOrder16(buffer, length); }
void tavEndianConvertW16HostToLittle(void* /*buffer*/, size_t /*length*/) {}
void tavEndianConvertW16LittleToHost(void* /*buffer*/, size_t /*length*/) {}

const char* tavStrFind(const char* text, const char* pattern, bool ignoreCase) {
  if (!ignoreCase) return std::strstr(text, pattern);
  if (*pattern == '\0') return text;

  // A mismatch restarts the pattern at the next text character; the character that broke the
  // partial match is not tried again against the pattern's start. Callers rely on this.
  size_t matched = 0;
  for (const char* position = text; *position != '\0';) {
    if (lowerCase(*position) == lowerCase(pattern[matched])) {
      ++matched;
    } else {
      matched = 0;
    }
    ++position;
    if (pattern[matched] == '\0') return position - matched;
  }
  return nullptr;
}

size_t tavStrCount(const char* text, char character) {
  size_t count = 0;
  for (; *text != '\0'; ++text) {
    if (*text == character) ++count;
  }
  return count;
}

size_t tavStrCopyUntil(char* destination, const char* source, char delimiter) {
  size_t copied = 0;
  while (source[copied] != '\0' && source[copied] != delimiter) {
    destination[copied] = source[copied];
    ++copied;
  }
  destination[copied] = '\0';
  return copied;
}
