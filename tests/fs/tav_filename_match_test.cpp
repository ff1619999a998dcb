// Comparing parts of file names, wildcard matching, and the FAT 8.3 test.

#include <gtest/gtest.h>

#include "tav_filename.h"

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
  const struct {
    const char* name;
    const char* extension;
    bool matches;
  } cases[] = {
      {"C:\\f.TXT", "txt", true},       {"C:\\f.TXT", ".txt", true},
      {"C:\\f.TXT", "tx", false},       {"C:\\f.TXT", "", false},
      {"C:\\f.TXT", "..txt", false},    {"C:\\f", "", true},
      {"C:\\f", nullptr, true},         {"C:\\f", ".", false},
      {"/d/f.TXT", "txt", false},       {"/d/f.TXT", "TXT", true},
      {"/d/.profile", "profile", true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.name << " ~ " << (c.extension ? c.extension : "null"));
    EXPECT_EQ(TavClFilename(c.name).matchesExtension(c.extension), c.matches);
  }
}

TEST(FilenameMatching, WildcardPatternAppliesToNameAndExtension) {
  EXPECT_TRUE(TavClFilename("C:\\dir\\Report.TXT").matchesWildcardPattern("*.txt"));
  EXPECT_FALSE(TavClFilename("/dir/Report.TXT").matchesWildcardPattern("*.txt"));
  EXPECT_TRUE(TavClFilename("/dir/Report.TXT").matchesWildcardPattern("R?port.*"));
  EXPECT_FALSE(TavClFilename("C:\\dir\\r.txt").matchesWildcardPattern("dir*"));
}

TEST(FilenameFat83, ComponentsOfEightAndExtensionsOfThree) {
  const struct {
    const char* name;
    bool fat;
  } cases[] = {
      {"C:\\ABCDEFGH.TXT", true},
      {"\\ABCDEFGH.TXT", true},
      {"C:\\DIR\\SUB\\A.B", true},
      {"C:\\MY FILE.TX", true},  // blanks and most punctuation are accepted
      {"C:\\A+B=C.$$$", true},
      {"C:\\.TXT", true},
      {"\\", true},  // the empty name
      {"C:\\ABCDEFGHI.TXT", false},
      {"C:\\A.HTML", false},
      {"C:\\DIR.X\\A.B", false},  // a dot before the extension
      {"C:\\LONGDIRNAME\\A.B", false},
      {"C:\\A*B.TXT", false},
      {"C:\\A;B.TXT", false},
      {"C:\\A<B", false},
      {"1:\\A.TXT", false},  // the drive must be a letter
      {"C:\\A:B", false},
      {"/A.TXT", false},  // slash style never is
      {"\\\\SRV\\SHARE\\A.TXT", true},
      {"\\\\SRV\\LONGSHARENAME\\A.TXT", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(TavClFilename(c.name).isStyleFAT_8_3(), c.fat);
  }
  // A bare name takes the platform's style: only backslash style can be 8.3.
  EXPECT_EQ(TavClFilename("ABCDEFGH.TXT").isStyleFAT_8_3(),
            TavClPathProperty::getNativeStyle() == TAV_PATH_STYLE_BACKSLASH);
}

}  // namespace
