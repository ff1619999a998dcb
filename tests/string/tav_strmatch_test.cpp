// The matchers: wildcard matching, substring search in both case modes (checked against
// std::string_view::find on many random texts), and the inert regular-expression matcher.

#include <gtest/gtest.h>

#include <cctype>
#include <cstddef>
#include <memory>
#include <random>
#include <string>
#include <string_view>

#include "tav_strmatch.h"
#include "tav_test_allocator.h"
#include "tav_test_data.h"

namespace {

// The offset of a search result in text, or -1 for null.
ptrdiff_t offsetOf(const char* text, const char* found) {
  return found == nullptr ? -1 : found - text;
}

// What TavClStringSearch must answer: the first occurrence (-1 for none), after folding when
// ignoring case.
ptrdiff_t referenceFind(std::string text, std::string pattern, bool ignoreCase) {
  for (std::string* folded : {&text, &pattern}) {
    for (char& c : *folded) c = static_cast<char>(ignoreCase ? std::toupper(c & 0xFF) : c);
  }
  return static_cast<ptrdiff_t>(text.find(pattern));
}

TEST(StringMatchWildcards, MatchesTheWholeTextAndPassesTheCaseFlagOnAsCaseSensitive) {
  for (const auto& row : tav::test::readDataTable("string/wildcard_matcher.txt", 4)) {
    SCOPED_TRACE(row.where);
    const TavClStringMatchWildcards matcher(row.text(0), row.flag(2));
    EXPECT_EQ(matcher.getPattern(row.text(1)), row.flag(3) ? row.text(1) : nullptr);
  }
}

TEST(StringSearch, FindsTheFirstOccurrence) {
  for (const auto& row : tav::test::readDataTable("string/string_search.txt", 4)) {
    SCOPED_TRACE(row.where);
    const TavClStringSearch search(row.text(0), row.flag(2));
    EXPECT_EQ(offsetOf(row.text(1), search.getPattern(row.text(1))), row.number(3));
  }
  const char* const text = "abcabc";
  EXPECT_EQ(TavClStringSearch(nullptr, false).getPattern(text), text);
  EXPECT_EQ(TavClStringSearch("ca", false).getPattern(text, 3), nullptr);  // reads the prefix only
}

// Random texts against std::string_view::find, through both forms of the search. The alphabets
// make occurrences overlap and repeat characters in the skip table ("ab"), fold case ("aAbB",
// and bytes above 127), make a pattern's first or last character rare or absent in texts of a
// few hundred characters (mostly 'a'), and put NULs in the text, which the length form takes
// as text.
TEST(StringSearch, AgreesWithStringViewFindOnRandomTexts) {
  std::mt19937 random(20240601);
  const std::string alphabets[] = {
      "ab", "abc", "aAbB", "abcdefgh", "a\xe4\xc4Z", std::string(40, 'a') + "bcB", {"\0\0xy", 4}};
  for (int round = 0; round < 30000; ++round) {
    const std::string& alphabet = alphabets[round % std::size(alphabets)];
    const auto randomText = [&](size_t maxLength) {
      std::string result(random() % (maxLength + 1), ' ');
      for (char& c : result) c = alphabet[random() % alphabet.size()];
      return result;
    };
    std::string pattern = randomText(round % 3 == 0 ? 24 : 6);
    if (round % 4 == 0 && !pattern.empty()) pattern.front() = 'b';
    if (round % 5 == 0 && !pattern.empty()) pattern.back() = 'c';
    const std::string text = randomText(round % 5 == 1 ? 600 : 60);
    const bool ignoreCase = round % 2 == 1;
    const std::string patternText(pattern.c_str());  // a pattern ends at its first NUL
    const TavClStringSearch search(pattern.c_str(), ignoreCase);
    std::unique_ptr<char[]> exact(new char[text.size() + 1]);  // unterminated, never empty
    text.copy(exact.get(), text.size());
    const auto inExact = search.getPattern(exact.get(), static_cast<unsigned>(text.size()));
    ASSERT_EQ(offsetOf(text.c_str(), search.getPattern(text.c_str())),
              referenceFind(text.c_str(), patternText, ignoreCase))
        << "pattern \"" << pattern << "\" in \"" << text << "\" "
        << (ignoreCase ? "ignoring case" : "exact") << ", round " << round;
    ASSERT_EQ(offsetOf(exact.get(), inExact), referenceFind(text, patternText, ignoreCase))
        << "round " << round;
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
  const TavClGrep byOption("a.*b", true), byMode(7, "a.*b");
  for (const TavClGrep* grep : {&byOption, &byMode}) {
    EXPECT_EQ(grep->getMode(), 1);
    EXPECT_EQ(grep->getPattern("a b"), nullptr);
  }
}

}  // namespace
