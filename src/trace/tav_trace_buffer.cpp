// tav_trace_buffer.cpp - the trace ring buffer: records in, hand-outs of at most two pieces out.

#include "tav_trace_buffer.h"

#include <cstddef>
#include <cstring>

namespace {

constexpr char kMagic[4] = {'T', 'A', 'V', 'T'};

static_assert(sizeof(void*) == 8, "the control block layout is that of 64-bit platforms");
static_assert(sizeof(_TavStTraceBufferControl) == TavClTraceBufferManager::kControlBlockSize,
              "the control block is 48 bytes");
static_assert(offsetof(_TavStTraceBufferControl, capacity) == 8 &&
                  offsetof(_TavStTraceBufferControl, first) == 16 &&
                  offsetof(_TavStTraceBufferControl, last) == 24 &&
                  offsetof(_TavStTraceBufferControl, handOutMark) == 32 &&
                  offsetof(_TavStTraceBufferControl, writePosition) == 40,
              "control block offsets");

constexpr uint64_t kControlBlockAlignment = alignof(_TavStTraceBufferControl);

}  // namespace

TavClTraceBufferManager::TavClTraceBufferManager(TavClResourceKeySemaphore& semaphoreKey,
                                                 void* memory, uint64_t size)
    : semaphoreKey(semaphoreKey),
      control(nullptr),
      callback(nullptr),
      callbackContext(nullptr),
      writtenSinceLastFlush(0) {
  if (memory == nullptr) return;
  const auto address = reinterpret_cast<uintptr_t>(memory);
  const uint64_t padding =
      (kControlBlockAlignment - address % kControlBlockAlignment) % kControlBlockAlignment;
  if (size <= padding || size - padding <= kControlBlockSize) return;
  auto* start = static_cast<uint8_t*>(memory) + padding;
  const uint64_t usable = size - padding;
  control = reinterpret_cast<_TavStTraceBufferControl*>(start);

  // Someone else's block is taken over only if it describes exactly this memory; a block that
  // points elsewhere would send writes outside it.
  if (std::memcmp(control->magic, kMagic, sizeof(kMagic)) == 0 && describesMemory(start, usable)) {
    return;
  }
  std::memcpy(control->magic, kMagic, sizeof(kMagic));
  control->reserved = 0;
  control->capacity = usable - kControlBlockSize;
  control->first = start + kControlBlockSize;
  control->last = control->first + control->capacity - 1;
  control->handOutMark = control->first;
  control->writePosition = control->first;
}

TavClTraceBufferManager::~TavClTraceBufferManager() {
  control = nullptr;
  callback = nullptr;
  callbackContext = nullptr;
}

bool TavClTraceBufferManager::describesMemory(const uint8_t* memory, uint64_t size) const {
  const _TavStTraceBufferControl& block = *control;
  if (block.capacity != size - kControlBlockSize) return false;
  const uint8_t* first = memory + kControlBlockSize;
  const uint8_t* end = first + block.capacity;  // one past the last data byte
  // The mark may stand at the end after a hand-out at the end of the ring; the write position
  // never does, since writing wraps as soon as it gets there.
  return block.first == first && block.last == end - 1 && block.handOutMark >= first &&
         block.handOutMark <= end && block.writePosition >= first && block.writePosition < end;
}

void TavClTraceBufferManager::setOverflowCallback(TavPfuTraceOverflow newCallback, void* context) {
  TavClTraceBufferAccessSemaphore guard(semaphoreKey);
  callback = newCallback;
  callbackContext = context;
}

void TavClTraceBufferManager::write(const TavClTraceEntry& entry) {
  if (control == nullptr) return;
  const uint8_t* header = entry.getHeader();
  const uint64_t headerSize = entry.getHeaderSize();
  const auto* data = static_cast<const uint8_t*>(entry.getDumpData());
  const uint64_t dataSize = entry.getSizeOfDumpData();
  TavClTraceBufferAccessSemaphore guard(semaphoreKey);
  writtenSinceLastFlush = 1;
  // Most records end before the end of the ring: then two copies are all there is to do.
  _TavStTraceBufferControl& ring = *control;
  if (headerSize + dataSize < static_cast<uint64_t>((ring.last + 1) - ring.writePosition)) {
    std::memcpy(ring.writePosition, header, headerSize);
    if (dataSize != 0) std::memcpy(ring.writePosition + headerSize, data, dataSize);
    ring.writePosition += headerSize + dataSize;
    return;
  }
  write(header, headerSize);
  write(data, dataSize);
}

void TavClTraceBufferManager::flush() {
  if (control == nullptr) return;
  TavClTraceBufferAccessSemaphore guard(semaphoreKey);
  if (writtenSinceLastFlush != 0) {
    overflow();
    writtenSinceLastFlush = 0;
  }
}

void TavClTraceBufferManager::copyToWritePosition(const uint8_t* bytes, uint64_t length) {
  if (length != 0) std::memcpy(control->writePosition, bytes, length);
  control->writePosition += length;
}

void TavClTraceBufferManager::write(const uint8_t* bytes, uint64_t length) {
  if (length == 0) return;
  _TavStTraceBufferControl& ring = *control;
  const uint64_t room = static_cast<uint64_t>((ring.last + 1) - ring.writePosition);
  if (length < room) {
    copyToWritePosition(bytes, length);
    return;
  }
  // Fill the ring to its end, hand out, and go on at its start.
  copyToWritePosition(bytes, room);
  overflow();
  ring.writePosition = ring.first;
  bytes += room;
  length -= room;
  // The rest goes on from the first data byte. It is smaller than the ring unless a header and
  // texts are longer than a tiny ring; a rest that fills the ring is handed out at once, like
  // any ring filled to its end, so that no write leaves the position at the end of the ring,
  // from where the next hand-out would repeat bytes already handed out.
  while (length >= ring.capacity) {
    copyToWritePosition(bytes, ring.capacity);
    overflow();
    ring.writePosition = ring.first;
    bytes += ring.capacity;
    length -= ring.capacity;
  }
  copyToWritePosition(bytes, length);
}

void TavClTraceBufferManager::overflow() {
  // Without a callback the mark stays where it is and the ring is simply written over.
  if (callback == nullptr) return;
  _TavStTraceBufferControl& ring = *control;
  _TavStTraceHandOut handOut{callbackContext, ring.handOutMark, 0, nullptr, 0};
  // A mark at or after the write position means the pending bytes wrap round the end. (A mark
  // equal to the write position therefore hands out the whole ring.)
  if (ring.handOutMark >= ring.writePosition) {
    handOut.firstLength = static_cast<uint64_t>((ring.last + 1) - ring.handOutMark);
    handOut.secondLength = static_cast<uint64_t>(ring.writePosition - ring.first);
    if (handOut.secondLength != 0) handOut.secondPiece = ring.first;
  } else {
    handOut.firstLength = static_cast<uint64_t>(ring.writePosition - ring.handOutMark);
  }
  callback(&handOut);
  ring.handOutMark = ring.writePosition;
}
