// tav_codepage_tables.h - the built-in conversion tables that converters look for first.
//
// The single-byte, double-byte and reverse tables are not built in yet: every look-up answers
// "none" (null), and selection goes on to ICU. The look-ups stay where they belong in the
// selection order, so that adding the tables changes nothing else.

#ifndef TAV_CODEPAGE_TABLES_H
#define TAV_CODEPAGE_TABLES_H

#include <cstdint>

#include "tav_codepage.h"

namespace tav::codepage {

// A built-in table for a CCSID: the routine that converts with it and the table as its data.
struct BuiltInTable {
  TavClConverterABase::TavPfuConverterAlgorithm routine;
  const void* table;
};

// The table routine from the CCSID into UCS-2 (single-byte first, then double-byte); a null
// routine when there is none. sourceIsEbcdic picks the EBCDIC variant of the single-byte one.
BuiltInTable findTableToUnicode(uint32_t tableCcsid, bool sourceIsEbcdic);
// The reverse table routine from UCS-2 into the CCSID; a null routine when there is none.
BuiltInTable findTableFromUnicode(uint32_t ccsid);

}  // namespace tav::codepage

#endif  // TAV_CODEPAGE_TABLES_H
