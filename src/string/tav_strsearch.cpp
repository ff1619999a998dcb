// tav_strsearch.cpp - substring search with a skip table, optionally ignoring letter case.
//
// The pattern is compared with a window of the text from its last character backwards. When a
// text character c fails to match, the window's end moves to that character's position plus
// skip[c], which lines up the rightmost occurrence of c in the pattern (its last character not
// counted) with it, or moves the window past it when c does not occur there. The skip is taken
// from the mismatched character rather than from the window's last character.
//
// That rule alone can move the window backwards: when the rightmost occurrence of c lies to the
// right of the pattern position that failed, the new end falls before the old one. The search
// would then revisit windows, may cycle forever (pattern "bab" in text "aab"), and a window
// ending before the pattern's length would read before the text. A window that has failed is
// never an occurrence, so the window moves on by at least one character instead. Every forward
// move the skip rule makes is a safe one (it passes no occurrence), so the result is always the
// first occurrence, and whenever the unguarded rule finds a match it is this same one.

#include "tav_strmatch.h"

#include <cctype>
#include <cstring>
#include <limits>

namespace {

// The comparisons of the two case modes, so that one search loop serves both.
struct ExactCharacters {
  unsigned char operator()(unsigned char c) const { return c; }
};

struct FoldedCharacters {
  const unsigned char* foldTable;
  unsigned char operator()(unsigned char c) const { return foldTable[c]; }
};

template <typename Fold>
const char* searchWindows(const unsigned char* text, size_t textLength,
                          const unsigned char* pattern, size_t patternLength,
                          const uint32_t* skipTable, Fold fold) {
  const size_t lastPosition = patternLength - 1;
  const unsigned char last = pattern[lastPosition];
  size_t windowEnd = lastPosition;
  while (windowEnd < textLength) {
    // Most windows fail at their last character; their skip is always forward.
    unsigned char c = fold(text[windowEnd]);
    if (c != last) {
      windowEnd += skipTable[c];
      continue;
    }
    size_t textPosition = windowEnd;
    size_t patternPosition = lastPosition;
    for (;;) {
      if (patternPosition == 0) return reinterpret_cast<const char*>(text + textPosition);
      --textPosition;
      --patternPosition;
      c = fold(text[textPosition]);
      if (c != pattern[patternPosition]) break;
    }
    const size_t skipped = textPosition + skipTable[c];
    windowEnd = skipped > windowEnd ? skipped : windowEnd + 1;
  }
  return nullptr;
}

}  // namespace

TavClStringSearch::TavClStringSearch(const char* pattern, bool ignoreCase)
    : TavClStringMatchABase(pattern, ignoreCase), patternLength(std::strlen(this->pattern)) {
  for (int c = 0; c < 256; ++c) {
    foldTable[c] = static_cast<unsigned char>(ignoreCase ? std::toupper(c) : c);
  }
  if (ignoreCase) {
    char* folded = static_cast<char*>(tavMalloc(patternLength + 1));
    for (size_t i = 0; i <= patternLength; ++i) {
      folded[i] = static_cast<char>(foldTable[static_cast<unsigned char>(this->pattern[i])]);
    }
    this->pattern = folded;
  }

  // Entries are 32-bit; beyond that a shorter skip is merely slower, never wrong.
  constexpr size_t kLargestSkip = std::numeric_limits<uint32_t>::max();
  const auto entry = [](size_t skip) {
    return static_cast<uint32_t>(skip < kLargestSkip ? skip : kLargestSkip);
  };
  for (uint32_t& skip : skipTable) skip = entry(patternLength);
  const auto* folded = reinterpret_cast<const unsigned char*>(this->pattern);
  for (size_t i = 0; i + 1 < patternLength; ++i) {
    skipTable[folded[i]] = entry(patternLength - 1 - i);
  }
}

TavClStringSearch::~TavClStringSearch() {
  if (matchOption) tavFree(const_cast<char*>(pattern));
}

const char* TavClStringSearch::getPattern(const char* text) const {
  if (text == nullptr) return nullptr;
  return search(text, std::strlen(text));
}

const char* TavClStringSearch::getPattern(const char* text, unsigned length) const {
  if (text == nullptr) return nullptr;
  return search(text, length);
}

const char* TavClStringSearch::search(const char* text, size_t textLength) const {
  if (patternLength == 0) return text;
  if (patternLength > textLength) return nullptr;
  const auto* textBytes = reinterpret_cast<const unsigned char*>(text);
  const auto* patternBytes = reinterpret_cast<const unsigned char*>(pattern);
  if (matchOption) {
    return searchWindows(textBytes, textLength, patternBytes, patternLength, skipTable,
                         FoldedCharacters{foldTable});
  }
  return searchWindows(textBytes, textLength, patternBytes, patternLength, skipTable,
                       ExactCharacters{});
}
