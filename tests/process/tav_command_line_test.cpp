// The Windows command-line rules: quoting that the standard splitting undoes exactly, and the
// batch-file refusal. Pure rules, so they run on every platform.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../../src/process/tav_command_line.h"

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
  const std::vector<std::pair<std::string, std::string>> cases = {
      // As written when there is no blank, tab or quote: backslashes stay as they are.
      {"a", "a"},
      // Quoted; a final backslash doubled before the closing quote.
      {"b c", "\"b c\""},
      {"C:\\my dir\\", "\"C:\\my dir\\\\\""},
      // Quotes escaped, and the backslashes before them doubled.
      {"x\" \"--force", "\"x\\\" \\\"--force\""},
      {"a\\\"b", "\"a\\\\\\\"b\""},
      // Empty arguments, tabs and line breaks are quoted too.
      {"", "\"\""},
      {"tab\there", "\"tab\there\""}};
  std::string all;
  std::vector<std::string> arguments;
  for (const auto& [argument, written] : cases) {
    SCOPED_TRACE(argument);
    std::string line;
    tav::process::appendQuotedArgument(line, argument.c_str());
    EXPECT_EQ(line, written);
    tav::process::appendQuotedArgument(all, argument.c_str());
    arguments.push_back(argument);
  }
  EXPECT_EQ(split(all), arguments);
  // Every argument of up to three characters from the characters that matter.
  std::vector<std::string> combinations;
  all.clear();
  for (const char* first : {"", "a", " ", "\"", "\\", "\t"})
    for (const char* second : {"a", " ", "\"", "\\", "\t"})
      for (const char* third : {"", "a", " ", "\"", "\\"}) {
        combinations.push_back(std::string(first) + second + third);
        tav::process::appendQuotedArgument(all, combinations.back().c_str());
      }
  EXPECT_EQ(split(all), combinations);
}

TEST(BatchFileRule, RefusesWhatTheCommandInterpreterWouldReadAgain) {
  for (const char* name : {"run.bat", "C:\\tools\\RUN.CMD", "x.Bat"}) {
    EXPECT_TRUE(tav::process::isBatchFileName(name)) << name;
  }
  for (const char* name : {"dir.bat\\run.exe", "runbat", ""}) {
    EXPECT_FALSE(tav::process::isBatchFileName(name)) << name;
  }
  for (const char* unsafe :
       {"\"", "%PATH%", "!x!", "a^b", "a&calc", "a|b", "<in", ">out", "(x", "cr\r"}) {
    EXPECT_TRUE(tav::process::isUnsafeBatchArgument(unsafe)) << unsafe;
  }
  for (const char* safe : {"", "two words", "C:\\dir\\", "a=b,c;d"}) {
    EXPECT_FALSE(tav::process::isUnsafeBatchArgument(safe)) << safe;
  }
}

}  // namespace
