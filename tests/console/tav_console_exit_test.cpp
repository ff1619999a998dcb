// The paths that end the process, each run in a child process (this test program run again):
// the exit code and the whole text on the error stream, from tests/data/console/exits.txt.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "tav_console_test_support.h"
#include "tav_test_data.h"

namespace {

using tav::test::TestArgv;

// The error stream as written: a Windows child writes its line feeds as "\r\n".
std::string withoutCarriageReturns(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
  return text;
}

// Runs the action of a table row on a console whose output goes to the error stream. Only the
// built-in action gives a title and copyright information; an action that returns ends the
// child with 7 in quiet mode and 8 otherwise.
void runAction(const std::string& action, const std::string& arguments) {
  const TestArgv argv(arguments);
  const bool builtIn = action == "validate-built-in";
  TavClConsoleUI console(argv.argc(), argv.argv(), builtIn ? 150ul : 4000000000ul, 0ul,
                         builtIn ? "c" : nullptr, builtIn ? "1" : nullptr);
  console.getParams().redirectStreams(stderr, stderr);
  if (action == "validate-disabled") console.disableTaggedLines();
  if (action.rfind("validate", 0) == 0 || action == "require-validated") {
    console.handleUsageHelp("[-v] (-o <file>) <input>\n![-debug]", "Help.");
  }
  const char* text = nullptr;
  int number = 0;
  if (action == "string") console.hasArgString('f', text);
  if (action == "number") console.hasArgNumval("f", number);
  if (action == "require" || action == "require-validated") console.reqArgString("-o", text);
  if (action == "require-id") console.reqArgNumval(156ul, number);
  std::exit(console.getParams().isQuietMode() ? 7 : 8);
}

TEST(ConsoleExit, EveryPathEndsWithItsCodeAndItsReport) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const auto& row : tav::test::readDataTable("console/exits.txt", 5)) {
    SCOPED_TRACE(row.where + " " + row.str(0));
    EXPECT_EXIT(
        runAction(row.str(1), row.str(2)), testing::ExitedWithCode(static_cast<int>(row.number(3))),
        testing::ResultOf(withoutCarriageReturns, testing::Eq(tav::test::unescape(row.str(4)))));
  }
}

}  // namespace
