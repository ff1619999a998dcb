// The argument queries in their three key forms (letter, name, message id), the numeric
// conversion, the process name, the usage copies, and validations that let the program go on.

#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "tav_console.h"
#include "tav_console_test_support.h"
#include "tav_test_allocator.h"
#include "tav_test_data.h"

namespace {

using tav::test::CapturedConsole;

// Message ids of the library catalog whose texts serve as switch names here.
constexpr unsigned long kFileNameId = 155;     // "file"
constexpr unsigned long kVerboseNameId = 156;  // "verbose"

TEST(ConsoleQuery, SwitchesAndStringsInEveryKeyForm) {
  CapturedConsole console(
      {"-v", "-verbose", "x", "-", "-f", "'a b", "-g", "-5", "-file", "one", "-file", "two"});
  EXPECT_TRUE(console->hasArgSwitch('v') && console->hasArgSwitch("-verbose") &&
              console->hasArgSwitch(kVerboseNameId) && console->hasArgSwitch(""));
  // "x" is no switch, "-5" a number, and names match whole.
  EXPECT_FALSE(console->hasArgSwitch('x') || console->hasArgSwitch("verb") ||
               console->hasArgSwitch("5") || console->hasArgSwitch(kVerboseNameId + 1));
  console->reqArgSwitch('v');
  console->reqArgSwitch(kVerboseNameId);
  const char* value = "untouched";
  EXPECT_FALSE(console->hasArgString('x', value) || console->hasArgString(2000ul, value));
  EXPECT_STREQ(value, "untouched");
  // Values come unchanged, and the first of repeated switches wins.
  EXPECT_TRUE(console->hasArgString('f', value));
  EXPECT_STREQ(value, "'a b");
  console->reqArgString("-g", value);
  EXPECT_STREQ(value, "-5");
  console->reqArgString(kFileNameId, value);
  EXPECT_STREQ(value, "one");
  console->reqArgString('f', value);
  EXPECT_TRUE(console->hasArgString("file", value));
  EXPECT_STREQ(value, "one");
  EXPECT_EQ(console.err(), "");
}

TEST(ConsoleQuery, NumericValuesCutToTheirTarget) {
  for (const auto& row : tav::test::readDataTable("console/numeric_values.txt", 4)) {
    SCOPED_TRACE(row.where);
    CapturedConsole console({"-n", row.str(0), "-file", row.str(0)});
    long asLong[3] = {1, 1, 1};
    int asInt[3] = {1, 1, 1};
    short asShort[3] = {1, 1, 1};
    EXPECT_TRUE(console->hasArgNumval('n', asLong[0]) && console->hasArgNumval("n", asInt[0]) &&
                console->hasArgNumval(kFileNameId, asShort[0]));
    console->reqArgNumval(kFileNameId, asLong[1]);
    console->reqArgNumval('n', asInt[1]);
    console->reqArgNumval("-file", asShort[1]);
    console->reqArgNumval("-n", asLong[2]);
    console->reqArgNumval(kFileNameId, asInt[2]);
    console->reqArgNumval('n', asShort[2]);
    for (int form = 0; form < 3; ++form) {
      EXPECT_EQ(asLong[form], row.number(1));
      EXPECT_EQ(asInt[form], row.number(2));
      EXPECT_EQ(asShort[form], row.number(3));
    }
  }
  // Beyond the range of long: its nearest limit, then cut.
  CapturedConsole console({"-n", "99999999999999999999999"});
  long asLong = 0;
  int asInt = 0;
  short asShort = 0;
  EXPECT_TRUE(console->hasArgNumval('n', asLong) && console->hasArgNumval('n', asInt) &&
              console->hasArgNumval('n', asShort));
  EXPECT_EQ(asLong, LONG_MAX);
  EXPECT_EQ(asInt, static_cast<int>(LONG_MAX));
  EXPECT_EQ(asShort, -1);
  // Absent switches leave the values alone.
  EXPECT_FALSE(console->hasArgNumval('m', asLong) || console->hasArgNumval("m", asInt) ||
               console->hasArgNumval(kFileNameId, asShort) ||
               console->hasArgNumval(kFileNameId, asLong) || console->hasArgNumval('m', asShort) ||
               console->hasArgNumval(kFileNameId, asInt));
  EXPECT_EQ(asLong, LONG_MAX);
}

TEST(ConsoleQuery, ProcessName) {
  std::vector<std::pair<std::string, std::string>> cases{
      {std::string(300, 'n'), std::string(260, 'n')}};
  for (const auto& row : tav::test::readDataTable("console/process_names.txt", 2)) {
    cases.emplace_back(row.str(0), row.str(1));
  }
  for (const auto& [argv0, expected] : cases) {
    SCOPED_TRACE(argv0);
    const char* const argv[] = {argv0.c_str(), nullptr};
    TavClConsoleUI console(1, argv);
    EXPECT_EQ(console.getProcessName(), expected);
    EXPECT_EQ(console.getParams().getProcessNameLength(), expected.size());
  }
  EXPECT_STREQ(TavClConsoleUI(0, nullptr).getProcessName(), "");
}

TEST(ConsoleQuery, UsageAndHelpAreCopiesReplacedOnEverySet) {
  CapturedConsole console({});
  EXPECT_STREQ(console->getUsage(), "");
  std::string usage = "[-v]", help = "help text";
  console->displayUsageHelp(usage.c_str(), help.c_str(), false);
  usage = help = "changed";
  // The current copies may be set again.
  console->displayUsageHelp(console->getUsage(), console->getParams().getHelp(), false);
  EXPECT_STREQ(console->getUsage(), "[-v]");
  EXPECT_STREQ(console->getParams().getHelp(), "help text");
  // Texts from message ids; an unknown help id means no help.
  console->handleUsageHelp(151ul, 4000000000ul);
  EXPECT_EQ(std::string(console->getUsage()).substr(0, 11), "(-key <key>");
  EXPECT_EQ(console->getParams().getHelp(), nullptr);
  console->handleUsageHelp(151ul, 152ul);
  EXPECT_EQ(std::string(console->getParams().getHelp()).substr(0, 4), "-key");
  console->handleUsageHelp("", nullptr);
  EXPECT_FALSE(console->getParams().hasUsage());
}

TEST(ConsoleQuery, AllocationFailuresLeaveNothingBehind) {
  const tav::test::ArgumentList arguments({"-v"});
  tav::test::forEachAllocationFailure([&] {
    TavClConsoleUI console(arguments.count(), arguments.vector());
    console.handleUsageHelp("[-v] (-o <file>)", "some help");
  });
}

TEST(ConsoleValidation, AllowedArgumentsLetTheProgramGoOn) {
  for (const auto& row : tav::test::readDataTable("console/allowed_arguments.txt", 2)) {
    SCOPED_TRACE(row.where);
    CapturedConsole console(tav::test::words(row.str(1)));
    const std::string usage = tav::test::unescape(row.text(0));
    console->handleUsageHelp(row.isNull[0] ? nullptr : usage.c_str(), nullptr);
    EXPECT_EQ(console.out() + console.err(), "");
  }
}

TEST(ConsoleCursors, CursorsOverTheConsolesArguments) {
  CapturedConsole console({"-o", "a", "b"});
  console->handleUsageHelp("(-o <file>) <input>", nullptr);
  TavClArgvCheckCursor check(console.get());
  EXPECT_TRUE(check.setToNext() && check.isBound());
  TavClArgvFreeCursor freeArgument(console.get());
  EXPECT_TRUE(freeArgument.setToFirst());
  EXPECT_STREQ(freeArgument.getAsCString(), "b");
  EXPECT_STREQ(TavClArgvCursor(console.get()).getAsCString(), "-o");
}

}  // namespace
