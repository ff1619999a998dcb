// Numbers to text, byte swapping, sleeping, the library level, the small string functions and
// wildcard matching (its rules, and agreement with std::regex on random inputs).

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <regex>
#include <string>
#include <vector>

#include "tav_test_data.h"
#include "tav_utils.h"

namespace {

// Every function against std::to_string on both sides of every power of ten, where the digit
// writer changes its path, with both signs, and on the extremes; the returned length is the
// text's.
TEST(NumberText, AgreesWithTheStandardLibrary) {
  std::vector<uint64_t> values = {0, 0x80000000u, 0xFFFFFFFFu, uint64_t{1} << 63, UINT64_MAX};
  for (uint64_t power = 1; power <= UINT64_MAX / 10;) {
    power *= 10;
    values.insert(values.end(), {power - 1, power});
  }
  char text[TAV_INT64_TEXT_SIZE];
  const auto check = [&text](int length, const std::string& expected) {
    EXPECT_EQ(std::string(text), expected);
    EXPECT_EQ(length, static_cast<int>(expected.size()));
  };
  for (const uint64_t magnitude : values) {
    for (const uint64_t bits : {magnitude, 0 - magnitude}) {
      SCOPED_TRACE(bits);
      const auto value32 = static_cast<int32_t>(bits);
      check(tavItoa(value32, text), std::to_string(value32));
      check(tavLtoa(value32, text), std::to_string(value32));
      check(tavULtoa(static_cast<uint32_t>(bits), text),
            std::to_string(static_cast<uint32_t>(bits)));
      check(tavI64toa(static_cast<int64_t>(bits), text),
            std::to_string(static_cast<int64_t>(bits)));
      check(tavW64toa(bits, text), std::to_string(bits));
    }
  }
}

// Byte swaps work on whole units only, and host to little endian is no change.
TEST(SystemUtilities, ByteOrderSleepAndLibraryLevel) {
  unsigned char bytes[] = {1, 2, 3, 4, 5};
  tavEndianConvertW16LittleToBig(bytes, 5);
  EXPECT_EQ(std::memcmp(bytes, "\2\1\4\3\5", 5), 0);
  tavEndianConvertW16BigToHost(bytes, 4);
  EXPECT_EQ(std::memcmp(bytes, "\1\2\3\4\5", 5), 0);
  tavEndianConvertW16HostToBig(bytes, 1);  // no whole unit: nothing changes
  EXPECT_EQ(bytes[0], 1);

  // Sleeping advances the time stamp; the library level is fixed.
  const uint32_t before = tavGetTimeStamp();
  tavSleepMilliSeconds(60);
  const uint32_t elapsed = tavGetTimeStamp() - before;  // unsigned difference survives a wrap
  EXPECT_GE(elapsed, 40u);  // the tick counter may advance in steps of 16 ms
  EXPECT_STREQ(tavLibraryGetLevel(), "TAVLibR5-29");
}

TEST(StrFind, CaseSensitiveIsStrstrAndIgnoreCaseRestartsAfterAMismatch) {
  for (const auto& row : tav::test::readDataTable("core/str_find.txt", 4)) {
    SCOPED_TRACE(row.where);
    const char* found = tavStrFind(row.text(0), row.text(1), row.flag(2));
    EXPECT_EQ(found == nullptr ? -1 : found - row.text(0), row.number(3));
  }
}

TEST(StrCountAndCopyUntil, Basics) {
  EXPECT_EQ(tavStrCount("a;b;;c", ';'), 3u);
  char destination[16] = "untouched";
  EXPECT_EQ(tavStrCopyUntil(destination, ";rest", ';'), 0u);
  EXPECT_STREQ(destination, "");
  EXPECT_EQ(tavStrCopyUntil(destination, "no delimiter", '='), 12u);
  EXPECT_STREQ(destination, "no delimiter");
}

TEST(Wildcard, Rules) {
  for (const auto& row : tav::test::readDataTable("core/wildcard_matches.txt", 4)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(tavMatchesWildcardPattern(row.text(0), row.text(1), row.flag(2)), row.flag(3));
  }
}

// Against std::regex, with "*" as ".*" and "?" as "." (the alphabets hold no other special
// character).
TEST(Wildcard, AgreesWithARegularExpressionOnRandomInputs) {
  std::mt19937 random(2024);
  for (int i = 0; i < 5000; ++i) {
    std::string pattern(random() % 8, ' '), expression;
    for (char& c : pattern) c = "aAb*?"[random() % 5];
    for (char c : pattern) expression += c == '*' ? ".*" : c == '?' ? "." : std::string(1, c);
    std::string text(random() % 10, ' ');
    for (char& c : text) c = "aAbc"[random() % 4];
    const bool caseSensitive = random() % 2 == 0;
    const std::regex reference(expression,
                               caseSensitive ? std::regex::ECMAScript : std::regex::icase);
    ASSERT_EQ(tavMatchesWildcardPattern(pattern.c_str(), text.c_str(), caseSensitive),
              std::regex_match(text, reference))
        << "pattern '" << pattern << "', text '" << text << "', case sensitive " << caseSensitive;
  }
}

}  // namespace
