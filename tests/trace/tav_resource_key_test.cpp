// Resource keys: the character mapping, the second-part pointer, cutting at the capacity, and
// copies that keep pointing into their own text.

#include <gtest/gtest.h>

#include <string>

#include "tav_resource_key.h"
#include "tav_trace_test_support.h"

namespace {

TEST(ResourceKey, MapsEveryPartIntoTheKeyAlphabet) {
  for (const auto& row : tav::test::readTable("resource_keys.txt", 3)) {
    SCOPED_TRACE(row.where);
    const std::string& expected = row.fields.at(2);
    const TavClResourceKeySemaphore key(
        row.fields.at(0).c_str(), row.fields.at(1) == "-" ? nullptr : row.fields.at(1).c_str());
    EXPECT_EQ(key.getKey(), expected);
    EXPECT_EQ(key.getLength(), expected.size());
    EXPECT_EQ(key.getSecondPart(), expected.substr(6));
  }
}

TEST(ResourceKey, LongPartsAreCutAtTheCapacity) {
  const std::string longPart(400, 'k');
  const TavClResourceKeySemaphore key(longPart.c_str(), longPart.c_str());
  EXPECT_EQ(key.getLength(), TavClResourceKeyABase::kKeyCapacity - 1);
  EXPECT_EQ(std::string(key.getKey()), "SEM32:" + longPart.substr(0, 249));
  EXPECT_EQ(std::string(key.getSecondPart()), longPart.substr(0, 249));

  // A first part that fills the key leaves the second part empty, pointing at the end.
  class LongFirstPart : public TavClResourceKeyABase {
   public:
    explicit LongFirstPart(const char* first) : TavClResourceKeyABase(first, "second") {}
  };
  const LongFirstPart full(longPart.c_str());
  EXPECT_EQ(full.getLength(), 255u);
  EXPECT_STREQ(full.getSecondPart(), "");
  EXPECT_EQ(full.getSecondPart(), full.getKey() + 255);
}

TEST(ResourceKey, MatchesTextThatBeginsWithTheKey) {
  const TavClResourceKeySemaphore key("app", "one");
  EXPECT_TRUE(key.matches("SEM32:app:one"));
  EXPECT_TRUE(key.matches("SEM32:app:one:and more"));
  EXPECT_FALSE(key.matches("SEM32:app:on"));
  EXPECT_FALSE(key.matches("SEM32:app:two"));
  EXPECT_FALSE(key.matches(nullptr));
}

TEST(ResourceKey, CopiesPointIntoTheirOwnText) {
  TavClResourceKeySemaphore copy("other", "x");
  {
    const TavClResourceKeySemaphore original("app", "one");
    copy = original;
    const TavClResourceKeySemaphore constructed(original);
    EXPECT_EQ(constructed.getSecondPart(), constructed.getKey() + 6);
  }
  EXPECT_STREQ(copy.getKey(), "SEM32:app:one");
  EXPECT_EQ(copy.getSecondPart(), copy.getKey() + 6);
  EXPECT_STREQ(copy.getSecondPart(), "app:one");
}

}  // namespace
