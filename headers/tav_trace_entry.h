/* tav_trace_entry.h - one trace record: how it is built, stored and read back.
 *
 * A record is a 20-byte little-endian header, the message, the origin (the function name) and
 * the caller's data block, with no padding and no terminating zeros:
 *
 *   offset  size  field
 *    0      1     flags: bits 0-4 data type, bit 5 texts compressed, bits 6-7 detail
 *    1      1     component id (its low eight bits)
 *    2      1     stored length of the message (0-255 bytes as stored)
 *    3      1     stored length of the origin
 *    4      4     time stamp (tavGetTimeStamp)
 *    8      4     process id of the trace environment
 *   12      4     thread id of the writer
 *   16      4     size of the data block
 *   20            message, origin, then the data block
 *
 * The trace buffer and the trace file hold the same bytes, so a file written on one platform
 * reads back identically on the other. A file is these records one after the other; a reader
 * finds each record by adding up the lengths.
 *
 * Compressed texts use 6-bit codes for the characters of kTraceAlphabet (space 0 to "z" 62);
 * any other byte costs the escape code 63 and its 8 bits. The bit stream is written most
 * significant bit first and its last byte is filled up with 1-bits. The byte 0xFF is coded as 0
 * and so reads back as a blank; files written that way decode that way.
 *
 * The enumerations compile as C, for the C trace functions; the classes are C++ only.
 */
#ifndef TAV_TRACE_ENTRY_H
#define TAV_TRACE_ENTRY_H

#include <stddef.h>
#include <stdint.h>

#include "tav_export.h"

/* How much detail a record belongs to; two bits of the record. */
typedef enum TavEnTraceDetail {
  TAV_TRACE_DETAIL_OFF = 0,
  TAV_TRACE_DETAIL_LOW = 1,
  TAV_TRACE_DETAIL_MED = 2,
  TAV_TRACE_DETAIL_HIGH = 3
} TavEnTraceDetail;

/* What a record's data block holds; five bits of the record. */
typedef enum TavEnTraceDataType {
  TAV_TRACE_TYPE_UNUSED = 0,         /* made by no producer */
  TAV_TRACE_TYPE_FUNCTION_ENTRY = 1, /* 4-byte nesting level after entering */
  TAV_TRACE_TYPE_FUNCTION_EXIT = 2,  /* 4-byte nesting level after leaving */
  TAV_TRACE_TYPE_NO_DATA = 3,
  TAV_TRACE_TYPE_DATA = 4,         /* untyped bytes */
  TAV_TRACE_TYPE_DATA_CLIPPED = 5, /* untyped bytes, cut to the buffer's capacity */
  TAV_TRACE_TYPE_DATA_NULL = 6,    /* the caller passed no data pointer; size 0 */
  TAV_TRACE_TYPE_POINTER = 7,
  TAV_TRACE_TYPE_CSTRING = 8,
  TAV_TRACE_TYPE_UNICODE = 9, /* 16-bit characters */
  TAV_TRACE_TYPE_BOOL = 10,
  TAV_TRACE_TYPE_INT8 = 11,
  TAV_TRACE_TYPE_UINT8 = 12,
  TAV_TRACE_TYPE_INT16 = 13,
  TAV_TRACE_TYPE_UINT16 = 14,
  TAV_TRACE_TYPE_INT32 = 15,
  TAV_TRACE_TYPE_UINT32 = 16,
  TAV_TRACE_TYPE_INT64 = 17,
  TAV_TRACE_TYPE_UINT64 = 18,
  TAV_TRACE_TYPE_FLOAT = 19,
  TAV_TRACE_TYPE_DOUBLE = 20,
  TAV_TRACE_TYPE_LONG_DOUBLE = 21
} TavEnTraceDataType;

#ifdef __cplusplus

#include <istream>

#include "tav_trace_environment_base.h"

class TAV_API TavClTraceEntry {
 public:
  static constexpr size_t kHeaderSize = 20;
  static constexpr size_t kMaxStoredTextLength = 255;
  // The characters that compress to 6 bits; a character's code is its position.
  static constexpr const char* kTraceAlphabet =
      " ,&*:_~()<>ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

  // Builds a record from the arguments of a trace call; never fails. A null data pointer makes
  // the type TAV_TRACE_TYPE_DATA_NULL with no data; data larger than the environment's buffer
  // is cut to it and the type becomes TAV_TRACE_TYPE_DATA_CLIPPED. Texts are cut to 255 stored
  // bytes; null texts count as empty. The data is not copied until the record is written.
  TavClTraceEntry(TavClTraceEnvironmentABase& environment, TavEnTraceDetail detail,
                  uint16_t componentId, TavEnTraceDataType type, const char* origin,
                  const char* message, const void* data, uint64_t dataSize);
  virtual ~TavClTraceEntry();

  TavEnTraceDetail getDetail() const;
  TavEnTraceDataType getType() const;
  uint16_t getComponentId() const;
  uint32_t getTimeStamp() const;
  uint32_t getProcessId() const;
  uint32_t getThreadId() const;
  uint64_t getSizeOfDumpData() const;

  // The header with both texts as stored: getHeaderSize() bytes, written before the data.
  const uint8_t* getHeader() const { return record; }
  uint64_t getHeaderSize() const { return headerSize; }
  // The caller's data block (getSizeOfDumpData() bytes), or null.
  const void* getDumpData() const { return dumpData; }

  // Compresses source (up to its terminating zero) into destination and returns the number of
  // bytes written. Compression stops after the character that carries the bit count past
  // (capacity - 1) * 8, so the result can be capacity + 1 bytes: destination must hold that
  // many. A capacity of 0 writes nothing.
  static size_t compressCString(uint8_t* destination, const char* source, size_t capacity);
  // Expands sourceLength compressed bytes into destination, terminates it and returns the
  // number of characters. Reads no byte past the source; destination must hold
  // sourceLength * 8 / 6 + 1 bytes.
  static size_t deCompressCString(char* destination, const uint8_t* source, size_t sourceLength);
  // Writes the low bitCount bits (1 to 8) of value at bitPosition, most significant bit first.
  // Bits of the first byte behind bitPosition must be 0; the next byte is overwritten when the
  // value reaches into it. Other bit counts write nothing.
  static void compressWriteBits(uint8_t* buffer, uint64_t bitPosition, uint8_t value,
                                unsigned bitCount);
  // Reads bitCount bits (1 to 8) at bitPosition, touching only the bytes that hold them. Other
  // bit counts give 0.
  static uint8_t deCompressReadBits(const uint8_t* buffer, uint64_t bitPosition, unsigned bitCount);

 protected:
  // An empty record (all bytes 0) for reading into.
  explicit TavClTraceEntry(TavClTraceEnvironmentABase& environment);

  bool isCompressed() const;
  // Clears the header and both texts.
  void clearRecord();

  // The header, two texts of up to 255 bytes, and the one byte by which a compressed message
  // may overshoot its capacity.
  static constexpr size_t kRecordImageSize = kHeaderSize + 2 * kMaxStoredTextLength + 2;

  TavClTraceEnvironmentABase& environment;
  uint8_t record[kRecordImageSize];
  uint64_t headerSize;
  const void* dumpData;

 private:
  // Both keep the other bits of the flags byte, except that setType clears the compressed bit.
  void setDetail(TavEnTraceDetail detail);
  void setType(TavEnTraceDataType type);
};

// A record read back from a trace file. read takes the header and both texts; the data block
// stays in the stream for the caller to read or skip (getSizeOfDumpData() bytes) before the
// next record.
class TAV_API TavClTraceFileEntry : public TavClTraceEntry {
 public:
  static constexpr size_t kTextCapacity = 512;

  explicit TavClTraceFileEntry(TavClTraceEnvironmentABase& environment);
  ~TavClTraceFileEntry() override;

  // True when a whole header and both texts were read. On false (end of the stream, a record
  // cut short) the entry is empty. Compressed texts are expanded and counted in the
  // environment's compression statistics. Never reads or allocates beyond the record's fixed
  // image, whatever the stream holds.
  bool read(std::istream& input);

  // The texts, zero-terminated. An uncompressed text may itself hold zero bytes: the lengths
  // count them.
  const char* getMessage() const { return message; }
  uint64_t getMessageLength() const { return messageLength; }
  const char* getOrigin() const { return origin; }
  uint64_t getOriginLength() const { return originLength; }

 private:
  void clearTexts();

  char origin[kTextCapacity];
  uint64_t originLength;
  char message[kTextCapacity];
  uint64_t messageLength;
};

#endif /* __cplusplus */

#endif /* TAV_TRACE_ENTRY_H */
