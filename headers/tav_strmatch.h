// tav_strmatch.h - matcher objects that answer one question: where in a text a pattern occurs.
//
// TavClStringMatchWildcards matches a whole text against "*" and "?"; TavClStringSearch finds
// the first occurrence of a substring, optionally ignoring letter case; TavClGrep reserves the
// place of a regular-expression matcher and finds nothing.
//
// The flag every matcher is built with has a meaning fixed by each class: case-sensitive for the
// wildcard matcher, ignore-case for the searcher. Mind the difference when switching classes.
//
// A matcher does not copy the caller's pattern (except the case-folded copy a case-ignoring
// searcher makes): the pattern text must outlive the matcher. A null pattern counts as empty.

#ifndef TAV_STRMATCH_H
#define TAV_STRMATCH_H

#include <stddef.h>
#include <stdint.h>

#include "tav_export.h"
#include "tav_memmgr.h"

class TAV_API TavClStringMatchABase : public TavClMemoryManagedObject {
 public:
  virtual ~TavClStringMatchABase();
  // Where the pattern occurs in text, by the rule of the class, or null. A null text gives null.
  virtual const char* getPattern(const char* text) const = 0;

 protected:
  TavClStringMatchABase(const char* pattern, bool matchOption);
  TavClStringMatchABase(const TavClStringMatchABase&) = default;
  TavClStringMatchABase& operator=(const TavClStringMatchABase&) = default;

  const char* pattern;
  bool matchOption;
};

class TAV_API TavClStringMatchWildcards : public TavClStringMatchABase {
 public:
  // "?" matches one character, "*" any run; letters are compared ignoring case unless
  // caseSensitive. Matching takes time proportional to pattern length times text length.
  TavClStringMatchWildcards(const char* pattern, bool caseSensitive);
  ~TavClStringMatchWildcards() override;

  // text itself when the whole text matches the pattern, else null.
  const char* getPattern(const char* text) const override;
};

class TAV_API TavClStringSearch : public TavClStringMatchABase {
 public:
  // With ignoreCase, pattern and text are compared after toupper in the current C locale.
  // Allocates the case-folded copy through the memory manager.
  TavClStringSearch(const char* pattern, bool ignoreCase);
  ~TavClStringSearch() override;
  TavClStringSearch(const TavClStringSearch&) = delete;
  TavClStringSearch& operator=(const TavClStringSearch&) = delete;

  // The first occurrence of the pattern in the NUL-terminated text, or null. An empty pattern is
  // found at the start of the text.
  const char* getPattern(const char* text) const override;
  // The same within the first length characters of text, which need no terminator and may
  // hold NUL characters; nothing at or beyond text + length is read.
  const char* getPattern(const char* text, unsigned length) const;

 private:
  const char* search(const char* text, size_t textLength) const;

  size_t patternLength;
  // For every byte value, how far the window's end may move past a text character of that value
  // that failed to match: the pattern length, or the distance from the byte's rightmost
  // occurrence before the pattern's last character to that last character.
  uint32_t skipTable[256];
  // toupper of every byte value as the C locale had it when the searcher was built (ignore-case
  // only): pattern and text are folded by the same table.
  unsigned char foldTable[256];
};

class TAV_API TavClGrep : public TavClStringMatchABase {
 public:
  // Regular-expression search is reserved: every query answers null, whatever the mode.
  TavClGrep(const char* pattern, bool option);
  TavClGrep(int mode, const char* pattern);
  ~TavClGrep() override;

  const char* getPattern(const char* text) const override;
  const char* getPattern(const char* text, int length) const;
  int32_t getMode() const { return mode; }

 private:
  void init();

  int32_t mode;
};

#endif  // TAV_STRMATCH_H
