// tav_ini_model_test.cpp - look-ups, changes and cursors of the configuration model, and the
// escape decoders.

#include <gtest/gtest.h>

#include <string.h>

#include <string>

#include "tav_ini.h"
#include "tav_ini_test_support.h"
#include "tav_test_data.h"

namespace {

using tav::test::dumpModel;
using tav::test::MemoryModel;

TEST(IniEscapes, DecodersConsumeWhatTheyRead) {
  for (const auto& row : tav::test::readDataTable("ini/escapes.txt", 4)) {
    SCOPED_TRACE(row.where);
    const std::string text = tav::test::decodeEscapes(row.str(1));
    const char* p = text.c_str();
    const char result =
        row.str(0) == "escape" ? tavIniFileGetEscCharacter(p) : tavIniFileGetQuotedCharacter(p);
    EXPECT_EQ(std::string(1, result), tav::test::decodeEscapes(row.str(2)));
    EXPECT_EQ(p - text.c_str(), row.number(3));
  }
}

// One typed look-up through the model's two forms and through a cursor; the three must agree,
// and a look-up that finds nothing leaves its out arguments as they were.
template <typename T, typename ModelLookUp, typename CursorLookUp>
std::string lookUp(const TavClIniFile& file, const char* name, ModelLookUp model,
                   CursorLookUp cursor) {
  T value = T(7);
  const char* comment = "kept";
  if (!model(name, value, &comment)) {
    EXPECT_EQ(value, T(7));
    EXPECT_STREQ(comment, "kept");
    T plain = T(7);
    EXPECT_FALSE(model(name, plain, nullptr));
    return "-";
  }
  TavClIniFileOptionCursor option(file);
  T fromCursor = T(7);
  EXPECT_TRUE(option.setTo(name));
  EXPECT_NE(cursor(option, fromCursor), nullptr);
  EXPECT_EQ(fromCursor, value);
  return std::to_string(+value) + "{" + comment + "}";
}

#define TAV_LOOK_UP(T, GET, VALUE_OF)                                          \
  lookUp<T>(                                                                   \
      model.file, row.text(0),                                                 \
      [&](const char* n, T& v, const char** c) {                               \
        return c == nullptr ? model.file.GET(n, v) : model.file.GET(n, v, *c); \
      },                                                                       \
      [](const TavClIniFileOptionCursor& o, T& v) { return o.VALUE_OF(v); })

TEST(IniLookUps, TypedValuesAgreeInEveryForm) {
  MemoryModel model;
  ASSERT_TRUE(model.load(
      "[Types]\nnum = -42 ; answer\nbig = 4000000000\nch = 'x'\ntab = '\\t'\nplain = xyz\n"
      "yes = Yes\nno = no\noff = OFF\nrue = RUE\nbar = |\nempty =\nKEY = first\nkey = second\n"));
  EXPECT_FALSE(model.file.getSection("missing"));
  ASSERT_TRUE(model.file.getSection("TYPES"));
  for (const auto& row : tav::test::readDataTable("ini/look_ups.txt", 3)) {
    SCOPED_TRACE(row.where);
    const std::string& type = row.str(1);
    std::string result;
    if (type == "int") result = TAV_LOOK_UP(int, getOption, getValue);
    if (type == "long") result = TAV_LOOK_UP(long, getOption, getValue);
    if (type == "uint") result = TAV_LOOK_UP(unsigned int, getOption, getValue);
    if (type == "ulong") result = TAV_LOOK_UP(unsigned long, getOption, getValue);
    if (type == "char") result = TAV_LOOK_UP(char, getOption, getValue);
    if (type == "bool") result = TAV_LOOK_UP(bool, getOptionBool, getValueBool);
    if (type == "text") {
      const char* value = nullptr;
      const char* comment = nullptr;
      result = model.file.getOption(row.text(0), value, comment)
                   ? std::string(value) + "{" + comment + "}"
                   : "-";
      EXPECT_EQ(model.file.getOption(row.text(0), value), result != "-");
    }
    EXPECT_EQ(result, row.str(2));
  }
}

TEST(IniChanges, AddSetAndDelete) {
  MemoryModel model;
  ASSERT_TRUE(model.load("[S]\na = 1 ; a long comment\n"));
  EXPECT_TRUE(model.file.addOption("s", "b", "\"verbatim\" $(X)"));
  EXPECT_FALSE(model.file.addOption("S", "A", "dup"));
  EXPECT_EQ(dumpModel(model.file), "[S]a=1{a long comment}b=\"verbatim\" $(X)");

  // A shorter value leaves the comment, a longer one runs into it, and a shorter one again
  // shows what is left of the comment.
  const std::pair<const char*, const char*> changes[] = {
      {"2", "a=2{a long comment}"}, {"1234567", "a=1234567{34567}"}, {"x", "a=x{34567}"}};
  for (const auto& change : changes) {
    EXPECT_TRUE(model.file.setNewValue("S", "a", change.first));
    EXPECT_EQ(dumpModel(model.file).substr(3, strlen(change.second)), change.second);
  }
  EXPECT_FALSE(model.file.setNewValue("S", "none", "x"));

  EXPECT_TRUE(model.file.deleteOption("S", "a"));
  EXPECT_FALSE(model.file.deleteOption("S", "a"));
  EXPECT_TRUE(model.file.deleteSection("s"));
  EXPECT_FALSE(model.file.addOption("S", "c", "1"));
  EXPECT_EQ(dumpModel(model.file), "[]");
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
  for (const Case& c : {Case{10, 1024 - 11}, Case{1023, 0}, Case{2000, 0}}) {
    SCOPED_TRACE(c.nameLength);
    const std::string name(c.nameLength, static_cast<char>('a' + c.nameLength % 26));
    ASSERT_TRUE(model.file.addOption(section.c_str(), name.c_str(), longText.c_str()));
    TavClIniFileSectionCursor sections(model.file);
    TavClIniFileOptionCursor option(sections);
    ASSERT_TRUE(option.setTo(name.substr(0, 1024).c_str()));
    EXPECT_EQ(strlen(option.getOption()), c.nameLength < 1024 ? c.nameLength : 1024);
    EXPECT_EQ(strlen(option.getValue()), c.valueLength);
    EXPECT_TRUE(model.file.deleteOption(option));
  }
}

TEST(IniCursors, WalkFindAndChange) {
  MemoryModel model;
  ASSERT_TRUE(model.load("[A]\nx = 1\ny = 'q' ; c\n[B]\n[C]\nz = 3\n"));
  TavClIniFileSectionCursor sections(model.file);
  EXPECT_TRUE(sections.setTo("c"));
  EXPECT_FALSE(sections.setToNext());
  EXPECT_FALSE(sections.setTo("none"));
  TavClIniFileOptionCursor none(sections);
  EXPECT_FALSE(none.setToFirst());
  EXPECT_EQ(none.getValue(), nullptr);
  EXPECT_FALSE(model.file.addOption(sections, "x", "1"));
  EXPECT_FALSE(model.file.deleteSection(sections));

  ASSERT_TRUE(sections.setToFirst());
  TavClIniFileOptionCursor options(sections);
  EXPECT_TRUE(options.setTo("Y"));
  EXPECT_FALSE(options.setTo("z"));
  EXPECT_FALSE(model.file.setNewValue(options, "x"));
  EXPECT_FALSE(model.file.deleteOption(options));

  EXPECT_TRUE(model.file.addOption(sections, "w", "4"));
  EXPECT_TRUE(model.file.setNewValue(sections, "w", "5"));
  EXPECT_TRUE(model.file.deleteOption(sections, "x"));
  EXPECT_TRUE(sections.setTo("B"));
  EXPECT_TRUE(model.file.deleteSection(sections));
  EXPECT_EQ(dumpModel(model.file), "[A]y=q{c}w=5[][C]z=3");

  // Over the current section of the file.
  ASSERT_TRUE(model.file.getSection("c"));
  TavClIniFileOptionCursor current(model.file);
  EXPECT_TRUE(model.file.setNewValue(current, "6"));
  EXPECT_STREQ(current.getValue(), "6");
}

// The building blocks a derived model uses: a section takes over a whole list of options and
// appends behind its last one; an existing section is found by a name cut to the name length.
class IniModelParts : public TavClIniFile {
 public:
  IniModelParts() : TavClIniFile(TavClFilename("tav-ini-test-unused.ini")) {}
  using TavClIniFile::getExistingSection;
};

TEST(IniModel, SectionPartsAndWords) {
  IniModelParts model;
  const std::string longName = std::string(80, 'L') + "tail";
  EXPECT_TRUE(model.addSection(longName.c_str()));
  TavClIniFileSection* section =
      model.getExistingSection(longName.data(), longName.data() + longName.size());
  ASSERT_NE(section, nullptr);
  EXPECT_EQ(model.getExistingSection(longName.data(), longName.data() + 79), nullptr);
  TavClIniFileOption* first = new TavClIniFileOption("a = 1");
  first->appendOption(new TavClIniFileOption("b", "2"));
  section->setFirstOption(first);
  section->appendOption(new TavClIniFileOption("c = 3"));
  EXPECT_EQ(dumpModel(model), "[" + std::string(80, 'L') + "]a=1b=2c=3");

  EXPECT_STREQ(model.getStringAllTrueTokens(), "|ON|TRUE|YES|1|OK|");
}

}  // namespace
