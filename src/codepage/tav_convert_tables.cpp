// tav_convert_tables.cpp - the conversion routines that work through the built-in tables.
//
// The routines read no input byte at or after inputSize and write no output byte at or after
// outputSize. A character is written whole or not at all: when the next one does not fit, the
// routine stops with CPCONVERTER_TOO_BIG and leaves the input pointer on it. A character cut
// by the end of the input is left unconsumed with CPCONVERTER_INCOMPLETE.

#include <algorithm>
#include <cstring>

#include "tav_codepage.h"
#include "tav_codepage_tables.h"

namespace {

using Conversion = TavClConverterABase::_TavStConverter;
using tav::codepage::DoubleByteTable;

constexpr unsigned char kShiftOut = 0x0E;
constexpr unsigned char kShiftIn = 0x0F;
constexpr uint16_t kNextLine = 0x0085;
constexpr uint16_t kLineFeed = 0x000A;
// The four-byte codes of the BMP come first; those from 90 30 81 30 on count from U+10000.
constexpr uint32_t kFourByteBmpCount = 39420;
constexpr unsigned char kFirstSupplementaryLead = 0x90;

void setTooBig(const Conversion& conversion) {
  conversion.converter->setError(CPCONVERTER_TOO_BIG, TAV_CLASS_DATA_OUT_OF_BOUNDS);
}

void setIncomplete(const Conversion& conversion) {
  conversion.converter->setError(CPCONVERTER_INCOMPLETE, TAV_CLASS_USER_DATA_ERROR);
}

uint16_t bigEndianAt(const uint8_t* values, size_t index) {
  return static_cast<uint16_t>(values[2 * index] << 8 | values[2 * index + 1]);
}

void storeUnit(char* out, uint16_t unit) { std::memcpy(out, &unit, 2); }

const uint8_t* tableData(const Conversion& conversion) {
  return static_cast<const uint8_t*>(conversion.converter->getAlgorithmData());
}

// A stored big-endian value in host order, read as one 16-bit load.
uint16_t loadBigEndian(const uint8_t* stored) {
  uint16_t value;
  std::memcpy(&value, stored, 2);
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
  return value;
#else
  return static_cast<uint16_t>(value >> 8 | value << 8);
#endif
}

// Inputs this long pay for turning the table into host order first.
constexpr size_t kHostOrderTableThreshold = 1024;

// Single bytes into UCS-2; lineFeedForNextLine writes U+0085 as U+000A. A long input first gets
// a copy of the table in host order with next line already mended, so that each byte is one
// load and eight bytes make one store. A short one is read four at a time from the big-endian
// table; next line is rare in text, so it is mended after the four are read.
template <bool lineFeedForNextLine>
size_t convertSingleBytes(Conversion& conversion) {
  const auto* table =
      static_cast<const tav::codepage::SingleByteTable*>(conversion.converter->getAlgorithmData());
  size_t count = std::min(conversion.inputSize, conversion.outputSize / 2);
  if (count < conversion.inputSize) setTooBig(conversion);
  const auto* in = reinterpret_cast<const unsigned char*>(*conversion.input);
  char* out = conversion.output;
  const uint8_t* values = table->ucs2;
  size_t i = 0;
  if (count >= kHostOrderTableThreshold) {
    uint16_t hostOrder[256];
    for (size_t byte = 0; byte < 256; ++byte) {
      const uint16_t unit = loadBigEndian(values + 2 * byte);
      hostOrder[byte] = lineFeedForNextLine && unit == kNextLine ? kLineFeed : unit;
    }
    for (; i + 8 <= count; i += 8) {
      uint16_t units[8];
      for (size_t k = 0; k < 8; ++k) units[k] = hostOrder[in[i + k]];
      std::memcpy(out + 2 * i, units, sizeof units);
    }
  }
  for (; i + 4 <= count; i += 4) {
    uint16_t units[4];
    for (size_t k = 0; k < 4; ++k) {
      units[k] = loadBigEndian(values + 2 * static_cast<size_t>(in[i + k]));
    }
    if (lineFeedForNextLine && (units[0] == kNextLine || units[1] == kNextLine ||
                                units[2] == kNextLine || units[3] == kNextLine)) {
      for (uint16_t& unit : units) unit = unit == kNextLine ? kLineFeed : unit;
    }
    for (size_t k = 0; k < 4; ++k) storeUnit(out + 2 * (i + k), units[k]);
  }
  for (; i < count; ++i) {
    uint16_t unit = loadBigEndian(values + 2 * in[i]);
    storeUnit(out + 2 * i, lineFeedForNextLine && unit == kNextLine ? kLineFeed : unit);
  }
  *conversion.input += count;
  return count * 2;
}

// One character decoded from a double-byte text: up to two units and the bytes it took.
struct Decoded {
  uint16_t units[2];
  size_t unitCount;
  size_t length;  // 0: the character is cut by the end of the input
};

Decoded fromBlock(const DoubleByteTable& table, uint16_t block, unsigned char first,
                  unsigned char second, size_t length) {
  uint16_t unit = bigEndianAt(tav::codepage::doubleByteBlock(block), second);
  if (unit == tav::codepage::kIllegalPair) return {{table.illegalSubstitute, 0}, 1, 1};
  if (unit == tav::codepage::kIllegalThirdByte) return {{0xFFFD, 0}, 1, 2};
  if (unit == tav::codepage::kTwoUnitCode) {
    uint16_t code = static_cast<uint16_t>(first << 8 | second);
    const tav::codepage::TwoUnitCode* end = table.twoUnitCodes + table.twoUnitCodeCount;
    const tav::codepage::TwoUnitCode* found =
        std::lower_bound(table.twoUnitCodes, end, code,
                         [](const tav::codepage::TwoUnitCode& entry, uint16_t wanted) {
                           return entry.code < wanted;
                         });
    // The generator lists every code it marks; a missing one would be a broken table.
    if (found != end && found->code == code) return {{found->first, found->second}, 2, length};
    return {{0xFFFD, 0}, 1, length};
  }
  return {{unit, 0}, 1, length};
}

bool isFourByteDigit(unsigned char byte) { return byte >= 0x30 && byte <= 0x39; }
bool isFourByteLetter(unsigned char byte) { return byte >= 0x81 && byte <= 0xFE; }

// A four-byte code of GB18030 at in (lead byte and digit known); cut or ill-formed codes give
// the substitute for the lead byte alone, as ICU reads them.
Decoded fourByteCode(const DoubleByteTable& table, const unsigned char* in, size_t available) {
  if (available < 3) return {{0, 0}, 0, 0};
  if (!isFourByteLetter(in[2])) return {{table.illegalSubstitute, 0}, 1, 1};
  if (available < 4) return {{0, 0}, 0, 0};
  if (!isFourByteDigit(in[3])) return {{table.illegalSubstitute, 0}, 1, 1};
  uint32_t index = (in[1] - 0x30u) * 1260u + (in[2] - 0x81u) * 10u + (in[3] - 0x30u);
  if (in[0] >= kFirstSupplementaryLead) {
    uint32_t offset = (in[0] - kFirstSupplementaryLead) * 12600u + index;
    if (offset > 0xFFFFF) return {{0xFFFD, 0}, 1, 4};
    return {{static_cast<uint16_t>(0xD800 + (offset >> 10)),
             static_cast<uint16_t>(0xDC00 + (offset & 0x3FF))},
            2,
            4};
  }
  index += (in[0] - 0x81u) * 12600u;
  if (index >= kFourByteBmpCount) return {{0xFFFD, 0}, 1, 4};
  const tav::codepage::FourByteRun* end = table.fourByteRuns + table.fourByteRunCount;
  const tav::codepage::FourByteRun* run =
      std::upper_bound(table.fourByteRuns, end, index,
                       [](uint32_t wanted, const tav::codepage::FourByteRun& entry) {
                         return wanted < entry.firstIndex;
                       }) -
      1;
  return {{static_cast<uint16_t>(run->firstUnit + (index - run->firstIndex)), 0}, 1, 4};
}

// The character of an ASCII-based double-byte text at in, with `available` bytes left.
Decoded decodeAsciiBased(const DoubleByteTable& table, const unsigned char* in, size_t available) {
  unsigned char first = in[0];
  switch (table.leadFlags[first]) {
    case tav::codepage::kSingleByte:
      return {{bigEndianAt(tav::codepage::doubleByteBlock(table.singleByteBlock), first), 0}, 1, 1};
    case tav::codepage::kPrefixOfThreeByte: {
      if (available < 2) return {{0, 0}, 0, 0};
      uint16_t block = table.threeByteBlockOf[in[1]];
      if (block == 0) return {{table.illegalSubstitute, 0}, 1, 1};
      if (available < 3) return {{0, 0}, 0, 0};
      return fromBlock(table, block, in[1], in[2], 3);
    }
    default:
      if (available < 2) return {{0, 0}, 0, 0};
      if (table.leadFlags[first] == tav::codepage::kLeadOfFourByte && isFourByteDigit(in[1])) {
        return fourByteCode(table, in, available);
      }
      return fromBlock(table, table.blockOf[first], first, in[1], 2);
  }
}

// Writes a decoded character if it fits; false when it does not.
bool writeDecoded(const Decoded& decoded, char* out, size_t outputSize, size_t& written,
                  bool lineFeedForNextLine) {
  if (outputSize - written < decoded.unitCount * 2) return false;
  for (size_t i = 0; i < decoded.unitCount; ++i) {
    uint16_t unit = decoded.units[i];
    if (lineFeedForNextLine && unit == kNextLine) unit = kLineFeed;
    storeUnit(out + written, unit);
    written += 2;
  }
  return true;
}

}  // namespace

size_t tavConvertByTablesSBCS_ASCIItoUCS2(Conversion& conversion) {
  return convertSingleBytes<false>(conversion);
}

size_t tavConvertByTablesSBCS_EBCDICtoUCS2(Conversion& conversion) {
  return convertSingleBytes<true>(conversion);
}

size_t tavConvertByTablesUCS2toSBCS(Conversion& conversion) {
  const auto* table =
      static_cast<const tav::codepage::ReverseTable*>(conversion.converter->getAlgorithmData());
  size_t units = conversion.inputSize / 2;
  if (conversion.outputSize < units) {
    units = conversion.outputSize;
    setTooBig(conversion);
  } else if (conversion.inputSize % 2 != 0) {
    setIncomplete(conversion);
  }
  const char* in = *conversion.input;
  auto* out = reinterpret_cast<unsigned char*>(conversion.output);
  for (size_t i = 0; i < units; ++i) {
    uint16_t unit;
    std::memcpy(&unit, in + 2 * i, 2);
    out[i] = table->blocks[table->blockOf[unit >> 8]][unit & 0xFF];
  }
  *conversion.input += units * 2;
  return units;
}

size_t tavConvertByTablesDBCS_ASCIItoUCS2(Conversion& conversion) {
  const auto& table = *reinterpret_cast<const DoubleByteTable*>(tableData(conversion));
  const auto* in = reinterpret_cast<const unsigned char*>(*conversion.input);
  size_t size = conversion.inputSize;
  size_t at = 0;
  size_t written = 0;
  while (at < size) {
    Decoded decoded = decodeAsciiBased(table, in + at, size - at);
    if (decoded.length == 0) {
      setIncomplete(conversion);
      break;
    }
    if (!writeDecoded(decoded, conversion.output, conversion.outputSize, written, false)) {
      setTooBig(conversion);
      break;
    }
    at += decoded.length;
  }
  *conversion.input += at;
  return written;
}

size_t tavConvertByTablesDBCS_EBCDICtoUCS2(Conversion& conversion) {
  const auto& table = *reinterpret_cast<const DoubleByteTable*>(tableData(conversion));
  const uint8_t* singleBytes = tav::codepage::doubleByteBlock(table.singleByteBlock);
  const auto* in = reinterpret_cast<const unsigned char*>(*conversion.input);
  size_t size = conversion.inputSize;
  size_t at = 0;
  size_t written = 0;
  bool doubleByteMode = false;
  while (at < size) {
    unsigned char first = in[at];
    if (first == kShiftOut || first == kShiftIn) {
      doubleByteMode = first == kShiftOut;
      ++at;
      continue;
    }
    Decoded decoded{};
    if (!doubleByteMode) {
      decoded = {{bigEndianAt(singleBytes, first), 0}, 1, 1};
    } else if (at + 1 == size) {
      break;  // half a pair: reported below as an unfinished shift
    } else {
      decoded = fromBlock(table, table.blockOf[first], first, in[at + 1], 2);
    }
    if (!writeDecoded(decoded, conversion.output, conversion.outputSize, written, true)) {
      setTooBig(conversion);
      *conversion.input += at;
      return written;
    }
    at += decoded.length;
  }
  if (doubleByteMode) setIncomplete(conversion);
  *conversion.input += at;
  return written;
}

size_t tavConvertByTablesEUCtoUCS2(Conversion& /*conversion*/) { return 0; }
