// The paths that end the process, each run in a child process (this test program run again):
// the exit code and the text on the standard error stream. Validation faults are grouped by
// fault; every fault is reported before the one usage display.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tav_console.h"
#include "tav_console_test_support.h"

namespace {

using tav::test::ArgumentList;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

size_t occurrences(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

// The error text holds part exactly count times.
testing::Matcher<const std::string&> holdsTimes(const std::string& part, size_t count) {
  return testing::ResultOf([part](const std::string& text) { return occurrences(text, part); },
                           count);
}

class ConsoleExit : public testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

// In the child the standard output goes to the error stream too, so that the usage display can
// be checked along with the error lines.
void toErrorStream(TavClConsoleUI& console) { console.getParams().redirectStreams(stderr, stderr); }

const char kUsageOnError[] = "Usage: tool [-v] -o <file> <input>";

TEST_F(ConsoleExit, ValidationFaults) {
  const struct {
    const char* fault;
    std::vector<std::string> arguments;
    bool disableTagged;
    std::vector<std::pair<std::string, size_t>> lines;
  } cases[] = {
      {"unknown switch", {"-x"}, false, {{"Unknown command line argument: -x\n", 1}}},
      {"switch named like a placeholder",
       {"-file"},
       false,
       {{"Unknown command line argument: -file\n", 1}}},
      {"switch glued to its value",
       {"-ofile"},
       false,
       {{"Unknown command line argument: -ofile\n", 1}}},
      {"two unknown switches",
       {"-x", "a", "-y"},
       false,
       {{"Unknown command line argument: -x\n", 1}, {"Unknown command line argument: -y\n", 1}}},
      {"repeated switch",
       {"-v", "-v", "-v"},
       false,
       {{"Illegal repetition of command line argument: -v\n", 3}}},
      {"repeated switch with value",
       {"-o", "a", "-o", "b"},
       false,
       {{"Illegal repetition of command line argument: -o\n", 1}}},
      {"tagged switch disabled",
       {"-debug"},
       true,
       {{"Command line argument not allowed: -debug\n", 1}}},
      {"tagged switch disabled and repeated",
       {"-debug", "-debug"},
       true,
       {{"Command line argument not allowed: -debug\n", 2},
        {"Illegal repetition of command line argument: -debug\n", 1}}},
  };
  const char* usage = "[-v] (-o <file>) <input>\n![-debug]";
  for (const auto& row : cases) {
    SCOPED_TRACE(row.fault);
    // A disabled tagged line is hidden from the usage display as well.
    std::vector<testing::Matcher<const std::string&>> expected{
        holdsTimes(kUsageOnError, 1), holdsTimes("[-debug]", row.disableTagged ? 0 : 1)};
    for (const auto& line : row.lines) expected.push_back(holdsTimes(line.first, line.second));
    EXPECT_EXIT(
        {
          const ArgumentList arguments(row.arguments);
          TavClConsoleUI console(arguments.count(), arguments.vector());
          toErrorStream(console);
          if (row.disableTagged) console.disableTaggedLines();
          console.handleUsageHelp(usage, "help");
        },
        testing::ExitedWithCode(201), testing::AllOfArray(expected));
  }
}

TEST_F(ConsoleExit, FreeArgumentsNeedAPositionalTokenInTheUsage) {
  EXPECT_EXIT(
      {
        const ArgumentList arguments({"in", "-5"});
        TavClConsoleUI console(arguments.count(), arguments.vector());
        toErrorStream(console);
        console.handleUsageHelp("[-v] (-n <num>)", nullptr);
      },
      testing::ExitedWithCode(201),
      AllOf(holdsTimes("Unknown command line argument: in\n", 1),
            holdsTimes("Unknown command line argument: -5\n", 1)));
}

TEST_F(ConsoleExit, HelpSwitchesShowUsageAndHelpEvenWhenTheUsageOmitsThem) {
  for (const char* help : {"-h", "-H", "-?"}) {
    SCOPED_TRACE(help);
    EXPECT_EXIT(
        {
          const ArgumentList arguments({"-unknown", help});
          TavClConsoleUI console(arguments.count(), arguments.vector());
          toErrorStream(console);
          console.handleUsageHelp("[-v]", "Shows things.");
        },
        testing::ExitedWithCode(201),
        AllOf(HasSubstr("Usage: tool [-v]\nHelp: Shows things.\n"), Not(HasSubstr("Unknown"))));
  }
}

TEST_F(ConsoleExit, MissingRequiredSwitch) {
  // Without a usage string: 202, and no usage display.
  EXPECT_EXIT(
      {
        const ArgumentList arguments({"-v"});
        TavClConsoleUI console(arguments.count(), arguments.vector());
        toErrorStream(console);
        console.reqArgSwitch('o');
      },
      testing::ExitedWithCode(202),
      AllOf(HasSubstr("*** A fatal error occurred ***\n    Missing command line switch: -o\n"),
            Not(HasSubstr("Usage"))));
  // With one: the hint and the usage, and 201.
  EXPECT_EXIT(
      {
        const ArgumentList arguments({"-v"});
        TavClConsoleUI console(arguments.count(), arguments.vector());
        toErrorStream(console);
        console.handleUsageHelp("[-v] [(-o <file>)]", nullptr);
        const char* file = nullptr;
        console.reqArgString("o", file);
      },
      testing::ExitedWithCode(201),
      HasSubstr("*** A fatal error occurred ***\n    Missing command line switch: -o\n"
                "    (Specify '-h' for help)\nUsage: tool [-v] [-o <file>]\n"));
  EXPECT_EXIT(
      {
        const ArgumentList arguments({});
        TavClConsoleUI console(arguments.count(), arguments.vector());
        short number = 0;
        console.reqArgNumval(156ul, number);
      },
      testing::ExitedWithCode(202), HasSubstr("Missing command line switch: -verbose\n"));
}

TEST_F(ConsoleExit, ValueFaults) {
  const struct {
    const char* fault;
    std::vector<std::string> arguments;
    bool numeric;
    int code;
    const char* line;
  } cases[] = {
      {"string at the end", {"-f"}, false, 203, "No value specified for command line switch: -f"},
      {"string before a switch",
       {"-f", "-g"},
       false,
       203,
       "No value specified for command line switch: -f"},
      {"number at the end",
       {"-f"},
       true,
       203,
       "No numeric value specified for command line switch: -f"},
      {"number not a number",
       {"-f", "x12"},
       true,
       204,
       "Non-numeric value specified for numeric command line switch: -f"},
      {"quote before a letter",
       {"-f", "'x"},
       true,
       204,
       "Non-numeric value specified for numeric command line switch: -f"},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.fault);
    EXPECT_EXIT(
        {
          const ArgumentList arguments(row.arguments);
          TavClConsoleUI console(arguments.count(), arguments.vector());
          const char* text = nullptr;
          int number = 0;
          if (row.numeric) console.hasArgNumval('f', number);
          if (!row.numeric) console.hasArgString('f', text);
        },
        testing::ExitedWithCode(row.code),
        HasSubstr(std::string("*** A fatal error occurred ***\n    ") + row.line + "\n"));
  }
}

TEST_F(ConsoleExit, CopyrightSwitchEndsConstructionAndQuietIsAlwaysAllowed) {
  EXPECT_EXIT(
      {
        const ArgumentList arguments({"-copyright"});
        TavClConsoleUI console(arguments.count(), arguments.vector(), "Title", nullptr,
                               "2026 The Makers", "1.2");
        std::exit(99);
      },
      testing::ExitedWithCode(0), "");
  // Quiet mode is set during construction; the usage need not list "-quiet".
  EXPECT_EXIT(
      {
        const ArgumentList arguments({"-quiet", "-v"});
        TavClConsoleUI console(arguments.count(), arguments.vector(), 150ul, 4000000000ul, "c");
        console.handleUsageHelp("[-v]", nullptr);
        std::exit(console.getParams().isQuietMode() ? 7 : 8);
      },
      testing::ExitedWithCode(7), "");
}

TEST_F(ConsoleExit, ProcessExitEndsWithTheCodeGiven) {
  for (int code : {0, 1, 201, 255}) {
    SCOPED_TRACE(code);
    EXPECT_EXIT(
        {
          const ArgumentList arguments({});
          TavClConsoleUI console(arguments.count(), arguments.vector());
          console.processExit(static_cast<unsigned long>(code));
        },
        testing::ExitedWithCode(code), "");
  }
}

}  // namespace
