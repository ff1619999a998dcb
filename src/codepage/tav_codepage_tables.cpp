// tav_codepage_tables.cpp - the built-in conversion tables and their look-up by CCSID.
//
// Each list is sorted by CCSID and searched by halves; the data itself is generated (see the
// two included files).

#include "tav_codepage_tables.h"

#include <algorithm>
#include <iterator>

namespace tav::codepage {
namespace {

#include "tav_dbcs_tables.inc"
#include "tav_sbcs_tables.inc"

template <typename Table, size_t count>
const Table* findByCcsid(const Table (&tables)[count], uint32_t ccsid) {
  const Table* found =
      std::lower_bound(std::begin(tables), std::end(tables), ccsid,
                       [](const Table& table, uint32_t wanted) { return table.ccsid < wanted; });
  return found != std::end(tables) && found->ccsid == ccsid ? found : nullptr;
}

}  // namespace

const uint8_t* doubleByteBlock(uint16_t number) { return kDoubleByteBlocks[number - 1]; }

const SingleByteTable* findSingleByteTable(uint32_t ccsid) {
  return findByCcsid(kSingleByteTables, ccsid);
}

const DoubleByteTable* findDoubleByteTable(uint32_t ccsid) {
  return findByCcsid(kDoubleByteTables, ccsid);
}

const ReverseTable* findReverseTable(uint32_t ccsid) { return findByCcsid(kReverseTables, ccsid); }

BuiltInTable findTableToUnicode(uint32_t tableCcsid, bool sourceIsEbcdic) {
  if (const SingleByteTable* single = findSingleByteTable(tableCcsid)) {
    return {
        sourceIsEbcdic ? tavConvertByTablesSBCS_EBCDICtoUCS2 : tavConvertByTablesSBCS_ASCIItoUCS2,
        single};
  }
  if (const DoubleByteTable* doubleByte = findDoubleByteTable(tableCcsid)) {
    return {doubleByte->ebcdic ? tavConvertByTablesDBCS_EBCDICtoUCS2
                               : tavConvertByTablesDBCS_ASCIItoUCS2,
            doubleByte};
  }
  return {nullptr, nullptr};
}

BuiltInTable findTableFromUnicode(uint32_t ccsid) {
  if (const ReverseTable* reverse = findReverseTable(ccsid)) {
    return {tavConvertByTablesUCS2toSBCS, reverse};
  }
  return {nullptr, nullptr};
}

}  // namespace tav::codepage
