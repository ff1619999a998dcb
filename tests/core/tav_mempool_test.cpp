// The memory pool: size rules, growth and the current block, oversized requests, caller memory,
// deleteAt and deleteAll, the typed helper and the two ways a failed growth is reported.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>

#include "tav_mempool.h"
#include "tav_test_allocator.h"
#include "tav_test_data.h"

namespace {

constexpr size_t kHuge = std::numeric_limits<size_t>::max();

// Every test runs on the counting allocator and must give back every block it took.
class MemoryPool : public testing::Test {
 protected:
  void SetUp() override {
    tav::test::installCountingAllocator();
    liveBefore = tav::test::liveBlocks();
  }
  void TearDown() override {
    tav::test::failAllocation(0);
    EXPECT_EQ(tav::test::liveBlocks(), liveBefore) << "blocks leaked";
  }

  size_t liveBefore = 0;
};

// Allocates a chunk and fills it completely, so that AddressSanitizer sees a chunk that
// overlaps a block's end; returns the number of the block that served it.
size_t fill(TavClMemoryPool& pool, size_t size, void** chunk = nullptr) {
  size_t number = 0;
  void* allocated = pool.allocate(size, number);
  if (allocated != nullptr) std::memset(allocated, 0xA5, size);
  if (chunk != nullptr) *chunk = allocated;
  return number;
}

TEST_F(MemoryPool, BlockSizesAreRaisedAndRoundedToPagesAndTheRemainderIsClamped) {
  for (const auto& row : tav::test::readDataTable("core/memory_pool_sizes.txt", 7)) {
    SCOPED_TRACE(row.where);
    const auto size = [&row](size_t field) { return static_cast<size_t>(row.number(field)); };
    TavClMemoryPool pool(size(0), size(1), size(2));
    EXPECT_EQ(pool.getCapacityForFirstBlock(), size(3));
    EXPECT_EQ(pool.getCapacityForSubsequentBlocks(), size(4));
    EXPECT_EQ(pool.getMinimumRemainder(), size(5));
    EXPECT_EQ(pool.getCapacityKB(), size(6));
  }
}

struct Point {
  Point(int x, int y) : x(x), y(y) {}
  int64_t x, y;
};

// Chunks are multiples of eight bytes (the steps below show it on the free sizes), and construct
// aligns its objects even in misaligned caller memory.
TEST_F(MemoryPool, ChunkSizesRoundUpToEightAndSaturateAndObjectsAreAligned) {
  TavClMemoryPool pool(4096, 4096, 256);
  const size_t rows[][2] = {{0, 0}, {5, 8}, {8, 8}, {9, 16}, {kHuge, kHuge - 7}};
  for (const auto& row : rows) EXPECT_EQ(pool.getAlignedSizeFor(row[0]), row[1]) << row[0];

  alignas(8) unsigned char memory[1 + 2 * sizeof(Point)];
  TavClMemoryPool misaligned(memory + 1, sizeof memory - 1);
  Point* aligned = misaligned.construct<Point>(1, 2);
  ASSERT_NE(aligned, nullptr);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(aligned) % alignof(Point), 0u);
  // The padding took room: a second Point no longer fits.
  EXPECT_EQ(misaligned.construct<Point>(5, 6), nullptr);
}

// Growth, oversized requests, deleteAt and deleteAll, as steps in core/memory_pool_steps.txt.
TEST_F(MemoryPool, GrowthOversizedRequestsAndDeletionFollowTheirSteps) {
  std::unique_ptr<TavClMemoryPool> pool;
  void *mark = nullptr, *chunk = nullptr;
  size_t size = 0;
  int stranger = 0;  // a position in no block of the pool
  for (const auto& row : tav::test::readDataTable("core/memory_pool_steps.txt", 6)) {
    SCOPED_TRACE(row.where);
    const std::string& step = row.str(0);
    size_t block = 0;
    if (step == "pool") pool = std::make_unique<TavClMemoryPool>(4096, 4096, 256);
    if (step == "allocate") block = fill(*pool, size = static_cast<size_t>(row.number(1)), &chunk);
    if (step == "deleteAll") pool->deleteAll();
    if (step == "mark") mark = pool->getCurrentStateHandle();
    if (step == "deleteAt") pool->deleteAt(mark);
    if (step == "deleteAtStranger") pool->deleteAt(&stranger);
    if (step == "deleteAtEnd") pool->deleteAt(static_cast<char*>(chunk) + size);
    const auto expect = [&row](size_t field, size_t actual) {
      if (row.str(field) != "-") {
        EXPECT_EQ(actual, static_cast<size_t>(row.number(field))) << field;
      }
    };
    expect(2, block);
    expect(3, pool->getCurrentFreeSize());
    expect(4, pool->getBlockCount());
    expect(5, pool->getCapacityKB());
  }
}

void countCalls(const _TavStError& error, void* calls) {
  EXPECT_EQ(error.id, static_cast<uint32_t>(MEMORYPOOL_COULD_NOT_GROW));
  EXPECT_EQ(error.errorClass, TAV_CLASS_OUT_OF_MEMORY);
  ++*static_cast<int*>(calls);
}

TEST_F(MemoryPool, CallerMemoryFillsUpAndThenAnswersNullSilently) {
  alignas(8) unsigned char memory[1000];
  std::memset(memory, 0x5A, sizeof memory);
  int handlerCalls = 0;
  {
    TavClMemoryPool pool(memory, sizeof memory);
    pool.setErrorHandler(countCalls, &handlerCalls);
    for (size_t i = 0; i < 125; ++i) ASSERT_EQ(pool.allocate(7), memory + 8 * i);
    EXPECT_EQ(pool.allocate(1), nullptr);
    pool.deleteAll();
    EXPECT_EQ(pool.allocate(1000), memory);
  }
  EXPECT_EQ(handlerCalls, 0);
  // The pool never writes into the caller's memory itself, not even on destruction.
  for (unsigned char byte : memory) ASSERT_EQ(byte, 0x5A);
}

// Without an error handler a failed growth throws the plain exception (never the fatal one of
// the memory manager); with one, the handler hears of it and the caller gets null.
TEST_F(MemoryPool, FailedGrowthThrowsOrCallsTheErrorHandlerAndThePoolStillWorks) {
  TavClMemoryPool pool(4096, 4096, 256);
  tav::test::failAllocation(1);
  try {
    pool.allocate(5000);
    FAIL() << "no exception";
  } catch (const TavClException& failure) {
    EXPECT_EQ(dynamic_cast<const TavClExceptionFatal*>(&failure), nullptr) << "the fatal one";
    EXPECT_EQ(failure.getId(), MEMORYPOOL_COULD_NOT_GROW);
    EXPECT_STREQ(failure.getModule(), "tav_mempool.cpp:296");
  }
  // A size no block can hold fails the same way, without asking the allocator.
  EXPECT_THROW(pool.allocate(kHuge - 100), TavClException);

  int calls = 0;
  pool.setErrorHandler(countCalls, &calls);
  fill(pool, 4000);  // block 1 now has too little left
  tav::test::failAllocation(1);
  EXPECT_EQ(pool.allocate(100), nullptr);
  EXPECT_EQ(pool.allocate(kHuge - 100), nullptr);
  EXPECT_EQ(calls, 2);
  tav::test::failAllocation(0);
  EXPECT_EQ(fill(pool, 100), 2u);
}

TEST_F(MemoryPool, AFailedFirstBlockOrHeaderReachesTheCallerWithNothingLeaked) {
  // The pool object itself comes from the memory manager too, as every managed object does.
  tav::test::forEachAllocationFailure([] { delete new TavClMemoryPool(8192, 4096, 256); });
}

}  // namespace
