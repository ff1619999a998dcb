// The usage-string tokeniser: the tokens a walk stands on, grouped by token kind, and the value
// rules of switch tokens (tables under tests/data/console), and walks over any usage that must
// end on the terminator.

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "tav_argv.h"
#include "tav_console_test_support.h"
#include "tav_test_data.h"

namespace {

using tav::test::exactCopy;
using tav::test::unescape;

// The tokens as the tables write them: the text up to a delimiter, a control character or a
// double quote, "@depth" inside parentheses, "!" on a tagged line. A walk may take at most one
// step per character, must never go back and must end on the terminating NUL.
std::string describeWalk(const char* usage) {
  const size_t length = std::strlen(usage);
  TavClUsageCursor token(usage);
  std::string description;
  const char* previous = usage - 1;
  for (bool more = token.setToFirst(); more; more = token.setToNext()) {
    const char* text = token.getPosition();
    EXPECT_GT(text, previous) << "the walk went back";
    if (text <= previous) break;
    previous = text;
    description += (description.empty() ? "" : " ") +
                   std::string(text, 1 + std::strcspn(text + 1, "[]<>(){}-| \"\t\n"));
    if (token.getParenthesisDepth() != 0) {
      description += '@' + std::to_string(token.getParenthesisDepth());
    }
    if (token.isOnTaggedLine()) description += '!';
  }
  EXPECT_EQ(token.getPosition(), usage + length) << "the walk did not stop at the end";
  EXPECT_FALSE(token.setToNext()) << "a finished walk moved on";
  return description;
}

TEST(UsageCursor, TokensByKind) {
  for (const auto& row : tav::test::readDataTable("console/usage_tokens.txt", 2)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(describeWalk(exactCopy(unescape(row.str(0))).get()), row.str(1));
  }
}

TEST(UsageCursor, SwitchTokensAndTheirValues) {
  for (const auto& row : tav::test::readDataTable("console/usage_switches.txt", 5)) {
    SCOPED_TRACE(row.where);
    const auto usage = exactCopy(unescape(row.str(0)));
    TavClUsageCursor cursor(usage.get());
    bool more = cursor.setToFirst();
    while (more && !(cursor.isSwitch() && cursor.matchesSwitch(row.text(1)))) {
      more = cursor.setToNext();
    }
    EXPECT_EQ(more, row.flag(2));
    EXPECT_EQ(cursor.reqArg(), row.flag(3));
    EXPECT_EQ(cursor.reqArgEllipsis(), row.flag(4));
  }
}

TEST(UsageCursor, NullTextsGiveNoToken) {
  TavClUsageCursor none(nullptr), one("-a");
  EXPECT_FALSE(none.setToFirst() || none.matches("") || none.matchesSwitch("-"));
  EXPECT_TRUE(one.setToFirst() && !one.matches(nullptr) && !one.matchesSwitch(nullptr));
  EXPECT_FALSE(TavClUsageCursor::isSwitchIndicator(nullptr));
}

// Usage strings made of the characters that carry meaning, random ones from a fixed seed and
// long runs of the tokens that once stopped the walk: each walk ends on the terminator.
TEST(UsageCursor, EveryWalkEnds) {
  const char alphabet[] = "-/<>()[]!\". \n|{}ab5";
  std::mt19937 random(16);
  std::vector<std::string> texts(2000);
  for (auto& text : texts) {
    for (size_t n = random() % 40; n > 0; --n) text += alphabet[random() % 19];
  }
  for (const std::string unit : {"/", "-1", "<-5>", " ..", "."}) {
    texts.emplace_back();
    while (texts.back().size() < 4000) texts.back() += unit;
  }
  for (const auto& text : texts) {
    SCOPED_TRACE(text.substr(0, 40));
    describeWalk(exactCopy(text).get());
  }
}

}  // namespace
