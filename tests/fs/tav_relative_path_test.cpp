// Relative paths: the test and the expansion rules in both styles, up to the 260-character
// limit, from a table and against a plain implementation on random texts.

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "../../src/fs/tav_relative_path.h"
#include "tav_relative_path_reference.h"
#include "tav_test_data.h"

namespace {

// Expands text in a buffer of exactly TAV_PATH_BUFFER_SIZE characters followed by a guard, so
// a write past the limit shows. A failure gives "failed:" and whatever the buffer then holds.
std::string expand(const std::string& text, TavEnPathStyle style, const char* current) {
  char buffer[TAV_PATH_BUFFER_SIZE + 8];
  std::memset(buffer, '#', sizeof buffer);
  buffer[text.copy(buffer, TAV_PATH_MAX_LENGTH)] = '\0';
  const bool ok = tav::path::expandRelativePathIn(buffer, style, current);
  for (size_t i = TAV_PATH_BUFFER_SIZE; i < sizeof buffer; ++i) EXPECT_EQ(buffer[i], '#');
  return ok ? std::string(buffer) : "failed:" + std::string(buffer);
}

TavEnPathStyle styleOf(const std::string& name) {
  return name == "slash" ? TAV_PATH_STYLE_SLASH : TAV_PATH_STYLE_BACKSLASH;
}

TEST(RelativePath, ExpansionAndTheTestFollowTheRulesInBothStyles) {
  for (const auto& row : tav::test::readDataTable("fs/relative_path_expansion.txt", 4)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(expand(row.str(2), styleOf(row.str(0)), row.text(1)),
              row.str(3).empty() ? "failed:" : row.str(3));
  }
  for (const auto& row : tav::test::readDataTable("fs/relative_path_test.txt", 3)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(tav::path::isRelativePathIn(row.text(1), styleOf(row.str(0))), row.flag(2));
  }
}

// Random texts over the characters that matter to the rules, in both styles, against the
// plain implementation of the rules.
TEST(RelativePath, AgreesWithThePlainImplementationOnRandomTexts) {
  std::mt19937 random(20261122);
  const char alphabet[] = {'a', 'b', '.', '.', '\\', '/', '/', '\\', ':', 'C'};
  const char* const starts[] = {"", "C:\\", "\\\\s\\h\\", "\\\\s", "/", "./", "../", "C:"};
  std::vector<std::string> currents = {"C:\\w\\d", "/h/u", "/", "C:\\", "\\\\s\\h\\w", "", "rel"};
  // Long working directories make results longer than the text, beyond 260 characters.
  for (const char* root : {"/", "C:\\"}) currents.push_back(root + std::string(230, 'c'));
  for (int round = 0; round < 20000; ++round) {
    std::string text = starts[random() % (sizeof starts / sizeof *starts)];
    const size_t length = random() % (round % 10 == 0 ? 300 : 40);
    for (size_t i = 0; i < length; ++i) text += alphabet[random() % sizeof alphabet];
    const char* current = currents[random() % currents.size()].c_str();
    for (TavEnPathStyle style : {TAV_PATH_STYLE_BACKSLASH, TAV_PATH_STYLE_SLASH}) {
      std::string expected;
      if (!tav_reference::expandRelativePath(text, style, current, &expected)) {
        expected = "failed:";
      }
      const std::string actual = expand(text, style, current);
      if (actual != expected) {
        ADD_FAILURE() << "style " << style << ", current \"" << current << "\", text \"" << text
                      << "\": got \"" << actual << "\", expected \"" << expected << "\"";
        return;
      }
    }
  }
}

}  // namespace
