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

AllocatorState& state = *new AllocatorState;  // outlives every static destructor

std::lock_guard<std::mutex> locked() { return std::lock_guard<std::mutex>(state.lock); }

// Counts a request and tells whether it is the one to fail (never when failAt is 0).
bool nextRequestFails() {
  const bool fails = ++state.requests == state.failAt;
  state.injected = state.injected || fails;
  return fails;
}

void* countingMalloc(size_t size) {
  const auto guard = locked();
  if (nextRequestFails()) return nullptr;
  void* block = std::malloc(size);
  if (block != nullptr) state.live.insert(block);
  return block;
}

void* countingRealloc(void* block, size_t size) {
  const auto guard = locked();
  if (nextRequestFails()) return nullptr;  // a failed resize keeps the old block
  void* resized = std::realloc(block, size);
  if (block != nullptr && (resized != nullptr || size == 0)) state.live.erase(block);
  if (resized != nullptr) state.live.insert(resized);
  return resized;
}

void countingFree(void* block) {
  const auto guard = locked();
  std::free(block);
  state.live.erase(block);
}

}  // namespace

void installCountingAllocator() {
  tavSetNewMemoryManager(countingMalloc, countingRealloc, countingFree);
}

void failAllocation(size_t nthFromNow) {
  const auto guard = locked();
  state.failAt = nthFromNow == 0 ? 0 : state.requests + nthFromNow;
  state.injected = false;
}

bool allocationFailureInjected() {
  const auto guard = locked();
  return state.injected;
}

size_t liveBlocks() {
  const auto guard = locked();
  return state.live.size();
}

size_t allocationRequests() {
  const auto guard = locked();
  return state.requests;
}

}  // namespace tav::test
