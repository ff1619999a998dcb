// tav_utils_text.cpp - numbers to decimal text, 16-bit byte swapping and small string functions.

#include <cctype>
#include <cstdint>
#include <cstring>

#include "tav_utils.h"

namespace {

constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

// The digits are written front to back, two at a time from the pair table. The number's range
// (a few comparisons) decides how many pairs there are; each range then runs straight through
// without a loop, and the leading pair writes one digit or two without a branch.

// Writes the leading one or two digits of a value below 100; returns where the next digit goes.
// For a single digit the second byte written is overwritten by what follows.
char* writeLeading(uint32_t value, char* out) {
  // 1 below 10, else 0: the sign bit of value - 10, so that no branch guesses the length.
  const uint32_t single = (value - 10) >> 31;
  std::memcpy(out, kDigitPairs + value * 2 + single, 2);
  return out + 2 - single;
}

char* writePair(uint32_t value, char* out) {
  std::memcpy(out, kDigitPairs + value * 2, 2);
  return out + 2;
}

// Exactly four and exactly eight digits, leading zeros included.
char* writeFour(uint32_t value, char* out) {
  return writePair(value % 100, writePair(value / 100, out));
}
char* writeEight(uint32_t value, char* out) {
  return writeFour(value % 10000, writeFour(value / 10000, out));
}

// The digits of a 32-bit value without leading zeros and without the NUL; returns the end.
char* writeDigits32(uint32_t value, char* out) {
  if (value < 100) return writeLeading(value, out);
  if (value < 10000) return writePair(value % 100, writeLeading(value / 100, out));
  if (value < 1000000) return writeFour(value % 10000, writeLeading(value / 10000, out));
  if (value < 100000000) {
    const uint32_t high = value / 10000;
    return writeFour(value % 10000, writePair(high % 100, writeLeading(high / 100, out)));
  }
  return writeEight(value % 100000000, writeLeading(value / 100000000, out));
}

constexpr uint64_t kTenToTheEighth = 100000000;

char* writeDigits64(uint64_t value, char* out) {
  if (value <= UINT32_MAX) return writeDigits32(static_cast<uint32_t>(value), out);
  const auto low = static_cast<uint32_t>(value % kTenToTheEighth);
  const uint64_t high = value / kTenToTheEighth;
  if (high < kTenToTheEighth)
    return writeEight(low, writeDigits32(static_cast<uint32_t>(high), out));
  const auto middle = static_cast<uint32_t>(high % kTenToTheEighth);
  const auto top = static_cast<uint32_t>(high / kTenToTheEighth);  // at most 1844
  return writeEight(low, writeEight(middle, writeDigits32(top, out)));
}

int terminate(char* end, char* start) {
  *end = '\0';
  return static_cast<int>(end - start);
}

// The minus sign goes first, written whether or not it is needed (digits overwrite it), so the
// sign costs no branch; the most negative value is converted through its unsigned magnitude,
// which exists for every value.
int writeSigned32(int32_t value, char* out) {
  *out = '-';
  const bool negative = value < 0;
  const uint32_t magnitude =
      negative ? 0u - static_cast<uint32_t>(value) : static_cast<uint32_t>(value);
  return terminate(writeDigits32(magnitude, out + (negative ? 1 : 0)), out);
}

int writeSigned64(int64_t value, char* out) {
  *out = '-';
  const bool negative = value < 0;
  const uint64_t magnitude =
      negative ? uint64_t{0} - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
  return terminate(writeDigits64(magnitude, out + (negative ? 1 : 0)), out);
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

int tavItoa(int32_t value, char* buffer) { return writeSigned32(value, buffer); }
int tavLtoa(int32_t value, char* buffer) { return writeSigned32(value, buffer); }
int tavULtoa(uint32_t value, char* buffer) {
  return terminate(writeDigits32(value, buffer), buffer);
}
int tavI64toa(int64_t value, char* buffer) { return writeSigned64(value, buffer); }
int tavW64toa(uint64_t value, char* buffer) {
  return terminate(writeDigits64(value, buffer), buffer);
}

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
