// tav_ini_writer_test.cpp - the two line formats of a written configuration file.

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "../../src/ini/tav_ini_writer.h"
#include "tav_ini_test_support.h"
#include "tav_test_data.h"

namespace {

using tav::test::decodeEscapes;

TEST(IniWriterRules, EscapesEachControlCharacterAndBackslash) {
  for (const auto& row : tav::test::readDataTable("ini/escaped_chars.txt", 2)) {
    SCOPED_TRACE(row.where);
    std::ostringstream out;
    tav::ini::writeEscapedChar(out, decodeEscapes(row.str(0)).at(0));
    EXPECT_EQ(out.str(), decodeEscapes(row.str(1)));
  }
}

TEST(IniWriterRules, ExactFormatQuotesWhatTheParserWouldChange) {
  for (const auto& row : tav::test::readDataTable("ini/exact_values.txt", 3)) {
    SCOPED_TRACE(row.where);
    std::ostringstream out;
    ASSERT_TRUE(tav::ini::writeExactOption(out, "a", decodeEscapes(row.str(0)).c_str(),
                                           decodeEscapes(row.str(1)).c_str()));
    EXPECT_EQ(out.str(), decodeEscapes(row.str(2)));
  }
}

TEST(IniWriterRules, ExactFormatRefusesWhatCannotBeReadBack) {
  const char* const names[] = {"", "two words", "a=b", "[x", ";x"};
  for (const char* name : names) {
    SCOPED_TRACE(name);
    std::ostringstream out;
    EXPECT_FALSE(tav::ini::writeExactOption(out, name, "v", ""));
    EXPECT_EQ(out.str(), "");
  }
  std::ostringstream out;
  EXPECT_FALSE(tav::ini::writeExactOption(out, "a", "v", " leading blank"));
  EXPECT_FALSE(tav::ini::writeExactOption(out, "a", "v", "ends in CR\r"));
  EXPECT_FALSE(tav::ini::writeExactSection(out, "a]b"));
  EXPECT_FALSE(tav::ini::writeExactOption(out, std::string(1023, 'n').c_str(), "v", ""));
  EXPECT_EQ(out.str(), "");
  EXPECT_TRUE(tav::ini::writeExactSection(out, " S "));
  EXPECT_EQ(out.str(), "\n[ S ]\n");
}

// Every written line fits the parser's line length, however long name, value and comment are.
TEST(IniWriterRules, ExactFormatKeepsEveryLineWithinTheLineLength) {
  const std::string longName(1021, 'n');
  const std::string controls(1024, '\x02');
  const std::string longComment(1019, 'c');
  const struct {
    std::string name, value, comment;
    size_t lines;
  } rows[] = {
      {"a", controls, "", 5},  // 4096 escaped characters on five lines
      {"a", std::string(1024, 'v'), "", 2},
      {longName, "v", "", 2},      // the value moves to a continuation line
      {"a", "v", longComment, 2},  // the comment moves to its own continuation line
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name.size() * 10000 + row.value.size());
    std::ostringstream out;
    ASSERT_TRUE(
        tav::ini::writeExactOption(out, row.name.c_str(), row.value.c_str(), row.comment.c_str()));
    std::istringstream in(out.str());
    std::string line;
    size_t count = 0;
    while (std::getline(in, line)) {
      ++count;
      EXPECT_LE(line.size(), tav::ini::kMaxWrittenLineLength);
      if (count > 1) {
        EXPECT_EQ(line[0], '\t');
      }
    }
    EXPECT_EQ(count, row.lines);
  }
}

}  // namespace
