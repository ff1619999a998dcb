// The substitution of "%1" to "%10" in message texts.

#include "../../src/msg/tav_message_substitution.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tav_test_data.h"

namespace {

const char* const kTenVariables[10] = {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j"};

std::string substitute(const char* in, size_t limit = 4096,
                       const char* const* variables = kTenVariables, size_t count = 10) {
  std::vector<char> out(limit + 1, '#');
  const size_t written = tav::substituteMessageVariables(out.data(), limit, in, variables, count);
  EXPECT_EQ(written, std::string(out.data()).size());
  return out.data();
}

TEST(MessageSubstitution, Rules) {
  for (const auto& row : tav::test::readDataTable("msg/message_substitution.txt", 2)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(substitute(row.text(0)), row.str(1));
  }
}

TEST(MessageSubstitution, NullAndMissingVariablesReadAsQuestionMarks) {
  const char* const variables[3] = {"one", nullptr, "three"};
  EXPECT_EQ(substitute("%1 %2 %3 %4", 4096, variables, 3), "one ??? three ???");
  EXPECT_EQ(substitute("%1", 4096, nullptr, 0), "???");
}

TEST(MessageSubstitution, OutputStopsAtTheLimitEvenInsideAVariable) {
  EXPECT_EQ(substitute("abcdefgh", 5), "abcde");
  const char* const longVariable[1] = {"12345"};
  EXPECT_EQ(substitute("x%1y", 3, longVariable, 1), "x12");
  EXPECT_EQ(substitute("%%%%", 1), "%");
  EXPECT_EQ(substitute("anything", 0), "");
}

}  // namespace
