// The argument queries in their three key forms (letter, name, message id), the numeric
// conversion, the process name, the usage copies, and argument lists that validation allows.

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
  CapturedConsole console("-v -verbose x - -f 'ab -g -5 -file one -file two");
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
  console->reqArgString('f', value);
  EXPECT_STREQ(value, "'ab");
  console->reqArgString("-g", value);
  EXPECT_STREQ(value, "-5");
  console->reqArgString(kFileNameId, value);
  EXPECT_STREQ(value, "one");
  EXPECT_EQ(console.err(), "");
}

TEST(ConsoleQuery, NumericValuesCutToTheirTarget) {
  for (const auto& row : tav::test::readDataTable("console/numeric_values.txt", 4)) {
    SCOPED_TRACE(row.where);
    CapturedConsole console("-n " + row.str(0) + " -file " + row.str(0));
    long asLong = 1;
    int asInt = 1;
    short asShort = 1;
    // An absent switch leaves the value alone.
    EXPECT_FALSE(console->hasArgNumval('m', asLong) || console->hasArgNumval("m", asInt) ||
                 console->hasArgNumval(kVerboseNameId, asShort));
    console->reqArgNumval('n', asLong);
    console->reqArgNumval("-n", asInt);
    console->reqArgNumval(kFileNameId, asShort);
    EXPECT_EQ(asLong, row.number(1));
    EXPECT_EQ(asInt, row.number(2));
    EXPECT_EQ(asShort, row.number(3));
  }
  // Beyond the range of long: its nearest limit.
  CapturedConsole console("-n 99999999999999999999999");
  long asLong = 0;
  EXPECT_TRUE(console->hasArgNumval('n', asLong));
  EXPECT_EQ(asLong, LONG_MAX);
}

TEST(ConsoleQuery, ProcessName) {
  auto rows = tav::test::readDataTable("console/process_names.txt", 2);
  // A name over 260 characters is cut.
  rows.push_back({"long name", {std::string(300, 'n'), std::string(260, 'n')}, {false, false}});
  for (const auto& row : rows) {
    SCOPED_TRACE(row.where);
    const char* const argv[] = {row.text(0), nullptr};
    EXPECT_EQ(TavClConsoleUI(1, argv).getProcessName(), row.str(1));
  }
  EXPECT_STREQ(TavClConsoleUI(0, nullptr).getProcessName(), "");
}

TEST(ConsoleQuery, UsageAndHelpAreCopiesReplacedOnEverySet) {
  CapturedConsole console("");
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
  console->handleUsageHelp("", nullptr);
  EXPECT_FALSE(console->getParams().hasUsage());
}

TEST(ConsoleQuery, AllocationFailuresLeaveNothingBehind) {
  const tav::test::TestArgv argv("-v");
  tav::test::forEachAllocationFailure([&] {
    TavClConsoleUI console(argv.argc(), argv.argv());
    console.handleUsageHelp("[-v] (-o <file>)", "some help");
  });
}

TEST(ConsoleValidation, AllowedArgumentsLetTheProgramGoOn) {
  for (const auto& row : tav::test::readDataTable("console/allowed_arguments.txt", 2)) {
    SCOPED_TRACE(row.where);
    CapturedConsole console(row.str(1));
    const std::string usage = tav::test::unescape(row.str(0));
    console->handleUsageHelp(row.isNull[0] ? nullptr : usage.c_str(), nullptr);
    EXPECT_EQ(console.out() + console.err(), "");
    // The free-argument cursor over the console's arguments and usage sees what validation saw.
    TavClArgvFreeCursor freeArgument(console.get());
    if (console->getParams().hasUsage() && freeArgument.setToFirst()) {
      EXPECT_TRUE(freeArgument.isLegal());
    }
  }
  // The check alone counts the faults and lets the program go on.
  CapturedConsole console("-x -v -y");
  console->displayUsageHelp("[-v]", nullptr, false);
  EXPECT_EQ(console->checkArguments(), 2u);
  EXPECT_EQ(console.err(),
            "    Unknown command line argument: -x\n    Unknown command line argument: -y\n");
}

}  // namespace
