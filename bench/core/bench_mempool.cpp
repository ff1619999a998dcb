// Memory pool: TavClMemoryPool beside malloc/free and std::pmr::monotonic_buffer_resource.
// Each iteration takes 4096 chunks of 16 to 64 bytes, writes a byte into each, and then gives
// everything back the way each allocator does it: deleteAll, free of every chunk, release().
// The pairs run back to back as "BM_PoolChunks/<allocator>".

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <memory_resource>
#include <vector>

#include "tav_mempool.h"

namespace {

constexpr std::size_t kChunksPerCycle = 4096;
constexpr std::size_t kSizeCycle = 7;  // 16, 24, ..., 64 bytes

std::size_t chunkSize(std::size_t i) { return 16 + 8 * (i % kSizeCycle); }

void finish(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kChunksPerCycle));
}

void BM_PoolChunks_Tav(benchmark::State& state) {
  TavClMemoryPool pool(64 * 1024, 64 * 1024, 256);
  for (auto _ : state) {
    for (std::size_t i = 0; i < kChunksPerCycle; ++i) {
      auto* chunk = static_cast<char*>(pool.allocate(chunkSize(i)));
      *chunk = 1;
      benchmark::DoNotOptimize(chunk);
    }
    pool.deleteAll();
  }
  finish(state);
}

void BM_PoolChunks_MallocFree(benchmark::State& state) {
  std::vector<void*> chunks(kChunksPerCycle);
  for (auto _ : state) {
    for (std::size_t i = 0; i < kChunksPerCycle; ++i) {
      auto* chunk = static_cast<char*>(std::malloc(chunkSize(i)));
      *chunk = 1;
      benchmark::DoNotOptimize(chunk);
      chunks[i] = chunk;
    }
    for (void* chunk : chunks) std::free(chunk);
  }
  finish(state);
}

// The resource as a user would declare it: release() hands its buffers back upstream, so every
// cycle fetches them again.
void BM_PoolChunks_Monotonic(benchmark::State& state) {
  std::pmr::monotonic_buffer_resource resource;
  for (auto _ : state) {
    for (std::size_t i = 0; i < kChunksPerCycle; ++i) {
      auto* chunk = static_cast<char*>(resource.allocate(chunkSize(i), 8));
      *chunk = 1;
      benchmark::DoNotOptimize(chunk);
    }
    resource.release();
  }
  finish(state);
}

// The resource at its best: an initial buffer that holds a whole cycle, kept across release().
void BM_PoolChunks_MonotonicPreallocated(benchmark::State& state) {
  std::vector<unsigned char> buffer(kChunksPerCycle * 64);
  std::pmr::monotonic_buffer_resource resource(buffer.data(), buffer.size());
  for (auto _ : state) {
    for (std::size_t i = 0; i < kChunksPerCycle; ++i) {
      auto* chunk = static_cast<char*>(resource.allocate(chunkSize(i), 8));
      *chunk = 1;
      benchmark::DoNotOptimize(chunk);
    }
    resource.release();
  }
  finish(state);
}

// The pool on the same caller buffer, for the like-for-like comparison with the one above.
void BM_PoolChunks_TavCallerMemory(benchmark::State& state) {
  std::vector<unsigned char> buffer(kChunksPerCycle * 64);
  TavClMemoryPool pool(buffer.data(), buffer.size());
  for (auto _ : state) {
    for (std::size_t i = 0; i < kChunksPerCycle; ++i) {
      auto* chunk = static_cast<char*>(pool.allocate(chunkSize(i)));
      *chunk = 1;
      benchmark::DoNotOptimize(chunk);
    }
    pool.deleteAll();
  }
  finish(state);
}

BENCHMARK(BM_PoolChunks_Tav)->Name("BM_PoolChunks/tav");
BENCHMARK(BM_PoolChunks_Monotonic)->Name("BM_PoolChunks/monotonic");
BENCHMARK(BM_PoolChunks_MallocFree)->Name("BM_PoolChunks/malloc_free");
BENCHMARK(BM_PoolChunks_TavCallerMemory)->Name("BM_PoolChunks/tav_caller_memory");
BENCHMARK(BM_PoolChunks_MonotonicPreallocated)->Name("BM_PoolChunks/monotonic_preallocated");

}  // namespace
