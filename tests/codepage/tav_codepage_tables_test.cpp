// tav_codepage_tables_test.cpp - the built-in code page tables: which CCSIDs they serve, their
// routines at the edges of the input and output, and (where ICU is linked) agreement with ICU
// over every single byte, a sample of the multi-byte codes and every UCS-2 unit.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tav_codepage.h"
#include "tav_codepage_test_support.h"
#include "tav_test_data.h"

namespace {

using tav::test::parseHex;
using tav::test::routineName;

TavClCCSID ccsid(uint32_t number) { return TavClCCSID(static_cast<TavEnCCSID>(number)); }

// The CCSIDs with a table of their own read by a routine whose name starts with `kind`, each
// checked to choose that routine.
std::vector<std::pair<uint32_t, std::string>> tableCcsids(const std::string& kind) {
  std::vector<std::pair<uint32_t, std::string>> ccsids;
  for (const auto& row : tav::test::readDataTable("codepage/table_ccsids.txt", 2)) {
    const auto number = static_cast<uint32_t>(row.number(0));
    if (row.str(1).rfind(kind, 0) != 0) continue;
    EXPECT_EQ(routineName(TavClCodePage2UnicodeConverter(ccsid(number)).getAlgorithm()), row.str(1))
        << row.where;
    ccsids.emplace_back(number, row.str(1));
  }
  EXPECT_FALSE(ccsids.empty());
  return ccsids;
}

// A whole conversion with room to spare.
tav::test::Outcome whole(const TavClConverterABase& converter, const std::string& input) {
  return tav::test::convert(converter, input, 4 * input.size() + 8);
}

// Conversions at the edges of input and output, by every kind of converter, and the examples
// of UTF-8 and UCS-2. Each runs on an input block of its exact size, so that reading past it is
// caught by the sanitizer builds, and again through the form that takes the input by value.
TEST(CodePageTables, EdgesOfInputAndOutput) {
  for (const char* file : {"conversion_edges.txt", "utf8_to_ucs2.txt", "ucs2_to_utf8.txt"}) {
    for (const auto& row : tav::test::readDataTable(std::string("codepage/") + file, 7)) {
      SCOPED_TRACE(row.where);
      const auto converter = tav::test::makeConverter(row.str(0), row.str(1));
      const std::string input = parseHex(row.str(2));
      const auto outSize = static_cast<size_t>(row.number(3));
      const tav::test::Outcome outcome = tav::test::convert(*converter, input, outSize);
      EXPECT_EQ(outcome, (tav::test::Outcome{parseHex(row.str(4)), size_t(row.number(5)),
                                             tav::test::errorOf(row.str(6))}));
      std::string again(outSize, '\0');
      EXPECT_EQ(converter->convertBytes(&again[0], outSize, input.data(), input.size()),
                outcome.written.size());
      EXPECT_EQ(again.substr(0, outcome.written.size()), outcome.written);
    }
  }
}

TEST(CodePageTables, EucPlaceholderConvertsNothing) {
  EXPECT_EQ(tav::test::convert(TavClCodePage2UnicodeConverter(ccsid(33722)), "\xA4\xA2", 8,
                               tavConvertByTablesEUCtoUCS2),
            (tav::test::Outcome{"", 0, NO_ERROR}));
}

// Every byte of every single-byte page, in a short text and in a long one, which takes the
// table turned into host order first; with ICU, the short one as ICU reads it.
TEST(CodePageTables, EverySingleByteShortOrLongAsIcuReadsIt) {
  std::string all(256, '\0');
  for (int b = 0; b < 256; ++b) all[b] = static_cast<char>(b);
  const std::string tail = "tail!";  // one block of four and one byte behind the long text
  for (const auto& [number, routine] : tableCcsids("sbcs")) {
    SCOPED_TRACE(number);
    TavClCodePage2UnicodeConverter converter(ccsid(number));
    const std::string units = whole(converter, all).written;
    ASSERT_EQ(units.size(), 512u);
    EXPECT_EQ(whole(converter, all + all + all + all + all + tail).written,
              units + units + units + units + units + whole(converter, tail).written);
#if TAV_TEST_HAVE_ICU
    const tav::test::IcuConverter icu = tav::test::openIcu(number);
    ASSERT_NE(icu, nullptr);
    std::u16string expected = tav::test::icuToUnicode(icu.get(), all);
    // The one deliberate difference: the pages flagged EBCDIC write next line as line feed.
    if (ccsid(number).isEBCDIC() && expected[0x15] == 0x85) expected[0x15] = 0x0A;
    EXPECT_EQ(units, tav::test::ucs2(expected));
#endif
  }
}

#if TAV_TEST_HAVE_ICU

TEST(CodePageTablesAgainstIcu, EveryUnitThroughTheReverseTables) {
  std::u16string all(0x10000, u'\0');
  for (uint32_t unit = 0; unit < 0x10000; ++unit) all[unit] = static_cast<char16_t>(unit);
  for (uint32_t number : {500, 850}) {
    SCOPED_TRACE(number);
    const tav::test::IcuConverter icu = tav::test::openIcu(number);
    ASSERT_NE(icu, nullptr);
    TavClUnicode2CodePageConverter converter(ccsid(number));
    std::string actual(0x10000, '\0');
    ASSERT_EQ(converter.convertBytes(&actual[0], actual.size(), tav::test::ucs2(all).data(),
                                     2 * all.size()),
              0x10000u);
    const std::string substitute = tav::test::icuFromUnicode(icu.get(), u"\xFFFF");
    size_t dropped = 0;
    for (uint32_t unit = 0; unit < 0x10000; ++unit) {
      std::string expected = tav::test::icuFromUnicode(icu.get(), all.substr(unit, 1));
      // ICU drops the default ignorable code points it cannot map; a table gives every unit
      // one byte, the substitute.
      if (expected.empty()) {
        expected = substitute;
        ++dropped;
      }
      ASSERT_EQ(actual.substr(unit, 1), expected) << "U+" << std::hex << unit;
    }
    EXPECT_GT(dropped, 0u);
    EXPECT_LT(dropped, 5000u);
  }
}

// The codes a double-byte table is compared on: every lead byte with the trail bytes at the
// edges of the usual trail ranges and a few spread between; EUC-JP's three-byte codes with
// every second byte and GB18030's four-byte codes with every first byte, each with a few of
// the later bytes at their edges and between; and GB18030's ill-formed four-byte codes and
// the ends of its ranges.
std::vector<std::string> sampleCodes(uint32_t number, const std::vector<bool>& leads) {
  const int trails[] = {0x00, 0x30, 0x39, 0x40, 0x41, 0x7E, 0x7F, 0x80, 0x81, 0xA0,
                        0xA1, 0xFE, 0xFF, 0x4A, 0x5F, 0x93, 0xB5, 0xC8, 0xDD, 0xEC};
  std::vector<std::string> codes;
  for (int lead = 0; lead < 256; ++lead) {
    if (!leads[lead]) continue;
    for (int trail : trails) {
      codes.push_back({char(lead), char(trail)});
      if (number == 33722 && lead == 0x8F) {
        for (int second = 0; second < 256; ++second)
          codes.push_back({'\x8F', char(second), char(trail)});
      }
      if (number == 1392 && trail >= 0x81) {
        for (int digits : {0x3030, 0x3539, 0x3935}) {
          codes.push_back({char(lead), char(digits >> 8), char(trail), char(digits & 0xFF)});
        }
      }
    }
  }
  if (number == 1392) {
    for (const char* code : {"\x81\x30\x20\x30", "\x81\x30\x81\x20", "\x81\x30\x81", "\x81\x30",
                             "\xFE\x39\xFE\x39", "\x84\x31\xA4\x39", "\x84\x31\xA5\x30",
                             "\x90\x30\x81\x30", "\xE3\x32\x9A\x35", "\xE3\x32\x9A\x36"}) {
      codes.push_back(code);
    }
  }
  return codes;
}

// Each code between shift-out and shift-in for EBCDIC, with blanks behind it otherwise, so that
// a trail byte ICU reads again is never a lead byte at the end. The single bytes are read as
// in the single-byte pages.
TEST(CodePageTablesAgainstIcu, ASampleOfEveryDoubleByteTable) {
  for (const auto& [number, routine] : tableCcsids("dbcs")) {
    SCOPED_TRACE(number);
    const bool ebcdic = routine == "dbcs-ebcdic";
    const tav::test::IcuConverter icu = tav::test::openIcu(number);
    ASSERT_NE(icu, nullptr);
    TavClCodePage2UnicodeConverter converter(ccsid(number));
    // EBCDIC takes every byte but shift-out and shift-in as a lead byte in double-byte mode.
    std::vector<bool> leads(256, ebcdic);
    leads[0x0E] = leads[0x0F] = false;
    if (!ebcdic) {
      UBool starters[256];
      UErrorCode status = U_ZERO_ERROR;
      ucnv_getStarters(icu.get(), starters, &status);
      leads.assign(starters, starters + 256);
    }
    std::string singles;
    for (int b = 0; b < 256; ++b) {
      if (ebcdic ? b != 0x0E && b != 0x0F : !leads[b]) singles += static_cast<char>(b);
    }
    // The EBCDIC tables write next line as line feed, as the single-byte pages do.
    const auto asIcuReads = [&icu, ebcdic](const std::string& input) {
      std::u16string units = tav::test::icuToUnicode(icu.get(), input);
      for (char16_t& unit : units) unit = ebcdic && unit == 0x85 ? 0x0A : unit;
      return tav::test::ucs2(units);
    };
    EXPECT_EQ(whole(converter, singles).written, asIcuReads(singles));
    const std::vector<std::string> codes = sampleCodes(number, leads);
    EXPECT_GT(codes.size(), 1000u);
    for (const std::string& code : codes) {
      const std::string input = ebcdic ? "\x0E" + code + "\x0F" : code + "  ";
      ASSERT_EQ(whole(converter, input),
                (tav::test::Outcome{asIcuReads(input), input.size(), NO_ERROR}))
          << "code " << testing::PrintToString(code);
    }
  }
}

#endif  // TAV_TEST_HAVE_ICU

}  // namespace
