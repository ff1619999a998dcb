// Splitting file names into server, path, base name and extension, comparing those parts,
// wildcard matching and the FAT 8.3 test, in both path styles.

#include <gtest/gtest.h>

#include <string>

#include "tav_filename.h"
#include "tav_test_data.h"

namespace {

// The parts a name is split into, read through the extract functions.
std::string extracted(const TavClFilenameABase& name, int part) {
  char out[TAV_PATH_BUFFER_SIZE];
  if (part == 0) name.extractServer(out);
  if (part == 1 || part == 2) name.extractPath(out, part == 2);
  if (part == 3) name.extractBaseName(out);
  return out;
}

TEST(FilenameParsing, PartsInBothStyles) {
  for (const tav::test::DataRow& row : tav::test::readDataTable("fs/filename_parts.txt", 9)) {
    SCOPED_TRACE(row.where);
    const TavClFilename name(row.text(0));
    EXPECT_STREQ(name.getAsCString(), row.text(0));
    for (int part = 0; part < 4; ++part) EXPECT_EQ(extracted(name, part), row.str(part + 1));
    EXPECT_EQ(name.getExtension(), row.str(5));
    const int style = row.str(6) == "native"  ? TavClPathProperty::getNativeStyle()
                      : row.str(6) == "slash" ? TAV_PATH_STYLE_SLASH
                                              : TAV_PATH_STYLE_BACKSLASH;
    EXPECT_EQ(name.getPathStyle(), style);
    EXPECT_EQ(name.hasDrive(), row.flag(7));
    EXPECT_EQ(name.isAbsolute(), row.flag(8));
    EXPECT_EQ(name.hasServer(), !row.str(1).empty());
  }
}

TEST(FilenameParsing, StyleOfATextAndItsSeparator) {
  const TavClFilename probe;
  EXPECT_EQ(probe.getStyle("c:name"), TAV_PATH_STYLE_BACKSLASH);
  EXPECT_EQ(probe.getStyle("a/b\\c"), TAV_PATH_STYLE_BACKSLASH);
  EXPECT_EQ(probe.getStyle("a/b"), TAV_PATH_STYLE_SLASH);
  EXPECT_EQ(probe.getStyle("1:/b"), TAV_PATH_STYLE_SLASH);  // not a drive letter
  EXPECT_EQ(probe.getStyle("plain"), TavClPathProperty::getNativeStyle());
  EXPECT_EQ(probe.getPathSep("a/b"), '/');
  EXPECT_EQ(probe.getPathSep("C:"), '\\');
}

TEST(FilenameParsing, LongTextsAreCutAt260Characters) {
  const std::string directory(255, 'd');
  const std::string text = directory + "/b.txt";  // 261 characters
  const TavClFilename name(text.c_str());
  EXPECT_EQ(name.getLength(), 260u);
  EXPECT_EQ(std::string(name.getAsCString()), text.substr(0, 260));
  EXPECT_STREQ(name.getExtension(), ".tx");

  const std::string huge(5000, 'x');
  EXPECT_EQ(TavClFilename(huge.c_str()).getLength(), 260u);
  EXPECT_EQ(TavClFilename(huge.c_str(), 300).getLength(), 260u);
  EXPECT_STREQ(TavClFilename("abc/def.g", 5).getAsCString(), "abc/d");
  EXPECT_STREQ(TavClFilename("ab", 50).getAsCString(), "ab");  // stops at the terminator
  EXPECT_STREQ(TavClFilename(nullptr).getAsCString(), "");
}

TEST(FilenameParsing, PathPropertyQueries) {
  char text[] = "C:/a\\b/c";
  TavClPathProperty::normalizePath(text, TAV_PATH_STYLE_BACKSLASH);
  EXPECT_STREQ(text, "C:\\a\\b\\c");
  TavClPathProperty::normalizePath(text, TAV_PATH_STYLE_SLASH);
  EXPECT_STREQ(text, "C:/a/b/c");
  TavClPathProperty::normalizePath(text);
  EXPECT_STREQ(text, TavClPathProperty::getNativeStyle() == TAV_PATH_STYLE_SLASH ? "C:/a/b/c"
                                                                                 : "C:\\a\\b\\c");
  EXPECT_TRUE(TavClFilename(text).isNormalized());
  EXPECT_TRUE(TavClFilename("plain").isNormalized());
  // Only the path part counts: the server part always has backslashes.
  EXPECT_TRUE(TavClFilename("\\\\srv\\share").isNormalized());
  EXPECT_FALSE(TavClFilename("C:\\a/b").isNormalized());
}

TEST(FilenameMatching, PathAndBaseName) {
  for (const auto& row : tav::test::readDataTable("fs/filename_part_match.txt", 4)) {
    SCOPED_TRACE(row.where);
    const TavClFilename name(row.text(0)), other(row.text(1));
    EXPECT_EQ(row.str(2) == "path" ? name.matchesPath(other) : name.matchesBase(other),
              row.flag(3));
  }
}

TEST(FilenameMatching, ExtensionWithOrWithoutItsDot) {
  for (const auto& row : tav::test::readDataTable("fs/filename_extension_match.txt", 3)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(TavClFilename(row.text(0)).matchesExtension(row.text(1)), row.flag(2));
  }
}

TEST(FilenameMatching, WildcardPatternAppliesToNameAndExtension) {
  EXPECT_TRUE(TavClFilename("C:\\dir\\Report.TXT").matchesWildcardPattern("*.txt"));
  EXPECT_FALSE(TavClFilename("/dir/Report.TXT").matchesWildcardPattern("*.txt"));
  EXPECT_TRUE(TavClFilename("/dir/Report.TXT").matchesWildcardPattern("R?port.*"));
  EXPECT_FALSE(TavClFilename("C:\\dir\\r.txt").matchesWildcardPattern("dir*"));
}

TEST(FilenameFat83, ComponentsOfEightAndExtensionsOfThree) {
  for (const auto& row : tav::test::readDataTable("fs/filename_fat_8_3.txt", 2)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(TavClFilename(row.text(0)).isStyleFAT_8_3(), row.flag(1));
  }
  // A bare name takes the platform's style: only backslash style can be 8.3.
  EXPECT_EQ(TavClFilename("ABCDEFGH.TXT").isStyleFAT_8_3(),
            TavClPathProperty::getNativeStyle() == TAV_PATH_STYLE_BACKSLASH);
}

}  // namespace
