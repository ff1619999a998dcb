// tav_wildcard.cpp - whole-text matching with "*" and "?".
//
// The matcher keeps only the most recent "*" as its backtracking point: when the text after it
// fails to match, that "*" takes one more character and matching resumes. An earlier "*" never
// needs to be revisited, because whatever it could absorb the later one can absorb too. This
// gives the results of a full backtracking search in time proportional to pattern length times
// text length, where trying every split of every "*" takes exponential time on patterns such
// as "*a*a*a*a*b".

#include <cctype>

#include "tav_utils.h"

namespace {

bool sameCharacter(char patternChar, char textChar, bool caseSensitive) {
  if (patternChar == textChar) return true;  // spares the locale lookup of toupper
  if (caseSensitive) return false;
  return std::toupper(static_cast<unsigned char>(patternChar)) ==
         std::toupper(static_cast<unsigned char>(textChar));
}

}  // namespace

bool tavMatchesWildcardPattern(const char* pattern, const char* text, bool caseSensitive) {
  const char* resumePattern = nullptr;  // the pattern after the latest run of "*"
  const char* resumeText = nullptr;     // where that run's match currently ends in the text

  while (*text != '\0') {
    if (*pattern == '*') {
      while (*pattern == '*') ++pattern;
      if (*pattern == '\0') return true;
      resumePattern = pattern;
      resumeText = text;
    } else if (*pattern != '\0' &&
               (*pattern == '?' || sameCharacter(*pattern, *text, caseSensitive))) {
      ++pattern;
      ++text;
    } else if (resumePattern != nullptr) {
      pattern = resumePattern;
      text = ++resumeText;
    } else {
      return false;
    }
  }
  while (*pattern == '*') ++pattern;
  return *pattern == '\0';
}
