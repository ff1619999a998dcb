// Splitting file names into server, path, base name and extension, comparing those parts,
// wildcard matching and the FAT 8.3 test, in both path styles.

#include <gtest/gtest.h>

#include <string>

#include "tav_filename.h"
#include "tav_test_data.h"

namespace {

const int kNativeStyle = TavClPathProperty::getNativeStyle();

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
    const int style = row.str(6) == "native"  ? kNativeStyle
                      : row.str(6) == "slash" ? TAV_PATH_STYLE_SLASH
                                              : TAV_PATH_STYLE_BACKSLASH;
    EXPECT_EQ(name.getPathStyle(), style);
    EXPECT_EQ(name.hasDrive(), row.flag(7));
    EXPECT_EQ(name.isAbsolute(), row.flag(8));
    EXPECT_EQ(name.hasServer(), !row.str(1).empty());
  }
  EXPECT_EQ(TavClFilename().getStyle("plain"), kNativeStyle);
  EXPECT_EQ(TavClFilename().getPathSep("a/b"), '/');
  EXPECT_EQ(TavClFilename().getPathSep("C:"), '\\');
}

TEST(FilenameParsing, LongTextsAreCutAt260Characters) {
  const std::string text = std::string(255, 'd') + "/b.txt";  // 261 characters
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

TEST(FilenameParsing, NormalisingChangesTheSeparatorsOfThePathPart) {
  char text[] = "C:/a\\b/c";
  TavClPathProperty::normalizePath(text, TAV_PATH_STYLE_BACKSLASH);
  EXPECT_STREQ(text, "C:\\a\\b\\c");
  TavClPathProperty::normalizePath(text, TAV_PATH_STYLE_SLASH);
  EXPECT_STREQ(text, "C:/a/b/c");
  TavClPathProperty::normalizePath(text);
  EXPECT_STREQ(text, kNativeStyle == TAV_PATH_STYLE_SLASH ? "C:/a/b/c" : "C:\\a\\b\\c");
  EXPECT_TRUE(TavClFilename(text).isNormalized());
  EXPECT_TRUE(TavClFilename("plain").isNormalized());
  // Only the path part counts: the server part always has backslashes.
  EXPECT_TRUE(TavClFilename("\\\\srv\\share").isNormalized());
  EXPECT_FALSE(TavClFilename("C:\\a/b").isNormalized());
}

TEST(FilenameMatching, PathBaseNameExtensionWildcardAndFat83) {
  for (const auto& row : tav::test::readDataTable("fs/filename_match.txt", 4)) {
    SCOPED_TRACE(row.where);
    const TavClFilename name(row.text(0));
    const std::string& rule = row.str(2);
    bool matches = false;
    if (rule == "path") matches = name.matchesPath(TavClFilename(row.text(1)));
    if (rule == "base") matches = name.matchesBase(TavClFilename(row.text(1)));
    if (rule == "extension") matches = name.matchesExtension(row.text(1));
    if (rule == "wildcard") matches = name.matchesWildcardPattern(row.text(1));
    if (rule == "8.3") matches = name.isStyleFAT_8_3();
    if (rule == "backslash") matches = name.getStyle(row.text(0)) == TAV_PATH_STYLE_BACKSLASH;
    EXPECT_EQ(matches, row.flag(3));
  }
  // A bare name takes the platform's style: only backslash style can be 8.3.
  EXPECT_EQ(TavClFilename("ABCDEFGH.TXT").isStyleFAT_8_3(),
            kNativeStyle == TAV_PATH_STYLE_BACKSLASH);
}

}  // namespace
