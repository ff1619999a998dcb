// tav_codepage_test_support.h - helpers shared by the code page tests: property bits in the
// notation of the test tables, UCS-2 byte strings, and output buffers with a guard region.

#ifndef TAV_CODEPAGE_TEST_SUPPORT_H
#define TAV_CODEPAGE_TEST_SUPPORT_H

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tav_codepage.h"

namespace tav::test {

// "ASCII+SBCS" -> FLAG_ASCII | FLAG_SBCS; "none" -> 0.
inline uint32_t parseCCSIDFlags(const std::string& text) {
  static const std::pair<const char*, uint32_t> kWords[] = {{"ASCII", TavClCCSID::FLAG_ASCII},
                                                            {"EBCDIC", TavClCCSID::FLAG_EBCDIC},
                                                            {"DBCS", TavClCCSID::FLAG_DBCS},
                                                            {"SBCS", TavClCCSID::FLAG_SBCS},
                                                            {"UCS2", TavClCCSID::FLAG_UCS2}};
  uint32_t flags = 0;
  for (size_t start = 0, end; text != "none" && start <= text.size(); start = end + 1) {
    end = std::min(text.find('+', start), text.size());
    uint32_t flag = 0x80000000u;  // an unknown word never matches a real row
    for (const auto& [word, bit] : kWords) {
      if (text.compare(start, end - start, word) == 0) flag = bit;
    }
    flags |= flag;
  }
  return flags;
}

// UCS-2 units as bytes in host order.
inline std::string ucs2(std::initializer_list<uint16_t> units) {
  std::string bytes(units.size() * 2, '\0');
  size_t at = 0;
  for (uint16_t unit : units) {
    std::memcpy(&bytes[at], &unit, 2);
    at += 2;
  }
  return bytes;
}

// Hex tokens as bytes: two digits are a byte ("C3 A9"), four a UCS-2 unit in host order
// ("D83D DE00"), so that a table can write both sides of a conversion the same way.
inline std::string parseHex(const std::string& text) {
  std::string bytes;
  for (size_t start = text.find_first_not_of(' '); start != std::string::npos;) {
    const size_t end = std::min(text.find(' ', start), text.size());
    const auto value =
        static_cast<uint16_t>(std::stoul(text.substr(start, end - start), nullptr, 16));
    bytes += end - start == 4 ? ucs2({value}) : std::string(1, static_cast<char>(value));
    start = text.find_first_not_of(' ', end);
  }
  return bytes;
}

// An output area of `size` bytes followed by a guard region that no conversion may touch.
class GuardedOutput {
 public:
  static constexpr size_t kGuard = 32;
  static constexpr char kFill = '\x5A';

  explicit GuardedOutput(size_t size) : bytes(size + kGuard, kFill), size(size) {}
  char* data() { return bytes.data(); }
  std::string written(size_t count) const { return std::string(bytes.data(), count); }
  bool guardIntact() const {
    for (size_t i = size; i < bytes.size(); ++i) {
      if (bytes[i] != kFill) return false;
    }
    return true;
  }

 private:
  std::vector<char> bytes;
  size_t size;
};

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
  struct Named {
    TavClConverterABase::TavPfuConverterAlgorithm routine;
    const char* name;
  };
  static const Named kNames[] = {
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
      {tavConvertError, "unsupported"},
  };
  for (const Named& named : kNames) {
    if (named.routine == routine) return named.name;
  }
  return "?";
}

}  // namespace tav::test

#endif  // TAV_CODEPAGE_TEST_SUPPORT_H
