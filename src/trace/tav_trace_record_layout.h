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

#include <cstring>

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
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
  // One store on a little-endian host: byte stores that the compiler merges itself can end up
  // assembled in registers and copied through the stack, which stalls the copy.
  std::memcpy(field, &value, sizeof value);
#else
  field[0] = static_cast<uint8_t>(value);
  field[1] = static_cast<uint8_t>(value >> 8);
  field[2] = static_cast<uint8_t>(value >> 16);
  field[3] = static_cast<uint8_t>(value >> 24);
#endif
}

// Puts a record's parts one after the other at at: the header, both texts and the data block;
// gives the byte after them.
inline uint8_t* placeRecordParts(uint8_t* at, const uint8_t* header, const void* message,
                                 uint64_t messageLength, const void* origin, uint64_t originLength,
                                 const void* data, uint64_t dataSize) {
  std::memcpy(at, header, kHeaderSize);
  at += kHeaderSize;
  std::memcpy(at, message, messageLength);
  at += messageLength;
  std::memcpy(at, origin, originLength);
  at += originLength;
  if (dataSize != 0) std::memcpy(at, data, dataSize);
  return at + dataSize;
}

// The size of a record's data block, from its header.
inline uint32_t dataSizeOf(const uint8_t* header) {
  return loadLittleEndian32(header + kDataSizeOffset);
}

// How many bytes follow the header: both stored texts and the data block.
inline uint64_t bodySizeOf(const uint8_t* header) {
  return uint64_t{header[kMessageLengthOffset]} + header[kOriginLengthOffset] + dataSizeOf(header);
}

// The size of the data block a trace call stores: none without data, and at most capacity
// (or the 32 bits of the size field), as storeCallHeader stores it.
inline uint64_t storedDataSize(const void* data, uint64_t dataSize, uint64_t capacity) {
  if (data == nullptr) return 0;
  if (capacity > UINT32_MAX) capacity = UINT32_MAX;
  return dataSize > capacity ? capacity : dataSize;
}

// Fills a record's header from the arguments of a trace call and the stored text lengths. A null
// data pointer makes the type DATA_NULL with no data; data larger than capacity is cut to it and
// the type becomes DATA_CLIPPED. The size field has 32 bits, and a block is never larger than the
// buffer that takes it.
inline void storeCallHeader(uint8_t* header, TavEnTraceDetail detail, uint16_t componentId,
                            TavEnTraceDataType type, bool compress, const void* data,
                            uint64_t dataSize, uint64_t capacity, uint8_t messageLength,
                            uint8_t originLength, uint32_t timeStamp, uint32_t processId,
                            uint32_t threadId) {
  const uint64_t storedSize = storedDataSize(data, dataSize, capacity);
  if (data == nullptr) {
    type = TAV_TRACE_TYPE_DATA_NULL;
  } else if (storedSize != dataSize) {
    type = TAV_TRACE_TYPE_DATA_CLIPPED;
  }
  dataSize = storedSize;
  header[kFlagsOffset] =
      static_cast<uint8_t>((static_cast<unsigned>(type) & kTypeBits) |
                           ((static_cast<unsigned>(detail) << kDetailShift) & kDetailBits) |
                           (compress ? kCompressedBit : 0));
  header[kComponentIdOffset] = static_cast<uint8_t>(componentId);
  header[kMessageLengthOffset] = messageLength;
  header[kOriginLengthOffset] = originLength;
  storeLittleEndian32(header + kTimeStampOffset, timeStamp);
  storeLittleEndian32(header + kProcessIdOffset, processId);
  storeLittleEndian32(header + kThreadIdOffset, threadId);
  storeLittleEndian32(header + kDataSizeOffset, static_cast<uint32_t>(dataSize));
}

}  // namespace tav::trace_record

#endif  // TAV_TRACE_RECORD_LAYOUT_H
