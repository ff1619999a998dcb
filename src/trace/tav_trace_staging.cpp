// tav_trace_staging.cpp - per-thread areas for trace records, moved into the ring in runs.

#include "tav_trace_staging.h"

#include <cstring>
#include <new>

#include "../process/tav_process_os.h"
#include "tav_memmgr.h"
#include "tav_trace_record_layout.h"

namespace tav::trace {

namespace {

// A processor's cache line: areas never share one, so that threads filling their own areas do
// not slow each other down.
constexpr uintptr_t kLineSize = 64;

uint8_t* alignedToLine(void* memory) {
  const auto address = reinterpret_cast<uintptr_t>(memory);
  return reinterpret_cast<uint8_t*>((address + kLineSize - 1) & ~(kLineSize - 1));
}

std::atomic<uint64_t> nextIdentity{1};

uint64_t areaSizeFor(uint64_t capacity) {
  const uint64_t quarter = capacity / 4;
  return quarter < RecordStaging::kMaxAreaSize ? quarter : RecordStaging::kMaxAreaSize;
}

}  // namespace

// The stagings alive in the process, so that a thread that ends can tell whether its area's
// staging is still there to take the area back.
struct StagingRegistry {
  static TavClTraceProcessLock& lock() {
    // Never destroyed: threads may end after the library's static objects are gone.
    static auto* registryLock = new TavClTraceProcessLock();
    return *registryLock;
  }
  static RecordStaging*& live() {
    static RecordStaging* first = nullptr;
    return first;
  }

  static void enter(RecordStaging& staging) {
    lock().lock();
    staging.nextLive = live();
    live() = &staging;
    lock().unlock();
  }

  static void leave(RecordStaging& staging) {
    lock().lock();
    for (RecordStaging** link = &live(); *link != nullptr; link = &(*link)->nextLive) {
      if (*link == &staging) {
        *link = staging.nextLive;
        break;
      }
    }
    lock().unlock();
  }

  static RecordStaging* nextOf(const RecordStaging& staging) { return staging.nextLive; }
  // staging's area at address, if it is one and the thread with threadId has it.
  static RecordStaging::Area* findTakenArea(const RecordStaging& staging, const void* address,
                                            uint32_t threadId) {
    for (RecordStaging::Area* area = staging.areas.load(std::memory_order_acquire);
         area != nullptr; area = area->next) {
      if (area == address) {
        const bool taken = area->taken.load(std::memory_order_acquire);
        return taken && area->threadId.load(std::memory_order_relaxed) == threadId ? area
                                                                                   : nullptr;
      }
    }
    return nullptr;
  }
  static void release(RecordStaging& staging, RecordStaging::Area& area) { staging.release(area); }

  // Gives the calling thread's area back to its staging, if that staging is still alive.
  static void releaseSlot(StagingThreadSlot& slot) {
    lock().lock();
    for (RecordStaging* staging = live(); staging != nullptr; staging = staging->nextLive) {
      if (staging->identity == slot.owner) {
        staging->release(*static_cast<RecordStaging::Area*>(slot.area));
        break;
      }
    }
    lock().unlock();
    slot.owner = 0;
    slot.area = nullptr;
  }
};

namespace {

// Runs in a thread that ends, with the area it took last: the area goes back to its staging
// unless that staging has gone. The area is looked up among the areas of the live stagings
// rather than read, since a gone staging took its areas with it; and it must still be this
// thread's, since a new staging may have made another area at the same address.
void releaseAreaOfEndingThread(void* ending) {
  const uint32_t threadId = tav::os::currentThreadId();
  StagingRegistry::lock().lock();
  for (RecordStaging* staging = StagingRegistry::live(); staging != nullptr;
       staging = StagingRegistry::nextOf(*staging)) {
    auto* area = StagingRegistry::findTakenArea(*staging, ending, threadId);
    if (area != nullptr) {
      StagingRegistry::release(*staging, *area);
      break;
    }
  }
  StagingRegistry::lock().unlock();
}

}  // namespace

RecordStaging::RecordStaging(TavClTraceBufferManager& ring, uint64_t capacity)
    : ring(ring), areaSize(areaSizeFor(capacity)), identity(nextIdentity.fetch_add(1)) {
  StagingRegistry::enter(*this);
}

RecordStaging::~RecordStaging() {
  StagingRegistry::leave(*this);
  drainAll();
  Area* area = areas.load(std::memory_order_acquire);
  while (area != nullptr) {
    Area* next = area->next;
    void* allocation = area->allocation;
    area->~Area();
    tavFree(allocation);
    area = next;
  }
}

bool RecordStaging::reserveSlowly(uint64_t maxSize, Room* room) {
  const StagingThreadSlot& slot = stagingThreadSlot;
  Area* area = slot.owner == identity ? static_cast<Area*>(slot.area) : takeArea();
  if (area == nullptr) return false;  // no memory for an area
  uint64_t fill = area->fill.load(std::memory_order_relaxed);
  if (maxSize > areaSize - fill) {
    if (fill != 0) {
      drain(*area, true);
      fill = 0;
    }
    if (maxSize > areaSize) return false;
  }
  *room = {area->bytes + fill, &area->fill, fill, area->threadId.load(std::memory_order_relaxed)};
  return true;
}

void RecordStaging::add(const uint8_t* header, const char* message, uint64_t messageLength,
                        const char* origin, uint64_t originLength, const void* data) {
  constexpr uint64_t kHeaderSize = TavClTraceEntry::kHeaderSize;
  const uint64_t dataSize = tav::trace_record::dataSizeOf(header);
  const uint64_t size = kHeaderSize + messageLength + originLength + dataSize;
  Room room;
  if (!reserve(size, &room)) {
    ring.writeRecord(header, message, messageLength, origin, originLength, data);
    return;
  }
  tav::trace_record::placeRecordParts(room.at, header, message, messageLength, origin,
                                      originLength, data, dataSize);
  commit(room, size);
}

void RecordStaging::drainAll() {
  for (Area* area = areas.load(std::memory_order_acquire); area != nullptr; area = area->next) {
    drain(*area, false);
  }
}

size_t RecordStaging::countAreas() const {
  size_t count = 0;
  for (Area* area = areas.load(std::memory_order_acquire); area != nullptr; area = area->next) {
    ++count;
  }
  return count;
}

void RecordStaging::drain(Area& area, bool restart) {
  area.drainLock.lock();
  // Acquiring: the bytes of every record counted in the fill are in place.
  const uint64_t fill = area.fill.load(std::memory_order_acquire);
  if (fill > area.drained) ring.writeRecords(area.bytes + area.drained, fill - area.drained);
  if (restart) {
    // Only the area's own thread starts it over: no other thread may move its fill.
    area.drained = 0;
    area.fill.store(0, std::memory_order_relaxed);
  } else {
    area.drained = fill;
  }
  area.drainLock.unlock();
}

void RecordStaging::release(Area& area) {
  drain(area, true);
  area.taken.store(false, std::memory_order_release);
}

RecordStaging::Area* RecordStaging::takeArea() {
  StagingThreadSlot& slot = stagingThreadSlot;
  // The thread's area in another trace goes back to it first.
  if (slot.owner != 0) StagingRegistry::releaseSlot(slot);
  Area* area = nullptr;
  for (Area* free = areas.load(std::memory_order_acquire); free != nullptr; free = free->next) {
    bool expected = false;
    if (!free->taken.load(std::memory_order_relaxed) &&
        free->taken.compare_exchange_strong(expected, true, std::memory_order_acquire)) {
      area = free;
      break;
    }
  }
  if (area == nullptr) {
    // The area's fields, then its bytes, each on lines of their own.
    const uint64_t fieldsSize = (sizeof(Area) + kLineSize - 1) & ~(kLineSize - 1);
    void* allocation;
    try {
      allocation = tavMalloc(kLineSize + fieldsSize + areaSize + kLineSize);
    } catch (...) {
      return nullptr;  // a trace call never throws: this thread writes to the ring directly
    }
    uint8_t* start = alignedToLine(allocation);
    area = new (start) Area();
    area->allocation = allocation;
    area->bytes = start + fieldsSize;
    Area* head = areas.load(std::memory_order_relaxed);
    do {
      area->next = head;
    } while (!areas.compare_exchange_weak(head, area, std::memory_order_release,
                                          std::memory_order_relaxed));
  }
  area->threadId.store(tav::os::currentThreadId(), std::memory_order_relaxed);
  slot.owner = identity;
  slot.area = area;
  // Without the call at the thread's end, the area would stay taken, its records waiting for
  // the next flush.
  tav::os::callAtThreadEnd(releaseAreaOfEndingThread, area);
  return area;
}

}  // namespace tav::trace
