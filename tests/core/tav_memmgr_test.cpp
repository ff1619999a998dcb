// The allocator triple: replacement, the failure exceptions and their data.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "tav_memmgr.h"
#include "tav_test_allocator.h"

namespace {

constexpr size_t kHuge = std::numeric_limits<size_t>::max();

// Counters for the hand-made allocators below; each test starts them at zero.
int allocatorCalls = 0;
int deallocatorCalls = 0;

void* nullForZeroAllocator(size_t size) {
  ++allocatorCalls;
  return size == 0 ? nullptr : std::malloc(size);
}
void* failingAllocator(size_t) {
  ++allocatorCalls;
  return nullptr;
}
void countingDeallocator(void* block) {
  ++deallocatorCalls;
  std::free(block);
}

class MemoryManager : public testing::Test {
 protected:
  void SetUp() override {
    allocatorCalls = 0;
    deallocatorCalls = 0;
    tav::test::installCountingAllocator();
  }
  void TearDown() override { tav::test::installCountingAllocator(); }
};

// Runs the call and returns the fatal exception it throws; fails the test when none is thrown.
template <typename Call>
TavClExceptionFatal fatalFrom(Call call) {
  try {
    call();
  } catch (const TavClExceptionFatal& fatal) {
    return fatal;
  }
  ADD_FAILURE() << "no TavClExceptionFatal thrown";
  return TavClExceptionFatal(0, TAV_CLASS_UNKNOWN, TAV_ACTION_IGNORE, "none thrown");
}

TEST_F(MemoryManager, ZeroBytesSucceedWithTheRuntimeButAreAnErrorWhenTheAllocatorSaysSo) {
  void* block = tavMalloc(0);
  EXPECT_NE(block, nullptr);
  tavFree(block);

  tavSetNewMemoryManager(nullForZeroAllocator, nullptr, countingDeallocator);
  const TavClExceptionFatal fatal = fatalFrom([] { tavMalloc(0); });
  EXPECT_EQ(fatal.getId(), MEMMGR_ZERO_SIZE_OBJECT);
  EXPECT_EQ(fatal.getErrorClass(), TAV_CLASS_INVALID_DATA);
  EXPECT_EQ(fatal.getSeverity(), TAV_SEVERITY_FATAL);
  EXPECT_EQ(fatal.getAction(), TAV_ACTION_TERMINATE);
  EXPECT_STREQ(fatal.getModule(), "tav_memmgr.h:359");
  EXPECT_EQ(fatal.getLine(), 359u);
  EXPECT_STREQ(fatal.getCause(), "");
}

TEST_F(MemoryManager, UserAllocatorFailureIsUserOutOfMemory) {
  tavSetNewMemoryManager(failingAllocator, nullptr, countingDeallocator);
  EXPECT_TRUE(TavClMemoryManager::hasUserDefinedMgr());
  const TavClExceptionFatal fatal = fatalFrom([] { tavMalloc(64); });
  EXPECT_EQ(fatal.getId(), MEMMGR_USER_OUT_OF_MEMORY);
  EXPECT_EQ(fatal.getErrorClass(), TAV_CLASS_OUT_OF_MEMORY);
  EXPECT_EQ(fatal.getAction(), TAV_ACTION_TERMINATE);
}

TEST_F(MemoryManager, InstallingTheRuntimeMallocBringsReallocAndRuntimeOutOfMemory) {
  tavSetNewMemoryManager(&std::malloc, nullptr, &std::free);
  EXPECT_FALSE(TavClMemoryManager::hasUserDefinedMgr());
  void* block = tavMalloc(8);
  block = tavRealloc(block, 4096);  // the runtime's realloc was installed along with malloc
  tavFree(block);
  const TavClExceptionFatal fatal = fatalFrom([] { tavMalloc(kHuge); });
  EXPECT_EQ(fatal.getId(), MEMMGR_RUNTIME_OUT_OF_MEMORY);
  EXPECT_EQ(fatal.getErrorClass(), TAV_CLASS_OUT_OF_MEMORY);
}

TEST_F(MemoryManager, ReallocWithoutReallocatorThrowsBeforeCallingAnything) {
  tavSetNewMemoryManager(nullForZeroAllocator, nullptr, countingDeallocator);
  void* block = tavMalloc(16);
  allocatorCalls = 0;
  const TavClExceptionFatal fatal = fatalFrom([block] { tavRealloc(block, 32); });
  EXPECT_EQ(fatal.getId(), MEMMGR_NO_USER_REALLOC_FUNC);
  EXPECT_EQ(fatal.getErrorClass(), TAV_CLASS_FUNCTION_NOT_SUPPORTED);
  EXPECT_EQ(fatal.getAction(), TAV_ACTION_ABORT);
  EXPECT_STREQ(fatal.getModule(), "tav_memmgr.cpp:267");
  EXPECT_EQ(fatal.getLine(), 267u);
  EXPECT_EQ(allocatorCalls, 0);
  EXPECT_EQ(deallocatorCalls, 0);
  tavFree(block);
}

TEST_F(MemoryManager, ReallocToZeroReleasesTheBlockAndThrowsZeroSizeObject) {
  const size_t liveBefore = tav::test::liveBlocks();
  void* block = tavMalloc(100);
  const TavClExceptionFatal fatal = fatalFrom([block] { tavRealloc(block, 0); });
  EXPECT_EQ(fatal.getId(), MEMMGR_ZERO_SIZE_OBJECT);
  EXPECT_EQ(fatal.getErrorClass(), TAV_CLASS_INVALID_DATA);
  EXPECT_STREQ(fatal.getModule(), "tav_memmgr.cpp:277");
  EXPECT_EQ(tav::test::liveBlocks(), liveBefore);
}

TEST_F(MemoryManager, FailedReallocKeepsTheOldBlock) {
  char* block = static_cast<char*>(tavMalloc(4));
  std::memcpy(block, "abc", 4);
  tav::test::failAllocation(1);
  const TavClExceptionFatal fatal = fatalFrom([block] { tavRealloc(block, 1 << 20); });
  EXPECT_EQ(fatal.getId(), MEMMGR_USER_OUT_OF_MEMORY);
  EXPECT_STREQ(block, "abc");
  tavFree(block);
}

TEST_F(MemoryManager, FreeOfNullDoesNotReachTheDeallocator) {
  tavSetNewMemoryManager(nullForZeroAllocator, nullptr, countingDeallocator);
  tavFree(nullptr);
  EXPECT_EQ(deallocatorCalls, 0);
  tavFree(tavMalloc(1));
  EXPECT_EQ(deallocatorCalls, 1);
}

TEST_F(MemoryManager, CallocZeroFillsAndRefusesAnOverflowingProduct) {
  auto* block = static_cast<unsigned char*>(tavCalloc(3, 1000));
  for (size_t i = 0; i < 3000; ++i) ASSERT_EQ(block[i], 0u) << "byte " << i;
  tavFree(block);

  // 2^33 * 2^31 wraps to 0 in 64 bits; a short block must never be handed out for it.
  const size_t requestsBefore = tav::test::allocationRequests();
  const TavClExceptionFatal fatal =
      fatalFrom([] { tavCalloc(size_t{1} << (sizeof(size_t) * 4 + 1), size_t{1} << 31); });
  EXPECT_EQ(fatal.getId(), MEMMGR_USER_OUT_OF_MEMORY);
  EXPECT_EQ(fatal.getErrorClass(), TAV_CLASS_OUT_OF_MEMORY);
  EXPECT_EQ(tav::test::allocationRequests(), requestsBefore) << "the allocator was called";
}

TEST_F(MemoryManager, ManagedObjectsAllocateThroughTheInstalledAllocator) {
  struct Node : TavClMemoryManagedObject {
    int value = 0;
  };
  const size_t liveBefore = tav::test::liveBlocks();
  Node* node = new Node;
  EXPECT_EQ(tav::test::liveBlocks(), liveBefore + 1);
  delete node;
  EXPECT_EQ(tav::test::liveBlocks(), liveBefore);
  tav::test::failAllocation(1);
  EXPECT_THROW(new Node, TavClExceptionFatal);
}

TEST_F(MemoryManager, EveryAllocationFailureOfAGrowingBufferIsReportedAndLeavesNothing) {
  tav::test::forEachAllocationFailure([] {
    void* block = tavMalloc(10);
    try {
      block = tavRealloc(block, 1000);  // a failed resize keeps the old block, still ours
      tavFree(tavCalloc(10, 10));
    } catch (...) {
      tavFree(block);
      throw;
    }
    tavFree(block);
  });
}

// The default allocator is a stub around malloc, so a fresh process counts as having a user
// allocator, and its failures read MEMMGR_USER_OUT_OF_MEMORY. Checked in a fresh child.
TEST(MemoryManagerDefaults, DefaultAllocatorCountsAsUserDefined) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        int code = TavClMemoryManager::hasUserDefinedMgr() ? 10 : 20;
        try {
          tavMalloc(kHuge);
        } catch (const TavClExceptionFatal& fatal) {
          if (fatal.getId() == MEMMGR_USER_OUT_OF_MEMORY) code += 1;
        }
        std::exit(code);
      },
      testing::ExitedWithCode(11), "");
}

}  // namespace
