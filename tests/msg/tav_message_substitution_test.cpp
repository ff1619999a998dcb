// The substitution of "%1" to "%10" in message texts.

#include "../../src/msg/tav_message_substitution.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

const char* const kTenVariables[10] = {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j"};

std::string substitute(const char* in, size_t limit = 4096,
                       const char* const* variables = kTenVariables, size_t count = 10) {
  std::vector<char> out(limit + 1, '#');
  const size_t written = tav::substituteMessageVariables(out.data(), limit, in, variables, count);
  EXPECT_EQ(written, std::string(out.data()).size());
  return out.data();
}

struct SubstitutionCase {
  const char* in;
  const char* out;
};

TEST(MessageSubstitution, Rules) {
  const SubstitutionCase cases[] = {
      {"Percent:%% Arg1:%1 Arg2:%2 Arg3:%3 Arg4:%4 Arg5:%5 Arg6:%6 Arg7:%7 Arg8:%8 Arg9:%9 "
       "Arg10:%10",
       "Percent:% Arg1:a Arg2:b Arg3:c Arg4:d Arg5:e Arg6:f Arg7:g Arg8:h Arg9:i Arg10:j"},
      {"", ""},
      {"%%1", "%1"},
      {"%11 and %12", "??? and ???"},
      {"%1a", "aa"},
      {"%01", "a"},
      {"% 2x", "b 2x"},  // atol reads past the blank; only digits right after "%" are consumed
      {"%+3", "c+3"},
      {"%-1",
       "???"
       "-1"},  // split: "??-" would read as a trigraph
      {"%0", "???"},
      {"%a", "???a"},
      {"ends with %", "ends with ???"},
      {"%99999999999999999999999999", "???"},
      {"100%% sure", "100% sure"},
  };
  for (const SubstitutionCase& c : cases) {
    SCOPED_TRACE(c.in);
    EXPECT_EQ(substitute(c.in), c.out);
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
