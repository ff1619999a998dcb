// The usage, help and title displays, the lines of the console output facility, the paths that
// end the process, and the console's texts: the built-in table for the tests of this program
// (their expected texts are English), and the library's catalog in a run with the user's
// language German.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "tav_console_test_support.h"
#include "tav_test_data.h"

namespace {

using tav::test::CapturedConsole;
using tav::test::unescape;

// Set by the German run of this program, which runs only the ConsoleCatalog tests.
const bool kGermanRun = std::getenv("TAV_TEST_CONSOLE_GERMAN") != nullptr;
const bool kTableChosen = (TavClConsoleUI::useBuiltInStringTable(!kGermanRun), true);

TEST(ConsoleCatalog, UsageAndErrorLinesInTheUsersLanguage) {
  ASSERT_TRUE(kTableChosen);
  for (const auto& row : tav::test::readDataTable("console/catalog_lines.txt", 3)) {
    if (row.str(0) != (kGermanRun ? "de" : "en")) continue;
    SCOPED_TRACE(row.where);
    CapturedConsole console("-x -v -y");
    console->displayUsageHelp("[-v]", nullptr, false);
    EXPECT_EQ(console->checkArguments(), 2u);
    EXPECT_EQ(console.out(), unescape(row.str(1)));
    EXPECT_EQ(console.err(), unescape(row.str(2)));
  }
}

TEST(ConsoleDisplay, UsageAndHelp) {
  for (const auto& row : tav::test::readDataTable("console/usage_displays.txt", 5)) {
    SCOPED_TRACE(row.where);
    CapturedConsole console("", row.flag(3) ? "2026 The Makers" : nullptr);
    if (row.str(2) == "hidden") console->hideTaggedLines();
    if (row.str(2) == "disabled") console->disableTaggedLines();
    const std::string usage = unescape(row.str(0)), help = unescape(row.str(1));
    console->displayUsageHelp(row.isNull[0] ? nullptr : usage.c_str(),
                              row.isNull[1] ? nullptr : help.c_str(), false);
    EXPECT_EQ(console.out(), unescape(row.str(4)));
  }
}

// The title and the beep go to the console's output stream, which quiet mode silences; null
// streams drop the displays.
TEST(ConsoleDisplay, TitleAndOutputFacility) {
  CapturedConsole console("");
  FILE* out = console->getParams().getStandardOutput();
  console->displayTitle(nullptr, "no title, no subtitle");
  console->displayTitle("Title", "Subtitle");
  console->writeHeaderLine(out, TAV_CONSOLE_TEXT_FATAL_HEADER);
  console->writeMessageLine(out, "Text", nullptr);
  console->writeIndentation(out);
  console->beep();
  const std::string expected =
      "\nprog - Title - Subtitle\n\n*** A fatal error occurred ***\n    Text\n    \a";
  EXPECT_EQ(console.out(), expected);
  console->getParams().setQuietMode(true);
  console->displayTitle("Title", "Subtitle");
  console->beep();
  console->writeMessageLine(console->getParams().getConsoleOutput(), "Text", "argument");
  console->getParams().redirectStreams(nullptr, nullptr);
  console->displayUsageHelp("[-v]", "help", false);
  console->writeHeaderLine(nullptr, TAV_CONSOLE_TEXT_FATAL_HEADER);
  EXPECT_EQ(console.out() + console.err(), expected);
}

// Runs the action of a row of exits.txt on a console whose output goes to the error stream.
// Only the built-in action gives a title and copyright information; an action that returns
// ends the child with 7 in quiet mode and 8 otherwise.
void runAction(const std::string& action, const std::string& arguments) {
  const tav::test::TestArgv argv(arguments);
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

// The error stream as written: a Windows child writes its line feeds as "\r\n".
std::string withoutCarriageReturns(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
  return text;
}

// Each path that ends the process runs in a child process (this test program run again).
TEST(ConsoleExit, EveryPathEndsWithItsCodeAndItsReport) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const auto& row : tav::test::readDataTable("console/exits.txt", 5)) {
    SCOPED_TRACE(row.where + " " + row.str(0));
    EXPECT_EXIT(runAction(row.str(1), row.str(2)),
                testing::ExitedWithCode(static_cast<int>(row.number(3))),
                testing::ResultOf(withoutCarriageReturns, testing::Eq(unescape(row.str(4)))));
  }
}

}  // namespace
