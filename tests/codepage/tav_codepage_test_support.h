// tav_codepage_test_support.h - helpers shared by the code page tests: UCS-2 byte strings,
// converters and routines named as the test tables name them, conversions checked against a
// guard region and against their whole result, and (where ICU is linked) ICU's converters.

#ifndef TAV_CODEPAGE_TEST_SUPPORT_H
#define TAV_CODEPAGE_TEST_SUPPORT_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "tav_codepage.h"

#if TAV_TEST_HAVE_ICU
#include <unicode/ucnv.h>
#endif

namespace tav::test {

// UCS-2 units as bytes in host order.
inline std::string ucs2(const std::u16string& units) {
  std::string bytes(units.size() * 2, '\0');
  if (!units.empty()) std::memcpy(&bytes[0], units.data(), bytes.size());
  return bytes;
}

// Hex tokens as bytes: two digits are a byte ("C3 A9"), four a UCS-2 unit in host order
// ("D83D DE00"), so that a table can write both sides of a conversion the same way.
inline std::string parseHex(const std::string& text) {
  std::string bytes;
  for (size_t start = text.find_first_not_of(' '); start != std::string::npos;) {
    const size_t end = std::min(text.find(' ', start), text.size());
    const auto value =
        static_cast<char16_t>(std::stoul(text.substr(start, end - start), nullptr, 16));
    bytes += end - start == 4 ? ucs2(std::u16string(1, value)) : std::string(1, char(value));
    start = text.find_first_not_of(' ', end);
  }
  return bytes;
}

// What a conversion did: the bytes written, the input bytes consumed and the error id.
struct Outcome {
  std::string written;
  size_t consumed;
  uint32_t error;
  bool operator==(const Outcome& other) const {
    return written == other.written && consumed == other.consumed && error == other.error;
  }
};

inline std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
  return stream << testing::PrintToString(outcome.written) << " consumed " << outcome.consumed
                << " error " << outcome.error;
}

// The error id of a status in the test tables.
inline uint32_t errorOf(const std::string& status) {
  if (status == "ok") return NO_ERROR;
  if (status == "incomplete") return CPCONVERTER_INCOMPLETE;
  return status == "toobig" ? CPCONVERTER_TOO_BIG : CPCONVERTER_UNSUPPORTED;
}

// A conversion by the converter's own routine, or by the one given in its place, on an input
// block of exactly the input's size (so that the sanitizer builds catch a read past it) into
// outSize bytes followed by a guard region that must stay untouched.
inline Outcome convert(const TavClConverterABase& converter, const std::string& input,
                       size_t outSize,
                       TavClConverterABase::TavPfuConverterAlgorithm routine = nullptr) {
  std::vector<char> exact(input.begin(), input.end());
  const std::string guard(32, '\x5A');
  std::string out = std::string(outSize, '\0') + guard;
  const char* cursor = exact.data();
  TavClConverterABase::_TavStConverter conversion{&converter, &out[0], outSize, &cursor,
                                                  exact.size()};
  converter.setError(NO_ERROR, TAV_CLASS_UNKNOWN);
  const size_t written = routine != nullptr
                             ? routine(conversion)
                             : converter.convertBytes(&out[0], outSize, &cursor, exact.size());
  EXPECT_LE(written, outSize);
  EXPECT_EQ(out.substr(outSize), guard) << "wrote past the output size " << outSize;
  return {out.substr(0, std::min(written, outSize)), static_cast<size_t>(cursor - exact.data()),
          converter.getError().id};
}

// A conversion into outSize bytes against the whole one: stopped by a full output, it has
// written whole characters up to the first that does not fit in the room left, and the input
// it left converts into the rest of the whole result (which a routine that keeps a shift state
// from one character to the next cannot promise).
inline void checkOutputCut(const TavClConverterABase& converter, const std::string& input,
                           const Outcome& whole, size_t outSize) {
  SCOPED_TRACE(testing::Message() << "output size " << outSize);
  const Outcome part = convert(converter, input, outSize);
  if (part.error != CPCONVERTER_TOO_BIG) {
    EXPECT_EQ(part, whole);
    return;
  }
  const std::string rest = input.substr(part.consumed);
  EXPECT_EQ(convert(converter, rest, outSize - part.written.size()),
            (Outcome{"", 0, CPCONVERTER_TOO_BIG}))
      << "a character that fits is left";
  const Outcome after = convert(converter, rest, 4 * rest.size() + 8);
  EXPECT_EQ((Outcome{part.written + after.written, part.consumed + after.consumed, after.error}),
            whole);
}

// A converter of a table's kind: "to" UCS-2 from the CCSID, "from" UCS-2 into it, or "chain"
// between the CCSIDs of "source>target".
inline std::unique_ptr<TavClConverterABase> makeConverter(const std::string& kind,
                                                          const std::string& ccsids) {
  auto number = [](const std::string& text) {
    return TavClCCSID(static_cast<TavEnCCSID>(std::stoul(text)));
  };
  if (kind == "to") return std::make_unique<TavClCodePage2UnicodeConverter>(number(ccsids));
  if (kind == "from") return std::make_unique<TavClUnicode2CodePageConverter>(number(ccsids));
  const size_t arrow = ccsids.find('>');
  return std::make_unique<TavClCodePage2CodePageConverter>(number(ccsids.substr(0, arrow)),
                                                           number(ccsids.substr(arrow + 1)));
}

// The name of a conversion routine, for readable test tables.
inline std::string routineName(TavClConverterABase::TavPfuConverterAlgorithm routine) {
  static const std::pair<TavClConverterABase::TavPfuConverterAlgorithm, const char*> kNames[] = {
      {tavConvertByCopying, "copy"},
      {tavConvertByEndianSwap, "swap"},
      {tavConvertByAlgorithmUCS2to819, "ucs2to819"},
      {tavConvertByAlgorithmUTF8toUCS2, "utf8toucs2"},
      {tavConvertByAlgorithmUCS2toUTF8, "ucs2toutf8"},
      {tavConvertByAlgorithmIcuToUnicode, "icu"},
      {tavConvertByAlgorithmIcuFromUnicode, "icu"},
      {tavConvertByWindowsCallUCS2ToWinCP, "system"},
      {tavConvertByTablesSBCS_EBCDICtoUCS2, "sbcs-ebcdic"},
      {tavConvertByTablesSBCS_ASCIItoUCS2, "sbcs-ascii"},
      {tavConvertByTablesDBCS_EBCDICtoUCS2, "dbcs-ebcdic"},
      {tavConvertByTablesDBCS_ASCIItoUCS2, "dbcs-ascii"},
      {tavConvertByTablesUCS2toSBCS, "reverse"},
      {tavConvertError, "unsupported"}};
  for (const auto& [known, name] : kNames) {
    if (known == routine) return name;
  }
  return "?";
}

#if TAV_TEST_HAVE_ICU
using IcuConverter = std::unique_ptr<UConverter, void (*)(UConverter*)>;

// ICU's converter for a CCSID, opened as the library opens it; null when ICU has none.
inline IcuConverter openIcu(uint32_t ccsid) {
  UErrorCode status = U_ZERO_ERROR;
  UConverter* converter = ccsid == 1208   ? ucnv_open("UTF-8", &status)
                          : ccsid == 1392 ? ucnv_open("gb18030", &status)
                                          : ucnv_openCCSID(int32_t(ccsid), UCNV_IBM, &status);
  if (converter != nullptr) ucnv_setFallback(converter, true);
  return IcuConverter(U_SUCCESS(status) ? converter : nullptr, ucnv_close);
}

inline std::u16string icuToUnicode(UConverter* converter, const std::string& input) {
  std::u16string units(input.size() * 2 + 8, u'\0');
  UErrorCode status = U_ZERO_ERROR;
  units.resize(ucnv_toUChars(converter, &units[0], int32_t(units.size()), input.data(),
                             int32_t(input.size()), &status));
  EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
  return units;
}

inline std::string icuFromUnicode(UConverter* converter, const std::u16string& units) {
  std::string bytes(units.size() * 4 + 8, '\0');
  UErrorCode status = U_ZERO_ERROR;
  bytes.resize(ucnv_fromUChars(converter, &bytes[0], int32_t(bytes.size()), units.data(),
                               int32_t(units.size()), &status));
  EXPECT_TRUE(U_SUCCESS(status)) << u_errorName(status);
  return bytes;
}
#endif

}  // namespace tav::test

#endif  // TAV_CODEPAGE_TEST_SUPPORT_H
