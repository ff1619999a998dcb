// tav_wildcard.cpp - whole-text matching with "*" and "?".
//
// The matcher keeps only the most recent "*" as its backtracking point: when the text after it
// fails to match, that "*" takes one more character and matching resumes. An earlier "*" never
// needs to be revisited, because whatever it could absorb the later one can absorb too. This
// gives the results of a full backtracking search in time proportional to pattern length times
// text length, where trying every split of every "*" takes exponential time on patterns such
// as "*a*a*a*a*b".
//
// Ignoring case compares characters after toupper in the current C locale. Where the C library
// hands out its toupper table, the matcher reads it directly instead of calling toupper twice a
// comparison. After a "*" followed by a plain character, the text is scanned for that character
// first, since no position before it can resume the match.

#include <cctype>
#include <cstdint>

#include "tav_system_os.h"
#include "tav_utils.h"

namespace {

// Maps a character to what it is compared as: itself, or its upper case.
class Fold {
 public:
  explicit Fold(bool caseSensitive)
      : ignoreCase(!caseSensitive), table(caseSensitive ? nullptr : tav::os::upperCaseTable()) {}

  int operator()(char c) const {
    const auto byte = static_cast<unsigned char>(c);
    if (!ignoreCase) return byte;
    return table != nullptr ? table[byte] : std::toupper(byte);
  }

 private:
  bool ignoreCase;
  const int32_t* table;
};

}  // namespace

bool tavMatchesWildcardPattern(const char* pattern, const char* text, bool caseSensitive) {
  const Fold fold(caseSensitive);
  const char* resumePattern = nullptr;  // the pattern after the latest run of "*"
  const char* resumeText = nullptr;     // where that run's match currently ends in the text

  while (*text != '\0') {
    if (*pattern == '*') {
      while (*pattern == '*') ++pattern;
      if (*pattern == '\0') return true;
      resumePattern = pattern;
      resumeText = text;
    } else if (*pattern != '\0' &&
               (*pattern == '?' || *pattern == *text || fold(*pattern) == fold(*text))) {
      ++pattern;
      ++text;
      continue;
    } else if (resumePattern != nullptr) {
      pattern = resumePattern;
      text = ++resumeText;
    } else {
      return false;
    }
    // The match resumes at the first text position that can match the pattern's next plain
    // character; with none left the text cannot match.
    if (*pattern != '?') {
      const int wanted = fold(*pattern);
      while (*text != '\0' && *text != *pattern && fold(*text) != wanted) ++text;
      if (*text == '\0') break;
      resumeText = text;
    }
  }
  while (*pattern == '*') ++pattern;
  return *pattern == '\0';
}
