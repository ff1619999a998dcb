// The Windows command-line rules: quoting that the standard splitting undoes exactly, and the
// batch-file refusal. Pure rules, so they run on every platform.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../../src/process/tav_command_line.h"
#include "../ini/tav_test_escapes.h"
#include "tav_test_data.h"

namespace {

// The standard splitting of a Windows command line: blanks and tabs separate outside double
// quotes; 2n backslashes before a double quote give n and the quote toggles quoting, 2n+1 give
// n and a literal quote; other backslashes are ordinary.
std::vector<std::string> split(const std::string& line) {
  std::vector<std::string> arguments;
  for (size_t i = 0;;) {
    while (i < line.size() && (line[i] == ' ' || line[i] == '\t')) ++i;
    if (i == line.size()) return arguments;
    std::string argument;
    for (bool quoted = false; i < line.size() && (quoted || (line[i] != ' ' && line[i] != '\t'));) {
      size_t backslashes = 0;
      while (i < line.size() && line[i] == '\\') ++backslashes, ++i;
      const bool quote = i < line.size() && line[i] == '"';
      argument.append(quote ? backslashes / 2 : backslashes, '\\');
      if (quote && backslashes % 2 == 0)
        quoted = !quoted, ++i;
      else if (i < line.size() && (quote || quoted || (line[i] != ' ' && line[i] != '\t')))
        argument += line[i++];
    }
    arguments.push_back(argument);
  }
}

TEST(CommandLineQuoting, WritesEachArgumentSoThatTheStandardSplittingGivesItBack) {
  std::string all;
  std::vector<std::string> arguments;
  for (const auto& row : tav::test::readDataTable("process/quoting.txt", 2)) {
    SCOPED_TRACE(row.where);
    std::string line;
    arguments.push_back(tav::test::unescape(row.str(0)));
    tav::process::appendQuotedArgument(line, arguments.back().c_str());
    EXPECT_EQ(line, tav::test::unescape(row.str(1)));
    tav::process::appendQuotedArgument(all, arguments.back().c_str());
  }
  EXPECT_EQ(split(all), arguments);
  // Every argument of up to three characters from the characters that matter.
  arguments.clear();
  all.clear();
  for (const char* first : {"", "a", " ", "\"", "\\", "\t"})
    for (const char* second : {"a", " ", "\"", "\\", "\t"})
      for (const char* third : {"", "a", " ", "\"", "\\"}) {
        arguments.push_back(std::string(first) + second + third);
        tav::process::appendQuotedArgument(all, arguments.back().c_str());
      }
  EXPECT_EQ(split(all), arguments);
}

// Batch files are refused when an argument would mean something else to the command
// interpreter.
TEST(BatchFileRule, RefusesWhatTheCommandInterpreterWouldReadAgain) {
  for (const auto& row : tav::test::readDataTable("process/batch_rules.txt", 3)) {
    SCOPED_TRACE(row.where);
    const std::string text = tav::test::unescape(row.str(1));
    EXPECT_EQ(row.str(0) == "batch" ? tav::process::isBatchFileName(text.c_str())
                                    : tav::process::isUnsafeBatchArgument(text.c_str()),
              row.flag(2));
  }
}

}  // namespace
