// tav_trace_record_layout.h - where each field of a trace record sits, and how its numbers are
// stored.
//
// The record format is described at the top of tav_trace_entry.h. Everything that builds,
// follows or reads records takes the field positions and the byte order from here, so that the
// writer, the file writer and the formatter cannot disagree about them.

#ifndef TAV_TRACE_RECORD_LAYOUT_H
#define TAV_TRACE_RECORD_LAYOUT_H

#include <stddef.h>
#include <stdint.h>

#include "tav_trace_entry.h"

namespace tav::trace_record {

constexpr size_t kHeaderSize = TavClTraceEntry::kHeaderSize;

constexpr size_t kFlagsOffset = 0;
constexpr size_t kComponentIdOffset = 1;
constexpr size_t kMessageLengthOffset = 2;
constexpr size_t kOriginLengthOffset = 3;
constexpr size_t kTimeStampOffset = 4;
constexpr size_t kProcessIdOffset = 8;
constexpr size_t kThreadIdOffset = 12;
constexpr size_t kDataSizeOffset = 16;
static_assert(kDataSizeOffset + 4 == kHeaderSize, "the data size is the last header field");

// The flags byte: data type, compressed texts, detail.
constexpr uint8_t kTypeBits = 0x1F;
constexpr uint8_t kCompressedBit = 0x20;
constexpr uint8_t kDetailBits = 0xC0;
constexpr unsigned kDetailShift = 6;

// Numbers are little-endian whatever the host, so files move between platforms unchanged.
inline uint64_t loadLittleEndian(const uint8_t* bytes, unsigned count) {
  uint64_t value = 0;
  for (unsigned i = count; i > 0; --i) value = value << 8 | bytes[i - 1];
  return value;
}

inline uint32_t loadLittleEndian32(const uint8_t* field) {
  return static_cast<uint32_t>(field[0]) | static_cast<uint32_t>(field[1]) << 8 |
         static_cast<uint32_t>(field[2]) << 16 | static_cast<uint32_t>(field[3]) << 24;
}

inline void storeLittleEndian32(uint8_t* field, uint32_t value) {
  field[0] = static_cast<uint8_t>(value);
  field[1] = static_cast<uint8_t>(value >> 8);
  field[2] = static_cast<uint8_t>(value >> 16);
  field[3] = static_cast<uint8_t>(value >> 24);
}

// The size of a record's data block, from its header.
inline uint32_t dataSizeOf(const uint8_t* header) {
  return loadLittleEndian32(header + kDataSizeOffset);
}

// How many bytes follow the header: both stored texts and the data block.
inline uint64_t bodySizeOf(const uint8_t* header) {
  return uint64_t{header[kMessageLengthOffset]} + header[kOriginLengthOffset] + dataSizeOf(header);
}

}  // namespace tav::trace_record

#endif  // TAV_TRACE_RECORD_LAYOUT_H
