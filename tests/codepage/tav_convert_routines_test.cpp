// tav_convert_routines_test.cpp - the conversion routines: one input per routine cut at every
// output and input size, null buffers, the process code page's routine, ICU on unaligned
// buffers, and the decoder of one UTF-8 character.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "../../src/codepage/tav_icu_os.h"
#include "tav_codepage.h"
#include "tav_codepage_test_support.h"
#include "tav_test_data.h"

namespace {

using tav::test::convert;
using tav::test::Outcome;
using tav::test::parseHex;
using tav::test::ucs2;

// Each routine's full result for an input, against which every shorter output is checked.
TEST(ConvertRoutines, EveryOutputSizeStaysInside) {
  for (const auto& row : tav::test::readDataTable("codepage/routine_inputs.txt", 5)) {
    SCOPED_TRACE(row.where);
    if (row.flag(3) && !tav::os::icuIsAvailable()) continue;
    auto make = [&row] { return tav::test::makeConverter(row.str(1), row.str(2)); };
    const std::string input = parseHex(row.str(4));
    ASSERT_TRUE(make()->isSupported());
    const Outcome whole = convert(*make(), input, input.size() * 4);
    EXPECT_NE(whole.error, static_cast<uint32_t>(CPCONVERTER_TOO_BIG));
    for (size_t outSize = 0; outSize <= whole.written.size(); ++outSize) {
      if (row.str(0) != "dbcs ebcdic") {
        tav::test::checkOutputCut(*make(), input, whole, outSize);
        continue;
      }
      // A routine that keeps a shift state: a shorter output holds a start of the whole result
      // and stops with TOO_BIG.
      const Outcome part = convert(*make(), input, outSize);
      EXPECT_EQ(part.written, whole.written.substr(0, part.written.size())) << outSize;
      EXPECT_EQ(part.error,
                outSize < whole.written.size() ? uint32_t{CPCONVERTER_TOO_BIG} : whole.error);
    }
    // Every input size, the output large enough: nothing is read past the input's end, which
    // the sanitizer builds check, and the pointer never moves past it.
    for (size_t inSize = 0; inSize <= input.size(); ++inSize) {
      EXPECT_LE(convert(*make(), input.substr(0, inSize), inSize * 4).consumed, inSize);
    }
  }
}

TEST(ConvertRoutines, NullBuffersHoldNothingAndSwapWorksInPlace) {
  TavClCodePage2UnicodeConverter fromUtf8(TAV_CCSID_UTF8);
  const char* nothing = nullptr;
  EXPECT_EQ(fromUtf8.convertBytes(nullptr, 100, &nothing, 100), 0u);
  EXPECT_EQ(fromUtf8.getError().id, static_cast<uint32_t>(NO_ERROR));
  const char* text = "abc";
  EXPECT_EQ(fromUtf8.convertBytes(nullptr, 100, &text, 3), 0u);
  EXPECT_EQ(fromUtf8.getError().id, static_cast<uint32_t>(CPCONVERTER_TOO_BIG));
  EXPECT_STREQ(text, "abc");

  std::string swapped = ucs2(u"\x1234\xABCD");
  TavClUnicode2CodePageConverter swapping(TAV_CCSID_UCS2_BIG_ENDIAN);
  EXPECT_EQ(swapping.convertBytes(&swapped[0], swapped.size(), swapped.data(), swapped.size()), 4u);
  EXPECT_EQ(swapped, std::string("\x12\x34\xAB\xCD", 4));
}

// The routine for the process code page, run in place of the converter's own (ICU comes first
// where it is present); it stops with TOO_BIG whenever the system call fails.
TEST(ConvertRoutines, SystemConversionIntoTheProcessCodePage) {
  if (TavClCCSID::getSystemCCSID() == TAV_CCSID_UNKNOWN) {
    GTEST_SKIP() << "the environment's codeset is not one the library knows";
  }
  TavClUnicode2CodePageConverter system(TavClCCSID::getSystemCCSID());
  TavClUnicode2CodePageConverter notSystem(TavClCCSID(static_cast<TavEnCCSID>(12345)));
  const auto viaSystem = [](const TavClConverterABase& converter, const std::string& input,
                            size_t outSize) {
    return convert(converter, input, outSize, tavConvertByWindowsCallUCS2ToWinCP);
  };
  const std::string input = ucs2(u"Ab1");
  EXPECT_EQ(viaSystem(system, input, 16), (Outcome{"Ab1", 6, NO_ERROR}));
  EXPECT_EQ(viaSystem(system, input + "x", 16), (Outcome{"Ab1", 6, CPCONVERTER_INCOMPLETE}));
  EXPECT_EQ(viaSystem(system, input, 2), (Outcome{"", 0, CPCONVERTER_TOO_BIG}));
  EXPECT_EQ(viaSystem(system, "x", 16), (Outcome{"", 0, CPCONVERTER_INCOMPLETE}));
  EXPECT_EQ(viaSystem(notSystem, input, 16), (Outcome{"", 0, CPCONVERTER_TOO_BIG}));
}

TEST(ConvertRoutines, IcuWithUnalignedBuffersAndOddSizes) {
  if (!tav::os::icuIsAvailable()) GTEST_SKIP() << "ICU is not present";
  // 1112 has no built-in table, so ICU serves it; these letters are the same as in 37.
  TavClCodePage2UnicodeConverter fromIcu(static_cast<TavEnCCSID>(1112));
  TavClUnicode2CodePageConverter toIcu(static_cast<TavEnCCSID>(1112));
  const std::string hello = ucs2(u"Hello"), ebcdic = "\xC8\x85\x93\x93\x96";
  // One byte in, so that the UCS-2 side sits on an odd address.
  const std::string shifted = "#" + hello + "!";
  char out[17];
  EXPECT_EQ(toIcu.convertBytes(out, 16, shifted.data() + 1, hello.size()), 5u);
  EXPECT_EQ(std::string(out, 5), ebcdic);
  EXPECT_EQ(toIcu.convertBytes(out, 16, shifted.data() + 1, hello.size() + 1), 5u);
  EXPECT_EQ(toIcu.getError().id, static_cast<uint32_t>(CPCONVERTER_INCOMPLETE));
  EXPECT_EQ(fromIcu.convertBytes(out + 1, 16, ebcdic.data(), 5), 10u);
  EXPECT_EQ(std::string(out + 1, 10), hello);
  EXPECT_EQ(fromIcu.convertBytes(out + 1, 3, ebcdic.data(), 5), 2u);
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
