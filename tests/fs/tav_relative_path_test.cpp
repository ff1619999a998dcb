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
#include "tav_test_data.h"

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

TavEnPathStyle styleOf(const std::string& name) { return name == "slash" ? kSlash : kBackslash; }

TEST(RelativePath, ExpansionAndTheTestFollowTheRulesInBothStyles) {
  for (const auto& row : tav::test::readDataTable("fs/relative_path_expansion.txt", 4)) {
    SCOPED_TRACE(row.where);
    const Expansion result = expand(row.str(2), styleOf(row.str(0)), row.text(1));
    EXPECT_EQ(result.ok, !row.str(3).empty());
    EXPECT_EQ(result.text, row.str(3));
  }
  for (const auto& row : tav::test::readDataTable("fs/relative_path_test.txt", 3)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(tav::path::isRelativePathIn(row.text(1), styleOf(row.str(0))), row.flag(2));
  }
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
