// The usage-string tokeniser: the tokens a walk stands on, grouped by token kind in a table under
// tests/data/console, the switch tokens' value rules, literal matching, and walks that must end.

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "tav_argv.h"
#include "tav_console_test_text.h"
#include "tav_test_data.h"

namespace {

using tav::test::exactCopy;
using tav::test::unescape;

// The token at the position as the tables write it: its first character, then everything up to
// a delimiter, a control character or a double quote.
std::string tokenText(const char* position) {
  std::string text(1, *position);
  for (const char* c = position + 1; *c != '\0' && std::strchr("[]<>(){}-| \"", *c) == nullptr &&
                                     static_cast<unsigned char>(*c) >= 0x20;
       ++c) {
    text += *c;
  }
  return text;
}

// Walks every token, calling visit on each. A walk may take at most one step per character,
// must never go back and must end on the terminating NUL.
template <typename Visit>
void walk(const char* usage, Visit visit) {
  const size_t length = std::strlen(usage);
  TavClUsageCursor cursor(usage);
  size_t steps = 0;
  const char* previous = nullptr;
  for (bool more = cursor.setToFirst(); more; more = cursor.setToNext()) {
    ASSERT_TRUE(cursor.isValid());
    ASSERT_TRUE(previous == nullptr || cursor.getPosition() > previous) << "the walk went back";
    ASSERT_LE(++steps, length) << "the walk does not end";
    previous = cursor.getPosition();
    visit(cursor);
  }
  EXPECT_FALSE(cursor.isValid());
  EXPECT_EQ(cursor.getPosition(), usage + length) << "the walk did not stop at the end";
  EXPECT_FALSE(cursor.setToNext()) << "a finished walk moved on";
}

// The tokens of a usage as the tables write them.
std::string describeWalk(const char* usage) {
  std::string description;
  walk(usage, [&](const TavClUsageCursor& token) {
    if (!description.empty()) description += ' ';
    description += tokenText(token.getPosition());
    const int depth = token.getParenthesisDepth();
    if (depth != 0) description += '@' + std::to_string(depth);
    if (token.isOnTaggedLine()) description += '!';
  });
  return description;
}

TEST(UsageCursor, TokensByKind) {
  for (const auto& row : tav::test::readDataTable("console/usage_tokens.txt", 2)) {
    SCOPED_TRACE(row.where);
    const auto usage = exactCopy(unescape(row.str(0)));
    EXPECT_EQ(describeWalk(usage.get()), row.str(1));
  }
}

TEST(UsageCursor, SwitchTokensAndTheirValues) {
  for (const auto& row : tav::test::readDataTable("console/usage_switches.txt", 5)) {
    SCOPED_TRACE(row.where);
    const auto usage = exactCopy(unescape(row.str(0)));
    TavClUsageCursor cursor(usage.get());
    bool found = false;
    for (bool more = cursor.setToFirst(); more && !found; more = cursor.setToNext()) {
      found = cursor.isSwitch() && cursor.matchesSwitch(row.text(1));
      if (found) break;
    }
    EXPECT_EQ(found, row.flag(2));
    if (!found) continue;
    EXPECT_EQ(cursor.reqArg(), row.flag(3));
    EXPECT_EQ(cursor.reqArgEllipsis(), row.flag(4));
  }
}

TEST(UsageCursor, LiteralMatchEndsAtADelimiter) {
  for (const auto& row : tav::test::readDataTable("console/usage_literal.txt", 3)) {
    SCOPED_TRACE(row.where);
    const auto usage = exactCopy(unescape(row.str(0)));
    TavClUsageCursor cursor(usage.get());
    ASSERT_TRUE(cursor.setToFirst());
    EXPECT_EQ(cursor.matches(row.text(1)), row.flag(2));
  }
}

TEST(UsageCursor, QuestionsOnNoTokenAnswerNo) {
  TavClUsageCursor empty("");
  EXPECT_FALSE(empty.setToFirst());
  TavClUsageCursor none(nullptr);
  EXPECT_FALSE(none.setToFirst());
  for (TavClUsageCursor* cursor : {&empty, &none}) {
    EXPECT_FALSE(cursor->isValid());
    EXPECT_FALSE(cursor->isSwitch());
    EXPECT_FALSE(cursor->isArgEllipsis());
    EXPECT_FALSE(cursor->matches(""));
    EXPECT_FALSE(cursor->matchesSwitch("-"));
    EXPECT_FALSE(cursor->reqArg());
    EXPECT_FALSE(cursor->reqArgEllipsis());
  }
  TavClUsageCursor one("-a");
  ASSERT_TRUE(one.setToFirst());
  EXPECT_FALSE(one.matches(nullptr));
  EXPECT_FALSE(one.matchesSwitch(nullptr));
}

TEST(UsageCursor, SetToFirstStartsAgainButKeepsTheCountsSoFar) {
  TavClUsageCursor cursor("(-a <x>)");
  ASSERT_TRUE(cursor.setToFirst());
  EXPECT_EQ(cursor.getParenthesisDepth(), 1);
  while (cursor.setToNext()) {
  }
  EXPECT_EQ(cursor.getParenthesisDepth(), 0);
  ASSERT_TRUE(cursor.setToFirst());
  EXPECT_TRUE(cursor.matches("-a"));
  EXPECT_EQ(cursor.getParenthesisDepth(), 1);  // counted twice over the opening parenthesis
  EXPECT_EQ(cursor.getBracketDepth(), 0);
}

TEST(UsageCursor, SwitchIndicatorAndDisplayedCharacters) {
  struct Case {
    const char* text;
    bool isSwitch;
  } const cases[] = {{"-x", true},    {"-", true},   {"--", true}, {"-5", false},
                     {"-1.5", false}, {"/x", false}, {"x", false}, {"", false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(TavClUsageCursor::isSwitchIndicator(c.text), c.isSwitch);
  }
  EXPECT_FALSE(TavClUsageCursor::isSwitchIndicator(nullptr));
  for (int c = 1; c < 256; ++c) {
    const char ch = static_cast<char>(c);
    EXPECT_EQ(TavClUsageCursor::isToBeDisplayed(ch), ch != '"' && ch != '(' && ch != ')') << c;
  }
}

// Usage strings made of the characters that carry meaning, in every order a fixed seed gives:
// each walk ends on the terminator without going back, and every question a walk can ask of a
// token returns.
TEST(UsageCursor, RandomUsageStringsAlwaysEnd) {
  const char alphabet[] = "-/<>()[]!\". \n|{}ab5";
  std::mt19937 random(16);
  std::uniform_int_distribution<size_t> pick(0, sizeof(alphabet) - 2);
  std::uniform_int_distribution<size_t> length(0, 40);
  for (int round = 0; round < 2000; ++round) {
    std::string text;
    for (size_t n = length(random); n > 0; --n) text += alphabet[pick(random)];
    SCOPED_TRACE(text);
    const auto usage = exactCopy(text);
    walk(usage.get(), [](const TavClUsageCursor& token) {
      // A list needs a value first; neither may be claimed outside parentheses.
      EXPECT_TRUE(!token.reqArgEllipsis() || token.reqArg());
      EXPECT_TRUE(!token.reqArg() || token.getParenthesisDepth() != 0);
      token.matchesSwitch("-a");
    });
  }
}

// A long usage of tokens that used to stop the walk: the walk is linear, so this is quick.
TEST(UsageCursor, LongRunsOfSlashesAndNegativeNumbersWalkThrough) {
  for (const std::string unit : {"/", "-1", "<-5>", " ..", "."}) {
    SCOPED_TRACE(unit);
    std::string text;
    while (text.size() < 20000) text += unit;
    const auto usage = exactCopy(text);
    size_t tokens = 0;
    walk(usage.get(), [&](const TavClUsageCursor&) { ++tokens; });
    EXPECT_GT(tokens, 0u);
  }
}

}  // namespace
