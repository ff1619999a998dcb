// The argument queries in their three key forms (letter, name, message id), the numeric
// conversion, the process name, the usage copies, and validations that let the program go on.

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "tav_console.h"
#include "tav_console_test_support.h"
#include "tav_test_allocator.h"

namespace {

using tav::test::ArgumentList;
using tav::test::CapturedConsole;

// Message ids of the library catalog whose texts serve as switch names here.
constexpr unsigned long kFileNameId = 155;     // "file"
constexpr unsigned long kVerboseNameId = 156;  // "verbose"

TEST(ConsoleQuery, SwitchesInEveryKeyForm) {
  CapturedConsole console({"-v", "-verbose", "x", "-5", "-"});
  EXPECT_TRUE(console->hasArgSwitch('v'));
  EXPECT_TRUE(console->hasArgSwitch("v"));
  EXPECT_TRUE(console->hasArgSwitch("-verbose"));
  EXPECT_TRUE(console->hasArgSwitch(kVerboseNameId));
  EXPECT_TRUE(console->hasArgSwitch(""));  // the lone "-"
  EXPECT_FALSE(console->hasArgSwitch('x'));
  EXPECT_FALSE(console->hasArgSwitch("verb"));
  EXPECT_FALSE(console->hasArgSwitch("5"));  // "-5" is a number
  EXPECT_FALSE(console->hasArgSwitch(kFileNameId));
  console->reqArgSwitch('v');
  console->reqArgSwitch("verbose");
  console->reqArgSwitch(kVerboseNameId);
}

TEST(ConsoleQuery, StringValuesAreTheNextArgumentUnchanged) {
  CapturedConsole console({"-f", "'a b", "-g", "-5", "-file", "first", "-file", "second"});
  const char* value = "untouched";
  EXPECT_FALSE(console->hasArgString('x', value));
  EXPECT_STREQ(value, "untouched");
  EXPECT_TRUE(console->hasArgString('f', value));
  EXPECT_STREQ(value, "'a b");
  EXPECT_TRUE(console->hasArgString("-g", value));
  EXPECT_STREQ(value, "-5");
  EXPECT_TRUE(console->hasArgString(kFileNameId, value));
  EXPECT_STREQ(value, "first");
  console->reqArgString('g', value);
  EXPECT_STREQ(value, "-5");
  console->reqArgString("f", value);
  console->reqArgString(kFileNameId, value);
  EXPECT_STREQ(value, "first");
}

TEST(ConsoleQuery, NumericValues) {
  const struct {
    const char* text;
    long asLong;
    int asInt;
    short asShort;
  } cases[] = {
      {"12", 12, 12, 12},
      {"'-12", -12, -12, -12},
      {"12abc", 12, 12, 12},
      {"0x10", 0, 0, 0},
      {"'-", 0, 0, 0},
      {"70000", 70000, 70000, 4464},
      {"'007", 7, 7, 7},
      {"-32769", -32769, -32769, 32767},
      {"99999999999999999999999", LONG_MAX, static_cast<int>(LONG_MAX), -1},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.text);
    CapturedConsole console({"-n", row.text, "-file", row.text});
    long asLong = 1;
    int asInt = 1;
    short asShort = 1;
    EXPECT_TRUE(console->hasArgNumval('n', asLong));
    EXPECT_TRUE(console->hasArgNumval("n", asInt));
    EXPECT_TRUE(console->hasArgNumval(kFileNameId, asShort));
    EXPECT_EQ(asLong, row.asLong);
    EXPECT_EQ(asInt, row.asInt);
    EXPECT_EQ(asShort, row.asShort);
    asLong = asInt = asShort = 1;
    console->reqArgNumval(kFileNameId, asLong);
    console->reqArgNumval('n', asInt);
    console->reqArgNumval("-file", asShort);
    EXPECT_EQ(asLong, row.asLong);
    EXPECT_EQ(asInt, row.asInt);
    EXPECT_EQ(asShort, row.asShort);
  }
  CapturedConsole console({"-n", "1"});
  long asLong = 5;
  int asInt = 5;
  short asShort = 5;
  EXPECT_FALSE(console->hasArgNumval('m', asLong));
  EXPECT_FALSE(console->hasArgNumval("m", asInt));
  EXPECT_FALSE(console->hasArgNumval(kFileNameId, asShort));
  EXPECT_FALSE(console->hasArgNumval(kFileNameId, asLong));
  EXPECT_FALSE(console->hasArgNumval('m', asShort));
  EXPECT_FALSE(console->hasArgNumval(kFileNameId, asInt));
  EXPECT_EQ(asLong + asInt + asShort, 15);
  EXPECT_EQ(console.err(), "");
}

TEST(ConsoleQuery, ProcessNameIsArgumentZeroWithoutDirectoryAndExeExtension) {
  const std::string longName(300, 'n');
  const struct {
    const char* argv0;
    std::string expected;
  } cases[] = {
      {"tool", "tool"},
      {"/usr/local/bin/tool", "tool"},
      {"C:\\Program Files\\tool.EXE", "tool"},
      {"c:tool.exe", "tool"},
      {"dir/tool.exe.sh", "tool.exe.sh"},
      {"dir\\tool.", "tool."},
      {".exe", ""},
      {"", ""},
      {longName.c_str(), longName.substr(0, 260)},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.argv0);
    const char* const argv[] = {row.argv0, nullptr};
    TavClConsoleUI console(1, argv);
    EXPECT_EQ(console.getProcessName(), row.expected);
    EXPECT_EQ(console.getParams().getProcessNameLength(), row.expected.size());
  }
  TavClConsoleUI noArguments(0, nullptr);
  EXPECT_STREQ(noArguments.getProcessName(), "");
}

TEST(ConsoleQuery, UsageAndHelpAreCopiesReplacedOnEverySet) {
  CapturedConsole console({});
  EXPECT_STREQ(console->getUsage(), "");
  EXPECT_FALSE(console->getParams().hasUsage());
  std::string usage = "[-v]";
  std::string help = "help text";
  console->displayUsageHelp(usage.c_str(), help.c_str(), false);
  usage = "xxxx";
  help = "changed";
  EXPECT_STREQ(console->getUsage(), "[-v]");
  EXPECT_STREQ(console->getParams().getHelp(), "help text");
  // The current copies may be set again.
  console->displayUsageHelp(console->getUsage(), console->getParams().getHelp(), false);
  EXPECT_STREQ(console->getUsage(), "[-v]");
  console->handleUsageHelp("", nullptr);
  EXPECT_FALSE(console->getParams().hasUsage());
  EXPECT_EQ(console->getParams().getHelp(), nullptr);
}

TEST(ConsoleQuery, AllocationFailuresLeaveNothingBehind) {
  const ArgumentList arguments(std::vector<std::string>{"-v"});
  tav::test::forEachAllocationFailure([&] {
    TavClConsoleUI console(arguments.count(), arguments.vector());
    console.getParams().redirectStreams(nullptr, nullptr);
    console.handleUsageHelp("[-v] (-o <file>)", "some help");
  });
}

// Argument lists that the usage allows: handleUsageHelp returns and writes nothing.
TEST(ConsoleValidation, AllowedArgumentsLetTheProgramGoOn) {
  const struct {
    const char* usage;
    std::vector<std::string> arguments;
  } cases[] = {
      {"[-v] (-o <file>) <input>", {"-v", "-o", "a", "b"}},
      {"[-v] (-o <file>) <input>", {"-o", "-5", "-5"}},
      {"[(-n <num>)]", {"-n", "-5"}},
      {"[-v]", {"-quiet"}},
      {"[-v]", {}},
      {"", {"-anything", "goes"}},
      {"[-v] files ...", {"-v", "a", "b", "c"}},
      {"\"-x\" [-v] <in>", {"x"}},
      {"[-v]\n![-debug]", {"-debug"}},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.usage);
    CapturedConsole console(row.arguments);
    console->handleUsageHelp(row.usage, nullptr);
    EXPECT_EQ(console.out(), "");
    EXPECT_EQ(console.err(), "");
  }
}

TEST(ConsoleValidation, UsageAndHelpFromMessageIds) {
  CapturedConsole console({"-key", "k", "-verbose"});
  constexpr unsigned long kUsageId = 151, kHelpId = 152, kMissingId = 4000000000ul;
  console->handleUsageHelp(kUsageId, kMissingId);
  EXPECT_EQ(std::string(console->getUsage()).substr(0, 11), "(-key <key>");
  EXPECT_EQ(console->getParams().getHelp(), nullptr);
  console->handleUsageHelp(kUsageId, kHelpId);
  EXPECT_EQ(std::string(console->getParams().getHelp()).substr(0, 4), "-key");
  EXPECT_EQ(console.err(), "");
}

TEST(ConsoleCursors, CursorsOverTheConsolesArguments) {
  CapturedConsole console({"-o", "a", "b"});
  console->handleUsageHelp("(-o <file>) <input>", nullptr);
  TavClArgvCursor argument(console.get());
  EXPECT_STREQ(argument.getAsCString(), "-o");
  TavClArgvCheckCursor check(console.get());
  EXPECT_TRUE(check.setToNext());
  EXPECT_TRUE(check.isBound());
  TavClArgvFreeCursor freeArgument(console.get());
  ASSERT_TRUE(freeArgument.setToFirst());
  EXPECT_STREQ(freeArgument.getAsCString(), "b");
  EXPECT_FALSE(freeArgument.setToNext());
}

}  // namespace
