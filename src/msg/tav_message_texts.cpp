// tav_message_texts.cpp - message texts taken apart once into runs and placeholders.

#include "tav_message_texts.h"

#include <climits>
#include <cstring>

#include "tav_message.h"
#include "tav_message_substitution.h"

namespace tav {

namespace {

// Runs of up to this many characters are copied as one block of this size, which the spare
// bytes behind the literals and a check of the room left keep inside both buffers.
constexpr size_t kBlock = 16;

int32_t clampToInt32(long number) {
  if (number > INT32_MAX) return INT32_MAX;
  if (number < INT32_MIN) return INT32_MIN;
  return static_cast<int32_t>(number);
}

}  // namespace

CompiledMessageTexts::CompiledMessageTexts(const char* const* table, size_t size) : source(table) {
  texts.reserve(size);
  for (size_t id = 0; id < size; ++id) {
    const char* position = table[id] != nullptr ? table[id] : "";
    Text text{static_cast<uint32_t>(runs.size()), 0};
    Run run{static_cast<uint32_t>(literals.size()), 0, 0};
    for (;;) {
      const char c = *position;
      if (c != '\0' && c != '%') {
        literals += c;
        ++position;
        continue;
      }
      if (c == '%' && position[1] == '%') {
        literals += '%';
        position += 2;
        continue;
      }
      run.length = static_cast<uint32_t>(literals.size() - run.offset);
      if (c == '\0') {
        runs.push_back(run);
        break;
      }
      ++position;  // past "%"
      // 0 would mean "no placeholder"; as a variable number it reads "???" like any other
      // number out of range.
      const int32_t number = clampToInt32(readPlaceholderNumber(position));
      run.variable = number == 0 ? -1 : number;
      runs.push_back(run);
      run = Run{static_cast<uint32_t>(literals.size()), 0, 0};
    }
    text.runCount = static_cast<uint32_t>(runs.size()) - text.firstRun;
    texts.push_back(text);
  }
  literals.append(kBlock, '\0');
}

const CompiledMessageTexts& CompiledMessageTexts::builtIn() {
  static const CompiledMessageTexts compiled(tavMsgCatGetBuiltInStringTable(),
                                             tavMsgCatGetBuiltInStringTableSize());
  return compiled;
}

size_t CompiledMessageTexts::substitute(size_t id, char* out, size_t limit,
                                        const char* const variables[], size_t variableCount) const {
  char* next = out;
  char* const end = out + limit;
  const Text& text = texts[id];
  for (uint32_t i = 0; i < text.runCount; ++i) {
    const Run& run = runs[text.firstRun + i];
    const char* literal = literals.data() + run.offset;
    const size_t room = static_cast<size_t>(end - next);
    if (run.length <= kBlock && room >= kBlock) {
      std::memcpy(next, literal, kBlock);
      next += run.length;
    } else {
      const size_t length = run.length < room ? run.length : room;
      std::memcpy(next, literal, length);
      next += length;
      if (next == end) break;
    }
    if (run.variable == 0) break;
    const char* variable = kUnknownMessageVariable;
    if (run.variable >= 1 && static_cast<size_t>(run.variable) <= variableCount &&
        variables[run.variable - 1] != nullptr) {
      variable = variables[run.variable - 1];
    }
    if (variable == kUnknownMessageVariable && end - next >= 4) {
      std::memcpy(next, variable, 4);  // the terminator is overwritten or ends the text
      next += 3;
      continue;
    }
    while (*variable != '\0' && next < end) *next++ = *variable++;
    if (next == end) break;
  }
  *next = '\0';
  return static_cast<size_t>(next - out);
}

}  // namespace tav
