// The console's texts: the built-in table for the other tests of this program (their expected
// texts are English), and the catalog of the user's language in a run with LANG set to German.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "tav_console.h"
#include "tav_console_test_support.h"
#include "tav_message.h"

namespace {

// Set by the German run of this program, which then runs only the ConsoleCatalog tests.
const char* const kLanguage = std::getenv("TAV_TEST_CONSOLE_LANGUAGE");
const bool kTableChosen = (TavClConsoleUI::useBuiltInStringTable(kLanguage == nullptr), true);

TEST(ConsoleCatalog, UsageAndErrorLinesInTheUsersLanguage) {
  ASSERT_TRUE(kTableChosen);
  if (kLanguage == nullptr) GTEST_SKIP() << "run through ctest, which sets the language";
  const bool german = std::strcmp(kLanguage, "1031") == 0;
  tav::test::CapturedConsole console("-x");
  char text[TAV_MSG_MAX_LENGTH + 1];
  console->getText(TAV_CONSOLE_TEXT_HELP_LETTERS, text, sizeof text);
  EXPECT_STREQ(text, "hH?");
  console->displayUsageHelp("[-v]", nullptr, false);
  EXPECT_EQ(console.out(), german
                               ? "Aufruf: prog [-v]\n    Leider ist keine weitere Hilfe vorhanden\n"
                               : "Usage: prog [-v]\n    Sorry, no additional help available\n");
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        console->getParams().redirectStreams(stderr, stderr);
        console->handleUsageHelp("[-v]", nullptr);
      },
      testing::ExitedWithCode(201),
      testing::HasSubstr(german ? "Unbekanntes Argument in der Befehlszeile: -x\nAufruf: prog"
                                : "Unknown command line argument: -x\nUsage: prog"));
}

}  // namespace
