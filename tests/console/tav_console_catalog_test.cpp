// The console's texts: the built-in table for the other tests of this program (their expected
// texts are English), and the library's catalog in a run with the user's language German.

#include <gtest/gtest.h>

#include <cstdlib>

#include "tav_console.h"
#include "tav_console_test_support.h"

namespace {

// Set by the German run of this program, which runs only the ConsoleCatalog tests.
const bool kGermanRun = std::getenv("TAV_TEST_CONSOLE_GERMAN") != nullptr;
const bool kTableChosen = (TavClConsoleUI::useBuiltInStringTable(!kGermanRun), true);

TEST(ConsoleCatalog, GermanUsageAndErrorLines) {
  ASSERT_TRUE(kTableChosen);
  if (!kGermanRun) GTEST_SKIP() << "run through ctest, which sets the language";
  tav::test::CapturedConsole console("-x");
  console->displayUsageHelp("[-v]", nullptr, false);
  EXPECT_EQ(console->checkArguments(), 1u);
  EXPECT_EQ(console.out(), "Aufruf: prog [-v]\n    Leider ist keine weitere Hilfe vorhanden\n");
  EXPECT_EQ(console.err(), "    Unbekanntes Argument in der Befehlszeile: -x\n");
}

}  // namespace
