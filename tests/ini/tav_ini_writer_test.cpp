// tav_ini_writer_test.cpp - the two line formats of a written configuration file.

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "../../src/ini/tav_ini_writer.h"

namespace {

struct EscapeRow {
  char character;
  const char* written;
};

TEST(IniWriterRules, EscapesEachControlCharacterAndBackslash) {
  const EscapeRow rows[] = {{'\a', "\\a"},     {'\b', "\\b"},     {'\f', "\\f"},     {'\n', "\\n"},
                            {'\r', "\\r"},     {'\t', "\\t"},     {'\v', "\\v"},     {'\\', "\\\\"},
                            {'\x01', "\\x01"}, {'\x1f', "\\x1f"}, {'\x7f', "\\x7f"}, {'"', "\""},
                            {'a', "a"},        {'\xe4', "\xe4"}};
  for (const EscapeRow& row : rows) {
    SCOPED_TRACE(static_cast<int>(static_cast<unsigned char>(row.character)));
    std::ostringstream out;
    tav::ini::writeEscapedChar(out, row.character);
    EXPECT_EQ(out.str(), row.written);
  }
}

struct PlainRow {
  const char* value;
  const char* comment;
  const char* written;
};

TEST(IniWriterRules, ExactFormatQuotesWhatTheParserWouldChange) {
  const PlainRow rows[] = {
      {"plain", "", "a= plain\n"},
      {"", "", "a=\n"},
      {"", "note", "a=\t; note\n"},
      {" lead", "", "a= \" lead\"\n"},
      {"trail ", "", "a= \"trail \"\n"},
      {"say \"hi\"", "", "a= \"say \\\"hi\\\"\"\n"},
      {"it's", "", "a= \"it's\"\n"},
      {"$(HOME)", "", "a= \"$(HOME)\"\n"},
      {"cost $5", "", "a= cost $5\n"},
      {"x;y", "c", "a= \"x;y\"\t; c\n"},
      {"back\\slash", "", "a= back\\slash\n"},
      {"\0017", "", "a= \"\\x01\"\"7\"\n"},  // the digit must not extend the escape
      {"\x01g", "", "a= \"\\x01g\"\n"},
      {"\t1", "", "a= \"\\t1\"\n"},
  };
  for (const PlainRow& row : rows) {
    SCOPED_TRACE(row.value);
    std::ostringstream out;
    ASSERT_TRUE(tav::ini::writeExactOption(out, "a", row.value, row.comment));
    EXPECT_EQ(out.str(), row.written);
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
  EXPECT_FALSE(tav::ini::writeExactOption(out, "a", "v", "two\nlines"));
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
      {"a", "", std::string(1020, 'c'), 1},
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
