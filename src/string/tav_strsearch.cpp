// tav_strsearch.cpp - substring search with a skip table, optionally ignoring letter case.
//
// The pattern is compared with a window of the text from its last character backwards. When a
// text character c fails to match, the window's end moves to that character's position plus
// skip[c], which lines up the rightmost occurrence of c in the pattern (its last character not
// counted) with it, or moves the window past it when c does not occur there. The skip is taken
// from the mismatched character rather than from the window's last character, and when ignoring
// case from the folded character, since the table holds folded pattern characters.
//
// That rule alone can move the window backwards: when the rightmost occurrence of c lies to the
// right of the pattern position that failed, the new end falls before the old one. The search
// would then revisit windows, may cycle forever (pattern "bab" in text "aab"), and a window
// ending before the pattern's length would read before the text. A window that has failed is
// never an occurrence, so the window moves on by at least one character instead. Every forward
// move the skip rule makes is a safe one (it passes no occurrence), so the result is always the
// first occurrence, and whenever the unguarded rule finds a match it is this same one.
//
// Most windows fail at once. Where SSE2 is available (every x86-64 processor), the exact search
// passes over such windows sixteen at a time: it goes straight to the next window whose first
// and last characters both match, and where the first character turns out to be rare in the
// text, memchr finds its next occurrence. The windows passed over are no occurrences either, so
// the result is the same; the skip table still moves the window after a partial match.

#include "tav_strmatch.h"

#include <cctype>
#include <cstring>
#include <limits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace {

struct Search {
  const unsigned char* text;
  size_t textLength;
  const unsigned char* pattern;
  size_t patternLength;
  const uint32_t* skipTable;
};

// Identity for the exact search, the fold table when ignoring case.
struct ExactCharacters {
  unsigned char operator()(unsigned char c) const { return c; }
};

struct FoldedCharacters {
  const unsigned char* foldTable;
  unsigned char operator()(unsigned char c) const { return foldTable[c]; }
};

// The next window end from windowEnd on whose last character matches, by the skip rule (every
// window failing at its last character moves forward), or textLength.
template <typename Fold>
struct SkipToLastCharacter {
  size_t operator()(const Search& search, size_t windowEnd) const {
    const unsigned char last = search.pattern[search.patternLength - 1];
    while (windowEnd < search.textLength) {
      const unsigned char c = fold(search.text[windowEnd]);
      if (c == last) break;
      windowEnd += search.skipTable[c];
    }
    return windowEnd;
  }
  Fold fold;
};

#if defined(__SSE2__)
// The next window end from windowEnd on whose window has the pattern's first and last
// characters in place, or textLength; sixteen windows are tested at once. After 64 windows in
// a row without the first character in place, that character is taken to be rare in the text
// and memchr looks for its next occurrence, which it does faster than this loop can. The
// blocks are tested four at a time, so that the question whether the first character occurred
// costs no branch per block: its answer varies too much to be predicted.
struct SkipToFirstAndLastCharacter {
  static constexpr int kBlocksBeforeMemchr = 4;

  size_t operator()(const Search& search, size_t windowEnd) const {
    const unsigned char* const text = search.text;
    const size_t textLength = search.textLength;
    const size_t startOffset = search.patternLength - 1;
    const unsigned char first = search.pattern[0];
    const unsigned char last = search.pattern[startOffset];
    const __m128i firsts = _mm_set1_epi8(static_cast<char>(first));
    const __m128i lasts = _mm_set1_epi8(static_cast<char>(last));
    const auto candidates = [&](size_t end, __m128i& startMatches) {
      startMatches = _mm_cmpeq_epi8(
          _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + end - startOffset)), firsts);
      const __m128i endMatches =
          _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(text + end)), lasts);
      return static_cast<unsigned>(_mm_movemask_epi8(_mm_and_si128(startMatches, endMatches)));
    };
    __m128i startMatches;
    while (windowEnd + 16 * kBlocksBeforeMemchr <= textLength) {
      __m128i anyStart = _mm_setzero_si128();
      for (int block = 0; block < kBlocksBeforeMemchr; ++block, windowEnd += 16) {
        const unsigned mask = candidates(windowEnd, startMatches);
        if (mask != 0) return windowEnd + static_cast<size_t>(__builtin_ctz(mask));
        anyStart = _mm_or_si128(anyStart, startMatches);
      }
      if (_mm_movemask_epi8(anyStart) != 0) continue;
      // Window starts run from windowEnd - startOffset to textLength - 1 - startOffset.
      const void* start =
          std::memchr(text + windowEnd - startOffset, first, textLength - windowEnd);
      if (start == nullptr) return textLength;
      windowEnd =
          static_cast<size_t>(static_cast<const unsigned char*>(start) - text) + startOffset;
    }
    for (; windowEnd + 16 <= textLength; windowEnd += 16) {
      const unsigned mask = candidates(windowEnd, startMatches);
      if (mask != 0) return windowEnd + static_cast<size_t>(__builtin_ctz(mask));
    }
    while (windowEnd < textLength &&
           (text[windowEnd] != last || text[windowEnd - startOffset] != first)) {
      ++windowEnd;
    }
    return windowEnd;
  }
};
#endif

template <typename Fold, typename NextWindow>
const char* searchWindows(const Search& search, Fold fold, NextWindow nextWindow) {
  const size_t lastPosition = search.patternLength - 1;
  size_t windowEnd = lastPosition;
  for (;;) {
    windowEnd = nextWindow(search, windowEnd);
    if (windowEnd >= search.textLength) return nullptr;
    size_t textPosition = windowEnd;
    size_t patternPosition = lastPosition;
    unsigned char c = fold(search.text[textPosition]);
    while (c == search.pattern[patternPosition]) {
      if (patternPosition == 0) return reinterpret_cast<const char*>(search.text + textPosition);
      --textPosition;
      --patternPosition;
      c = fold(search.text[textPosition]);
    }
    const size_t skipped = textPosition + search.skipTable[c];
    windowEnd = skipped > windowEnd ? skipped : windowEnd + 1;
  }
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
  const Search search = {reinterpret_cast<const unsigned char*>(text), textLength,
                         reinterpret_cast<const unsigned char*>(pattern), patternLength, skipTable};
  if (matchOption) {
    const FoldedCharacters fold{foldTable};
    return searchWindows(search, fold, SkipToLastCharacter<FoldedCharacters>{fold});
  }
#if defined(__SSE2__)
  return searchWindows(search, ExactCharacters{}, SkipToFirstAndLastCharacter{});
#else
  return searchWindows(search, ExactCharacters{}, SkipToLastCharacter<ExactCharacters>{});
#endif
}
