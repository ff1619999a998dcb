// tav_message_substitution.cpp - the "%1" to "%10" substitution of message texts.

#include "tav_message_substitution.h"

#include <cctype>
#include <climits>
#include <cstdint>
#include <cstring>

namespace {

// isdigit is the same in every locale; this one needs no call.
bool isDigit(char c) { return c >= '0' && c <= '9'; }

// The number that atol would read at text, saturated instead of overflowing: only whether it
// lies between 1 and the count of variables matters.
long atolSaturated(const char* text) {
  bool negative = false;
  if (!isDigit(*text)) {  // the rare forms "% 2" and "%+2"
    while (std::isspace(static_cast<unsigned char>(*text))) ++text;
    if (*text == '+' || *text == '-') negative = *text++ == '-';
  }
  long number = 0;
  for (; isDigit(*text); ++text) {
    if (number < LONG_MAX / 10) number = number * 10 + (*text - '0');
  }
  return negative ? -number : number;
}

// Copies the text before the next "%" (or up to inEnd) and returns where copying stopped. While
// eight bytes of input and of room are left, eight are tested at a time: a "%" is a zero byte
// of the chunk xor "%%%%%%%%", and the lowest byte the test flags is exact. The whole chunk is
// stored, but the output only advances past the bytes before the "%".
const char* copyRun(const char* position, const char* inEnd, char*& next, char* end) {
  constexpr uint64_t kPercents = 0x2525252525252525u;
  constexpr uint64_t kOnes = 0x0101010101010101u;
  constexpr uint64_t kHighBits = 0x8080808080808080u;
  while (inEnd - position >= 8 && end - next >= 8) {
    uint64_t chunk;
    std::memcpy(&chunk, position, 8);
    std::memcpy(next, position, 8);
    const uint64_t differences = chunk ^ kPercents;
    const uint64_t percents = (differences - kOnes) & ~differences & kHighBits;
    if (percents != 0) {
      const int before = __builtin_ctzll(percents) / 8;
      next += before;
      return position + before;
    }
    position += 8;
    next += 8;
  }
  while (position < inEnd && next < end && *position != '%') *next++ = *position++;
  return position;
}

}  // namespace

namespace tav {

const char kUnknownMessageVariable[] = "???";

// One or two digits, the usual forms, are read directly; anything else as atol would.
long readPlaceholderNumber(const char*& position) {
  if (isDigit(position[0]) && !isDigit(position[1])) return *position++ - '0';
  if (isDigit(position[0]) && !isDigit(position[2])) {
    const long number = (position[0] - '0') * 10 + (position[1] - '0');
    position += 2;
    return number;
  }
  const long number = atolSaturated(position);
  while (isDigit(*position)) ++position;
  return number;
}

size_t substituteMessageVariables(char* out, size_t limit, const char* in,
                                  const char* const variables[], size_t variableCount) {
  char* next = out;
  char* const end = out + limit;
  const char* position = in;
  const char* const inEnd = in + std::strlen(in);
  for (;;) {
    position = copyRun(position, inEnd, next, end);
    if (position == inEnd || next == end) break;
    ++position;  // past "%"
    if (*position == '%') {
      *next++ = '%';
      ++position;
      continue;
    }
    const long number = readPlaceholderNumber(position);
    const char* variable = kUnknownMessageVariable;
    if (number >= 1 && static_cast<unsigned long>(number) <= variableCount &&
        variables[number - 1] != nullptr) {
      variable = variables[number - 1];
    }
    if (variable == kUnknownMessageVariable && end - next >= 4) {
      std::memcpy(next, variable, 4);  // the terminator is overwritten or ends the text
      next += 3;
      continue;
    }
    while (*variable != '\0' && next < end) *next++ = *variable++;
  }
  *next = '\0';
  return static_cast<size_t>(next - out);
}

}  // namespace tav
