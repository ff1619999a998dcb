// tav_codepage_tables_test.cpp - the built-in code page tables: which CCSIDs they serve, their
// routines at the edges of the input and output, and (where ICU is linked) agreement with ICU
// over every byte, every double-byte code and every UCS-2 unit.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "tav_codepage.h"
#include "tav_codepage_test_support.h"
#include "tav_test_data.h"

#if TAV_TEST_HAVE_ICU
#include <unicode/ucnv.h>
#endif

namespace {

using tav::test::GuardedOutput;
using tav::test::parseHex;
using tav::test::routineName;
using tav::test::ucs2;

TavClCCSID ccsid(uint32_t number) { return TavClCCSID(static_cast<TavEnCCSID>(number)); }

const uint32_t kSingleByteCcsids[] = {37,   273,  277,  278,  280,  284,  285,  297,  500,  871,
                                      1140, 1141, 1142, 1143, 1144, 1145, 1146, 1147, 1148, 1149,
                                      1047, 870,  1153, 1025, 1026, 875,  437,  850,  852,  855,
                                      857,  858,  860,  861,  863,  865,  866,  869,  1250, 1251,
                                      1252, 1253, 1254, 1255, 1256, 1257, 1258, 819,  923};
const uint32_t kDoubleByteCcsids[] = {930, 933, 935, 937, 939, 950, 1386, 1390, 1392, 1399, 33722};
const uint32_t kEbcdicDoubleByteCcsids[] = {930, 933, 935, 937, 939, 1390, 1399};

bool isEbcdicDoubleByte(uint32_t number) {
  for (uint32_t ebcdic : kEbcdicDoubleByteCcsids) {
    if (ebcdic == number) return true;
  }
  return false;
}

TEST(CodePageTables, EveryTableCcsidChoosesItsTable) {
  for (uint32_t number : kSingleByteCcsids) {
    SCOPED_TRACE(number);
    TavClCodePage2UnicodeConverter converter(ccsid(number));
    EXPECT_EQ(routineName(converter.getAlgorithm()),
              ccsid(number).isEBCDIC() ? "sbcs-ebcdic" : "sbcs-ascii");
    EXPECT_FALSE(converter.requiresExternalICUData());
  }
  for (uint32_t number : kDoubleByteCcsids) {
    SCOPED_TRACE(number);
    TavClCodePage2UnicodeConverter converter(ccsid(number));
    EXPECT_EQ(routineName(converter.getAlgorithm()),
              isEbcdicDoubleByte(number) ? "dbcs-ebcdic" : "dbcs-ascii");
  }
  // Neighbours without a table of their own go on to ICU (or stay unsupported without it).
  const uint32_t withoutTable[] = {1, 36, 38, 1139, 1154, 929, 931, 33723, 948, 924};
  for (uint32_t number : withoutTable) {
    SCOPED_TRACE(number);
    TavClCodePage2UnicodeConverter converter(ccsid(number));
    EXPECT_EQ(routineName(converter.getAlgorithm()).find("bcs-"), std::string::npos);
  }
  const uint32_t reverse[] = {500, 850};
  for (uint32_t number : reverse) {
    TavClUnicode2CodePageConverter converter(ccsid(number));
    EXPECT_EQ(routineName(converter.getAlgorithm()), "reverse") << number;
  }
}

// A long input takes the host-order copy of the table; it must give what byte-by-byte
// conversions of the same bytes give, every next line mended, whatever the text's length.
TEST(CodePageTables, LongInputsConvertAsShortOnes) {
  std::string bytes;
  for (int round = 0; round < 5; ++round) {
    for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>((byte * 7 + round) & 0xFF);
  }
  bytes += "tail";
  for (uint32_t number : kSingleByteCcsids) {
    SCOPED_TRACE(number);
    TavClCodePage2UnicodeConverter converter(ccsid(number));
    std::string whole(bytes.size() * 2, '\0');
    ASSERT_EQ(converter.convertBytes(&whole[0], whole.size(), bytes.data(), bytes.size()),
              whole.size());
    for (size_t i = 0; i < bytes.size(); ++i) {
      char unit[2];
      ASSERT_EQ(converter.convertBytes(unit, 2, bytes.data() + i, 1), 2u);
      ASSERT_EQ(std::memcmp(unit, whole.data() + 2 * i, 2), 0) << "byte " << i;
    }
  }
}

uint32_t errorOf(const std::string& status) {
  if (status == "ok") return NO_ERROR;
  if (status == "incomplete") return CPCONVERTER_INCOMPLETE;
  return status == "toobig" ? CPCONVERTER_TOO_BIG : CPCONVERTER_UNSUPPORTED;
}

// Conversions at the edges of input and output, by every kind of converter. Each runs on an
// input block of its exact size, so that reading past it is caught by the sanitizer builds,
// and again through the form that takes the input by value.
TEST(CodePageTables, EdgesOfInputAndOutput) {
  for (const auto& row : tav::test::readDataTable("codepage/conversion_edges.txt", 7)) {
    SCOPED_TRACE(row.where);
    const auto converter = tav::test::makeConverter(row.str(0), row.str(1));
    const std::string input = parseHex(row.str(2));
    std::vector<char> exact(input.begin(), input.end());
    const auto outSize = static_cast<size_t>(row.number(3));
    GuardedOutput out(outSize);
    const char* cursor = exact.data();
    const size_t written = converter->convertBytes(out.data(), outSize, &cursor, exact.size());
    EXPECT_EQ(out.written(written), parseHex(row.str(4)));
    EXPECT_EQ(cursor - exact.data(), row.number(5));
    EXPECT_EQ(converter->getError().id, errorOf(row.str(6)));
    EXPECT_TRUE(out.guardIntact());
    GuardedOutput again(outSize);
    EXPECT_EQ(converter->convertBytes(again.data(), outSize, exact.data(), exact.size()), written);
    EXPECT_EQ(again.written(written), out.written(written));
  }
}

TEST(CodePageTables, EucPlaceholderConvertsNothing) {
  TavClCodePage2UnicodeConverter converter(ccsid(33722));
  const char* input = "\xA4\xA2";
  const char* cursor = input;
  char out[8] = {};
  TavClConverterABase::_TavStConverter conversion{&converter, out, sizeof out, &cursor, 2};
  EXPECT_EQ(tavConvertByTablesEUCtoUCS2(conversion), 0u);
  EXPECT_EQ(cursor, input);
}

// A round trip through the tables alone: 850 to UCS-2 to 850 keeps every byte.
TEST(CodePageTables, Pc850RoundTripsThroughItsReverseTable) {
  std::string all(256, '\0');
  for (int b = 0; b < 256; ++b) all[b] = static_cast<char>(b);
  TavClCodePage2UnicodeConverter toUnicode850(TAV_CCSID_PC_850);
  TavClUnicode2CodePageConverter from850(TAV_CCSID_PC_850);
  std::string unicode(512, '\0');
  ASSERT_EQ(toUnicode850.convertBytes(&unicode[0], unicode.size(), all.data(), all.size()), 512u);
  std::string back(256, '\0');
  ASSERT_EQ(from850.convertBytes(&back[0], back.size(), unicode.data(), unicode.size()), 256u);
  EXPECT_EQ(back, all);
}

#if TAV_TEST_HAVE_ICU

std::vector<uint16_t> unitsOf(const std::string& bytes) {
  std::vector<uint16_t> units(bytes.size() / 2);
  if (!units.empty()) std::memcpy(units.data(), bytes.data(), units.size() * 2);
  return units;
}

// A whole conversion with room to spare.
std::vector<uint16_t> toUnicode(const TavClConverterABase& converter, const std::string& input) {
  std::string out(input.size() * 4 + 8, '\0');
  size_t written = converter.convertBytes(&out[0], out.size(), input.data(), input.size());
  return unitsOf(out.substr(0, written));
}

// ICU's converter for a CCSID, opened as the library opens it.
class IcuConverter {
 public:
  explicit IcuConverter(uint32_t number) {
    UErrorCode status = U_ZERO_ERROR;
    converter = number == 1392 ? ucnv_open("gb18030", &status)
                               : ucnv_openCCSID(static_cast<int32_t>(number), UCNV_IBM, &status);
    if (U_FAILURE(status)) converter = nullptr;
    if (converter != nullptr) ucnv_setFallback(converter, true);
  }
  ~IcuConverter() {
    if (converter != nullptr) ucnv_close(converter);
  }
  IcuConverter(const IcuConverter&) = delete;
  IcuConverter& operator=(const IcuConverter&) = delete;

  bool isOpen() const { return converter != nullptr; }

  std::vector<uint16_t> toUnicode(const std::string& input) {
    std::vector<UChar> units(input.size() * 2 + 8);
    UErrorCode status = U_ZERO_ERROR;
    int32_t count = ucnv_toUChars(converter, units.data(), static_cast<int32_t>(units.size()),
                                  input.data(), static_cast<int32_t>(input.size()), &status);
    EXPECT_FALSE(U_FAILURE(status)) << u_errorName(status);
    return std::vector<uint16_t>(units.begin(), units.begin() + count);
  }

  std::string fromUnicode(uint16_t unit) {
    char bytes[8];
    UChar source = unit;
    UErrorCode status = U_ZERO_ERROR;
    int32_t count = ucnv_fromUChars(converter, bytes, sizeof bytes, &source, 1, &status);
    EXPECT_FALSE(U_FAILURE(status)) << u_errorName(status);
    return std::string(bytes, static_cast<size_t>(count));
  }

  std::vector<bool> leadBytes() {
    UBool starters[256];
    UErrorCode status = U_ZERO_ERROR;
    ucnv_getStarters(converter, starters, &status);
    return std::vector<bool>(starters, starters + 256);
  }

 private:
  UConverter* converter;
};

// The deliberate difference of the EBCDIC routines: next line is written as line feed.
std::vector<uint16_t> withEbcdicLineFeed(std::vector<uint16_t> units, bool ebcdic) {
  for (uint16_t& unit : units) {
    if (ebcdic && unit == 0x85) unit = 0x0A;
  }
  return units;
}

TEST(CodePageTablesAgainstIcu, EverySingleByte) {
  std::string all(256, '\0');
  for (int b = 0; b < 256; ++b) all[b] = static_cast<char>(b);
  for (uint32_t number : kSingleByteCcsids) {
    SCOPED_TRACE(number);
    IcuConverter icu(number);
    ASSERT_TRUE(icu.isOpen());
    TavClCodePage2UnicodeConverter converter(ccsid(number));
    std::vector<uint16_t> expected = icu.toUnicode(all);
    ASSERT_EQ(expected.size(), 256u);
    std::vector<uint16_t> actual = toUnicode(converter, all);
    bool ebcdic = ccsid(number).isEBCDIC();
    // The only difference is byte 0x15 of the pages flagged EBCDIC.
    EXPECT_EQ(expected[0x15] == 0x85 && ebcdic, expected != actual);
    EXPECT_EQ(actual, withEbcdicLineFeed(expected, ebcdic));
  }
}

TEST(CodePageTablesAgainstIcu, EveryUnitThroughTheReverseTables) {
  std::string all;
  for (uint32_t unit = 0; unit < 0x10000; ++unit) all += ucs2({static_cast<uint16_t>(unit)});
  const uint32_t reverse[] = {500, 850};
  for (uint32_t number : reverse) {
    SCOPED_TRACE(number);
    IcuConverter icu(number);
    ASSERT_TRUE(icu.isOpen());
    TavClUnicode2CodePageConverter converter(ccsid(number));
    std::string actual(0x10000, '\0');
    ASSERT_EQ(converter.convertBytes(&actual[0], actual.size(), all.data(), all.size()), 0x10000u);
    const std::string substitute = icu.fromUnicode(0xFFFF);
    size_t dropped = 0;
    for (uint32_t unit = 0; unit < 0x10000; ++unit) {
      std::string expected = icu.fromUnicode(static_cast<uint16_t>(unit));
      // ICU drops the default ignorable code points it cannot map; a table gives every unit
      // one byte, the substitute.
      if (expected.empty()) {
        expected = substitute;
        ++dropped;
      }
      if (expected != actual.substr(unit, 1)) {
        ADD_FAILURE() << "U+" << std::hex << unit;
        break;
      }
    }
    EXPECT_GT(dropped, 0u);
    EXPECT_LT(dropped, 5000u);
  }
}

// Every pair of every lead byte of the double-byte tables, between shift-out and shift-in for
// EBCDIC, with a blank behind it otherwise, so that a trail byte ICU reads again is never a lead
// byte at the end.
TEST(CodePageTablesAgainstIcu, EveryDoubleByteCode) {
  for (uint32_t number : kDoubleByteCcsids) {
    SCOPED_TRACE(number);
    IcuConverter icu(number);
    ASSERT_TRUE(icu.isOpen());
    TavClCodePage2UnicodeConverter converter(ccsid(number));
    bool ebcdic = isEbcdicDoubleByte(number);
    std::vector<bool> leads(256, false);
    if (!ebcdic) leads = icu.leadBytes();
    std::string singles;
    for (int b = 0; b < 256; ++b) {
      if (!leads[b] && !(ebcdic && (b == 0x0E || b == 0x0F))) singles += static_cast<char>(b);
    }
    EXPECT_EQ(toUnicode(converter, singles), withEbcdicLineFeed(icu.toUnicode(singles), ebcdic));
    size_t codes = 0;
    for (int lead = 0; lead < 256; ++lead) {
      if (ebcdic ? (lead == 0x0E || lead == 0x0F) : !leads[lead]) continue;
      if (number == 33722 && lead == 0x8F) continue;  // three-byte codes, below
      for (int trail = 0; trail < 256; ++trail) {
        if (number == 1392 && trail >= 0x30 && trail <= 0x39) continue;  // four-byte, below
        std::string code{static_cast<char>(lead), static_cast<char>(trail)};
        std::string input = ebcdic ? "\x0E" + code + "\x0F" : code + " ";
        std::vector<uint16_t> expected = withEbcdicLineFeed(icu.toUnicode(input), ebcdic);
        std::vector<uint16_t> actual = toUnicode(converter, input);
        if (actual != expected || converter.getError().id != NO_ERROR) {
          ADD_FAILURE() << std::hex << "code " << lead << " " << trail << ": "
                        << testing::PrintToString(actual) << " against ICU's "
                        << testing::PrintToString(expected) << ", error "
                        << converter.getError().id;
          return;
        }
        ++codes;
      }
    }
    EXPECT_GT(codes, 10000u);
  }
}

TEST(CodePageTablesAgainstIcu, EveryFourByteCodeOfGb18030) {
  IcuConverter icu(1392);
  ASSERT_TRUE(icu.isOpen());
  TavClCodePage2UnicodeConverter converter(ccsid(1392));
  for (int first = 0x81; first <= 0xFE; ++first) {
    SCOPED_TRACE(first);
    std::string codes;
    for (int second = 0x30; second <= 0x39; ++second) {
      for (int third = 0x81; third <= 0xFE; ++third) {
        for (int fourth = 0x30; fourth <= 0x39; ++fourth) {
          codes += {static_cast<char>(first), static_cast<char>(second), static_cast<char>(third),
                    static_cast<char>(fourth)};
        }
      }
    }
    ASSERT_EQ(toUnicode(converter, codes), icu.toUnicode(codes));
  }
  // Ill-formed four-byte codes give the substitute for the lead byte and are read again.
  const char* const illFormed[] = {"\x81\x30\x20\x30", "\x81\x30\x81\x20 ", "\x81\x30\x81 ",
                                   "\x81\x30 ",        "\xFE\x39\xFE\x39",  "\x84\x31\xA5\x30"};
  for (const char* text : illFormed) {
    SCOPED_TRACE(text);
    EXPECT_EQ(toUnicode(converter, text), icu.toUnicode(text));
  }
}

TEST(CodePageTablesAgainstIcu, EveryThreeByteCodeOfEucJp) {
  IcuConverter icu(33722);
  ASSERT_TRUE(icu.isOpen());
  TavClCodePage2UnicodeConverter converter(ccsid(33722));
  for (int second = 0; second < 256; ++second) {
    for (int third = 0; third < 256; ++third) {
      std::string input{'\x8F', static_cast<char>(second), static_cast<char>(third), ' ', ' '};
      std::vector<uint16_t> actual = toUnicode(converter, input);
      std::vector<uint16_t> expected = icu.toUnicode(input);
      if (actual != expected) {
        ADD_FAILURE() << std::hex << "code 8F " << second << " " << third << ": "
                      << testing::PrintToString(actual) << " against ICU's "
                      << testing::PrintToString(expected);
        return;
      }
    }
  }
}

#endif  // TAV_TEST_HAVE_ICU

}  // namespace
