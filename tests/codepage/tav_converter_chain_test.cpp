// tav_converter_chain_test.cpp - conversion between two code pages through UCS-2, its buffer,
// and the C interface over it.

#include <gtest/gtest.h>

#include <string>

#include "../../src/codepage/tav_icu_os.h"
#include "tav_codepage.h"
#include "tav_codepage_c.h"
#include "tav_codepage_test_support.h"
#include "tav_test_allocator.h"

extern "C" long tavCodepageCRoundTrip(const char* text, char* ebcdic, size_t ebcdicSize);

namespace {

TavClCCSID ccsid(uint32_t number) { return TavClCCSID(static_cast<TavEnCCSID>(number)); }

TEST(ChainedConversion, BufferGrowsForLargeInputs) {
  TavClCodePage2CodePageConverter chain(ccsid(1208), ccsid(819));
  for (int count : {1, 40000, 1, 40000}) {
    SCOPED_TRACE(count);
    std::string input, expected;
    for (int i = 0; i < count; ++i) input += "\xC3\xA9z", expected += "\xE9z";
    std::string out(input.size(), '\0');
    size_t written = chain.convertBytes(&out[0], out.size(), input.data(), input.size());
    EXPECT_EQ(out.substr(0, written), expected);
    EXPECT_EQ(chain.getError().id, static_cast<uint32_t>(NO_ERROR));
  }
}

TEST(ChainedConversion, FailingBufferAllocationLeaksNothing) {
  // The buffer outlives a conversion, so each run uses a converter of its own.
  tav::test::forEachAllocationFailure([] {
    TavClCodePage2CodePageConverter chain(ccsid(1208), ccsid(819));
    char out[8];
    chain.convertBytes(out, sizeof out, "abc", 3);
  });
}

TEST(CodePageCApi, ConvertsAndReports) {
  TavStConverter* converter = tavConverterOpen(1208, 819);
  ASSERT_NE(converter, nullptr);
  EXPECT_EQ(tavConverterIsSupported(converter), 1);
  EXPECT_EQ(tavConverterGetMaximumSize(converter, 10), 10u);
  const char* text = "x\xC3\xA9y";
  char out[2];
  EXPECT_EQ(tavConverterConvert(converter, out, sizeof out, &text, 4), 2u);
  EXPECT_EQ(std::string(out, 2), "x\xE9");
  TavEnErrorClass errorClass = TAV_CLASS_UNKNOWN;
  EXPECT_EQ(tavConverterGetError(converter, &errorClass),
            static_cast<uint32_t>(CPCONVERTER_TOO_BIG));
  EXPECT_EQ(errorClass, TAV_CLASS_DATA_OUT_OF_BOUNDS);
  tavConverterClose(converter);

  TavStConverter* unsupported = tavConverterOpen(12345, 1208);
  ASSERT_NE(unsupported, nullptr);
  EXPECT_EQ(tavConverterIsSupported(unsupported), 0);
  text = "abc";
  EXPECT_EQ(tavConverterConvert(unsupported, out, sizeof out, &text, 3), 0u);
  EXPECT_EQ(tavConverterGetError(unsupported, nullptr),
            static_cast<uint32_t>(CPCONVERTER_UNSUPPORTED));
  tavConverterClose(unsupported);
}

TEST(CodePageCApi, NullHandlesAndFailingAllocations) {
  EXPECT_EQ(tavConverterIsSupported(nullptr), 0);
  const char* text = "abc";
  char out[4];
  EXPECT_EQ(tavConverterConvert(nullptr, out, sizeof out, &text, 3), 0u);
  TavEnErrorClass errorClass = TAV_CLASS_LOGIC;
  EXPECT_EQ(tavConverterGetError(nullptr, &errorClass), static_cast<uint32_t>(NO_ERROR));
  EXPECT_EQ(errorClass, TAV_CLASS_UNKNOWN);
  tavConverterClose(nullptr);

  tav::test::installCountingAllocator();
  tav::test::failAllocation(1);
  EXPECT_EQ(tavConverterOpen(1208, 819), nullptr);
  TavStConverter* converter = tavConverterOpen(1208, 819);
  ASSERT_NE(converter, nullptr);
  tav::test::failAllocation(1);
  EXPECT_EQ(tavConverterConvert(converter, out, sizeof out, &text, 3), 0u);
  EXPECT_EQ(tavConverterGetError(converter, &errorClass),
            static_cast<uint32_t>(CPCONVERTER_NO_TMP_BUFFER));
  EXPECT_EQ(errorClass, TAV_CLASS_OUT_OF_MEMORY);
  tav::test::failAllocation(0);
  EXPECT_EQ(tavConverterConvert(converter, out, sizeof out, &text, 3), 3u);
  tavConverterClose(converter);
}

TEST(CodePageCApi, UsableFromC) {
  if (!tav::os::icuIsAvailable()) GTEST_SKIP() << "ICU is not present";
  char ebcdic[16];
  EXPECT_EQ(tavCodepageCRoundTrip("Hi!", ebcdic, sizeof ebcdic), 3);
  EXPECT_EQ(std::string(ebcdic, 3), "\xC8\x89\x5A");
}

}  // namespace
