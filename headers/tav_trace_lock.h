// tav_trace_lock.h - the lock that guards a trace ring, as the buffer manager sees it.
//
// The buffer manager takes its lock around every record and every hand-out and knows nothing
// else about it, so a ring shared by several processes can be guarded by a lock that lives in
// the shared memory itself, while a ring of one process uses TavClTraceProcessLock. A lock that
// survives the death of its holder reports it: the ring may then have been left half updated,
// and the manager checks it before going on.

#ifndef TAV_TRACE_LOCK_H
#define TAV_TRACE_LOCK_H

#include <atomic>

#include "tav_export.h"

// How a lock was taken.
enum TavEnTraceLockState {
  TAV_TRACE_LOCK_ACQUIRED = 0,
  // Taken, but its previous holder ended while holding it.
  TAV_TRACE_LOCK_ACQUIRED_FROM_DEAD_HOLDER = 1
};

class TAV_API TavClTraceBufferLock {
 public:
  TavClTraceBufferLock() = default;
  virtual ~TavClTraceBufferLock();
  TavClTraceBufferLock(const TavClTraceBufferLock&) = delete;
  TavClTraceBufferLock& operator=(const TavClTraceBufferLock&) = delete;

  // Blocks until the calling thread holds the lock.
  virtual TavEnTraceLockState lock() = 0;
  virtual void unlock() = 0;
};

// The lock of a ring that only the threads of one process write: a flag taken with one atomic
// exchange, because a record holds it for a few nanoseconds. A thread that finds it taken spins
// briefly, then yields its time slice until the holder is done. Its holder cannot die without
// the process, so it is never reported dead. Final, so that calls through it are direct.
class TAV_API TavClTraceProcessLock final : public TavClTraceBufferLock {
 public:
  TavClTraceProcessLock() = default;
  ~TavClTraceProcessLock() override;

  TavEnTraceLockState lock() override {
    if (!held.exchange(true, std::memory_order_acquire)) return TAV_TRACE_LOCK_ACQUIRED;
    return lockContended();
  }
  void unlock() override { held.store(false, std::memory_order_release); }

 private:
  TavEnTraceLockState lockContended();

  std::atomic<bool> held{false};
};

#endif  // TAV_TRACE_LOCK_H
