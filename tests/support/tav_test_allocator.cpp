// tav_test_allocator.cpp - the counting, failing allocator behind tav_test_allocator.h.

#include "tav_test_allocator.h"

#include <cstdlib>
#include <mutex>
#include <unordered_set>

#include "tav_memmgr.h"

namespace tav::test {
namespace {

struct AllocatorState {
  std::mutex lock;
  std::unordered_set<void*> live;  // std containers use operator new, never this allocator
  size_t requests = 0;
  size_t failAt = 0;  // request number that fails; 0 for none
  bool injected = false;
};

AllocatorState& state() {
  static AllocatorState* shared = new AllocatorState;  // outlives every static destructor
  return *shared;
}

// Whether this request is the one to fail. Called with the lock held.
bool nextRequestFails(AllocatorState& s) {
  ++s.requests;
  if (s.failAt != 0 && s.requests == s.failAt) {
    s.injected = true;
    return true;
  }
  return false;
}

void* countingMalloc(size_t size) {
  AllocatorState& s = state();
  std::lock_guard<std::mutex> guard(s.lock);
  if (nextRequestFails(s)) return nullptr;
  void* block = std::malloc(size);
  if (block != nullptr) s.live.insert(block);
  return block;
}

void* countingRealloc(void* block, size_t size) {
  AllocatorState& s = state();
  std::lock_guard<std::mutex> guard(s.lock);
  if (nextRequestFails(s)) return nullptr;  // a failed resize keeps the old block
  void* resized = std::realloc(block, size);
  if (block != nullptr && (resized != nullptr || size == 0)) s.live.erase(block);
  if (resized != nullptr) s.live.insert(resized);
  return resized;
}

void countingFree(void* block) {
  AllocatorState& s = state();
  std::lock_guard<std::mutex> guard(s.lock);
  s.live.erase(block);
  std::free(block);
}

}  // namespace

void installCountingAllocator() {
  tavSetNewMemoryManager(countingMalloc, countingRealloc, countingFree);
}

void failAllocation(size_t nthFromNow) {
  AllocatorState& s = state();
  std::lock_guard<std::mutex> guard(s.lock);
  s.failAt = nthFromNow == 0 ? 0 : s.requests + nthFromNow;
  s.injected = false;
}

bool allocationFailureInjected() {
  AllocatorState& s = state();
  std::lock_guard<std::mutex> guard(s.lock);
  return s.injected;
}

size_t liveBlocks() {
  AllocatorState& s = state();
  std::lock_guard<std::mutex> guard(s.lock);
  return s.live.size();
}

size_t allocationRequests() {
  AllocatorState& s = state();
  std::lock_guard<std::mutex> guard(s.lock);
  return s.requests;
}

}  // namespace tav::test
