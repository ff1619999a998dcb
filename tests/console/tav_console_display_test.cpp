// The usage, help and title displays, and the lines of the console output facility.

#include <gtest/gtest.h>

#include <string>

#include "tav_console.h"
#include "tav_console_test_support.h"
#include "tav_test_data.h"

namespace {

using tav::test::CapturedConsole;

TEST(ConsoleDisplay, UsageAndHelp) {
  for (const auto& row : tav::test::readDataTable("console/usage_displays.txt", 5)) {
    SCOPED_TRACE(row.where);
    CapturedConsole console("", row.flag(3) ? "2026 The Makers" : nullptr);
    if (row.str(2) == "hidden") console->hideTaggedLines();
    if (row.str(2) == "disabled") console->disableTaggedLines();
    const std::string usage = tav::test::unescape(row.str(0));
    const std::string help = tav::test::unescape(row.str(1));
    console->displayUsageHelp(row.isNull[0] ? nullptr : usage.c_str(),
                              row.isNull[1] ? nullptr : help.c_str(), false);
    EXPECT_EQ(console.out(), tav::test::unescape(row.str(4)));
    EXPECT_EQ(console.err(), "");
  }
}

// The title and the beep go to the console's output stream, which quiet mode silences.
TEST(ConsoleDisplay, TitleAndOutputFacility) {
  CapturedConsole console("");
  FILE* out = console->getParams().getStandardOutput();
  console->displayTitle(nullptr, "no title, no subtitle");
  console->displayTitle("Title", nullptr);
  console->displayTitle("Title", "Subtitle");
  console->writeHeaderLine(out, TAV_CONSOLE_TEXT_FATAL_HEADER);
  console->writeMessageLine(out, "Text", nullptr);
  console->writeIndentation(out);
  console->beep();
  const std::string expected =
      "\nprog - Title\n\nprog - Title - Subtitle\n\n*** A fatal error occurred ***\n    Text\n"
      "    \a";
  EXPECT_EQ(console.out(), expected);
  console->getParams().setQuietMode(true);
  console->displayTitle("Title", "Subtitle");
  console->beep();
  console->writeMessageLine(console->getParams().getConsoleOutput(), "Text", "argument");
  EXPECT_EQ(console.out(), expected);
  // Null streams drop the displays.
  console->getParams().redirectStreams(nullptr, nullptr);
  console->displayUsageHelp("[-v]", "help", false);
  console->writeHeaderLine(nullptr, TAV_CONSOLE_TEXT_FATAL_HEADER);
  EXPECT_EQ(console.out() + console.err(), expected);
}

}  // namespace
