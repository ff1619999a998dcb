// bench_ini_memory.h - an allocator triple for the library's memory manager that counts the
// bytes it hands out, so that a benchmark can report the peak memory of what it builds.
//
// Each block carries its size in a header in front of it, because the release function gets
// only the pointer. It must be installed before the library allocates anything (the benchmark
// program's main does so first thing); blocks from another allocator must never reach it.

#ifndef BENCH_INI_MEMORY_H
#define BENCH_INI_MEMORY_H

#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "tav_memmgr.h"

namespace tav::bench {

struct CountedBytes {
  std::size_t current = 0;
  std::size_t peak = 0;
  std::size_t blocks = 0;  // live blocks
};

inline CountedBytes& countedBytes() {
  static CountedBytes counts;
  return counts;
}

// Sized so that the block behind it keeps malloc's alignment.
constexpr std::size_t kCountHeader = alignof(std::max_align_t);

inline void* countingAllocate(std::size_t size) {
  auto* raw = static_cast<char*>(std::malloc(size + kCountHeader));
  if (raw == nullptr) return nullptr;
  std::memcpy(raw, &size, sizeof size);
  CountedBytes& counts = countedBytes();
  counts.current += size;
  ++counts.blocks;
  if (counts.current > counts.peak) counts.peak = counts.current;
  return raw + kCountHeader;
}

inline void countingRelease(void* block) {
  if (block == nullptr) return;
  char* raw = static_cast<char*>(block) - kCountHeader;
  std::size_t size;
  std::memcpy(&size, raw, sizeof size);
  CountedBytes& counts = countedBytes();
  counts.current -= size;
  --counts.blocks;
  std::free(raw);
}

inline void* countingReallocate(void* block, std::size_t size) {
  if (block == nullptr) return countingAllocate(size);
  void* moved = countingAllocate(size);
  if (moved == nullptr) return nullptr;
  std::size_t old;
  std::memcpy(&old, static_cast<char*>(block) - kCountHeader, sizeof old);
  std::memcpy(moved, block, old < size ? old : size);
  countingRelease(block);
  return moved;
}

inline void installCountingAllocator() {
  tavSetNewMemoryManager(countingAllocate, countingReallocate, countingRelease);
}

}  // namespace tav::bench

#endif  // BENCH_INI_MEMORY_H
