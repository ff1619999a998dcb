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

using tav::test::GuardedOutput;
using tav::test::ucs2;

TavClCCSID ccsid(uint32_t number) { return TavClCCSID(static_cast<TavEnCCSID>(number)); }

TEST(ChainedConversion, ShortCutsAndTheWholeChain) {
  struct Case {
    uint32_t source, target;
    std::string input;
    size_t outSize;
    std::string written;
    size_t consumed;
    uint32_t error;
  };
  const Case cases[] = {
      // The same CCSID on both sides (65501 counts as 13488) is copied as far as it fits.
      {37, 37, "\xC8\x85\x93", 2, "\xC8\x85", 2, NO_ERROR},
      {65501, 13488, "abc", 8, "abc", 3, NO_ERROR},
      // From UCS-2 only the second stage runs, and its error is the chain's.
      {13488, 1208, ucs2({0xE9, 'x'}), 2, "\xC3\xA9", 2, CPCONVERTER_TOO_BIG},
      // Into UCS-2 only the first stage runs.
      {1208, 13488, "\xC3\xA9\xC3", 8, ucs2({0xE9}), 2, CPCONVERTER_INCOMPLETE},
      // Both stages through the buffer.
      {1208, 819, "caf\xC3\xA9 \xE2\x82\xAC", 16, "caf\xE9 \xAC", 9, NO_ERROR},
      {65500, 1208, std::string("\x00\x41\x00\xE9", 4), 8, "A\xC3\xA9", 4, NO_ERROR},
      {1208, 65500, "A\xC3\xA9", 8, std::string("\x00\x41\x00\xE9", 4), 3, NO_ERROR},
      // A cut character stops the first stage; the second converts what came before it.
      {1208, 819, "ab\xC3", 8, "ab", 2, NO_ERROR},
      // A first stage that fails ends the conversion.
      {12345, 1208, "abc", 8, "", 0, CPCONVERTER_UNSUPPORTED},
      {1208, 12345, "abc", 8, "", 3, CPCONVERTER_UNSUPPORTED},
      // A full output stops the second stage; the first has consumed all its input.
      {1208, 819, "abcdef", 3, "abc", 6, CPCONVERTER_TOO_BIG},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.source << ">" << c.target << " " << c.input.size()
                                    << " bytes into " << c.outSize);
    TavClCodePage2CodePageConverter chain(ccsid(c.source), ccsid(c.target));
    GuardedOutput out(c.outSize);
    const char* cursor = c.input.data();
    size_t written = chain.convertBytes(out.data(), c.outSize, &cursor, c.input.size());
    EXPECT_EQ(out.written(written), c.written);
    EXPECT_EQ(static_cast<size_t>(cursor - c.input.data()), c.consumed);
    EXPECT_EQ(chain.getError().id, c.error);
    EXPECT_TRUE(out.guardIntact());
    // The form taking the input by value converts the same.
    GuardedOutput again(c.outSize);
    EXPECT_EQ(chain.convertBytes(again.data(), c.outSize, c.input.data(), c.input.size()), written);
    EXPECT_EQ(again.written(written), c.written);
  }
}

TEST(ChainedConversion, BufferGrowsForLargeInputs) {
  TavClCodePage2CodePageConverter chain(ccsid(1208), ccsid(819));
  std::string small = "\xC3\xA9";
  std::string large;
  for (int i = 0; i < 40000; ++i) large += (i % 2 == 0) ? "\xC3\xA9" : "z";
  std::string expected;
  for (int i = 0; i < 40000; ++i) expected += (i % 2 == 0) ? '\xE9' : 'z';
  const std::string* inputs[] = {&small, &large, &small, &large};
  for (const std::string* input : inputs) {
    SCOPED_TRACE(input->size());
    std::string out(input->size(), '\0');
    size_t written = chain.convertBytes(&out[0], out.size(), input->data(), input->size());
    EXPECT_EQ(out.substr(0, written), input == &small ? std::string("\xE9") : expected);
    EXPECT_EQ(chain.getError().id, static_cast<uint32_t>(NO_ERROR));
  }
}

TEST(ChainedConversion, ThroughIcu) {
  if (!tav::os::icuIsAvailable()) GTEST_SKIP() << "ICU is not present";
  TavClCodePage2CodePageConverter toEbcdic(ccsid(1208), ccsid(37));
  TavClCodePage2UTF8Converter back(ccsid(37));
  const std::string text = "Hello, caf\xC3\xA9!";
  char ebcdic[32];
  size_t size = toEbcdic.convertBytes(ebcdic, sizeof ebcdic, text.data(), text.size());
  EXPECT_EQ(std::string(ebcdic, size), "\xC8\x85\x93\x93\x96\x6B\x40\x83\x81\x86\x51\x5A");
  char utf8[32];
  size_t length = back.convertBytes(utf8, sizeof utf8, ebcdic, size);
  EXPECT_EQ(std::string(utf8, length), text);
  EXPECT_EQ(back.getError().id, static_cast<uint32_t>(NO_ERROR));
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
  EXPECT_EQ(tavConverterGetError(converter, nullptr), static_cast<uint32_t>(CPCONVERTER_TOO_BIG));
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
  EXPECT_EQ(tavConverterGetMaximumSize(nullptr, 10), 0u);
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
