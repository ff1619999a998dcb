// tav_ini_parser_test.cpp - reading configuration text: line kinds, value rules, limits, errors.

#include <gtest/gtest.h>

#include <stdio.h>
#include <string.h>

#include <string>

#include "tav_environment.h"
#include "tav_ini.h"
#include "tav_ini_test_support.h"
#include "tav_test_data.h"

namespace {

using tav::test::dumpModel;
using tav::test::MemoryModel;
using tav::test::unescape;

TEST(IniValueRules, OneOptionLine) {
  TavClEnvironmentVariable variable("TAV_INI_TEST_VAR", "hello");
  for (const auto& row : tav::test::readDataTable("ini/value_rules.txt", 4)) {
    SCOPED_TRACE(row.where);
    MemoryModel model;
    ASSERT_TRUE(model.load("[S]\n" + row.str(0)));
    EXPECT_EQ(model.errors, "");
    ASSERT_TRUE(model.file.getSection("s"));
    TavClIniFileOptionCursor option(model.file);
    EXPECT_STREQ(option.getOption(), row.text(1));
    EXPECT_EQ(std::string(option.getValue()), unescape(row.str(2)));
    EXPECT_EQ(std::string(option.getComment()), unescape(row.str(3)));
  }
}

TEST(IniLineKinds, WholeInputs) {
  for (const auto& row : tav::test::readDataTable("ini/line_kinds.txt", 4)) {
    SCOPED_TRACE(row.where);
    MemoryModel model;
    const std::string& mode = row.str(1);
    EXPECT_TRUE(model.load(unescape(row.str(0)), mode != "merge", mode != "nocont",
                           mode == "nul" ? '\0' : '\n'));
    EXPECT_EQ(model.errors, row.str(2));
    EXPECT_EQ(dumpModel(model.file), row.str(3));
  }
}

// A second load goes on from the first: its line numbers count on and merging finds the
// sections loaded before.
TEST(IniLoads, ErrorsStopTheLoadAndTheNextLoadGoesOn) {
  MemoryModel model;
  model.goOn = false;
  EXPECT_FALSE(model.load("[S]\na=1\nbad\nb=2"));
  EXPECT_EQ(model.errors, "1000002@3");
  model.goOn = true;
  EXPECT_TRUE(model.load("[T\n[s]\nc=3\n[new]\n", false));
  EXPECT_EQ(model.errors, "1000002@3,1000001@4");
  EXPECT_EQ(dumpModel(model.file), "[S]a=1c=3[new]");
  // Without a handler, errors are ignored.
  model.file.setErrorHandler(nullptr, nullptr);
  EXPECT_TRUE(model.load("[U\nno\n  x\n[V]\na=1"));
  EXPECT_EQ(dumpModel(model.file), "[S]a=1c=3[new][V]a=1");
}

// A line of more than kMaxLineLength characters is reported and skipped, or stops the load.
TEST(IniLongLines, ReportedSkippedAndTheRestFound) {
  for (const size_t length : {TavClIniFile::kMaxLineLength, TavClIniFile::kMaxLineLength + 1}) {
    SCOPED_TRACE(length);
    MemoryModel model;
    const std::string line = "a=" + std::string(length - 2, 'v');
    EXPECT_TRUE(model.load("[S]\n" + line + "\nb=2"));
    const bool fits = length <= TavClIniFile::kMaxLineLength;
    EXPECT_EQ(model.errors, fits ? "" : std::to_string(INIFILE_LINE_TOO_LONG) + "@2");
    EXPECT_EQ(dumpModel(model.file), "[S]" + (fits ? line : "") + "b=2");
  }
  MemoryModel stopped;
  stopped.goOn = false;
  EXPECT_FALSE(stopped.load("[S]\n" + std::string(5000, 'x') + "\na=1"));
  EXPECT_EQ(dumpModel(stopped.file), "[S]");
}

// Values grow by expansion and continuation up to the store's limits, and no further.
TEST(IniLimits, ValuesAndCommentsStayInsideTheStore) {
  TavClEnvironmentVariable variable("TAV_INI_LONG_VAR", std::string(900, 'e').c_str());
  const std::string name(600, 'n');
  MemoryModel model;
  std::string text = "[" + std::string(100, 's') + "]\n";
  text += name + " = $(TAV_INI_LONG_VAR)$(TAV_INI_LONG_VAR) ; " + std::string(300, 'c') + "\n";
  for (int i = 0; i < 5; ++i) text += " $(TAV_INI_LONG_VAR) ; " + std::string(900, 'k') + "\n";
  text += "b = \"" + std::string(990, 'q') + "\" ; " + std::string(20, 'z') + "\n";
  EXPECT_TRUE(model.load(text));
  TavClIniFileSectionCursor section(model.file);
  EXPECT_EQ(strlen(section.getSection()), size_t{TavClIniFileSection::kMaxNameLength});
  TavClIniFileOptionCursor option(section);
  const size_t valueLength = strlen(option.getValue());
  EXPECT_EQ(valueLength, TavClIniFileOption::kTextSize - 2 - (name.size() + 1));
  EXPECT_EQ(std::string(option.getValue()), std::string(valueLength, 'e'));
  ASSERT_TRUE(option.setToNext());
  EXPECT_EQ(std::string(option.getValue()), std::string(990, 'q'));
}

// 100,000 sections merged into 100,000 others and 100,000 options in one section: a quadratic
// walk would take minutes here.
TEST(IniDuplicateSections, LargeInputsLoad) {
  std::string text;
  for (int i = 0; i < 200000; ++i) text += "[s" + std::to_string(i % 100000) + "]\nk=v\n";
  text += "[big]\n";
  for (int i = 0; i < 100000; ++i) text += "o" + std::to_string(i) + "=" + std::to_string(i) + "\n";
  MemoryModel model;
  EXPECT_TRUE(model.load(text, false));
  const char* value = nullptr;
  EXPECT_TRUE(model.file.getSection("big") && model.file.getOption("o99999", value));
}

// A file reads the same on every platform: CR LF ends a line like LF, a lone CR and a Ctrl-Z
// are data. Loading twice appends; a missing file fails.
TEST(IniFileLoad, LineEndsLoadingTwiceAndMissingFiles) {
  const std::string path = testing::TempDir() + "tav_ini_load_test.ini";
  FILE* out = fopen(path.c_str(), "wb");
  ASSERT_NE(out, nullptr);
  fputs("; settings\r\n[S]\r\na = 1 ; one\r\nb = \"x\r\" ; \x1a two\rthree\r\n", out);
  fclose(out);
  TavClIniFile file{TavClFilename(path.c_str())};
  EXPECT_TRUE(file.load(false));
  EXPECT_TRUE(file.load(false));
  const std::string once = "[S]a=1{one}b=x\r{\x1a two\rthree}";
  EXPECT_EQ(dumpModel(file), once + once);
  remove(path.c_str());
  EXPECT_FALSE(TavClIniFile(TavClFilename(path.c_str())).load(true));  // the file is gone
}

}  // namespace
