// Fuzzes tavMatchesWildcardPattern against a dynamic-programming matcher written here.
// Input layout: see fuzz_input.h; the flag bit set means a case-sensitive match.

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "fuzz_input.h"
#include "tav_utils.h"

namespace {

// The reference costs pattern length times text length; past this the fuzzer's time is better
// spent on more, shorter inputs, which reach the same states.
constexpr std::size_t kMaxInputSize = 512;

bool SameCharacter(char patternChar, char textChar, bool caseSensitive) {
  if (caseSensitive) return patternChar == textChar;
  return std::toupper(static_cast<unsigned char>(patternChar)) ==
         std::toupper(static_cast<unsigned char>(textChar));
}

// matches[i][j]: the first i pattern characters match the first j text characters.
// A star either matches nothing (row above) or one more character (column to the left).
bool ReferenceMatch(const char* pattern, std::size_t patternLength, const char* text,
                    std::size_t textLength, bool caseSensitive) {
  const std::size_t columns = textLength + 1;
  std::vector<bool> matches((patternLength + 1) * columns, false);
  auto at = [&](std::size_t i, std::size_t j) { return matches[i * columns + j]; };
  matches[0] = true;
  for (std::size_t i = 1; i <= patternLength; ++i) {
    const char p = pattern[i - 1];
    for (std::size_t j = 0; j <= textLength; ++j) {
      bool value;
      if (p == '*') {
        value = at(i - 1, j) || (j > 0 && at(i, j - 1));
      } else if (p == '?') {
        value = j > 0 && at(i - 1, j - 1);
      } else {
        value = j > 0 && at(i - 1, j - 1) && SameCharacter(p, text[j - 1], caseSensitive);
      }
      matches[i * columns + j] = value;
    }
  }
  return at(patternLength, textLength);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > kMaxInputSize) return 0;
  tav_fuzz::Input input;
  if (!tav_fuzz::SplitInput(data, size, &input)) return 0;
  const bool caseSensitive = input.flag;

  const bool actual =
      tavMatchesWildcardPattern(input.pattern.get(), input.text.get(), caseSensitive);
  const bool expected = ReferenceMatch(input.pattern.get(), input.patternLength, input.text.get(),
                                       input.textLength, caseSensitive);
  if (actual != expected) {
    std::fprintf(stderr, "tavMatchesWildcardPattern disagrees with the reference matcher\n");
    tav_fuzz::PrintQuoted("pattern:", input.pattern.get());
    tav_fuzz::PrintQuoted("text:   ", input.text.get());
    std::fprintf(stderr, "caseSensitive: %s, tav: %s, reference: %s\n",
                 caseSensitive ? "true" : "false", actual ? "match" : "no match",
                 expected ? "match" : "no match");
    std::abort();
  }
  return 0;
}
