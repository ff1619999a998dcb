// tav_ini_writer_test.cpp - the two line formats of a written configuration file.

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "../../src/ini/tav_ini_writer.h"
#include "tav_ini_test_support.h"
#include "tav_test_data.h"

namespace {

using tav::test::unescape;

TEST(IniWriterRules, EscapesEachControlCharacterAndBackslash) {
  for (const auto& row : tav::test::readDataTable("ini/escaped_chars.txt", 2)) {
    SCOPED_TRACE(row.where);
    std::ostringstream out;
    tav::ini::writeEscapedChar(out, unescape(row.str(0)).at(0));
    EXPECT_EQ(out.str(), unescape(row.str(1)));
  }
}

TEST(IniWriterRules, ExactFormatQuotesWhatTheParserWouldChangeAndRefusesTheRest) {
  for (const auto& row : tav::test::readDataTable("ini/exact_values.txt", 4)) {
    SCOPED_TRACE(row.where);
    std::ostringstream out;
    EXPECT_EQ(tav::ini::writeExactOption(out, row.text(0), unescape(row.str(1)).c_str(),
                                         unescape(row.str(2)).c_str()),
              !row.isNull[3]);
    EXPECT_EQ(out.str(), row.isNull[3] ? "" : unescape(row.str(3)));
  }
  std::ostringstream out;
  EXPECT_FALSE(tav::ini::writeExactOption(out, std::string(1023, 'n').c_str(), "v", ""));
  EXPECT_FALSE(tav::ini::writeExactSection(out, "a]b"));
  EXPECT_TRUE(tav::ini::writeExactSection(out, " S "));
  EXPECT_EQ(out.str(), "\n[ S ]\n");
}

// Every written line fits the parser's line length, however long name, value and comment are;
// continuation lines start with a tab.
TEST(IniWriterRules, ExactFormatKeepsEveryLineWithinTheLineLength) {
  const struct {
    std::string name, value, comment;
    size_t lines;
  } rows[] = {
      {"a", std::string(1024, '\x02'), "", 5},  // 4096 escaped characters on five lines
      {"a", std::string(1024, 'v'), "", 2},
      {std::string(1021, 'n'), "v", "", 2},   // the value moves to a continuation line
      {"a", "v", std::string(1019, 'c'), 2},  // the comment moves to its own line
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name.size() * 10000 + row.value.size());
    std::ostringstream out;
    ASSERT_TRUE(
        tav::ini::writeExactOption(out, row.name.c_str(), row.value.c_str(), row.comment.c_str()));
    std::istringstream in(out.str());
    size_t count = 0;
    for (std::string line; std::getline(in, line); ++count) {
      EXPECT_LE(line.size(), tav::ini::kMaxWrittenLineLength);
      EXPECT_TRUE(count == 0 || line[0] == '\t');
    }
    EXPECT_EQ(count, row.lines);
  }
}

}  // namespace
