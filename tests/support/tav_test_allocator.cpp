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

  // Counts a request and tells whether it is the one to fail (never when failAt is 0).
  bool nextRequestFails() {
    const bool fails = ++requests == failAt;
    injected = injected || fails;
    return fails;
  }
};

AllocatorState& sharedState() {
  static AllocatorState* shared = new AllocatorState;  // outlives every static destructor
  return *shared;
}

// Runs operation on the shared state with its lock held.
template <typename Operation>
auto locked(Operation operation) {
  std::lock_guard<std::mutex> guard(sharedState().lock);
  return operation(sharedState());
}

void* countingMalloc(size_t size) {
  return locked([size](AllocatorState& s) -> void* {
    if (s.nextRequestFails()) return nullptr;
    void* block = std::malloc(size);
    if (block != nullptr) s.live.insert(block);
    return block;
  });
}

void* countingRealloc(void* block, size_t size) {
  return locked([block, size](AllocatorState& s) -> void* {
    if (s.nextRequestFails()) return nullptr;  // a failed resize keeps the old block
    void* resized = std::realloc(block, size);
    if (block != nullptr && (resized != nullptr || size == 0)) s.live.erase(block);
    if (resized != nullptr) s.live.insert(resized);
    return resized;
  });
}

void countingFree(void* block) {
  locked([block](AllocatorState& s) {
    std::free(block);
    return s.live.erase(block);
  });
}

}  // namespace

void installCountingAllocator() {
  tavSetNewMemoryManager(countingMalloc, countingRealloc, countingFree);
}

void failAllocation(size_t nthFromNow) {
  locked([nthFromNow](AllocatorState& s) {
    s.failAt = nthFromNow == 0 ? 0 : s.requests + nthFromNow;
    return s.injected = false;
  });
}

bool allocationFailureInjected() {
  return locked([](AllocatorState& s) { return s.injected; });
}
size_t liveBlocks() {
  return locked([](AllocatorState& s) { return s.live.size(); });
}
size_t allocationRequests() {
  return locked([](AllocatorState& s) { return s.requests; });
}

}  // namespace tav::test
