// tav_message_substitution.cpp - the "%1" to "%10" substitution of message texts.

#include "tav_message_substitution.h"

#include <cctype>
#include <climits>

namespace {

constexpr char kUnknownVariable[] = "???";

// The number that atol would read at text, saturated instead of overflowing: only whether it
// lies between 1 and the count of variables matters.
// isdigit is the same in every locale; this one needs no call.
bool isDigit(char c) { return c >= '0' && c <= '9'; }

long readVariableNumber(const char* text) {
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

class BoundedOutput {
 public:
  BoundedOutput(char* out, size_t limit) : out(out), limit(limit) {}
  bool full() const { return written >= limit; }
  void put(char c) {
    if (!full()) out[written++] = c;
  }
  void put(const char* text) {
    while (*text != '\0' && !full()) out[written++] = *text++;
  }
  size_t finish() {
    out[written] = '\0';
    return written;
  }

 private:
  char* out;
  size_t limit;
  size_t written = 0;
};

}  // namespace

namespace tav {

size_t substituteMessageVariables(char* out, size_t limit, const char* in,
                                  const char* const variables[], size_t variableCount) {
  BoundedOutput output(out, limit);
  const char* position = in;
  while (*position != '\0' && !output.full()) {
    if (*position != '%') {
      output.put(*position++);
      continue;
    }
    ++position;  // past "%"
    if (*position == '%') {
      output.put('%');
      ++position;
      continue;
    }
    const long number = readVariableNumber(position);
    const char* variable = kUnknownVariable;
    if (number >= 1 && static_cast<unsigned long>(number) <= variableCount &&
        variables[number - 1] != nullptr) {
      variable = variables[number - 1];
    }
    output.put(variable);
    while (isDigit(*position)) ++position;
  }
  return output.finish();
}

}  // namespace tav
