// Relative paths: the test and the expansion rules in both styles, up to the 260-character
// limit, from a table. The fuzz target compares the expansion with a plain implementation of
// the rules on arbitrary texts.

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "../../src/fs/tav_relative_path.h"
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

}  // namespace
