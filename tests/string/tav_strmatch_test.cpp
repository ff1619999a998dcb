// The matchers: wildcard matching, substring search in both case modes (checked against
// std::string_view::find on many random texts), and the inert regular-expression matcher.

#include <gtest/gtest.h>

#include <cctype>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tav_strmatch.h"
#include "tav_test_allocator.h"

namespace {

constexpr size_t kNotFound = std::string_view::npos;

// The offset of a search result in text, or npos for null.
size_t offsetOf(const char* text, const char* found) {
  return found == nullptr ? kNotFound : static_cast<size_t>(found - text);
}

std::string upperCased(std::string_view text) {
  std::string folded(text);
  for (char& c : folded) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return folded;
}

// What TavClStringSearch must answer: the first occurrence, after folding when ignoring case.
size_t referenceFind(std::string_view text, std::string_view pattern, bool ignoreCase) {
  if (!ignoreCase) return text.find(pattern);
  return upperCased(text).find(upperCased(pattern));
}

TEST(StringMatchWildcards, MatchesTheWholeTextAndPassesTheCaseFlagOnAsCaseSensitive) {
  struct Row {
    const char* pattern;
    const char* text;
    bool caseSensitive;
    bool matches;
  };
  const Row rows[] = {
      {"*.txt", "notes.txt", true, true},
      {"*.txt", "notes.txt.bak", true, false},
      {"*.TXT", "notes.txt", true, false},
      {"*.TXT", "notes.txt", false, true},
      {"data_??.csv", "data_01.csv", true, true},
      {"data_??.csv", "data_1.csv", true, false},
      {"", "", true, true},
      {"*", "", true, true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << row.pattern << " / " << row.text << " / "
                                    << (row.caseSensitive ? "case-sensitive" : "ignoring case"));
    const TavClStringMatchWildcards matcher(row.pattern, row.caseSensitive);
    EXPECT_EQ(matcher.getPattern(row.text), row.matches ? row.text : nullptr);
  }
  EXPECT_EQ(TavClStringMatchWildcards("*", true).getPattern(nullptr), nullptr);
}

TEST(StringSearch, FindsTheFirstOccurrence) {
  struct Row {
    const char* pattern;
    const char* text;
    bool ignoreCase;
    size_t expected;
  };
  const Row rows[] = {
      {"ABC", "xxabcxx", true, 2},
      {"ABC", "xxabcxx", false, kNotFound},
      {"abc", "xxABCxx", true, 2},
      {"a", "bbbab", false, 3},  // one character: every skip is 1
      {"a", "", false, kNotFound},
      {"abcdef", "abcde", false, kNotFound},  // longer than the text
      {"", "abc", false, 0},                  // the empty pattern is found at the start
      {"", "", true, 0},
      {"abab", "abaabababab", false, 3},
      {"bab", "aab", false, kNotFound},  // the plain skip rule cycles here
      {"bab", "aabab", false, 2},
      {"AB", "xab", true, 1},  // the skip comes from the folded text character
      {"needle", "haystack with a needle and another needle", false, 16},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << '"' << row.pattern << "\" in \"" << row.text << "\" "
                                    << (row.ignoreCase ? "ignoring case" : "exact"));
    const TavClStringSearch search(row.pattern, row.ignoreCase);
    EXPECT_EQ(offsetOf(row.text, search.getPattern(row.text)), row.expected);
  }
  EXPECT_EQ(TavClStringSearch("a", false).getPattern(nullptr), nullptr);
  const char* const text = "abc";
  EXPECT_EQ(TavClStringSearch(nullptr, false).getPattern(text), text);
}

TEST(StringSearch, TheLengthFormReadsOnlyThePrefixAndTakesNulCharactersAsText) {
  const TavClStringSearch search("ca", false);
  const char text[] = "abcabc";
  EXPECT_EQ(search.getPattern(text, 3), nullptr);
  EXPECT_EQ(search.getPattern(text, 4), text + 2);

  // No terminator: a read past the buffer would be seen by AddressSanitizer.
  const std::string_view withNul("x\0ca", 4);
  std::unique_ptr<char[]> exact(new char[withNul.size()]);
  withNul.copy(exact.get(), withNul.size());
  EXPECT_EQ(search.getPattern(exact.get(), 4), exact.get() + 2);
  const TavClStringSearch nul(std::string_view("\0", 1).data(), false);  // an empty pattern
  EXPECT_EQ(nul.getPattern(exact.get(), 4), exact.get());
}

// Random texts and patterns over small alphabets, where occurrences overlap and the skip table
// has repeated characters: the cases in which a skip rule goes wrong if it can.
TEST(StringSearch, AgreesWithStringViewFindOnRandomTexts) {
  std::mt19937 random(20240601);
  const std::string alphabets[] = {"ab", "abc", "aAbB", "abcdefgh", std::string("a\xe4\xc4Z", 4)};
  for (int round = 0; round < 40000; ++round) {
    const std::string& alphabet = alphabets[round % std::size(alphabets)];
    const auto randomText = [&](size_t maxLength) {
      std::string text(random() % (maxLength + 1), ' ');
      for (char& c : text) c = alphabet[random() % alphabet.size()];
      return text;
    };
    const std::string pattern = randomText(round % 7 == 0 ? 12 : 5);
    const std::string text = randomText(40);
    const bool ignoreCase = round % 2 == 1;

    const TavClStringSearch search(pattern.c_str(), ignoreCase);
    const size_t expected = referenceFind(text, pattern, ignoreCase);
    const size_t actual = offsetOf(text.c_str(), search.getPattern(text.c_str()));
    if (actual != expected) {
      FAIL() << "pattern \"" << pattern << "\" in \"" << text << "\" "
             << (ignoreCase ? "ignoring case" : "exact") << ": " << actual << ", expected "
             << expected;
    }
  }
}

// Texts of a few hundred characters, long enough for the search to pass over many windows at
// a time, where the pattern's first or last character is rare or absent.
TEST(StringSearch, AgreesWithStringViewFindOnLongTextsWithRareCharacters) {
  std::mt19937 random(99);
  for (int round = 0; round < 4000; ++round) {
    const unsigned rarity = 1 + random() % 200;  // one character in `rarity` is not an 'a'
    const auto randomText = [&](size_t length) {
      std::string text(length, 'a');
      for (char& c : text) {
        if (random() % rarity == 0) c = "bcB"[random() % 3];
      }
      return text;
    };
    std::string pattern = randomText(1 + random() % 24);
    if (round % 3 == 0) pattern.front() = 'b';
    if (round % 4 == 0) pattern.back() = 'c';
    const std::string text = randomText(random() % 600);
    const bool ignoreCase = round % 5 == 0;

    const TavClStringSearch search(pattern.c_str(), ignoreCase);
    const size_t actual = offsetOf(text.c_str(), search.getPattern(text.c_str()));
    ASSERT_EQ(actual, referenceFind(text, pattern, ignoreCase))
        << "pattern \"" << pattern << "\" in a text of " << text.size() << " characters, "
        << (ignoreCase ? "ignoring case" : "exact") << ", round " << round;
  }
}

TEST(StringSearch, AgreesWithStringViewFindOnRandomBytesThroughTheLengthForm) {
  std::mt19937 random(7);
  for (int round = 0; round < 20000; ++round) {
    std::string pattern(1 + random() % 4, '\0');
    for (char& c : pattern) c = static_cast<char>(random() % 3 == 0 ? 0 : 'x' + random() % 2);
    std::string text(random() % 30, '\0');
    for (char& c : text) c = static_cast<char>(random() % 3 == 0 ? 0 : 'x' + random() % 2);
    // The pattern ends at its first NUL, as any C string does.
    const std::string_view patternText(pattern.c_str());

    std::unique_ptr<char[]> exact(new char[text.size() + 1]);  // never empty, for new[]
    text.copy(exact.get(), text.size());
    const TavClStringSearch search(pattern.c_str(), false);
    const size_t actual =
        offsetOf(exact.get(), search.getPattern(exact.get(), static_cast<unsigned>(text.size())));
    ASSERT_EQ(actual, std::string_view(text).find(patternText)) << "round " << round;
  }
}

TEST(StringSearch, AnIgnoreCaseSearcherThatCannotCopyItsPatternLeaksNothing) {
  tav::test::forEachAllocationFailure([] { TavClStringSearch search("Pattern", true); });
  tav::test::installCountingAllocator();
  const size_t before = tav::test::liveBlocks();
  {
    // Owned through the base: the virtual destructor releases the folded copy.
    std::unique_ptr<TavClStringMatchABase> matcher(new TavClStringSearch("Pattern", true));
    EXPECT_EQ(tav::test::liveBlocks(), before + 2);
    EXPECT_NE(matcher->getPattern("a pattern"), nullptr);
  }
  EXPECT_EQ(tav::test::liveBlocks(), before);
}

TEST(Grep, IsInertWhicheverWayItIsBuilt) {
  const TavClGrep byOption("a.*b", true);
  const TavClGrep byMode(7, "a.*b");
  for (const TavClGrep* grep : {&byOption, &byMode}) {
    EXPECT_EQ(grep->getMode(), 1);
    EXPECT_EQ(grep->getPattern("a b"), nullptr);
    EXPECT_EQ(grep->getPattern("a.*b", 4), nullptr);
  }
}

}  // namespace
