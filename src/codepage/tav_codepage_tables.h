// tav_codepage_tables.h - the built-in conversion tables that converters look for first.
//
// The tables are generated from published IBM mappings by tools/gen_codepage_tables.py and are
// static data. Their layouts:
// - a single-byte table: its CCSID and 256 UCS-2 values, one for each byte;
// - a reverse table (UCS-2 into a single-byte code page): the high byte of a unit selects one of
//   the table's blocks of 256 output bytes, the low byte the byte within it;
// - a double-byte table: for every lead byte a block number into one pool of 256-value blocks
//   shared by all double-byte tables (0: no block), the block of the single bytes, and a flag for
//   every byte telling how many bytes a character beginning with it takes.
// UCS-2 values are stored big-endian, two bytes each, and written in host order.
//
// Two values of a double-byte block are markers, never characters: kIllegalPair (the table's
// substitute for the first byte alone, then the second byte is read again, as for a lead byte
// followed by a byte that cannot follow it) and kTwoUnitCode (a code of two UCS-2 units, found
// in the table's list of such codes). A three-byte block may also hold kIllegalThirdByte: U+FFFD
// for the first two bytes, then the third is read again.

#ifndef TAV_CODEPAGE_TABLES_H
#define TAV_CODEPAGE_TABLES_H

#include <cstddef>
#include <cstdint>

#include "tav_codepage.h"

namespace tav::codepage {

struct SingleByteTable {
  uint32_t ccsid;
  uint8_t ucs2[512];
};

struct ReverseTable {
  uint32_t ccsid;
  uint8_t blockOf[256];
  const uint8_t (*blocks)[256];
};

// How many bytes a character beginning with a byte takes, in a double-byte table.
enum LeadFlag : uint8_t {
  kSingleByte = 0,
  kLeadByte = 1,          // a pair
  kLeadOfFourByte = 2,    // a pair, or four bytes when the second is a digit 0x30-0x39
  kPrefixOfThreeByte = 3  // three bytes: the second selects a block, the third the value
};

constexpr uint16_t kIllegalPair = 0xFFFF;
constexpr uint16_t kTwoUnitCode = 0xFFFE;
constexpr uint16_t kIllegalThirdByte = 0xDFFF;

// A run of four-byte codes whose code points follow each other: the code with the index
// firstIndex (counting the four-byte codes from 81 30 81 30) is firstUnit.
struct FourByteRun {
  uint16_t firstIndex;
  uint16_t firstUnit;
};

// A two-byte code that stands for two UCS-2 units.
struct TwoUnitCode {
  uint16_t code;
  uint16_t first;
  uint16_t second;
};

struct DoubleByteTable {
  uint32_t ccsid;
  bool ebcdic;
  uint16_t singleByteBlock;  // block number of the single bytes
  uint16_t illegalSubstitute;
  uint16_t blockOf[256];
  uint8_t leadFlags[256];
  const uint16_t* threeByteBlockOf;  // by second byte; only where kPrefixOfThreeByte is used
  const FourByteRun* fourByteRuns;   // only where kLeadOfFourByte is used
  size_t fourByteRunCount;
  const TwoUnitCode* twoUnitCodes;
  size_t twoUnitCodeCount;
};

// The block with that number (1 is the first of the pool).
const uint8_t* doubleByteBlock(uint16_t number);

const SingleByteTable* findSingleByteTable(uint32_t ccsid);
const DoubleByteTable* findDoubleByteTable(uint32_t ccsid);
const ReverseTable* findReverseTable(uint32_t ccsid);

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
