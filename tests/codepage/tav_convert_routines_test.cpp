// tav_convert_routines_test.cpp - the conversion routines: their defining examples, every
// output size up to the whole result with a guard region behind it, and the UTF-8 decoder.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "../../src/codepage/tav_icu_os.h"
#include "tav_codepage.h"
#include "tav_codepage_test_support.h"
#include "tav_test_data.h"

namespace {

using tav::test::GuardedOutput;
using tav::test::parseHex;
using tav::test::ucs2;

struct Outcome {
  std::string written;
  size_t consumed;
  uint32_t error;
};

Outcome convert(const TavClConverterABase& converter, const std::string& input, size_t outSize) {
  GuardedOutput out(outSize);
  const char* cursor = input.data();
  size_t written = converter.convertBytes(out.data(), outSize, &cursor, input.size());
  EXPECT_LE(written, outSize);
  EXPECT_TRUE(out.guardIntact()) << "wrote past the output size " << outSize;
  return {out.written(written), static_cast<size_t>(cursor - input.data()),
          converter.getError().id};
}

// Each routine's full result for an input, against which every shorter output is checked.
TEST(ConvertRoutines, EveryOutputSizeStaysInside) {
  for (const auto& row : tav::test::readDataTable("codepage/routine_inputs.txt", 5)) {
    SCOPED_TRACE(row.where);
    if (row.flag(3) && !tav::os::icuIsAvailable()) continue;
    auto make = [&row] { return tav::test::makeConverter(row.str(1), row.str(2)); };
    const std::string input = parseHex(row.str(4));
    auto converter = make();
    ASSERT_TRUE(converter->isSupported());
    Outcome whole = convert(*converter, input, input.size() * 4);
    EXPECT_NE(whole.error, static_cast<uint32_t>(CPCONVERTER_TOO_BIG));
    for (size_t outSize = 0; outSize <= whole.written.size(); ++outSize) {
      SCOPED_TRACE(outSize);
      Outcome part = convert(*make(), input, outSize);
      // A shorter output holds a start of the whole result and stops with TOO_BIG.
      EXPECT_EQ(part.written, whole.written.substr(0, part.written.size()));
      EXPECT_LE(part.consumed, whole.consumed);
      if (outSize < whole.written.size()) {
        EXPECT_EQ(part.error, static_cast<uint32_t>(CPCONVERTER_TOO_BIG));
      } else {
        EXPECT_EQ(part.written, whole.written);
        EXPECT_EQ(part.error, whole.error);
      }
    }
    // Every input size, the output large enough: nothing is read past the input's end, which
    // the sanitizer builds check, and the pointer never moves past it.
    for (size_t inSize = 0; inSize <= input.size(); ++inSize) {
      SCOPED_TRACE(inSize);
      std::unique_ptr<char[]> exact(new char[inSize == 0 ? 1 : inSize]);
      std::memcpy(exact.get(), input.data(), inSize);
      GuardedOutput out(inSize * 4);
      const char* cursor = exact.get();
      make()->convertBytes(out.data(), inSize * 4, &cursor, inSize);
      EXPECT_LE(static_cast<size_t>(cursor - exact.get()), inSize);
      EXPECT_TRUE(out.guardIntact());
    }
  }
}

TEST(ConvertRoutines, NullBuffersHoldNothing) {
  TavClCodePage2UnicodeConverter fromUtf8(TAV_CCSID_UTF8);
  const char* nothing = nullptr;
  EXPECT_EQ(fromUtf8.convertBytes(nullptr, 100, &nothing, 100), 0u);
  EXPECT_EQ(fromUtf8.getError().id, static_cast<uint32_t>(NO_ERROR));
  const char* text = "abc";
  EXPECT_EQ(fromUtf8.convertBytes(nullptr, 100, &text, 3), 0u);
  EXPECT_EQ(fromUtf8.getError().id, static_cast<uint32_t>(CPCONVERTER_TOO_BIG));
  EXPECT_STREQ(text, "abc");
}

TEST(ConvertRoutines, CopyAndSwapInPlace) {
  std::string text = ucs2({0x1234, 0xABCD});
  TavClUnicode2CodePageConverter swapping(TAV_CCSID_UCS2_BIG_ENDIAN);
  EXPECT_EQ(swapping.convertBytes(&text[0], text.size(), text.data(), text.size()), 4u);
  EXPECT_EQ(text, std::string("\x12\x34\xAB\xCD", 4));
}

TEST(ConvertRoutines, SystemConversionIntoTheProcessCodePage) {
  if (TavClCCSID::getSystemCCSID() == TAV_CCSID_UNKNOWN) {
    GTEST_SKIP() << "the environment's codeset is not one the library knows";
  }
  TavClUnicode2CodePageConverter system(TavClCCSID::getSystemCCSID());
  TavClUnicode2CodePageConverter notSystem(TavClCCSID(static_cast<TavEnCCSID>(12345)));
  const std::string input = ucs2({'A', 'b', '1'});
  struct Case {
    const TavClConverterABase* converter;
    std::string input;
    size_t outSize;
    std::string written;
    size_t consumed;
    uint32_t error;
  };
  const Case cases[] = {
      {&system, input, 16, "Ab1", 6, NO_ERROR},
      {&system, input + "x", 16, "Ab1", 6, CPCONVERTER_INCOMPLETE},
      {&system, input, 2, "", 0, CPCONVERTER_TOO_BIG},
      {&system, "x", 16, "", 0, CPCONVERTER_INCOMPLETE},
      {&notSystem, input, 16, "", 0, CPCONVERTER_TOO_BIG},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.input.size() << " bytes into " << c.outSize);
    GuardedOutput out(c.outSize);
    const char* cursor = c.input.data();
    c.converter->setError(NO_ERROR, TAV_CLASS_UNKNOWN);
    TavClConverterABase::_TavStConverter conversion{c.converter, out.data(), c.outSize, &cursor,
                                                    c.input.size()};
    size_t written = tavConvertByWindowsCallUCS2ToWinCP(conversion);
    EXPECT_EQ(out.written(written), c.written);
    EXPECT_EQ(static_cast<size_t>(cursor - c.input.data()), c.consumed);
    EXPECT_EQ(c.converter->getError().id, c.error);
    EXPECT_TRUE(out.guardIntact());
  }
}

TEST(ConvertRoutines, IcuWithUnalignedBuffersAndOddSizes) {
  if (!tav::os::icuIsAvailable()) GTEST_SKIP() << "ICU is not present";
  // 1112 has no built-in table, so ICU serves it; these letters are the same as in 37.
  TavClCodePage2UnicodeConverter fromIcu(static_cast<TavEnCCSID>(1112));
  TavClUnicode2CodePageConverter toIcu(static_cast<TavEnCCSID>(1112));
  const std::string hello = ucs2({'H', 'e', 'l', 'l', 'o'});
  // One byte in, so that the UCS-2 side sits on an odd address.
  std::string shifted = "#" + hello + "!";
  char out[16];
  EXPECT_EQ(toIcu.convertBytes(out, sizeof out, shifted.data() + 1, hello.size()), 5u);
  EXPECT_EQ(std::string(out, 5), "\xC8\x85\x93\x93\x96");
  EXPECT_EQ(toIcu.convertBytes(out, sizeof out, shifted.data() + 1, hello.size() + 1), 5u);
  EXPECT_EQ(toIcu.getError().id, static_cast<uint32_t>(CPCONVERTER_INCOMPLETE));

  char wide[17];
  EXPECT_EQ(fromIcu.convertBytes(wide + 1, 16, "\xC8\x85\x93\x93\x96", 5), 10u);
  EXPECT_EQ(std::string(wide + 1, 10), hello);
  EXPECT_EQ(fromIcu.convertBytes(wide + 1, 3, "\xC8\x85\x93\x93\x96", 5), 2u);
  EXPECT_EQ(fromIcu.getError().id, static_cast<uint32_t>(CPCONVERTER_TOO_BIG));
}

TEST(Utf8Character, DecodesOneWellFormedCharacter) {
  for (const auto& row : tav::test::readDataTable("codepage/utf8_characters.txt", 2)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(TavClConverterABase::convertUtf8CharToUtf32(parseHex(row.str(0)).c_str()),
              std::stoul(row.str(1), nullptr, 16));
  }
  EXPECT_EQ(TavClConverterABase::convertUtf8CharToUtf32(nullptr), 0u);
}

}  // namespace
