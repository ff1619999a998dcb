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

/* The data types, the single list from which the enumeration below and the formatter's type
 * names are expanded. Each entry is X(name, value, short tag, long name, integer width, signed):
 * the tag and the long name are what the formatter shows for %x and %X, and the integer types
 * give their width in bytes and their signedness (0 and 0 for the other types). */
#define TAV_TRACE_DATA_TYPE_LIST(X)                        \
  /* made by no producer */                                \
  X(UNUSED, 0, "", "", 0, 0)                               \
  /* 4-byte nesting level after entering */                \
  X(FUNCTION_ENTRY, 1, "FE", "FUNCTION ENTRY", 0, 0)       \
  /* 4-byte nesting level after leaving */                 \
  X(FUNCTION_EXIT, 2, "FX", "FUNCTION EXIT", 0, 0)         \
  X(NO_DATA, 3, "ND", "NO DATA", 0, 0)                     \
  /* untyped bytes */                                      \
  X(DATA, 4, "DA", "DATA", 0, 0)                           \
  /* untyped bytes, cut to the buffer's capacity */        \
  X(DATA_CLIPPED, 5, "DA", "DATA", 0, 0)                   \
  /* the caller passed no data pointer; size 0 */          \
  X(DATA_NULL, 6, "DA", "DATA", 0, 0)                      \
  X(POINTER, 7, "p", "Address", 0, 0)                      \
  X(CSTRING, 8, "cpsz", "C string", 0, 0)                  \
  /* 16-bit characters */                                  \
  X(UNICODE, 9, "wc", "Unicode", 0, 0)                     \
  X(BOOL, 10, "b", "bool", 0, 0)                           \
  X(INT8, 11, "i8", "signed integer (8 bits)", 1, 1)       \
  X(UINT8, 12, "w8", "unsigned integer (8 bits)", 1, 0)    \
  X(INT16, 13, "i16", "signed integer (16 bits)", 2, 1)    \
  X(UINT16, 14, "w16", "unsigned integer (16 bits)", 2, 0) \
  X(INT32, 15, "i32", "signed integer (32 bits)", 4, 1)    \
  X(UINT32, 16, "w32", "unsigned integer (32 bits)", 4, 0) \
  X(INT64, 17, "i64", "signed integer (64 bits)", 8, 1)    \
  X(UINT64, 18, "w64", "unsigned integer (64 bits)", 8, 0) \
  X(FLOAT, 19, "f", "float", 0, 0)                         \
  X(DOUBLE, 20, "d", "double", 0, 0)                       \
  X(LONG_DOUBLE, 21, "ld", "long double", 0, 0)

/* What a record's data block holds; five bits of the record. */
#define TAV_TRACE_DECLARE_DATA_TYPE(name, value, tag, longName, width, isSigned) \
  TAV_TRACE_TYPE_##name = value,
typedef enum TavEnTraceDataType {
  TAV_TRACE_DATA_TYPE_LIST(TAV_TRACE_DECLARE_DATA_TYPE)
} TavEnTraceDataType;
#undef TAV_TRACE_DECLARE_DATA_TYPE

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
  // bytes; null texts count as empty. Uncompressed texts and the data are not copied until the
  // record is written or its header asked for: they must stay unchanged until then.
  TavClTraceEntry(TavClTraceEnvironmentABase& environment, TavEnTraceDetail detail,
                  uint16_t componentId, TavEnTraceDataType type, const char* origin,
                  const char* message, const void* data, uint64_t dataSize);
  // The same with the compression setting and the buffer's capacity given by a caller that
  // knows them, rather than asked of the environment for every record.
  TavClTraceEntry(TavClTraceEnvironmentABase& environment, bool compress, uint64_t capacity,
                  TavEnTraceDetail detail, uint16_t componentId, TavEnTraceDataType type,
                  const char* origin, const char* message, const void* data, uint64_t dataSize);
  virtual ~TavClTraceEntry();

  TavEnTraceDetail getDetail() const;
  TavEnTraceDataType getType() const;
  uint16_t getComponentId() const;
  uint32_t getTimeStamp() const;
  uint32_t getProcessId() const;
  uint32_t getThreadId() const;
  uint64_t getSizeOfDumpData() const;

  // The header with both texts as stored: getHeaderSize() bytes, written before the data.
  const uint8_t* getHeader() const {
    if (messageText != nullptr) placeTexts();
    return record;
  }
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
  // The header, followed by the stored texts once they are placed.
  mutable uint8_t record[kRecordImageSize];
  uint64_t headerSize;
  const void* dumpData;

 private:
  friend class TavClTraceBufferManager;
  // Copies uncompressed texts behind the header.
  void placeTexts() const;

  // Uncompressed texts where the caller keeps them, with their stored lengths in the header;
  // both null once the texts are in the image (always for compressed texts).
  mutable const char* messageText = nullptr;
  mutable const char* originText = nullptr;
  uint64_t messageTextLength = 0;
  uint64_t originTextLength = 0;
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
