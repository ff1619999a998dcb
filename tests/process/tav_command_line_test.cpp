// The Windows command-line rules: quoting that the standard splitting undoes exactly, and the
// batch-file refusal. Pure rules, so they run on every platform.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "../../src/process/tav_command_line.h"

namespace {

// The standard splitting of a command line into arguments, as a Windows program's C runtime
// does it (the program name aside): blanks and tabs separate outside double quotes; 2n
// backslashes before a double quote give n backslashes and the quote switches quoting, 2n+1
// give n backslashes and a literal quote; other backslashes are ordinary.
std::vector<std::string> splitCommandLine(const std::string& line) {
  std::vector<std::string> arguments;
  size_t i = 0;
  for (;;) {
    while (i < line.size() && (line[i] == ' ' || line[i] == '\t')) ++i;
    if (i == line.size()) return arguments;
    std::string argument;
    bool quoted = false;
    while (i < line.size() && (quoted || (line[i] != ' ' && line[i] != '\t'))) {
      size_t backslashes = 0;
      while (i < line.size() && line[i] == '\\') ++backslashes, ++i;
      if (i < line.size() && line[i] == '"') {
        argument.append(backslashes / 2, '\\');
        if (backslashes % 2 == 1) {
          argument += '"';
        } else {
          quoted = !quoted;
        }
        ++i;
      } else {
        argument.append(backslashes, '\\');
        if (i < line.size() && (quoted || (line[i] != ' ' && line[i] != '\t')))
          argument += line[i++];
      }
    }
    arguments.push_back(argument);
  }
}

std::string quoteAll(const std::vector<std::string>& arguments) {
  std::string line;
  for (const std::string& argument : arguments) {
    tav::process::appendQuotedArgument(line, argument.c_str());
  }
  return line;
}

TEST(CommandLineQuoting, WritesEachArgumentAsTheStandardSplittingReadsIt) {
  struct Case {
    const char* argument;
    const char* written;
  };
  const Case cases[] = {
      // Arguments without blanks, tabs and quotes stay as they are, backslashes and all.
      {"a", "a"},
      {"C:\\dir\\", "C:\\dir\\"},
      {"\\\\server\\share", "\\\\server\\share"},
      {"caf\xC3\xA9", "caf\xC3\xA9"},
      // A blank quotes the argument; a final backslash is doubled before the closing quote.
      {"b c", "\"b c\""},
      {"C:\\my dir\\", "\"C:\\my dir\\\\\""},
      {"a b\\\\", "\"a b\\\\\\\\\""},
      // A double quote is escaped, and backslashes before it doubled: it cannot end quoting.
      {"x\" \"--force", "\"x\\\" \\\"--force\""},
      {"say\"hi\"", "\"say\\\"hi\\\"\""},
      {"a\\\"b", "\"a\\\\\\\"b\""},
      // An empty argument and one with a tab or a line break are quoted too.
      {"", "\"\""},
      {"tab\there", "\"tab\there\""},
      {"line\nbreak", "\"line\nbreak\""},
      // Backslashes that precede no quote are ordinary inside quotes as well.
      {"a\\b c", "\"a\\b c\""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.argument);
    std::string line;
    tav::process::appendQuotedArgument(line, c.argument);
    EXPECT_EQ(line, c.written);
    EXPECT_EQ(splitCommandLine(line), std::vector<std::string>{c.argument});
  }
}

TEST(CommandLineQuoting, SeparatesArgumentsByOneBlankAndSurvivesTheRoundTrip) {
  const std::vector<std::string> written = {"prog", "a", "b c", "C:\\dir\\", "C:\\my dir\\"};
  EXPECT_EQ(quoteAll(written), "prog a \"b c\" C:\\dir\\ \"C:\\my dir\\\\\"");

  const std::vector<std::string> hostile = {"C:\\Program Files\\tool.exe",
                                            "",
                                            "\"",
                                            "\\",
                                            "\\\"",
                                            "\"\"",
                                            " ",
                                            "\t",
                                            "x\" \"--force",
                                            "trailing\\\\",
                                            "\\\\\\\"",
                                            "a\"b c\"d",
                                            "end\\"};
  EXPECT_EQ(splitCommandLine(quoteAll(hostile)), hostile);
  // Every argument of one to three characters from the alphabet that matters.
  const char alphabet[] = {'a', ' ', '"', '\\', '\t'};
  std::vector<std::string> all;
  for (char first : alphabet) {
    all.push_back(std::string(1, first));
    for (char second : alphabet) {
      all.push_back(std::string{first, second});
      for (char third : alphabet) all.push_back(std::string{first, second, third});
    }
  }
  EXPECT_EQ(splitCommandLine(quoteAll(all)), all);
}

TEST(BatchFileRule, RecognisesBatchFilesByTheirExtension) {
  struct Case {
    const char* name;
    bool batch;
  };
  const Case cases[] = {
      {"run.bat", true},
      {"C:\\tools\\RUN.CMD", true},
      {"x.Bat", true},
      {"dir.bat\\run.exe", false},
      {"run.bat.exe", false},
      {"runbat", false},
      {"bat", false},
      {".ba", false},
      {"", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(tav::process::isBatchFileName(c.name), c.batch);
  }
}

TEST(BatchFileRule, RefusesEveryCharacterTheInterpreterReadsAgain) {
  for (const char* unsafe : {"\"", "%PATH%", "!x!", "a^b", "a&calc", "a|b", "<in", ">out", "(x",
                             "x)", "line\nbreak", "cr\r"}) {
    SCOPED_TRACE(unsafe);
    EXPECT_TRUE(tav::process::isUnsafeBatchArgument(unsafe));
  }
  for (const char* safe : {"", "plain", "two words", "C:\\dir\\", "tab\there", "a=b,c;d", "-x"}) {
    SCOPED_TRACE(safe);
    EXPECT_FALSE(tav::process::isUnsafeBatchArgument(safe));
  }
}

}  // namespace
