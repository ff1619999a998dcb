// The argument cursors: moving over argv, finding switches by name, classifying an argument
// against a usage string (a table under tests/data/console) and visiting only free arguments.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tav_argv.h"
#include "tav_console_test_text.h"
#include "tav_test_data.h"

namespace {

using tav::test::exactCopy;
using tav::test::TestArgv;
using tav::test::unescape;

// The arguments a walk visits, separated by blanks.
template <typename Cursor>
std::string visited(Cursor& cursor, bool backward) {
  std::string seen;
  size_t steps = 0;
  for (bool more = backward ? cursor.setToLast() : cursor.setToFirst(); more && steps < 100;
       more = backward ? cursor.setToPrevious() : cursor.setToNext(), ++steps) {
    if (!seen.empty()) seen += ' ';
    seen += cursor.getAsCString();
  }
  EXPECT_FALSE(cursor.isValid());
  return seen;
}

TEST(ArgvCursor, WalksArgumentsOneToLastBothWays) {
  const TestArgv args("a b c");
  TavClArgvCursor cursor(args.argc(), args.argv());
  EXPECT_TRUE(cursor.isValid());  // a new cursor stands on argument 1
  EXPECT_STREQ(cursor.getAsCString(), "a");
  EXPECT_STREQ(cursor.getArgv0(), "prog");
  EXPECT_EQ(visited(cursor, false), "a b c");
  EXPECT_EQ(visited(cursor, true), "c b a");
  ASSERT_TRUE(cursor.setToLast());
  EXPECT_FALSE(cursor.setToNext());
  EXPECT_TRUE(cursor.setToPrevious());  // back from one past the end
  EXPECT_STREQ(cursor.getAsCString(), "c");
  TavClArgvCursor other(1, args.argv());
  other = cursor;
  EXPECT_STREQ(other.getAsCString(), "c");
}

TEST(ArgvCursor, OnlyTheProgramNameGivesNoPosition) {
  const TestArgv args("");
  TavClArgvCursor cursor(args.argc(), args.argv());
  EXPECT_FALSE(cursor.isValid());
  EXPECT_FALSE(cursor.setToFirst());
  EXPECT_FALSE(cursor.setToLast());
  EXPECT_FALSE(cursor.positionTo("x"));
  EXPECT_FALSE(cursor.isSwitch());
  EXPECT_FALSE(cursor.matches("x"));
  EXPECT_STREQ(cursor.getArgv0(), "prog");
  TavClArgvCursor none(0, nullptr);
  EXPECT_FALSE(none.setToFirst());
  EXPECT_EQ(none.getArgv0(), nullptr);
}

TEST(ArgvCursor, MatchesComparesWholeSwitchNames) {
  struct Case {
    const char* argument;
    const char* name;
    bool matches;
  } const cases[] = {
      {"-v", "v", true},    {"-v", "-v", true},     {"-v", "verbose", false}, {"-xy", "x", false},
      {"-x", "xy", false},  {"-x", "-xy", false},   {"-V", "v", false},       {"-", "", true},
      {"-", "-", true},     {"-5", "5", false},     {"v", "v", false},        {"--x", "--x", true},
      {"--x", "-x", false}, {"-v", nullptr, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.argument) + " / " + (c.name != nullptr ? c.name : "null"));
    const char* argv[] = {"prog", c.argument, nullptr};
    const TavClArgvCursor cursor(2, argv);
    EXPECT_EQ(cursor.matches(c.name), c.matches);
  }
}

TEST(ArgvCursor, PositionToFindsTheFirstFromTheStart) {
  const TestArgv args("-a x -b -a -b");
  TavClArgvCursor cursor(args.argc(), args.argv());
  ASSERT_TRUE(cursor.setToLast());
  ASSERT_TRUE(cursor.positionTo("b"));
  EXPECT_TRUE(cursor.setToPrevious());
  EXPECT_STREQ(cursor.getAsCString(), "x");  // the -b at index 3, not the one at 5
  EXPECT_FALSE(cursor.positionTo("-x"));
  EXPECT_FALSE(cursor.isValid());
  EXPECT_FALSE(cursor.setToNext());
}

TEST(ArgvCheckCursor, ClassifiesEachArgumentAgainstTheUsage) {
  const auto rows = tav::test::readDataTable("console/argument_classes.txt", 10);
  for (const auto& row : rows) {
    SCOPED_TRACE(row.where);
    const auto usage = exactCopy(unescape(row.str(0)));
    const TestArgv args(row.str(1));
    TavClArgvCheckCursor cursor(args.argc(), args.argv(), usage.get());
    const int64_t index = row.number(2);
    if (index == 0) cursor.setToPrevious();
    for (int64_t i = 1; i < index; ++i) cursor.setToNext();
    EXPECT_EQ(cursor.isSwitch(), row.flag(3)) << "switch";
    EXPECT_EQ(cursor.isBound(), row.flag(4)) << "bound";
    EXPECT_EQ(cursor.isFree(), row.flag(5)) << "free";
    EXPECT_EQ(cursor.isLegal(), row.flag(6)) << "legal";
    EXPECT_EQ(cursor.reqArg(), row.flag(7)) << "reqArg";
    EXPECT_EQ(cursor.hasArg(), row.flag(8)) << "hasArg";
    EXPECT_EQ(cursor.isTagged(), row.flag(9)) << "tagged";
    // A copy asks the same questions of the same argument.
    const TavClArgvCheckCursor copy(cursor);
    EXPECT_EQ(copy.isLegal(), row.flag(6));
  }
}

TEST(ArgvCheckCursor, NoUsageAdmitsNothing) {
  const TestArgv args("-v x");
  TavClArgvCheckCursor cursor(args.argc(), args.argv(), nullptr);
  EXPECT_FALSE(cursor.isLegal());
  ASSERT_TRUE(cursor.setToNext());
  EXPECT_FALSE(cursor.isLegal());
  EXPECT_TRUE(cursor.isFree());
}

TEST(ArgvFreeCursor, VisitsOnlyFreeArgumentsBothWays) {
  for (const auto& row : tav::test::readDataTable("console/free_arguments.txt", 4)) {
    SCOPED_TRACE(row.where);
    const auto usage = exactCopy(unescape(row.str(0)));
    const TestArgv args(row.str(1));
    TavClArgvFreeCursor cursor(args.argc(), args.argv(), usage.get());
    EXPECT_EQ(visited(cursor, false), row.str(2));
    EXPECT_EQ(visited(cursor, true), row.str(3));
    // Through the interface the walks are the same.
    TavClBiDirCursorABase& base = cursor;
    size_t count = 0;
    for (bool more = base.setToFirst(); more; more = base.setToNext()) ++count;
    EXPECT_EQ(count,
              row.str(2).empty() ? 0 : std::count(row.str(2).begin(), row.str(2).end(), ' ') + 1);
  }
}

}  // namespace
