// tav_strmatch.cpp - the matcher root, the wildcard matcher and the reserved regular-expression
// matcher.

#include "tav_strmatch.h"

#include "tav_utils.h"

TavClStringMatchABase::TavClStringMatchABase(const char* pattern, bool matchOption)
    : pattern(pattern != nullptr ? pattern : ""), matchOption(matchOption) {}

TavClStringMatchABase::~TavClStringMatchABase() = default;

TavClStringMatchWildcards::TavClStringMatchWildcards(const char* pattern, bool caseSensitive)
    : TavClStringMatchABase(pattern, caseSensitive) {}

TavClStringMatchWildcards::~TavClStringMatchWildcards() = default;

const char* TavClStringMatchWildcards::getPattern(const char* text) const {
  if (text == nullptr) return nullptr;
  return tavMatchesWildcardPattern(pattern, text, matchOption) ? text : nullptr;
}

TavClGrep::TavClGrep(const char* pattern, bool option) : TavClStringMatchABase(pattern, option) {
  init();
}

// The mode argument is accepted and, like everything else here, has no effect yet.
TavClGrep::TavClGrep(int /*mode*/, const char* pattern) : TavClStringMatchABase(pattern, false) {
  init();
}

TavClGrep::~TavClGrep() = default;

void TavClGrep::init() { mode = 1; }

const char* TavClGrep::getPattern(const char* /*text*/) const { return nullptr; }

const char* TavClGrep::getPattern(const char* /*text*/, int /*length*/) const { return nullptr; }
