// tav_trace_lock.cpp - the lock interface of trace rings, and the lock of a ring within one
// process.

#include "tav_trace_lock.h"

#include <thread>

TavClTraceBufferLock::~TavClTraceBufferLock() = default;

TavClTraceProcessLock::~TavClTraceProcessLock() = default;

TavEnTraceLockState TavClTraceProcessLock::lockContended() {
  // The holder writes one record and lets go, so a short spin usually ends the wait; past it the
  // holder has likely lost its processor, and yielding gives it back sooner than spinning on.
  constexpr int kSpinsBeforeYielding = 64;
  for (int spins = 0;; ++spins) {
    if (!held.load(std::memory_order_relaxed) && !held.exchange(true, std::memory_order_acquire)) {
      return TAV_TRACE_LOCK_ACQUIRED;
    }
    if (spins >= kSpinsBeforeYielding) std::this_thread::yield();
  }
}
