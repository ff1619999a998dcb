// tav_converter_chain_test.cpp - conversion between two code pages through UCS-2, its buffer,
// and the C interface over it.

#include <gtest/gtest.h>

#include <string>

#include "tav_codepage.h"
#include "tav_codepage_c.h"
#include "tav_test_allocator.h"

extern "C" int tavCodepageCIsSupported(uint32_t source, uint32_t target);

namespace {

TavClCCSID ccsid(uint32_t number) { return TavClCCSID(static_cast<TavEnCCSID>(number)); }

TEST(ChainedConversion, BufferGrowsForLargeInputs) {
  TavClCodePage2CodePageConverter chain(ccsid(1208), ccsid(819));
  EXPECT_EQ(chain.getSecondStage().getTargetCCSID().getCCSID(), TAV_CCSID_ISO8859_1);
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

// The C interface: handles supported or not, null handles, the errors of a conversion and of
// allocations that fail.
TEST(CodePageCApi, HandlesAndErrorReturns) {
  EXPECT_EQ(tavCodepageCIsSupported(1208, 819), 1);
  EXPECT_EQ(tavCodepageCIsSupported(12345, 1208), 0);
  EXPECT_EQ(tavConverterIsSupported(nullptr), 0);
  const char* text = "x\xC3\xA9y";
  char out[4];
  EXPECT_EQ(tavConverterConvert(nullptr, out, sizeof out, &text, 4), 0u);
  TavEnErrorClass errorClass = TAV_CLASS_LOGIC;
  EXPECT_EQ(tavConverterGetError(nullptr, &errorClass), static_cast<uint32_t>(NO_ERROR));
  EXPECT_EQ(errorClass, TAV_CLASS_UNKNOWN);
  EXPECT_EQ(tavConverterGetMaximumSize(nullptr, 10), 0u);
  tavConverterClose(nullptr);

  tav::test::installCountingAllocator();
  tav::test::failAllocation(1);
  EXPECT_EQ(tavConverterOpen(1208, 819), nullptr);
  TavStConverter* converter = tavConverterOpen(1208, 819);
  ASSERT_NE(converter, nullptr);
  EXPECT_EQ(tavConverterGetMaximumSize(converter, 10), 10u);
  tav::test::failAllocation(1);
  EXPECT_EQ(tavConverterConvert(converter, out, sizeof out, &text, 4), 0u);
  EXPECT_EQ(tavConverterGetError(converter, &errorClass),
            static_cast<uint32_t>(CPCONVERTER_NO_TMP_BUFFER));
  EXPECT_EQ(errorClass, TAV_CLASS_OUT_OF_MEMORY);
  tav::test::failAllocation(0);
  EXPECT_EQ(tavConverterConvert(converter, out, 2, &text, 4), 2u);
  EXPECT_EQ(std::string(out, 2), "x\xE9");
  EXPECT_EQ(tavConverterGetError(converter, &errorClass),
            static_cast<uint32_t>(CPCONVERTER_TOO_BIG));
  EXPECT_EQ(errorClass, TAV_CLASS_DATA_OUT_OF_BOUNDS);
  tavConverterClose(converter);
}

}  // namespace
