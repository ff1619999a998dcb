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

using tav::test::decodeEscapes;
using tav::test::dumpModel;
using tav::test::MemoryModel;

TEST(IniValueRules, OneOptionLine) {
  TavClEnvironmentVariable variable("TAV_INI_TEST_VAR", "hello");
  for (const auto& row : tav::test::readDataTable("ini/value_rules.txt", 4)) {
    SCOPED_TRACE(row.where);
    MemoryModel model;
    ASSERT_TRUE(model.load("[S]\n" + row.str(0)));
    EXPECT_EQ(model.log.text, "");
    ASSERT_TRUE(model.file.getSection("s"));
    TavClIniFileOptionCursor option(model.file);
    EXPECT_STREQ(option.getOption(), row.text(1));
    EXPECT_EQ(std::string(option.getValue()), decodeEscapes(row.str(2)));
    EXPECT_EQ(std::string(option.getComment()), decodeEscapes(row.str(3)));
  }
}

TEST(IniLineKinds, WholeInputs) {
  for (const auto& row : tav::test::readDataTable("ini/line_kinds.txt", 4)) {
    SCOPED_TRACE(row.where);
    MemoryModel model;
    EXPECT_TRUE(
        model.load(decodeEscapes(row.str(0)), row.str(1) != "merge", row.str(1) != "nocont"));
    EXPECT_EQ(model.log.text, row.str(2));
    EXPECT_EQ(dumpModel(model.file), row.str(3));
  }
}

TEST(IniLineKinds, OtherDelimiters) {
  MemoryModel nul;
  const char text[] = "[S]\0a=1\0b=2";
  EXPECT_TRUE(nul.file.loadFromBuffer(text, sizeof text - 1, '\0', true, true));
  EXPECT_EQ(dumpModel(nul.file), "[S]a=1b=2");
  // A NUL inside a line ends what the line says; the bytes after it are ignored.
  MemoryModel embedded;
  EXPECT_TRUE(embedded.load(std::string("[S]\na=1\0zz\nb=2", 15)));
  EXPECT_EQ(dumpModel(embedded.file), "[S]a=1b=2");
}

TEST(IniErrorHandler, StopsTheLoadAndCountsLinesAcrossLoads) {
  MemoryModel model;
  model.log.goOn = false;
  EXPECT_FALSE(model.load("[S]\na=1\nbad\nb=2"));
  EXPECT_EQ(model.log.text, "1000002@3");
  EXPECT_EQ(dumpModel(model.file), "[S]a=1");
  // The line counter goes on from the previous load.
  model.log.goOn = true;
  model.log.text.clear();
  EXPECT_TRUE(model.load("[T\n"));
  EXPECT_EQ(model.log.text, "1000001@4");
  // Without a handler, errors are ignored.
  model.file.setErrorHandler(nullptr, nullptr);
  EXPECT_TRUE(model.load("[U\nno\n  x\n[V]\na=1"));
  EXPECT_EQ(dumpModel(model.file), "[S]a=1[V]a=1");
}

TEST(IniLongLines, ReportedSkippedAndTheRestFound) {
  const std::string longLine(5000, 'x');
  for (const size_t length : {1024u, 5000u}) {
    SCOPED_TRACE(length);
    MemoryModel model;
    const std::string line = "a=" + std::string(length - 2, 'v');
    EXPECT_TRUE(model.load("[S]\n" + line + "\nb=2"));
    ASSERT_TRUE(model.file.getSection("S"));
    const char* value = nullptr;
    if (length <= TavClIniFile::kMaxLineLength) {
      EXPECT_EQ(model.log.text, "");
      ASSERT_TRUE(model.file.getOption("a", value));
      EXPECT_EQ(strlen(value), length - 2);
    } else {
      EXPECT_EQ(model.log.text, std::to_string(INIFILE_LINE_TOO_LONG) + "@2");
      EXPECT_FALSE(model.file.getOption("a", value));
    }
    EXPECT_TRUE(model.file.getOption("b", value));
  }
  MemoryModel stopped;
  stopped.log.goOn = false;
  EXPECT_FALSE(stopped.load("[S]\n" + longLine + "\na=1"));
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

// Merging goes on across loads.
TEST(IniDuplicateSections, MergedAcrossLoads) {
  MemoryModel merged;
  EXPECT_TRUE(merged.load("[S]\na=1\n[t]\nx=1\n", false));
  EXPECT_TRUE(merged.load("[T]\ny=2\n[new]\n", false));
  EXPECT_EQ(dumpModel(merged.file), "[S]a=1[t]x=1y=2[new]");
}

// 100,000 sections merged into 100,000 others and 100,000 options in one section: a quadratic
// walk would take minutes here.
TEST(IniDuplicateSections, LargeInputsLoad) {
  std::string text;
  for (int round = 0; round < 2; ++round) {
    for (int i = 0; i < 100000; ++i) text += "[s" + std::to_string(i) + "]\nk=v\n";
  }
  text += "[big]\n";
  for (int i = 0; i < 100000; ++i) text += "o" + std::to_string(i) + "=" + std::to_string(i) + "\n";
  MemoryModel model;
  EXPECT_TRUE(model.load(text, false));
  ASSERT_TRUE(model.file.getSection("big"));
  const char* value = nullptr;
  EXPECT_TRUE(model.file.getOption("o99999", value));
}

// A file reads the same on every platform: CR LF ends a line like LF, a lone CR and a Ctrl-Z
// are data. Loading twice appends; a missing file fails.
TEST(IniFileLoad, LineEndsLoadingTwiceAndMissingFiles) {
  const std::string path = testing::TempDir() + "tav_ini_load_test.ini";
  FILE* out = fopen(path.c_str(), "wb");
  ASSERT_NE(out, nullptr);
  fputs("; settings\r\n[S]\r\na = 1 ; one\r\nb = \"x\r\" ; \x1a two\rthree\r\n", out);
  fclose(out);
  TavClFilename name(path.c_str());
  TavClIniFile file(name);
  EXPECT_TRUE(file.load(false));
  EXPECT_TRUE(file.load(false));
  const std::string once = "[S]a=1{one}b=x\r{\x1a two\rthree}";
  EXPECT_EQ(dumpModel(file), once + once);
  remove(path.c_str());
  EXPECT_FALSE(TavClIniFile(name).load(true));  // the file is gone
}

}  // namespace
