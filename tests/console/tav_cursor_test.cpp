// The cursors over a usage string and over the arguments: the tokens a walk stands on, grouped
// by token kind, and the value rules of switch tokens; long walks that must end on the
// terminator; moving over argv, finding switches by name, classifying an argument against a
// usage string and visiting only free arguments (cases in tables under tests/data/console).

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tav_argv.h"
#include "tav_console_test_support.h"
#include "tav_test_data.h"

namespace {

using tav::test::exactCopy;
using tav::test::TestArgv;
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

// Long runs of the tokens that once stopped the walk: each walk ends on the terminator. Any
// other usage is the fuzz target's work. Null texts give no token.
TEST(UsageCursor, EveryWalkEnds) {
  for (const std::string unit : {"/", "-1", "<-5>", " ..", "."}) {
    std::string text;
    while (text.size() < 4000) text += unit;
    SCOPED_TRACE(unit);
    describeWalk(exactCopy(text).get());
  }
  TavClUsageCursor none(nullptr), one("-a");
  EXPECT_FALSE(none.setToFirst() || none.matches("") || none.matchesSwitch("-"));
  EXPECT_TRUE(one.setToFirst() && !one.matches(nullptr) && !one.matchesSwitch(nullptr));
}

// The arguments a walk visits, separated by blanks; the walk must end invalid.
std::string visited(TavClArgvCursor& cursor, bool backward) {
  std::string seen;
  for (bool more = backward ? cursor.setToLast() : cursor.setToFirst(); more;
       more = backward ? cursor.setToPrevious() : cursor.setToNext()) {
    seen += (seen.empty() ? "" : " ") + std::string(cursor.getAsCString());
  }
  EXPECT_FALSE(cursor.isValid());
  return seen;
}

// Walks in both directions are in the free-argument table: with a usage of one placeholder
// every argument is free.
TEST(ArgvCursor, StandsOnArgumentOneAndNeverOnTheProgramName) {
  const TestArgv args("a b c"), none("");
  TavClArgvCursor cursor(args.argc(), args.argv()), empty(none.argc(), none.argv());
  EXPECT_STREQ(cursor.getAsCString(), "a");
  EXPECT_TRUE(cursor.setToLast() && !cursor.setToNext() && cursor.setToPrevious());
  EXPECT_EQ(visited(empty, false) + visited(empty, true), "");
  EXPECT_EQ(TavClArgvCursor(0, nullptr).getArgv0(), nullptr);
  EXPECT_FALSE(TavClArgvCheckCursor(args.argc(), args.argv(), nullptr).isLegal());  // no usage
}

TEST(ArgvCursor, MatchesWholeSwitchNamesAndPositionToFindsTheFirst) {
  const TestArgv args("x -v -xy -v");
  for (const auto& row : tav::test::readDataTable("console/switch_names.txt", 4)) {
    SCOPED_TRACE(row.where);
    const char* argv[] = {"prog", row.text(0), nullptr};
    EXPECT_EQ(TavClArgvCursor(2, argv).matches(row.text(1)), row.flag(2));
    TavClArgvCursor cursor(args.argc(), args.argv());
    ASSERT_TRUE(cursor.setToLast());  // the search starts at the first argument all the same
    const bool found = cursor.positionTo(row.text(1));
    EXPECT_EQ(found, row.number(3) != 0);
    int index = 0;
    while (found && cursor.setToPrevious()) ++index;
    EXPECT_EQ(found ? index + 1 : 0, row.number(3));
  }
}

TEST(ArgvCheckCursor, ClassifiesEachArgumentAgainstTheUsage) {
  for (const auto& row : tav::test::readDataTable("console/argument_classes.txt", 10)) {
    SCOPED_TRACE(row.where);
    const auto usage = exactCopy(unescape(row.str(0)));
    const TestArgv args(row.str(1));
    TavClArgvCheckCursor cursor(args.argc(), args.argv(), usage.get());
    if (row.number(2) == 0) cursor.setToPrevious();
    for (int64_t i = 1; i < row.number(2); ++i) cursor.setToNext();
    const TavClArgvCheckCursor copy(cursor);
    const bool classes[] = {copy.isSwitch(), copy.isBound(), copy.isFree(),  copy.isLegal(),
                            copy.reqArg(),   copy.hasArg(),  copy.isTagged()};
    for (size_t c = 0; c < 7; ++c) EXPECT_EQ(classes[c], row.flag(c + 3)) << "column " << c + 3;
  }
}

TEST(ArgvFreeCursor, VisitsOnlyFreeArgumentsBothWays) {
  for (const auto& row : tav::test::readDataTable("console/free_arguments.txt", 4)) {
    SCOPED_TRACE(row.where);
    const auto usage = exactCopy(unescape(row.str(0)));
    const TestArgv args(row.str(1));
    TavClArgvFreeCursor cursor(args.argc(), args.argv(), usage.get());
    EXPECT_EQ(visited(cursor, false), row.str(2));
    EXPECT_EQ(visited(cursor, true), row.str(3));
  }
}

}  // namespace
