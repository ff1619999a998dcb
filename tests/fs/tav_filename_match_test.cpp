// Comparing parts of file names, wildcard matching, and the FAT 8.3 test.

#include <gtest/gtest.h>

#include "tav_filename.h"
#include "tav_test_data.h"

namespace {

TEST(FilenameMatching, PathComparesThisPathAsAPrefixOfTheOther) {
  const TavClFilename windows("C:\\Dir\\a.txt");
  EXPECT_TRUE(windows.matchesPath(TavClFilename("c:\\dir\\b.doc")));
  EXPECT_TRUE(windows.matchesPath(TavClFilename("C:\\DIR\\sub\\b")));
  EXPECT_FALSE(TavClFilename("C:\\dir\\sub\\b").matchesPath(windows));
  EXPECT_FALSE(windows.matchesPath(TavClFilename("C:\\")));
  const TavClFilename posix("/usr/lib/a");
  EXPECT_TRUE(posix.matchesPath(TavClFilename("/usr/lib/b")));
  EXPECT_FALSE(posix.matchesPath(TavClFilename("/usr/LIB/a")));
  // A name whose base name lies in its server part has no path to compare.
  EXPECT_TRUE(TavClFilename("\\\\srv\\share").matchesPath(TavClFilename("")));
}

TEST(FilenameMatching, BaseNamesMustBeEqualWhole) {
  EXPECT_TRUE(TavClFilename("C:\\x\\File.TXT").matchesBase(TavClFilename("d:\\y\\file.doc")));
  EXPECT_FALSE(TavClFilename("/a/File.txt").matchesBase(TavClFilename("/b/file.txt")));
  EXPECT_TRUE(TavClFilename("/a/file.txt").matchesBase(TavClFilename("/b/file")));
  EXPECT_FALSE(TavClFilename("C:\\ab.c").matchesBase(TavClFilename("C:\\ab.c.d")));
  EXPECT_FALSE(TavClFilename("C:\\ab.c.d").matchesBase(TavClFilename("C:\\ab.c")));
  EXPECT_FALSE(TavClFilename("C:\\abc").matchesBase(TavClFilename("C:\\ab")));
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
