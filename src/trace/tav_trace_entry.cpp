// tav_trace_entry.cpp - building a trace record from a trace call, and reading one back.
//
// Records are built on the caller's stack in a fixed image and never allocate; reading uses
// the same fixed image, so no length in a file can make a reader allocate or overrun.

#include "tav_trace_entry.h"

#include <string.h>

#include <cstring>

#include "../core/tav_system_os.h"
#include "../process/tav_process_os.h"
#include "tav_trace_record_layout.h"

namespace {

using tav::trace_record::dataSizeOf;
using tav::trace_record::kComponentIdOffset;
using tav::trace_record::kCompressedBit;
using tav::trace_record::kDetailShift;
using tav::trace_record::kFlagsOffset;
using tav::trace_record::kMessageLengthOffset;
using tav::trace_record::kOriginLengthOffset;
using tav::trace_record::kProcessIdOffset;
using tav::trace_record::kThreadIdOffset;
using tav::trace_record::kTimeStampOffset;
using tav::trace_record::kTypeBits;
using tav::trace_record::loadLittleEndian32;

// Stores one text compressed at destination and returns its stored length: the low eight bits
// of the byte count. A compressed text may run to 256 bytes, which the length byte stores as 0;
// the next text is then placed at that stored length, over the first bytes of the lost one, so
// that the record still reads exactly as its lengths say.
uint8_t storeCompressed(uint8_t* destination, const char* text) {
  if (text == nullptr) return 0;
  return static_cast<uint8_t>(
      TavClTraceEntry::compressCString(destination, text, TavClTraceEntry::kMaxStoredTextLength));
}

}  // namespace

TavClTraceEntry::TavClTraceEntry(TavClTraceEnvironmentABase& environment, TavEnTraceDetail detail,
                                 uint16_t componentId, TavEnTraceDataType type, const char* origin,
                                 const char* message, const void* data, uint64_t dataSize)
    : TavClTraceEntry(environment, environment.isCompressionEnabled(), environment.getBufferSize(),
                      detail, componentId, type, origin, message, data, dataSize) {}

TavClTraceEntry::TavClTraceEntry(TavClTraceEnvironmentABase& environment, bool compress,
                                 uint64_t capacity, TavEnTraceDetail detail, uint16_t componentId,
                                 TavEnTraceDataType type, const char* origin, const char* message,
                                 const void* data, uint64_t dataSize)
    : environment(environment), headerSize(kHeaderSize), dumpData(data) {
  // The clock and the thread id straight from the platform layer: the public functions around
  // them would cost a call through the library's symbol table on every record.
  tav::trace_record::storeCallHeader(record, detail, componentId, type, compress, data, dataSize,
                                     capacity, 0, 0, tav::os::tickCountMilliseconds(),
                                     environment.getProcessId(), tav::os::currentThreadId());

  if (compress) {
    record[kMessageLengthOffset] = storeCompressed(record + kHeaderSize, message);
    record[kOriginLengthOffset] =
        storeCompressed(record + kHeaderSize + record[kMessageLengthOffset], origin);
  } else {
    // Left where they are: the buffer copies them straight into the ring.
    messageText = message != nullptr ? message : "";
    originText = origin != nullptr ? origin : "";
    messageTextLength = strnlen(messageText, kMaxStoredTextLength);
    originTextLength = strnlen(originText, kMaxStoredTextLength);
    record[kMessageLengthOffset] = static_cast<uint8_t>(messageTextLength);
    record[kOriginLengthOffset] = static_cast<uint8_t>(originTextLength);
  }
  headerSize = kHeaderSize + record[kMessageLengthOffset] + record[kOriginLengthOffset];
}

void TavClTraceEntry::placeTexts() const {
  std::memcpy(record + kHeaderSize, messageText, messageTextLength);
  std::memcpy(record + kHeaderSize + messageTextLength, originText, originTextLength);
  messageText = nullptr;
  originText = nullptr;
}

TavClTraceEntry::TavClTraceEntry(TavClTraceEnvironmentABase& environment)
    : environment(environment), record{}, headerSize(0), dumpData(nullptr) {}

TavClTraceEntry::~TavClTraceEntry() = default;

uint16_t TavClTraceEntry::getComponentId() const { return record[kComponentIdOffset]; }

uint64_t TavClTraceEntry::getSizeOfDumpData() const { return dataSizeOf(record); }

bool TavClTraceEntry::isCompressed() const { return (record[kFlagsOffset] & kCompressedBit) != 0; }

TavEnTraceDetail TavClTraceEntry::getDetail() const {
  return static_cast<TavEnTraceDetail>(record[kFlagsOffset] >> kDetailShift);
}

TavEnTraceDataType TavClTraceEntry::getType() const {
  return static_cast<TavEnTraceDataType>(record[kFlagsOffset] & kTypeBits);
}

uint32_t TavClTraceEntry::getTimeStamp() const {
  return loadLittleEndian32(record + kTimeStampOffset);
}

uint32_t TavClTraceEntry::getProcessId() const {
  return loadLittleEndian32(record + kProcessIdOffset);
}

uint32_t TavClTraceEntry::getThreadId() const {
  return loadLittleEndian32(record + kThreadIdOffset);
}

void TavClTraceEntry::clearRecord() {
  std::memset(record, 0, sizeof(record));
  headerSize = 0;
}

TavClTraceFileEntry::TavClTraceFileEntry(TavClTraceEnvironmentABase& environment)
    : TavClTraceEntry(environment) {
  clearTexts();
}

TavClTraceFileEntry::~TavClTraceFileEntry() = default;

void TavClTraceFileEntry::clearTexts() {
  origin[0] = '\0';
  originLength = 0;
  message[0] = '\0';
  messageLength = 0;
}

bool TavClTraceFileEntry::read(std::istream& input) {
  clearTexts();
  input.read(reinterpret_cast<char*>(record), kHeaderSize);
  if (!input) {
    clearRecord();
    return false;
  }
  const size_t storedMessage = record[kMessageLengthOffset];
  const size_t storedOrigin = record[kOriginLengthOffset];
  headerSize = kHeaderSize + storedMessage + storedOrigin;
  input.read(reinterpret_cast<char*>(record + kHeaderSize),
             static_cast<std::streamsize>(storedMessage + storedOrigin));
  if (!input.good()) {
    clearRecord();
    return false;
  }

  const uint8_t* storedMessageBytes = record + kHeaderSize;
  const uint8_t* storedOriginBytes = storedMessageBytes + storedMessage;
  // 255 stored bytes expand to at most 340 characters, well inside the text buffers.
  static_assert(kMaxStoredTextLength * 8 / 6 + 1 <= kTextCapacity, "room for expanded texts");
  if (isCompressed()) {
    messageLength = deCompressCString(message, storedMessageBytes, storedMessage);
    environment.recordCompressionRate(messageLength, storedMessage);
    originLength = deCompressCString(origin, storedOriginBytes, storedOrigin);
    environment.recordCompressionRate(originLength, storedOrigin);
  } else {
    // Copies of the longest text, whatever the length: a copy of fixed size is a few vector
    // moves, where one of a length known only now starts up slowly for texts this short. The
    // record image holds the longest text behind each start, and the bytes behind a text's
    // terminator are never read.
    static_assert(kHeaderSize + 2 * kMaxStoredTextLength <= kRecordImageSize, "room to copy");
    std::memcpy(message, storedMessageBytes, kMaxStoredTextLength);
    message[storedMessage] = '\0';
    messageLength = storedMessage;
    std::memcpy(origin, storedOriginBytes, kMaxStoredTextLength);
    origin[storedOrigin] = '\0';
    originLength = storedOrigin;
  }
  return true;
}
