// tav_ini_model_test.cpp - look-ups, changes and cursors of the configuration model, and the
// escape decoders.

#include <gtest/gtest.h>

#include <string.h>

#include <string>
#include <type_traits>
#include <utility>

#include "tav_ini.h"
#include "tav_ini_test_support.h"
#include "tav_test_data.h"

namespace {

using tav::test::dumpModel;
using tav::test::MemoryModel;

TEST(IniEscapes, DecodersConsumeWhatTheyRead) {
  for (const auto& row : tav::test::readDataTable("ini/escapes.txt", 4)) {
    SCOPED_TRACE(row.where);
    const std::string text = tav::test::unescape(row.str(1));
    const char* p = text.c_str();
    const char result =
        row.str(0) == "escape" ? tavIniFileGetEscCharacter(p) : tavIniFileGetQuotedCharacter(p);
    EXPECT_EQ(std::string(1, result), tav::test::unescape(row.str(2)));
    EXPECT_EQ(p - text.c_str(), row.number(3));
  }
}

// One typed look-up through the model's two forms and through a cursor; the three must agree,
// and a look-up that finds nothing leaves its out arguments as they were.
template <typename T>
std::string lookUp(const TavClIniFile& file, const char* name) {
  T value = T(7), plain = T(7), fromCursor = T(7);
  const char* comment = "kept";
  TavClIniFileOptionCursor option(file);
  option.setTo(name);
  bool found = false;
  const char* cursorValue = nullptr;
  if constexpr (std::is_same_v<T, bool>) {
    found = file.getOptionBool(name, value, comment);
    EXPECT_EQ(file.getOptionBool(name, plain), found);
    cursorValue = option.getValueBool(fromCursor);
  } else {
    found = file.getOption(name, value, comment);
    EXPECT_EQ(file.getOption(name, plain), found);
    cursorValue = option.getValue(fromCursor);
  }
  EXPECT_EQ(cursorValue != nullptr, found);
  EXPECT_TRUE(plain == value && fromCursor == value && (found || value == T(7)));
  return found ? std::to_string(+value) + "{" + comment + "}" : "-" + std::string(comment);
}

TEST(IniLookUps, TypedValuesAgreeInEveryForm) {
  MemoryModel model;
  ASSERT_TRUE(model.load(
      "[Types]\nnum = -42 ; answer\nbig = 4000000000\nch = 'x'\ntab = '\\t'\nplain = xyz\n"
      "yes = Yes\nno = no\noff = OFF\nrue = RUE\nbar = |\nempty =\nKEY = first\nkey = second\n"));
  EXPECT_FALSE(model.file.getSection("missing"));
  ASSERT_TRUE(model.file.getSection("TYPES"));
  for (const auto& row : tav::test::readDataTable("ini/look_ups.txt", 3)) {
    SCOPED_TRACE(row.where);
    const TavClIniFile& file = model.file;
    const std::string& type = row.str(1);
    const char* name = row.text(0);
    std::string result;
    if (type == "int") result = lookUp<int>(file, name);
    if (type == "long") result = lookUp<long>(file, name);
    if (type == "uint") result = lookUp<unsigned int>(file, name);
    if (type == "ulong") result = lookUp<unsigned long>(file, name);
    if (type == "char") result = lookUp<char>(file, name);
    if (type == "bool") result = lookUp<bool>(file, name);
    if (type == "text") {
      const char* value = nullptr;
      const char* comment = "kept";
      const bool found = file.getOption(name, value, comment);
      result = found ? std::string(value) + "{" + comment + "}" : "-" + std::string(comment);
      EXPECT_EQ(file.getOption(name, value), found);
    }
    EXPECT_EQ(result, row.str(2));
  }
}

// Applies one change of changes.txt in the form its name says: by names, with "@" through a
// cursor on the named section, with "@@" through a cursor on the named option of the file's
// current section.
bool applyChange(TavClIniFile& file, const tav::test::DataRow& row) {
  const std::string& change = row.str(0);
  const char *section = row.text(1), *option = row.text(2), *value = row.text(3);
  TavClIniFileSectionCursor sections(file);
  sections.setTo(section);
  file.getSection(section);
  TavClIniFileOptionCursor options(file);
  options.setTo(option);
  if (change == "add") return file.addOption(section, option, value);
  if (change == "add@") return file.addOption(sections, option, value);
  if (change == "set") return file.setNewValue(section, option, value);
  if (change == "set@") return file.setNewValue(sections, option, value);
  if (change == "set@@") return file.setNewValue(options, value);
  if (change == "delete") return file.deleteOption(section, option);
  if (change == "delete@") return file.deleteOption(sections, option);
  if (change == "delete@@") return file.deleteOption(options);
  if (change == "drop") return file.deleteSection(section);
  if (change == "drop@") return file.deleteSection(sections);
  return file.addSection(section);
}

TEST(IniChanges, EachChangeInEachForm) {
  MemoryModel model;
  ASSERT_TRUE(model.load("[S]\na = 1 ; a long comment\n[B]\n[C]\nz = 3\n"));
  for (const auto& row : tav::test::readDataTable("ini/changes.txt", 6)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(applyChange(model.file, row), row.flag(4));
    EXPECT_EQ(dumpModel(model.file), row.str(5));
  }
}

// Texts longer than the store are cut where its limits say, never written past it.
TEST(IniChanges, LongTextsAreCutToTheStore) {
  MemoryModel model;
  EXPECT_TRUE(model.file.addSection(std::string(200, 'S').c_str()));
  const std::string section(80, 'S');
  const std::string longText(3000, 'v');
  // The length of a name and the length of the value that is left beside it.
  for (const auto& [nameLength, valueLength] :
       {std::pair<size_t, size_t>{10, 1024 - 11}, {1023, 0}, {2000, 0}}) {
    SCOPED_TRACE(nameLength);
    const std::string name(nameLength, static_cast<char>('a' + nameLength % 26));
    ASSERT_TRUE(model.file.addOption(section.c_str(), name.c_str(), longText.c_str()));
    TavClIniFileSectionCursor sections(model.file);
    TavClIniFileOptionCursor option(sections);
    ASSERT_TRUE(option.setTo(name.substr(0, 1024).c_str()));
    EXPECT_EQ(strlen(option.getOption()), nameLength < 1024 ? nameLength : 1024);
    EXPECT_EQ(strlen(option.getValue()), valueLength);
    EXPECT_TRUE(model.file.deleteOption(option));
  }
}

// The building blocks a derived model uses: a section takes over a whole list of options and
// appends behind its last one; an existing section is found by a name cut to the name length.
struct IniModelParts : TavClIniFile {
  IniModelParts() : TavClIniFile(TavClFilename("tav-ini-test-unused.ini")) {}
  using TavClIniFile::getExistingSection;
};

TEST(IniModel, SectionParts) {
  IniModelParts model;
  const std::string name = std::string(80, 'L') + "tail";
  EXPECT_TRUE(model.addSection(name.c_str()));
  EXPECT_EQ(model.getExistingSection(name.data(), name.data() + 79), nullptr);
  TavClIniFileSection* section = model.getExistingSection(name.data(), name.data() + name.size());
  ASSERT_NE(section, nullptr);
  auto* first = new TavClIniFileOption("a = 1");
  first->appendOption(new TavClIniFileOption("b", "2"));
  section->setFirstOption(first);
  section->appendOption(new TavClIniFileOption("c = 3"));
  EXPECT_EQ(dumpModel(model), "[" + name.substr(0, 80) + "]a=1b=2c=3");
}

}  // namespace
