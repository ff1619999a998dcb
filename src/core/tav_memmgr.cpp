// tav_memmgr.cpp - the replaceable allocator triple and the C functions on top of it.
//
// Every failure becomes a TavClExceptionFatal, so no caller in the library tests for null.
// The module texts and lines of the exceptions are fixed: programs that log them compare
// against these exact positions.

#include "tav_memmgr.h"

#include "tav_system_os.h"

#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

// The default allocator is a stub around malloc rather than malloc itself. This is what makes
// hasUserDefinedMgr() true under the default setting, so that an allocation failure there is
// reported as MEMMGR_USER_OUT_OF_MEMORY; only after a caller installs malloc itself does a
// failure read MEMMGR_RUNTIME_OUT_OF_MEMORY.
void* defaultAllocator(size_t size) { return std::malloc(size); }
void* runtimeRealloc(void* block, size_t size) { return std::realloc(block, size); }
void runtimeFree(void* block) { std::free(block); }

// The positions that the exceptions of this file report.
constexpr const char* kInlineAllocationSite = "tav_memmgr.h:359";
constexpr int kInlineAllocationLine = 359;
constexpr const char* kNoReallocatorSite = "tav_memmgr.cpp:267";
constexpr uint32_t kNoReallocatorLine = 267;
constexpr const char* kReallocFailedSite = "tav_memmgr.cpp:277";
constexpr int kReallocFailedLine = 277;

}  // namespace

TavPfuAllocator TavClMemoryManager::cv_pfuAllocatorCallback = defaultAllocator;
TavPfuReallocator TavClMemoryManager::cv_pfuReallocatorCallback = runtimeRealloc;
TavPfuDeallocator TavClMemoryManager::cv_pfuDeallocatorCallback = runtimeFree;

void TavClMemoryManager::setNewMemoryManager(TavPfuAllocator allocator,
                                             TavPfuReallocator reallocator,
                                             TavPfuDeallocator deallocator) {
  cv_pfuAllocatorCallback = allocator;
  cv_pfuReallocatorCallback = reallocator;
  cv_pfuDeallocatorCallback = deallocator;
  if (reallocator == nullptr && tav::os::isRuntimeMalloc(allocator)) {
    cv_pfuReallocatorCallback = &::realloc;
  }
}

bool TavClMemoryManager::hasUserDefinedMgr() {
  return !tav::os::isRuntimeMalloc(cv_pfuAllocatorCallback);
}

void TavClMemoryManager::outOfMemory(const char* location, int line, size_t size) {
  if (size == 0) {
    throw TavClExceptionFatal("", location, static_cast<uint32_t>(line), MEMMGR_ZERO_SIZE_OBJECT,
                              TAV_CLASS_INVALID_DATA, TAV_SEVERITY_FATAL, TAV_ACTION_TERMINATE);
  }
  const uint32_t id =
      hasUserDefinedMgr() ? MEMMGR_USER_OUT_OF_MEMORY : MEMMGR_RUNTIME_OUT_OF_MEMORY;
  throw TavClExceptionFatal("", location, static_cast<uint32_t>(line), id, TAV_CLASS_OUT_OF_MEMORY,
                            TAV_SEVERITY_FATAL, TAV_ACTION_TERMINATE);
}

void* TavClMemoryManager::malloc(size_t size) {
  void* block = cv_pfuAllocatorCallback(size);
  if (block == nullptr) outOfMemory(kInlineAllocationSite, kInlineAllocationLine, size);
  return block;
}

void* TavClMemoryManager::calloc(size_t count, size_t size) {
  if (size != 0 && count > std::numeric_limits<size_t>::max() / size) {
    // The request cannot be satisfied by any allocator; report it as that allocator would.
    outOfMemory(kInlineAllocationSite, kInlineAllocationLine, std::numeric_limits<size_t>::max());
  }
  const size_t total = count * size;
  void* block = malloc(total);
  std::memset(block, 0, total);
  return block;
}

void* TavClMemoryManager::realloc(void* block, size_t size) {
  if (cv_pfuReallocatorCallback == nullptr) {
    throw TavClExceptionFatal("", kNoReallocatorSite, kNoReallocatorLine,
                              MEMMGR_NO_USER_REALLOC_FUNC, TAV_CLASS_FUNCTION_NOT_SUPPORTED,
                              TAV_SEVERITY_FATAL, TAV_ACTION_ABORT);
  }
  void* resized = cv_pfuReallocatorCallback(block, size);
  if (resized == nullptr) outOfMemory(kReallocFailedSite, kReallocFailedLine, size);
  return resized;
}

void TavClMemoryManager::free(void* block) {
  if (block != nullptr) cv_pfuDeallocatorCallback(block);
}

void* tavMalloc(size_t size) { return TavClMemoryManager::malloc(size); }
void* tavCalloc(size_t count, size_t size) { return TavClMemoryManager::calloc(count, size); }
void* tavRealloc(void* block, size_t size) { return TavClMemoryManager::realloc(block, size); }
void tavFree(void* block) { TavClMemoryManager::free(block); }

void tavSetNewMemoryManager(TavPfuAllocator allocator, TavPfuReallocator reallocator,
                            TavPfuDeallocator deallocator) {
  TavClMemoryManager::setNewMemoryManager(allocator, reallocator, deallocator);
}
