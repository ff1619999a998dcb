// Resource keys: the character mapping, the second-part pointer, cutting at the capacity, and
// copies that keep pointing into their own text.

#include <gtest/gtest.h>

#include <string>

#include "tav_resource_key.h"
#include "tav_trace_environment_base.h"
#include "tav_trace_test_support.h"

namespace {

struct KeyCase {
  const char* key;
  const char* instance;
  const char* expected;
};

TEST(ResourceKey, MapsEveryPartIntoTheKeyAlphabet) {
  const KeyCase cases[] = {
      {"myapp", "TAVTRACEINSTANCE0", "SEM32:myapp:TAVTRACEINSTANCE0"},
      {"a\\b", "i", "SEM32:a:b:i"},                 // a backslash separates like ":"
      {"x.y", "i", "SEM32:xUy:i"},                  // "." is byte 46: "U"
      {"with blank", "i", "SEM32:withGblank:i"},    // blank is byte 32: "G"
      {"keep_-@09Zz", "i", "SEM32:keep_-@09Zz:i"},  // the alphabet itself is kept
      {"\xC1:/", "i", "SEM32:b6V:i"},               // 193, 58 and 47 modulo 64
      {"k", nullptr, "SEM32:k"},                    // no third part
      {"k", "", "SEM32:k:"},                        // an empty third part still adds ":"
      {"", "i", "SEM32::i"},
  };
  for (const KeyCase& keyCase : cases) {
    SCOPED_TRACE(keyCase.expected);
    const TavClResourceKeySemaphore key(keyCase.key, keyCase.instance);
    EXPECT_STREQ(key.getKey(), keyCase.expected);
    EXPECT_EQ(key.getLength(), std::string(keyCase.expected).size());
    EXPECT_EQ(std::string(key.getSecondPart()), std::string(keyCase.expected).substr(6));
  }
}

TEST(ResourceKey, TraceEnvironmentsUseTheDefaultInstance) {
  tav::test::TestTraceEnvironment environment(false, 100, "myapp", nullptr);
  EXPECT_STREQ(environment.getKey(), "SEM32:myapp:TAVTRACEINSTANCE0");
  EXPECT_STREQ(environment.getSecondPart(), "myapp:TAVTRACEINSTANCE0");
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
