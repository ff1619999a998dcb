// Relative paths: the test, the expansion rules in both styles, the 260-character limit, and
// the native entry points against the real working directory.

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "../../src/fs/tav_relative_path.h"
#include "tav_file.h"
#include "tav_fs_scratch.h"
#include "tav_relative_path_reference.h"

namespace {

constexpr TavEnPathStyle kBackslash = TAV_PATH_STYLE_BACKSLASH;
constexpr TavEnPathStyle kSlash = TAV_PATH_STYLE_SLASH;

// Expands text in a buffer of exactly TAV_PATH_BUFFER_SIZE characters followed by a guard, so
// a write past the limit shows.
struct Expansion {
  bool ok;
  std::string text;
};

Expansion expand(const std::string& text, TavEnPathStyle style, const char* current) {
  char buffer[TAV_PATH_BUFFER_SIZE + 8];
  std::memset(buffer, '#', sizeof buffer);
  const size_t length = text.size() < TAV_PATH_MAX_LENGTH ? text.size() : TAV_PATH_MAX_LENGTH;
  std::memcpy(buffer, text.data(), length);
  buffer[length] = '\0';
  const bool ok = tav::path::expandRelativePathIn(buffer, style, current);
  for (size_t i = TAV_PATH_BUFFER_SIZE; i < sizeof buffer; ++i) EXPECT_EQ(buffer[i], '#');
  return {ok, buffer};
}

TEST(RelativePath, ExpansionFollowsTheRulesInBothStyles) {
  const struct {
    TavEnPathStyle style;
    const char* current;
    const char* text;
    const char* expected;  // "" for a failure
  } cases[] = {
      // Drives: the drive stays, ".." cannot climb above it.
      {kBackslash, "C:\\work\\dir", "C:\\a\\b\\..\\c\\", "C:\\a\\c\\"},
      {kBackslash, "C:\\work\\dir", "C:\\..\\", ""},
      {kBackslash, "C:\\work\\dir", "C:\\", "C:\\"},
      {kBackslash, "C:\\work\\dir", "C:\\a\\.\\b\\x.\\", "C:\\a\\b\\"},
      {kBackslash, "C:\\work\\dir", "C:\\a\\b", "C:\\a\\"},  // the last component is dropped
      {kBackslash, "C:\\work\\dir", "C:\\a\\b\\c...\\", "C:\\a\\"},
      {kBackslash, "C:\\work\\dir", "C:\\a\\\\b\\", "C:\\a\\b\\"},
      {kBackslash, "C:\\work\\dir", "c:\\A\\..z\\", "c:\\A\\..z\\"},
      // Relative texts start from the working directory, which ".." can climb to its drive.
      {kBackslash, "C:\\work\\dir", "sub\\..\\..\\x\\", "C:\\work\\x\\"},
      {kBackslash, "C:\\work\\dir\\", ".\\", "C:\\work\\dir\\"},
      {kBackslash, "C:\\work\\dir", "..\\..\\", "C:\\"},
      {kBackslash, "C:\\work\\dir", "..\\..\\..\\", ""},
      {kBackslash, "C:\\", "a\\", "C:\\a\\"},
      // "\\dir" has no drive, so it is not absolute and is taken as relative.
      {kBackslash, "C:\\work", "\\dir\\", "C:\\work\\dir\\"},
      // In backslash style '/' is an ordinary character here.
      {kBackslash, "C:\\work", "a/b\\", "C:\\work\\a/b\\"},
      // A server part stays, and ".." cannot remove the share.
      {kBackslash, "C:\\work", "\\\\srv\\share\\a\\..\\b\\", "\\\\srv\\share\\b\\"},
      {kBackslash, "C:\\work", "\\\\srv\\share\\..\\", ""},
      {kBackslash, "C:\\work", "\\\\srv\\share", "\\\\srv\\share\\"},
      {kBackslash, "\\\\srv\\share\\w", "..\\..\\", ""},
      {kBackslash, "\\\\srv\\share\\w", "..\\x\\", "\\\\srv\\share\\x\\"},
      // Slash style: only a leading '/' is absolute.
      {kSlash, "/home/u", "/a/b/../c/", "/a/c/"},
      {kSlash, "/home/u", "/../", ""},
      {kSlash, "/home/u", "/", "/"},
      {kSlash, "/home/u", "./x/", "/home/u/x/"},
      {kSlash, "/home/u/", "../../", "/"},
      {kSlash, "/home/u", "../../../", ""},
      {kSlash, "/home/u", "x.y/..z/", "/home/u/x.y/..z/"},
      {kSlash, "/home/u", "file.txt", "/home/u/"},
      {kSlash, "/", "a/", "/a/"},
      {kSlash, "/home/u", "C:\\a\\", "/home/u/"},  // one component, not followed by '/'
      {kSlash, "/home/u", "a\\b/", "/home/u/a\\b/"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.style == kSlash ? "slash " : "backslash ") + c.current + " + " +
                 c.text);
    const Expansion result = expand(c.text, c.style, c.current);
    EXPECT_EQ(result.ok, *c.expected != '\0');
    EXPECT_EQ(result.text, c.expected);
  }
}

TEST(RelativePath, RelativeMeansNotAbsoluteOrHoldingDotSeparator) {
  const struct {
    TavEnPathStyle style;
    const char* text;
    bool relative;
  } cases[] = {
      {kBackslash, "C:\\a", false},
      {kBackslash, "C:\\a\\.\\b", true},
      {kBackslash, "C:\\a\\x.\\", true},
      {kBackslash, "a\\b", true},
      {kBackslash, "\\dir", true},
      {kBackslash, "C:a", true},
      {kBackslash, "\\\\srv\\s\\a", false},
      {kBackslash, "C:\\a/./b", false},  // "./" is not the separator of this style
      {kSlash, "/a", false},
      {kSlash, "/a/./b", true},
      {kSlash, "/a/x./", true},
      {kSlash, "a/b", true},
      {kSlash, "", true},
      {kSlash, "/a/b.", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(tav::path::isRelativePathIn(c.text, c.style), c.relative);
  }
  EXPECT_FALSE(tav::path::isRelativePathIn(nullptr, kSlash));
}

TEST(RelativePath, ResultsLongerThan260CharactersFailAndNothingIsWrittenPastTheBuffer) {
  const std::string component(50, 'a');
  std::string deep = "/";
  for (int i = 0; i < 5; ++i) deep += component + "/";  // 256 characters
  EXPECT_EQ(expand(deep + "bbb/", kSlash, "/").text, deep + "bbb/");
  // Only the working directory can make the result longer than the text.
  const std::string current = "/" + std::string(250, 'c');
  EXPECT_FALSE(expand(std::string(20, 'r') + "/", kSlash, current.c_str()).ok);
  // A component that a later ".." removes may go over the limit on the way.
  EXPECT_EQ(expand(std::string(20, 'r') + "/../", kSlash, current.c_str()).text, current + "/");
  EXPECT_EQ(
      expand(std::string(200, '.') + "/" + std::string(58, 'r') + "/", kSlash, current.c_str())
          .text,
      "/" + std::string(58, 'r') + "/");
  // A text that fills the buffer, expanded on a drive.
  EXPECT_EQ(expand("C:\\" + std::string(256, 'x') + "\\", kBackslash, "C:\\").text.size(),
            TAV_PATH_MAX_LENGTH);
}

// Random texts over the characters that matter to the rules, in both styles, against the
// plain implementation of the rules.
TEST(RelativePath, AgreesWithThePlainImplementationOnRandomTexts) {
  std::mt19937 random(20261122);
  const char alphabet[] = {'a', 'b', '.', '.', '\\', '/', '/', '\\', ':', 'C'};
  const char* const starts[] = {"", "C:\\", "\\\\s\\h\\", "\\\\s", "/", "./", "../", "C:"};
  const char* const currents[] = {"C:\\w\\d", "/h/u", "/", "C:\\", "\\\\s\\h\\w", "", "rel"};
  for (int round = 0; round < 20000; ++round) {
    std::string text = starts[random() % (sizeof starts / sizeof *starts)];
    const size_t length = random() % (round % 10 == 0 ? 300 : 24);
    for (size_t i = 0; i < length; ++i) text += alphabet[random() % sizeof alphabet];
    const char* current = currents[random() % (sizeof currents / sizeof *currents)];
    for (TavEnPathStyle style : {kBackslash, kSlash}) {
      std::string expected;
      const bool expectedOk = tav_reference::expandRelativePath(text, style, current, &expected);
      const Expansion actual = expand(text, style, current);
      if (actual.ok != expectedOk || actual.text != expected) {
        ADD_FAILURE() << "style " << style << ", current \"" << current << "\", text \"" << text
                      << "\": got \"" << actual.text << "\", expected \"" << expected << "\"";
        return;
      }
    }
  }
}

TEST(RelativePath, NativeExpansionStartsFromTheWorkingDirectory) {
  const tav::test::ScratchDirectory scratch;
  scratch.makeDirectory("sub");
  const tav::test::CurrentDirectoryChange change(scratch.path("sub"));
  const char sep = TavClPathProperty::getNativeStyle() == kSlash ? '/' : '\\';
  const std::string up = std::string("..") + sep;

  char text[TAV_PATH_BUFFER_SIZE];
  std::strcpy(text, (up + "x" + sep + "y").c_str());
  EXPECT_TRUE(TavClFileABase::isRelativePath(text));
  ASSERT_TRUE(TavClFileABase::expandRelativePath(text));
  EXPECT_EQ(std::string(text), scratch.text() + "x" + sep);
  EXPECT_FALSE(TavClFileABase::isRelativePath(text));

  std::strcpy(text, "");
  ASSERT_TRUE(TavClFileABase::expandRelativePath(text));
  EXPECT_EQ(std::string(text), scratch.path("sub") + sep);
  EXPECT_FALSE(TavClFileABase::expandRelativePath(nullptr));
}

}  // namespace
