// tav_ini_model_test.cpp - look-ups, changes and cursors of the configuration model, and the
// escape decoders.

#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "tav_ini.h"
#include "tav_ini_test_support.h"

namespace {

using tav::test::dumpModel;
using tav::test::MemoryModel;

TEST(IniEscapes, DecodersConsumeWhatTheyRead) {
  struct Case {
    const char* text;
    char result;
    size_t consumed;
  };
  const Case escapes[] = {
      {"n", '\n', 1},  {"t", '\t', 1},   {"x41z", 'A', 3},    {"x", '\0', 1},
      {"101", 'A', 3}, {"0778", '?', 3}, {"8", '\0', 0},      {"\"", '"', 1},
      {"\\", '\\', 1}, {"", '\0', 0},    {"x1ff", '\xff', 4}, {"xfffffffffffffffffff", '\xff', 20}};
  for (const Case& c : escapes) {
    SCOPED_TRACE(c.text);
    const char* p = c.text;
    EXPECT_EQ(tavIniFileGetEscCharacter(p), c.result);
    EXPECT_EQ(static_cast<size_t>(p - c.text), c.consumed);
  }
  const Case literals[] = {{"'x'", 'x', 3}, {"'\\t'", '\t', 4}, {"'\\x41'", 'A', 6}, {"'x", 'x', 2},
                           {"'", '\0', 1},  {"'\\", '\0', 2},   {"'ab", 'a', 3}};
  for (const Case& c : literals) {
    SCOPED_TRACE(c.text);
    const char* p = c.text;
    EXPECT_EQ(tavIniFileGetQuotedCharacter(p), c.result);
    EXPECT_EQ(static_cast<size_t>(p - c.text), c.consumed);
  }
}

TEST(IniLookUps, TypedValuesAndComments) {
  MemoryModel model;
  ASSERT_TRUE(model.load(
      "[Types]\nnum = -42 ; answer\nbig = 4000000000\nch = 'x'\ntab = '\\t'\nplain = xyz\n"
      "yes = Yes\nno = no\noff = OFF\nrue = RUE\nbar = |\nempty =\nKEY = first\nkey = second\n"));
  EXPECT_FALSE(model.file.getSection("missing"));
  ASSERT_TRUE(model.file.getSection("TYPES"));
  int i = 0;
  long l = 0;
  unsigned int u = 0;
  unsigned long ul = 0;
  char c = 0;
  const char* text = nullptr;
  const char* comment = nullptr;
  EXPECT_TRUE(model.file.getOption("num", i, comment));
  EXPECT_EQ(i, -42);
  EXPECT_STREQ(comment, "answer");
  EXPECT_TRUE(model.file.getOption("NUM", l));
  EXPECT_EQ(l, -42);
  EXPECT_TRUE(model.file.getOption("big", ul));
  EXPECT_EQ(ul, 4000000000ul);
  EXPECT_TRUE(model.file.getOption("big", u, comment));
  EXPECT_EQ(u, 4000000000u);
  EXPECT_STREQ(comment, "");
  EXPECT_TRUE(model.file.getOption("ch", c));
  EXPECT_EQ(c, 'x');
  EXPECT_TRUE(model.file.getOption("plain", c, comment));
  EXPECT_EQ(c, 'x');
  EXPECT_TRUE(model.file.getOption("key", text, comment));
  EXPECT_STREQ(text, "first");
  EXPECT_TRUE(model.file.getOption("num", l, comment));
  EXPECT_TRUE(model.file.getOption("num", text));
  EXPECT_STREQ(text, "-42");
  // Not found: the out arguments stay untouched.
  i = 7;
  comment = "kept";
  EXPECT_FALSE(model.file.getOption("none", i, comment));
  EXPECT_FALSE(model.file.getOption("none", text));
  EXPECT_FALSE(model.file.getOption("none", c, comment));
  EXPECT_FALSE(model.file.getOption("none", u));
  EXPECT_FALSE(model.file.getOption("none", ul, comment));
  EXPECT_FALSE(model.file.getOption("none", l));
  EXPECT_EQ(i, 7);
  EXPECT_STREQ(comment, "kept");

  struct Truth {
    const char* name;
    bool expected;
  };
  for (const Truth& t :
       {Truth{"yes", true}, Truth{"no", false}, Truth{"off", false}, Truth{"rue", true},
        Truth{"bar", true}, Truth{"empty", true}, Truth{"num", false}}) {
    SCOPED_TRACE(t.name);
    bool value = !t.expected;
    EXPECT_TRUE(model.file.getOptionBool(t.name, value, comment));
    EXPECT_EQ(value, t.expected);
  }
  bool flag = false;
  EXPECT_FALSE(model.file.getOptionBool("none", flag));
  EXPECT_FALSE(model.file.getOptionBool("none", flag, comment));
  EXPECT_TRUE(model.file.getOptionBool("yes", flag));
  EXPECT_TRUE(flag);
}

TEST(IniChanges, AddSetAndDelete) {
  MemoryModel model;
  ASSERT_TRUE(model.load("[S]\na = 1 ; a long comment\n"));
  EXPECT_TRUE(model.file.addOption("s", "b", "\"verbatim\" $(X)"));
  EXPECT_FALSE(model.file.addOption("S", "A", "dup"));
  EXPECT_FALSE(model.file.addOption("none", "x", "1"));
  EXPECT_TRUE(model.file.addSection("T"));
  EXPECT_TRUE(model.file.addSection("T"));
  EXPECT_EQ(dumpModel(model.file), "[S]a=1{a long comment}b=\"verbatim\" $(X)[T][T]");

  // A shorter value leaves the comment, a longer one runs into it.
  EXPECT_TRUE(model.file.setNewValue("S", "a", "2"));
  EXPECT_EQ(dumpModel(model.file).substr(0, 25), "[S]a=2{a long comment}b=\"");
  EXPECT_TRUE(model.file.setNewValue("S", "a", "1234567"));
  ASSERT_TRUE(model.file.getSection("S"));
  const char* comment = nullptr;
  const char* value = nullptr;
  EXPECT_TRUE(model.file.getOption("a", value, comment));
  EXPECT_STREQ(value, "1234567");
  EXPECT_STREQ(comment, "34567");
  EXPECT_FALSE(model.file.setNewValue("S", "none", "x"));
  EXPECT_FALSE(model.file.setNewValue("none", "a", "x"));

  EXPECT_TRUE(model.file.deleteOption("S", "a"));
  EXPECT_FALSE(model.file.deleteOption("S", "a"));
  EXPECT_FALSE(model.file.setNewValue("S", "a", "again"));
  EXPECT_TRUE(model.file.addOption("S", "a", "new"));
  EXPECT_TRUE(model.file.deleteSection("s"));
  EXPECT_FALSE(model.file.deleteSection("s"));
  EXPECT_FALSE(model.file.getSection("S"));
  EXPECT_FALSE(model.file.addOption("S", "c", "1"));
  TavClIniFileSectionCursor sections(model.file);
  EXPECT_STREQ(sections.getSection(), "");
  EXPECT_EQ(dumpModel(model.file), "[][T][T]");
}

// Texts longer than the store are cut where its limits say, never written past it.
TEST(IniChanges, LongTextsAreCutToTheStore) {
  MemoryModel model;
  EXPECT_TRUE(model.file.addSection(std::string(200, 'S').c_str()));
  const std::string section(80, 'S');
  const std::string longText(3000, 'v');
  struct Case {
    size_t nameLength;
    size_t valueLength;
  };
  for (const Case& c : {Case{10, 1024 - 11}, Case{1023, 0}, Case{1024, 0}, Case{2000, 0}}) {
    SCOPED_TRACE(c.nameLength);
    const std::string name(c.nameLength, static_cast<char>('a' + c.nameLength % 26));
    ASSERT_TRUE(model.file.addOption(section.c_str(), name.c_str(), longText.c_str()));
    TavClIniFileSectionCursor sections(model.file);
    TavClIniFileOptionCursor option(sections);
    ASSERT_TRUE(option.setTo(name.substr(0, 1024).c_str()));
    EXPECT_EQ(strlen(option.getOption()), c.nameLength < 1024 ? c.nameLength : 1024);
    EXPECT_EQ(strlen(option.getValue()), c.valueLength);
    EXPECT_TRUE(model.file.setNewValue(option, longText.c_str()));
    EXPECT_EQ(strlen(option.getValue()), c.valueLength);
    EXPECT_TRUE(model.file.deleteOption(option));
  }
}

TEST(IniCursors, WalkFindAndChange) {
  MemoryModel model;
  ASSERT_TRUE(model.load("[A]\nx = 1\ny = 'q' ; c\nflag = on\n[B]\n[C]\nz = 3\n"));
  TavClIniFileSectionCursor sections(model.file);
  EXPECT_TRUE(sections.isValid());
  EXPECT_TRUE(sections.setTo("c"));
  EXPECT_TRUE(sections.matches("C"));
  EXPECT_TRUE(sections.setTo("C"));  // already there: stays
  EXPECT_FALSE(sections.setToNext());
  EXPECT_FALSE(sections.setToNext());
  EXPECT_EQ(sections.getSection(), nullptr);
  EXPECT_FALSE(sections.setTo("none"));
  EXPECT_FALSE(sections.isValid());
  TavClIniFileOptionCursor none(sections);
  EXPECT_FALSE(none.setToFirst());
  EXPECT_EQ(none.getValue(), nullptr);
  EXPECT_EQ(none.getOption(), nullptr);
  EXPECT_EQ(none.getComment(), nullptr);
  EXPECT_FALSE(model.file.addOption(sections, "x", "1"));
  EXPECT_FALSE(model.file.deleteSection(sections));

  ASSERT_TRUE(sections.setToFirst());
  TavClIniFileOptionCursor options(sections);
  int i = 0;
  unsigned int u = 0;
  long l = 0;
  unsigned long ul = 0;
  char c = 0;
  bool flag = false;
  EXPECT_STREQ(options.getValue(i), "1");
  EXPECT_STREQ(options.getValue(u), "1");
  EXPECT_STREQ(options.getValue(l), "1");
  EXPECT_STREQ(options.getValue(ul), "1");
  EXPECT_EQ(i + u + l + ul, 4u);
  EXPECT_TRUE(options.setTo("Y"));
  EXPECT_STREQ(options.getValue(c), "q");
  EXPECT_EQ(c, 'q');
  EXPECT_STREQ(options.getComment(), "c");
  EXPECT_TRUE(options.setTo("flag"));
  EXPECT_STREQ(options.getValueBool(flag), "on");
  EXPECT_TRUE(flag);
  EXPECT_FALSE(options.setTo("z"));
  EXPECT_EQ(options.getValueBool(flag), nullptr);
  EXPECT_EQ(options.getValue(c), nullptr);
  EXPECT_EQ(options.getValue(i), nullptr);
  EXPECT_EQ(options.getValue(u), nullptr);
  EXPECT_EQ(options.getValue(l), nullptr);
  EXPECT_EQ(options.getValue(ul), nullptr);
  EXPECT_FALSE(model.file.setNewValue(options, "x"));
  EXPECT_FALSE(model.file.deleteOption(options));

  EXPECT_TRUE(model.file.addOption(sections, "w", "4"));
  EXPECT_TRUE(model.file.setNewValue(sections, "w", "5"));
  EXPECT_FALSE(model.file.setNewValue(sections, "none", "5"));
  EXPECT_TRUE(model.file.deleteOption(sections, "x"));
  EXPECT_FALSE(model.file.deleteOption(sections, "none"));
  EXPECT_TRUE(sections.setTo("B"));
  EXPECT_TRUE(model.file.deleteSection(sections));
  EXPECT_EQ(dumpModel(model.file), "[A]y=q{c}flag=onw=5[][C]z=3");

  // Over the current section of the file.
  ASSERT_TRUE(model.file.getSection("c"));
  TavClIniFileOptionCursor current(model.file);
  EXPECT_STREQ(current.getOption(), "z");
  EXPECT_TRUE(model.file.setNewValue(current, "6"));
  EXPECT_STREQ(current.getValue(), "6");
}

TEST(IniModel, TrueAndFalseWords) {
  MemoryModel model;
  EXPECT_STREQ(model.file.getStringAllTrueTokens(), "|ON|TRUE|YES|1|OK|");
  EXPECT_STREQ(model.file.getStringTrue(), "ON");
  EXPECT_STREQ(model.file.getStringFalse(), "OFF");
  EXPECT_STREQ(static_cast<const char*>(model.file), model.file.getName());
}

}  // namespace
