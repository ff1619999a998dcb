// tav_trace_buffer.cpp - the trace ring buffer: records in, hand-outs of at most two pieces out.
//
// Positions are kept as offsets from the start of the control block, and memory found holding
// a control block is checked field by field before it is used: the memory may be mapped by
// another process, at another address, and may have been left in any state.

#include "tav_trace_buffer.h"

#include <cstddef>
#include <cstring>

#include "tav_trace_record_layout.h"

namespace {

constexpr char kMagic[4] = {'T', 'A', 'V', 'T'};
// Set while the pending bytes hold part of a record larger than the ring, which passes through
// the ring in pieces; cleared when they are handed out.
constexpr uint32_t kPendingPartOfRecord = 1;
constexpr uint64_t kFirst = TavClTraceBufferManager::kControlBlockSize;

static_assert(sizeof(_TavStTraceBufferControl) == TavClTraceBufferManager::kControlBlockSize,
              "the control block is 48 bytes");
static_assert(offsetof(_TavStTraceBufferControl, capacity) == 8 &&
                  offsetof(_TavStTraceBufferControl, firstOffset) == 16 &&
                  offsetof(_TavStTraceBufferControl, lastOffset) == 24 &&
                  offsetof(_TavStTraceBufferControl, handOutMark) == 32 &&
                  offsetof(_TavStTraceBufferControl, writePosition) == 40,
              "control block offsets");

constexpr uint64_t kControlBlockAlignment = alignof(_TavStTraceBufferControl);

// The bytes to skip so that the control block is aligned.
uint64_t alignmentPadding(const void* memory) {
  const auto address = reinterpret_cast<uintptr_t>(memory);
  return (kControlBlockAlignment - address % kControlBlockAlignment) % kControlBlockAlignment;
}

// The usable size of memory from its aligned start; 0 when it holds no room for a ring. A ring
// needs two data bytes, since one always stays free.
uint64_t usableSizeOf(const void* memory, uint64_t size) {
  if (memory == nullptr) return 0;
  const uint64_t padding = alignmentPadding(memory);
  if (size <= padding || size - padding < kFirst + 2) return 0;
  return size - padding;
}

TavEnTraceRingCheck checkControlBlock(const _TavStTraceBufferControl& block, uint64_t usable) {
  if (std::memcmp(block.magic, kMagic, sizeof(kMagic)) != 0) return TAV_TRACE_RING_NO_MAGIC;
  if (block.capacity != usable - kFirst) return TAV_TRACE_RING_BAD_CAPACITY;
  if (block.firstOffset != kFirst || block.lastOffset != usable - 1) {
    return TAV_TRACE_RING_BAD_BOUNDS;
  }
  // Neither position ever stands at the end: writing there wraps to the first byte at once.
  if (block.handOutMark < kFirst || block.handOutMark >= usable) {
    return TAV_TRACE_RING_BAD_HAND_OUT_MARK;
  }
  if (block.writePosition < kFirst || block.writePosition >= usable) {
    return TAV_TRACE_RING_BAD_WRITE_POSITION;
  }
  return TAV_TRACE_RING_VALID;
}

// The bytes from the hand-out mark to the write position, round the end of the ring.
inline uint64_t pendingBytes(const _TavStTraceBufferControl& ring) {
  if (ring.writePosition >= ring.handOutMark) return ring.writePosition - ring.handOutMark;
  return ring.capacity - (ring.handOutMark - ring.writePosition);
}

}  // namespace

// Holds the ring's lock for a scope.
class TavClTraceBufferManager::RingGuard {
 public:
  explicit RingGuard(TavClTraceBufferManager& manager) : manager(manager) { manager.lockRing(); }
  ~RingGuard() { manager.unlockRing(); }
  RingGuard(const RingGuard&) = delete;
  RingGuard& operator=(const RingGuard&) = delete;

 private:
  TavClTraceBufferManager& manager;
};

TavClTraceBufferManager::TavClTraceBufferManager(TavClResourceKeySemaphore& semaphoreKey,
                                                 void* memory, uint64_t size,
                                                 TavClTraceBufferLock* lock,
                                                 TavEnTraceRingAttach attach)
    : semaphoreKey(semaphoreKey),
      lock(lock),
      base(nullptr),
      control(nullptr),
      usableSize(usableSizeOf(memory, size)),
      attachCheck(TAV_TRACE_RING_TOO_SMALL),
      callback(nullptr),
      callbackContext(nullptr) {
  if (usableSize == 0) return;
  auto* start = static_cast<uint8_t*>(memory) + alignmentPadding(memory);
  RingGuard guard(*this);
  attachCheck = checkControlBlock(*reinterpret_cast<_TavStTraceBufferControl*>(start), usableSize);
  if (attachCheck != TAV_TRACE_RING_VALID && attach == TAV_TRACE_RING_ATTACH_ONLY) return;
  base = start;
  control = reinterpret_cast<_TavStTraceBufferControl*>(start);
  if (attachCheck != TAV_TRACE_RING_VALID) startEmpty();
}

TavClTraceBufferManager::~TavClTraceBufferManager() {
  base = nullptr;
  control = nullptr;
  callback = nullptr;
  callbackContext = nullptr;
}

TavEnTraceRingCheck TavClTraceBufferManager::checkRing(const void* memory, uint64_t size) {
  const uint64_t usable = usableSizeOf(memory, size);
  if (usable == 0) return TAV_TRACE_RING_TOO_SMALL;
  const auto* start = static_cast<const uint8_t*>(memory) + alignmentPadding(memory);
  return checkControlBlock(*reinterpret_cast<const _TavStTraceBufferControl*>(start), usable);
}

const char* TavClTraceBufferManager::describeRingCheck(TavEnTraceRingCheck check) {
  switch (check) {
    case TAV_TRACE_RING_VALID: return "the memory holds a valid trace ring";
    case TAV_TRACE_RING_TOO_SMALL: return "the memory is too small for a trace ring";
    case TAV_TRACE_RING_NO_MAGIC: return "the memory holds no trace ring";
    case TAV_TRACE_RING_BAD_CAPACITY:
      return "the capacity of the ring does not match the size of the memory";
    case TAV_TRACE_RING_BAD_BOUNDS:
      return "the data bytes of the ring are not where its capacity puts them";
    case TAV_TRACE_RING_BAD_HAND_OUT_MARK: return "the hand-out mark lies outside the ring";
    case TAV_TRACE_RING_BAD_WRITE_POSITION: return "the write position lies outside the ring";
  }
  return "the state of the ring is unknown";
}

void TavClTraceBufferManager::lockSharedRing() {
  // A holder that died may have left the control block half written; a block that no longer
  // checks out is started afresh rather than trusted.
  if (lock->lock() == TAV_TRACE_LOCK_ACQUIRED_FROM_DEAD_HOLDER && control != nullptr &&
      checkControlBlock(*control, usableSize) != TAV_TRACE_RING_VALID) {
    startEmpty();
  }
}

void TavClTraceBufferManager::startEmpty() {
  std::memcpy(control->magic, kMagic, sizeof(kMagic));
  control->flags = 0;
  control->capacity = usableSize - kFirst;
  control->firstOffset = kFirst;
  control->lastOffset = usableSize - 1;
  control->handOutMark = kFirst;
  control->writePosition = kFirst;
}

void TavClTraceBufferManager::setOverflowCallback(TavPfuTraceOverflow newCallback, void* context) {
  RingGuard guard(*this);
  callback = newCallback;
  callbackContext = context;
}

uint64_t TavClTraceBufferManager::getPendingSize() {
  if (control == nullptr) return 0;
  RingGuard guard(*this);
  return pendingBytes(*control);
}

uint64_t TavClTraceBufferManager::copyIn(uint64_t position, const uint8_t* bytes, uint64_t length) {
  const uint64_t room = usableSize - position;
  if (length < room) {
    if (length != 0) std::memcpy(base + position, bytes, length);
    return position + length;
  }
  std::memcpy(base + position, bytes, room);
  if (length != room) std::memcpy(base + kFirst, bytes + room, length - room);
  return kFirst + (length - room);
}

TavClTraceBufferManager::RecordParts TavClTraceBufferManager::partsOf(
    const TavClTraceEntry& entry) {
  const uint8_t* header = entry.record;
  if (entry.messageText != nullptr) {
    return {header,           entry.messageText,      entry.messageTextLength,
            entry.originText, entry.originTextLength, entry.dumpData};
  }
  const auto* message = reinterpret_cast<const char*>(header + TavClTraceEntry::kHeaderSize);
  const uint64_t messageLength = header[tav::trace_record::kMessageLengthOffset];
  return {header,
          message,
          messageLength,
          message + messageLength,
          header[tav::trace_record::kOriginLengthOffset],
          entry.dumpData};
}

void TavClTraceBufferManager::write(const TavClTraceEntry& entry) {
  const RecordParts parts = partsOf(entry);
  writeRecord(parts.header, parts.message, parts.messageLength, parts.origin, parts.originLength,
              parts.data);
}

void TavClTraceBufferManager::writeRecord(const uint8_t* header, const char* messageText,
                                          uint64_t messageLength, const char* originText,
                                          uint64_t originLength, const void* dumpData) {
  if (control == nullptr) return;
  // The header, the texts and the data: copied straight into the ring. The lengths come as
  // arguments, not from the header's bytes: a length known to be below 256 makes the compiler
  // inline the copies as a string instruction, which starts slower than the library's copy.
  constexpr uint64_t kHeaderSize = TavClTraceEntry::kHeaderSize;
  const auto* message = reinterpret_cast<const uint8_t*>(messageText);
  const auto* origin = reinterpret_cast<const uint8_t*>(originText);
  const auto* data = static_cast<const uint8_t*>(dumpData);
  const uint64_t dataSize = tav::trace_record::dataSizeOf(header);
  const uint64_t recordSize = kHeaderSize + messageLength + originLength + dataSize;
  RingGuard guard(*this);
  _TavStTraceBufferControl& ring = *control;
  // One byte always stays free, so that a full ring never looks empty.
  if (recordSize >= ring.capacity - pendingBytes(ring)) handOut();
  if (recordSize < ring.capacity) {
    uint64_t position = ring.writePosition;
    if (usableSize - position > recordSize) {
      // Most records end before the end of the ring: plain copies.
      tav::trace_record::placeRecordParts(base + position, header, message, messageLength, origin,
                                          originLength, data, dataSize);
      position += recordSize;
    } else {
      position = copyIn(position, header, kHeaderSize);
      position = copyIn(position, message, messageLength);
      position = copyIn(position, origin, originLength);
      position = copyIn(position, data, dataSize);
    }
    ring.writePosition = position;  // the record is whole: now it counts
    return;
  }
  streamIn(header, kHeaderSize);
  streamIn(message, messageLength);
  streamIn(origin, originLength);
  streamIn(data, dataSize);
}

void TavClTraceBufferManager::writeRecords(const uint8_t* records, uint64_t length) {
  if (control == nullptr || length == 0) return;
  RingGuard guard(*this);
  _TavStTraceBufferControl& ring = *control;
  if (length >= ring.capacity - pendingBytes(ring)) handOut();
  if (length < ring.capacity) {
    ring.writePosition = copyIn(ring.writePosition, records, length);
    return;
  }
  streamIn(records, length);
}

void TavClTraceBufferManager::streamIn(const uint8_t* bytes, uint64_t length) {
  _TavStTraceBufferControl& ring = *control;
  while (length != 0) {
    uint64_t room = ring.capacity - 1 - pendingBytes(ring);
    if (room == 0) {
      handOut();
      room = ring.capacity - 1;
    }
    const uint64_t part = length < room ? length : room;
    ring.flags |= kPendingPartOfRecord;
    ring.writePosition = copyIn(ring.writePosition, bytes, part);
    bytes += part;
    length -= part;
  }
}

void TavClTraceBufferManager::flush() {
  if (control == nullptr) return;
  RingGuard guard(*this);
  handOut();
}

void TavClTraceBufferManager::handOut() {
  _TavStTraceBufferControl& ring = *control;
  if (ring.handOutMark == ring.writePosition) return;
  // Without a callback the pending records are given up; the bytes stay until overwritten.
  if (callback != nullptr) {
    _TavStTraceHandOut pieces{callbackContext,
                              base + ring.handOutMark,
                              0,
                              nullptr,
                              0,
                              (ring.flags & kPendingPartOfRecord) == 0 ? 1u : 0u};
    if (ring.handOutMark < ring.writePosition) {
      pieces.firstLength = ring.writePosition - ring.handOutMark;
    } else {
      pieces.firstLength = usableSize - ring.handOutMark;
      pieces.secondLength = ring.writePosition - kFirst;
      if (pieces.secondLength != 0) pieces.secondPiece = base + kFirst;
    }
    callback(&pieces);
  }
  ring.handOutMark = ring.writePosition;
  ring.flags &= ~kPendingPartOfRecord;
}
