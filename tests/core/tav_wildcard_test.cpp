// Wildcard matching: the rules, and agreement with a plain backtracking matcher.

#include <gtest/gtest.h>

#include <cctype>
#include <random>
#include <string>

#include "tav_test_data.h"
#include "tav_utils.h"

namespace {

TEST(Wildcard, Rules) {
  for (const auto& row : tav::test::readDataTable("core/wildcard_matches.txt", 4)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(tavMatchesWildcardPattern(row.text(0), row.text(1), row.flag(2)), row.flag(3));
  }
}

// The matching rules written out as a backtracking search over every split of every "*".
bool sameCharacter(char p, char t, bool caseSensitive) {
  if (caseSensitive) return p == t;
  return std::toupper(static_cast<unsigned char>(p)) == std::toupper(static_cast<unsigned char>(t));
}

bool referenceMatch(const char* pattern, const char* text, bool caseSensitive) {
  for (;; ++pattern, ++text) {
    if (*pattern == '\0') return *text == '\0';
    if (*pattern == '*') break;
    if (*text == '\0') return false;
    if (*pattern != '?' && !sameCharacter(*pattern, *text, caseSensitive)) return false;
  }
  while (*pattern == '*' || *pattern == '?') {
    if (*pattern == '?') {
      if (*text == '\0') return false;
      ++text;
    }
    ++pattern;
  }
  if (*pattern == '\0') return true;
  for (; *text != '\0'; ++text) {
    if (sameCharacter(*pattern, *text, caseSensitive) &&
        referenceMatch(pattern + 1, text + 1, caseSensitive)) {
      return true;
    }
  }
  return false;
}

TEST(Wildcard, AgreesWithBacktrackingOnRandomInputs) {
  std::mt19937 random(2024);
  const char patternAlphabet[] = "aAb*?";
  const char textAlphabet[] = "aAbc";
  for (int i = 0; i < 200000; ++i) {
    std::string pattern(random() % 8, ' ');
    for (char& c : pattern) c = patternAlphabet[random() % 5];
    std::string text(random() % 10, ' ');
    for (char& c : text) c = textAlphabet[random() % 4];
    const bool caseSensitive = random() % 2 == 0;
    ASSERT_EQ(tavMatchesWildcardPattern(pattern.c_str(), text.c_str(), caseSensitive),
              referenceMatch(pattern.c_str(), text.c_str(), caseSensitive))
        << "pattern '" << pattern << "', text '" << text << "', case sensitive " << caseSensitive;
  }
}

}  // namespace
