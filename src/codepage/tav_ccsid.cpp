// tav_ccsid.cpp - CCSIDs and their properties from the built-in table of 430 known CCSIDs.
//
// The table is generated from tools/data/ccsid_rows.txt and sorted by number, so a number is
// found by binary search; a name is found by a walk in table order, the first match winning.

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <iterator>
#include <string>

#include "tav_codepage.h"
#include "tav_codepage_os.h"

struct _TavStCCSIDRow {
  uint32_t ccsid;
  const char* name;
  uint32_t flags;
};

namespace {

const _TavStCCSIDRow kRows[] = {
#include "tav_ccsid_table.inc"
};

const _TavStCCSIDRow* const kSentinel = &kRows[0];

// The OEM code page is asked once; 0 means not asked yet. Threads that ask first at the same
// time all store the same value; the atomic only keeps that race well-defined.
std::atomic<uint32_t> gs_uiConsoleCCSID{0};

bool isDecimalDigit(char c) { return c >= '0' && c <= '9'; }

// The decimal number at the start of the text, as atoi reads it, but saturating at the largest
// CCSID instead of overflowing.
TavEnCCSID parseNumber(const char* text) {
  uint64_t value = 0;
  for (; isDecimalDigit(*text) && value <= UINT32_MAX; ++text) value = value * 10 + (*text - '0');
  return static_cast<TavEnCCSID>(std::min<uint64_t>(value, UINT32_MAX));
}

char upper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }

bool equalIgnoringCase(const char* a, const char* b) {
  for (; *a != '\0' && *b != '\0'; ++a, ++b) {
    if (upper(*a) != upper(*b)) return false;
  }
  return *a == *b;
}

const _TavStCCSIDRow* findRow(uint32_t ccsid) {
  const _TavStCCSIDRow* end = std::end(kRows);
  const _TavStCCSIDRow* found =
      std::lower_bound(std::begin(kRows), end, ccsid,
                       [](const _TavStCCSIDRow& row, uint32_t value) { return row.ccsid < value; });
  return (found != end && found->ccsid == ccsid) ? found : kSentinel;
}

bool isUCS2HostOrderNumber(uint32_t ccsid) {
  return ccsid == TAV_CCSID_UCS2_LITTLE_ENDIAN || ccsid == TAV_CCSID_UCS2 ||
         ccsid == TAV_CCSID_UCS2_17584 || ccsid == TAV_CCSID_UCS2_ISO10646 ||
         ccsid == TAV_CCSID_UCS2_61955;
}

}  // namespace

TavClCCSID::TavClCCSID(const char* text) : ccsid(TAV_CCSID_UNKNOWN), row(nullptr) {
  if (text == nullptr) return;
  if (isDecimalDigit(text[0])) {
    ccsid = parseNumber(text);
    row = findRow(ccsid);
    return;
  }
  for (const _TavStCCSIDRow& candidate : kRows) {
    if (equalIgnoringCase(candidate.name, text)) {
      ccsid = static_cast<TavEnCCSID>(candidate.ccsid);
      row = &candidate;
      return;
    }
  }
  // No name matched: keep the number written in the text, but none of its properties.
  const char* digits =
      std::find_if(text, text + std::char_traits<char>::length(text), isDecimalDigit);
  ccsid = parseNumber(digits);
  row = kSentinel;
}

void TavClCCSID::determineProperties() const {
  if (row == nullptr) row = findRow(ccsid);
}

uint32_t TavClCCSID::getFlags() const {
  determineProperties();
  return row->flags;
}

bool TavClCCSID::isValid() const {
  determineProperties();
  return ccsid != TAV_CCSID_UNKNOWN && row != kSentinel;
}

bool TavClCCSID::isASCII() const { return (getFlags() & FLAG_ASCII) != 0; }
bool TavClCCSID::isEBCDIC() const { return (getFlags() & FLAG_EBCDIC) != 0; }
bool TavClCCSID::isSBCS() const { return (getFlags() & FLAG_SBCS) != 0; }
bool TavClCCSID::isDBCS() const { return (getFlags() & FLAG_DBCS) != 0; }
bool TavClCCSID::isUCS2() const { return (getFlags() & FLAG_UCS2) != 0; }

bool TavClCCSID::isUCS2BigEndian() const { return ccsid == TAV_CCSID_UCS2_BIG_ENDIAN; }
bool TavClCCSID::isUCS2LittleEndian() const { return isUCS2HostOrderNumber(ccsid); }
bool TavClCCSID::isUCS2HostEndian() const { return isUCS2HostOrderNumber(ccsid); }

const char* TavClCCSID::getName() const {
  determineProperties();
  return row->name;
}

bool TavClCCSID::operator==(TavEnCCSID other) const {
  auto canonical = [](TavEnCCSID value) {
    return value == TAV_CCSID_UCS2_LITTLE_ENDIAN ? TAV_CCSID_UCS2 : value;
  };
  return canonical(ccsid) == canonical(other);
}

TavEnCCSID TavClCCSID::getSystemCCSID() {
  return static_cast<TavEnCCSID>(tav::os::processAnsiCodePage());
}

TavEnCCSID TavClCCSID::getConsoleCCSID() {
  uint32_t ccsid = gs_uiConsoleCCSID.load(std::memory_order_relaxed);
  if (ccsid == 0) {
    ccsid = tav::os::processOemCodePage();
    gs_uiConsoleCCSID.store(ccsid, std::memory_order_relaxed);
  }
  return static_cast<TavEnCCSID>(ccsid);
}

TavEnCCSID TavClCCSID::getCCSIDForUCS2EndianId(const char* bytes) {
  if (bytes == nullptr) return TAV_CCSID_UNKNOWN;
  auto byte0 = static_cast<unsigned char>(bytes[0]);
  if (byte0 != 0xFE && byte0 != 0xFF) return TAV_CCSID_UNKNOWN;
  auto byte1 = static_cast<unsigned char>(bytes[1]);
  if (byte0 == 0xFE && byte1 == 0xFF) return TAV_CCSID_UCS2_BIG_ENDIAN;
  if (byte0 == 0xFF && byte1 == 0xFE) return TAV_CCSID_UCS2_LITTLE_ENDIAN;
  return TAV_CCSID_UNKNOWN;
}

size_t TavClCCSID::getKnownCount() { return std::size(kRows); }

TavClCCSID TavClCCSID::getKnownAt(size_t index) {
  if (index >= std::size(kRows)) return TavClCCSID();
  TavClCCSID result(static_cast<TavEnCCSID>(kRows[index].ccsid));
  result.row = &kRows[index];
  return result;
}
