// Fuzzes tavStrFind. A case-sensitive search must return exactly what strstr returns; a
// case-ignoring search must return what the walk below returns. The walk is what tav_utils.h
// describes, restart quirk included: after a mismatch the pattern starts over at the next text
// character, and the character that broke the partial match is not tried against the pattern's
// first character, so "ab" is not found in "aab".
// Input layout: see fuzz_input.h; the flag bit set means ignoreCase.

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "fuzz_input.h"
#include "tav_utils.h"

namespace {

// Every search is linear in the text, but strstr and the library may each scan it more than
// once; longer inputs add time without reaching new states.
constexpr std::size_t kMaxInputSize = 1024;

const char* ReferenceFindIgnoringCase(const char* text, const char* pattern) {
  const std::size_t patternLength = std::strlen(pattern);
  if (patternLength == 0) return text;
  std::size_t matched = 0;
  for (const char* cursor = text; *cursor != '\0';) {
    const int textChar = std::tolower(static_cast<unsigned char>(*cursor));
    const int patternChar = std::tolower(static_cast<unsigned char>(pattern[matched]));
    matched = textChar == patternChar ? matched + 1 : 0;
    ++cursor;
    if (matched == patternLength) return cursor - patternLength;
  }
  return nullptr;
}

// An offset into the text, or -1 for "not found", which reads better than a raw pointer.
long OffsetIn(const char* text, const char* found) {
  return found == nullptr ? -1L : static_cast<long>(found - text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > kMaxInputSize) return 0;
  tav_fuzz::Input input;
  if (!tav_fuzz::SplitInput(data, size, &input)) return 0;
  const bool ignoreCase = input.flag;
  const char* text = input.text.get();
  const char* pattern = input.pattern.get();

  const char* actual = tavStrFind(text, pattern, ignoreCase);
  const char* expected =
      ignoreCase ? ReferenceFindIgnoringCase(text, pattern) : std::strstr(text, pattern);
  if (actual != expected) {
    std::fprintf(stderr, "tavStrFind disagrees with the %s\n",
                 ignoreCase ? "reference walk" : "strstr");
    tav_fuzz::PrintQuoted("text:   ", text);
    tav_fuzz::PrintQuoted("pattern:", pattern);
    // A pointer outside the text is printed as an address: it cannot be an offset.
    const bool actualInText =
        actual == nullptr || (actual >= text && actual <= text + input.textLength);
    if (actualInText) {
      std::fprintf(stderr, "ignoreCase: %s, tav offset: %ld, expected offset: %ld\n",
                   ignoreCase ? "true" : "false", OffsetIn(text, actual), OffsetIn(text, expected));
    } else {
      std::fprintf(stderr,
                   "ignoreCase: %s, tav pointer %p lies outside the text, expected offset: %ld\n",
                   ignoreCase ? "true" : "false", static_cast<const void*>(actual),
                   OffsetIn(text, expected));
    }
    std::abort();
  }
  return 0;
}
