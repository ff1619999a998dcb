// The usage, help and title displays: tagged lines, line breaks and their indentation, the
// characters the usage display leaves out, the built-in switches.

#include <gtest/gtest.h>

#include <string>

#include "tav_console.h"
#include "tav_console_test_support.h"

namespace {

using tav::test::CapturedConsole;

enum class Tagged { shown, hidden, disabled };

// "Usage: tool " is 12 characters wide: continuation lines start under the usage text.
const std::string kIndent(12, ' ');

TEST(ConsoleDisplay, UsageLines) {
  const struct {
    const char* usage;
    Tagged tagged;
    std::string expected;
  } cases[] = {
      {"[-v] <file> ...", Tagged::shown, "[-v] <file> ..."},
      {"(-o <file>) \"any text\"", Tagged::shown, "-o <file> any text"},
      {"[-a]\n[-b]\n", Tagged::shown, "[-a]\n" + kIndent + "[-b]\n" + kIndent},
      {"[-a] !tagged\n[-b]", Tagged::shown, "[-a] tagged\n" + kIndent + "[-b]"},
      {"[-a] !tagged\n[-b]", Tagged::hidden, "[-a] [-b]"},
      {"[-a]\n![-debug]\n[-b]", Tagged::disabled, "[-a]\n" + kIndent + "[-b]"},
      {"[-a] !tagged to the end", Tagged::hidden, "[-a] "},
      {"@[-a] x@y", Tagged::shown, "\n" + kIndent + "[-a] x@y"},
      {"[-a]\n@[-b]", Tagged::shown, "[-a]\n" + kIndent + "\n" + kIndent + "[-b]"},
      {"", Tagged::shown, ""},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.usage);
    CapturedConsole console({});
    if (row.tagged == Tagged::hidden) console->hideTaggedLines();
    if (row.tagged == Tagged::disabled) console->disableTaggedLines();
    console->displayUsageHelp(row.usage, nullptr, false);
    EXPECT_EQ(console.out(),
              "Usage: tool " + row.expected + "\n    Sorry, no additional help available\n");
    EXPECT_EQ(console.err(), "");
  }
}

TEST(ConsoleDisplay, HelpKeepsQuotesAndParenthesesAndIndentsUnderItsLabel) {
  CapturedConsole console({});
  console->displayUsageHelp("(-o <file>)", "(one) \"two\"\nthree !four\n!five\nsix", false);
  EXPECT_EQ(console.out(),
            "Usage: tool -o <file>\nHelp: (one) \"two\"\n      three four\n"
            "      five\n      six\n");
  console->hideTaggedLines();
  console->displayHelp(false);
  EXPECT_EQ(console.out().substr(console.out().rfind("Help:")),
            "Help: (one) \"two\"\n      three six\n");
}

TEST(ConsoleDisplay, BuiltInSwitchesAreShownWhenCopyrightInformationIsGiven) {
  CapturedConsole console({}, "2026 The Makers");
  console->displayUsageHelp("[-v]\n[-w]", "", false);
  EXPECT_EQ(console.out(), "Usage: tool [-v]\n" + kIndent + "[-w]\n" + kIndent +
                               "[-h | -H | -?] [-copyright] [-quiet]\nHelp: \n");
}

TEST(ConsoleDisplay, TitleGoesToTheConsoleOutputWhichQuietModeSilences) {
  CapturedConsole console({});
  console->displayTitle(nullptr, "ignored without a title");
  console->displayTitle("Title", nullptr);
  console->displayTitle("Title", "Subtitle");
  EXPECT_EQ(console.out(), "\ntool - Title\n\ntool - Title - Subtitle\n");
  console->getParams().setQuietMode(true);
  console->displayTitle("Title", "Subtitle");
  console->beep();
  console->writeMessageLine(console->getParams().getConsoleOutput(), "Text", "argument");
  EXPECT_EQ(console.out(), "\ntool - Title\n\ntool - Title - Subtitle\n");
}

TEST(ConsoleDisplay, OutputFacilityLines) {
  CapturedConsole console({});
  FILE* out = console->getParams().getStandardOutput();
  console->writeHeaderLine(out, TAV_CONSOLE_TEXT_FATAL_HEADER);
  console->writeMessageLine(out, "Text", "argument");
  console->writeMessageLine(out, "Text", nullptr);
  console->writeIndentation(out);
  console->beep();
  EXPECT_EQ(console.out(),
            "\n*** A fatal error occurred ***\n    Text: argument\n    Text: \n    \a");
}

}  // namespace
