// tav_message_texts.h - message texts taken apart once, for putting variables in quickly.
//
// Substitution scans a text for "%" and reads each placeholder's number every time a message is
// made. A table that never changes, such as the library's built-in one, is taken apart once
// instead: each text becomes runs of literal text, each followed by the number of the variable
// that comes after it. Making a message then copies the runs and the variables without looking
// at a single character of the text again. The result is the same as substituteMessageVariables
// gives for the same text, limit and variables.

#ifndef TAV_MESSAGE_TEXTS_H
#define TAV_MESSAGE_TEXTS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tav_export.h"

namespace tav {

class TAV_INTERNAL_API CompiledMessageTexts {
 public:
  // Takes apart the texts of table (null entries read as empty); the table must not change.
  CompiledMessageTexts(const char* const* table, size_t size);

  // The built-in table, taken apart on first use.
  static const CompiledMessageTexts& builtIn();

  bool isFrom(const char* const* table) const { return source == table; }

  // Writes the text of id with its variables put in, as substituteMessageVariables would: at
  // most limit characters and a terminator into out (limit + 1 bytes). id must be below size.
  size_t substitute(size_t id, char* out, size_t limit, const char* const variables[],
                    size_t variableCount) const;

 private:
  // A run of literal text and the placeholder behind it: 0 for none (the text's last run),
  // otherwise the number the placeholder reads, cut to the range of int32_t.
  struct Run {
    uint32_t offset;  // into literals
    uint32_t length;
    int32_t variable;
  };
  struct Text {
    uint32_t firstRun;
    uint32_t runCount;
  };

  const char* const* source;
  std::string literals;  // every run one behind the other, and 16 bytes to spare at the end
  std::vector<Run> runs;
  std::vector<Text> texts;
};

}  // namespace tav

#endif  // TAV_MESSAGE_TEXTS_H
