// The argument queries in their three key forms (letter, name, message id), the process name,
// the usage copies, and argument lists that validation allows.

#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "tav_console_test_support.h"
#include "tav_test_allocator.h"
#include "tav_test_data.h"

namespace {

using tav::test::CapturedConsole;

// The queries of one key, a letter, a name or a message id, against a row of queries.txt.
template <typename Key>
void expectQueries(CapturedConsole& console, Key key, const tav::test::DataRow& row) {
  const bool present = row.flag(2), string = present && !row.isNull[3];
  const bool number = string && !row.isNull[4];
  const char* value = "untouched";
  long asLong = 1;
  int asInt = 1;
  short asShort = 1;
  EXPECT_EQ(console->hasArgSwitch(key), present);
  if (!present || string) {
    EXPECT_EQ(console->hasArgString(key, value), string);
  }
  if (!present || number) {
    EXPECT_EQ(console->hasArgNumval(key, asLong) + console->hasArgNumval(key, asInt) +
                  console->hasArgNumval(key, asShort),
              number ? 3 : 0);
  }
  // The required forms end the process when the key is missing; here they find it.
  if (present) console->reqArgSwitch(key);
  if (string) console->reqArgString(key, value);
  if (number) {
    console->reqArgNumval(key, asLong);
    console->reqArgNumval(key, asInt);
    console->reqArgNumval(key, asShort);
  }
  EXPECT_STREQ(value, string ? row.text(3) : "untouched");
  EXPECT_EQ(std::to_string(asLong) + " " + std::to_string(asInt) + " " + std::to_string(asShort),
            number ? row.str(4) + " " + row.str(5) + " " + row.str(6) : "1 1 1");
}

TEST(ConsoleQuery, EveryQueryInEveryKeyForm) {
  for (const auto& row : tav::test::readDataTable("console/queries.txt", 7)) {
    SCOPED_TRACE(row.where);
    CapturedConsole console(row.str(0));
    const std::string& key = row.str(1);
    if (key.size() == 1) {
      expectQueries(console, key[0], row);
    } else if (key[0] == '#') {
      expectQueries(console, std::stoul(key.substr(1)), row);
    } else {
      expectQueries(console, key.c_str(), row);
    }
    EXPECT_EQ(console.err(), "");
  }
  // Beyond the range of long: its nearest limit.
  CapturedConsole console("-n 99999999999999999999999");
  long asLong = 0;
  EXPECT_TRUE(console->hasArgNumval('n', asLong) && asLong == LONG_MAX);
}

TEST(ConsoleQuery, ProcessName) {
  for (const auto& row : tav::test::readDataTable("console/process_names.txt", 2)) {
    SCOPED_TRACE(row.where);
    const char* const argv[] = {row.text(0), nullptr};
    EXPECT_EQ(TavClConsoleUI(1, argv).getProcessName(), row.str(1));
  }
  EXPECT_STREQ(TavClConsoleUI(0, nullptr).getProcessName(), "");
}

TEST(ConsoleQuery, UsageAndHelpAreCopiesReplacedOnEverySet) {
  CapturedConsole console("");
  std::string usage = "[-v]", help = "help text";
  console->displayUsageHelp(usage.c_str(), help.c_str(), false);
  usage = help = "changed";
  // The current copies may be set again.
  console->displayUsageHelp(console->getUsage(), console->getParams().getHelp(), false);
  EXPECT_STREQ(console->getUsage(), "[-v]");
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
}

}  // namespace
