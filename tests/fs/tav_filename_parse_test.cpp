// Splitting file names into server, path, base name and extension, in both path styles.

#include <gtest/gtest.h>

#include <string>

#include "tav_filename.h"

namespace {

constexpr int kNative = -1;  // the style of the running platform

struct ParseCase {
  const char* text;
  const char* server;
  const char* path;  // extractPath without, then with the separator
  const char* pathWithSeparator;
  const char* baseName;
  const char* extension;
  int style;  // TavEnPathStyle, or kNative
  bool hasDrive;
  bool isAbsolute;
};

std::string server(const TavClFilenameABase& name) {
  char out[TAV_PATH_BUFFER_SIZE];
  name.extractServer(out);
  return out;
}
std::string path(const TavClFilenameABase& name, bool withSeparator) {
  char out[TAV_PATH_BUFFER_SIZE];
  name.extractPath(out, withSeparator);
  return out;
}
std::string baseName(const TavClFilenameABase& name) {
  char out[TAV_PATH_BUFFER_SIZE];
  name.extractBaseName(out);
  return out;
}

constexpr int B = TAV_PATH_STYLE_BACKSLASH;
constexpr int S = TAV_PATH_STYLE_SLASH;

const ParseCase kCases[] = {
    // text                 server          path              path + separator   base ext
    {"C:\\dir\\file.txt", "", "C:\\dir", "C:\\dir\\", "file", ".txt", B, true, true},
    {"/usr/lib/x.so", "", "/usr/lib", "/usr/lib/", "x", ".so", S, false, true},
    {"\\\\srv\\share\\a\\b.c", "\\\\srv\\share", "\\\\srv\\share\\a", "\\\\srv\\share\\a\\", "b",
     ".c", B, false, true},
    // Only the last dot starts the extension; a leading dot leaves the base name empty.
    {"archive.tar.gz", "", "", "", "archive.tar", ".gz", kNative, false, false},
    {"dir/.profile", "", "dir", "dir/", "", ".profile", S, false, false},
    {"a.b.c/d", "", "a.b.c", "a.b.c/", "d", "", S, false, false},
    {"name.", "", "", "", "name", ".", kNative, false, false},
    // Trailing separators leave base name and extension empty.
    {"dir\\", "", "dir", "dir\\", "", "", B, false, false},
    {"/", "", "", "/", "", "", S, false, true},
    {"C:\\", "", "C:", "C:\\", "", "", B, true, true},
    // A drive without a backslash after it, or a backslash without a drive, is not absolute.
    {"C:file.txt", "", "", "", "C:file", ".txt", B, true, false},
    {"\\dir\\x", "", "\\dir", "\\dir\\", "x", "", B, false, false},
    {"C:/dir/file.txt", "", "C:/dir", "C:/dir/", "file", ".txt", B, true, false},
    // A slash inside a name that has backslashes belongs to the base name.
    {"C:\\dir/file.txt", "", "C:", "C:\\", "dir/file", ".txt", B, true, true},
    // A server part without a share, and a server name without anything after it.
    {"\\\\srv\\share", "\\\\srv\\share", "\\\\srv", "\\\\srv\\", "share", "", B, false, true},
    {"\\\\srv", "", "\\", "\\\\", "srv", "", B, false, false},
    {"\\\\", "", "\\", "\\\\", "", "", B, false, false},
    {"", "", "", "", "", "", kNative, false, false},
};

TEST(FilenameParsing, PartsInBothStyles) {
  for (const ParseCase& c : kCases) {
    SCOPED_TRACE(c.text);
    const TavClFilename name(c.text);
    EXPECT_STREQ(name.getAsCString(), c.text);
    EXPECT_EQ(server(name), c.server);
    EXPECT_EQ(path(name, false), c.path);
    EXPECT_EQ(path(name, true), c.pathWithSeparator);
    EXPECT_EQ(baseName(name), c.baseName);
    EXPECT_STREQ(name.getExtension(), c.extension);
    const int style = c.style == kNative ? TavClPathProperty::getNativeStyle() : c.style;
    EXPECT_EQ(name.getPathStyle(), style);
    EXPECT_EQ(name.hasDrive(), c.hasDrive);
    EXPECT_EQ(name.isAbsolute(), c.isAbsolute);
    EXPECT_EQ(name.hasServer(), *c.server != '\0');
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

}  // namespace
