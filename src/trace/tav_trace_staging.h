// tav_trace_staging.h - per-thread areas where trace records wait before they enter the ring.
//
// A record written straight into the ring takes the ring's lock, and when several threads trace
// at once, the lock, the ring's positions and the ring's bytes move between their processors for
// every record. Here each thread builds its records in an area of its own, with no atomic
// read-modify-write at all, and moves them into the ring as one run under the ring's lock when
// the area is full, when the thread ends, and whenever the trace is flushed. The ring therefore
// holds each thread's records whole and in the order the thread made them; records of different
// threads arrive in runs rather than interleaved record by record.
//
// An area is filled by its thread only. A flush from any thread takes an area's drain lock,
// copies the records up to the fill mark the thread published, and notes how far it got; the
// thread starts its area over only under the same lock. The areas live until the staging ends;
// an area whose thread ended is taken by the next new thread.

#ifndef TAV_TRACE_STAGING_H
#define TAV_TRACE_STAGING_H

#include <atomic>
#include <cstdint>

#include "tav_trace_buffer.h"
#include "tav_trace_lock.h"

namespace tav::trace {

// What a thread keeps of the staging it last wrote to: which one it is, and the thread's area in
// it; zero until the thread takes an area. Read on every record. Defined here with its constant
// initial value, so that reading it needs no check whether it was initialised (and on Linux the
// library reaches its thread-local variables without a call into the dynamic linker).
struct StagingThreadSlot {
  uint64_t owner;
  void* area;
};
inline thread_local StagingThreadSlot stagingThreadSlot = {0, nullptr};

class TAV_INTERNAL_API RecordStaging {
 public:
  // The largest area; a small ring gets areas of a quarter of its capacity, so that an area's
  // records always enter it as one run with room to spare.
  static constexpr uint64_t kMaxAreaSize = 16384;

  // Areas for records that end up in ring, a ring of the given capacity.
  RecordStaging(TavClTraceBufferManager& ring, uint64_t capacity);
  // Moves what the areas still hold into the ring, then frees them. No thread may be adding a
  // record at the time.
  ~RecordStaging();
  RecordStaging(const RecordStaging&) = delete;
  RecordStaging& operator=(const RecordStaging&) = delete;

  // Where the calling thread writes its next record, and the thread's id.
  struct Room {
    uint8_t* at;
    std::atomic<uint64_t>* fill;
    uint64_t start;
    uint32_t threadId;
  };
  // Room for a record of at most maxSize bytes in the calling thread's area, moving the area's
  // records into the ring first when it has less. False when the record is larger than an area,
  // or no area could be had: the thread then has no records waiting, and the record goes
  // straight into the ring.
  bool reserve(uint64_t maxSize, Room* room) {
    const StagingThreadSlot& slot = stagingThreadSlot;
    if (slot.owner == identity) {
      Area& area = *static_cast<Area*>(slot.area);
      const uint64_t fill = area.fill.load(std::memory_order_relaxed);
      if (maxSize <= areaSize - fill) {
        *room = {area.bytes + fill, &area.fill, fill,
                 area.threadId.load(std::memory_order_relaxed)};
        return true;
      }
    }
    return reserveSlowly(maxSize, room);
  }
  // Publishes the record of size bytes written at room.at.
  static void commit(const Room& room, uint64_t size) {
    room.fill->store(room.start + size, std::memory_order_release);
  }

  // Adds one record in its parts (see TavClTraceBufferManager::writeRecord) to the calling
  // thread's area. A record larger than an area goes straight into the ring, after the records
  // the thread has waiting.
  void add(const uint8_t* header, const char* message, uint64_t messageLength, const char* origin,
           uint64_t originLength, const void* data);
  // Moves the records of every thread's area into the ring.
  void drainAll();

  uint64_t getAreaSize() const { return areaSize; }
  // How many areas the staging has made: at most one per thread tracing at the same time.
  size_t countAreas() const;

 private:
  struct Area {
    // How many bytes of whole records the thread has put in the area; only the thread moves it
    // on, and it publishes each record by storing it.
    std::atomic<uint64_t> fill{0};
    // How many of those are in the ring already; under drainLock.
    uint64_t drained = 0;
    TavClTraceProcessLock drainLock;
    // A thread writes to the area; cleared when it ends or moves to another trace.
    std::atomic<bool> taken{true};
    // The thread's id, which its records carry; atomic, since a thread that ends looks at it.
    std::atomic<uint32_t> threadId{0};
    Area* next = nullptr;
    void* allocation = nullptr;
    uint8_t* bytes = nullptr;
  };
  friend struct StagingRegistry;

  // reserve when the thread has no area yet, or its area is too full.
  bool reserveSlowly(uint64_t maxSize, Room* room);
  // The calling thread's area, taking one when the thread has none in this staging.
  Area* takeArea();
  // Moves the area's waiting records into the ring; restart, for the area's own thread only,
  // also starts the area over.
  void drain(Area& area, bool restart);
  // The thread no longer writes to area: its records go to the ring and the area is free.
  void release(Area& area);

  TavClTraceBufferManager& ring;
  const uint64_t areaSize;
  // Tells this staging apart from every other one the process has had, even at the same
  // address, in the threads' slots.
  const uint64_t identity;
  std::atomic<Area*> areas{nullptr};
  // Live stagings, for threads that end: their area's staging may be gone.
  RecordStaging* nextLive = nullptr;
};

}  // namespace tav::trace

#endif  // TAV_TRACE_STAGING_H
