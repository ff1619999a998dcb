// The allocator triple: replacement, the failure exceptions and their data.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <tuple>

#include "tav_memmgr.h"
#include "tav_test_allocator.h"

namespace {

constexpr size_t kHuge = std::numeric_limits<size_t>::max();

int allocatorCalls = 0, deallocatorCalls = 0;  // of the hand-made allocator below

void* nullForZeroAllocator(size_t size) {
  ++allocatorCalls;
  return size == 0 ? nullptr : std::malloc(size);
}
void countingDeallocator(void* block) {
  ++deallocatorCalls;
  std::free(block);
}

// Every test starts and ends with the counting allocator.
class MemoryManager : public testing::Test {
 protected:
  void SetUp() override { tav::test::installCountingAllocator(); }
  void TearDown() override { tav::test::installCountingAllocator(); }
};

// Runs the call, which must throw the fatal exception with these data; the throw site
// ("file.cpp:line") is checked when one is given.
template <typename Call>
void expectFatal(Call call, uint32_t id, TavEnErrorClass errorClass, TavEnErrorAction action,
                 const char* module = nullptr) {
  try {
    call();
    ADD_FAILURE() << "no TavClExceptionFatal thrown";
  } catch (const TavClExceptionFatal& fatal) {
    EXPECT_EQ(std::make_tuple(fatal.getId(), fatal.getErrorClass(), fatal.getAction()),
              std::make_tuple(id, errorClass, action));
    if (module == nullptr) return;
    EXPECT_STREQ(fatal.getModule(), module);
    EXPECT_EQ(std::to_string(fatal.getLine()), std::strchr(module, ':') + 1);
  }
}

// Zero bytes are an error: asked of realloc always, of malloc when the allocator answers null
// for them (the runtime's malloc does not). Without a reallocator, tavRealloc throws before
// calling anything. A failed realloc keeps the block.
TEST_F(MemoryManager, ZeroBytesAFailedReallocAndAMissingReallocator) {
  char* kept = static_cast<char*>(tavMalloc(4));
  expectFatal([kept] { tavRealloc(kept, 0); }, MEMMGR_ZERO_SIZE_OBJECT, TAV_CLASS_INVALID_DATA,
              TAV_ACTION_TERMINATE, "tav_memmgr.cpp:277");
  kept = static_cast<char*>(tavMalloc(4));
  std::memcpy(kept, "abc", 4);
  tav::test::failAllocation(1);
  expectFatal([kept] { tavRealloc(kept, 1 << 20); }, MEMMGR_USER_OUT_OF_MEMORY,
              TAV_CLASS_OUT_OF_MEMORY, TAV_ACTION_TERMINATE);
  EXPECT_STREQ(kept, "abc");
  tavFree(kept);

  tavSetNewMemoryManager(nullForZeroAllocator, nullptr, countingDeallocator);
  expectFatal([] { tavMalloc(0); }, MEMMGR_ZERO_SIZE_OBJECT, TAV_CLASS_INVALID_DATA,
              TAV_ACTION_TERMINATE, "tav_memmgr.h:359");
  void* block = tavMalloc(16);
  allocatorCalls = deallocatorCalls = 0;
  expectFatal([block] { tavRealloc(block, 32); }, MEMMGR_NO_USER_REALLOC_FUNC,
              TAV_CLASS_FUNCTION_NOT_SUPPORTED, TAV_ACTION_ABORT, "tav_memmgr.cpp:267");
  EXPECT_EQ(allocatorCalls + deallocatorCalls, 0);
  tavFree(block);
  EXPECT_EQ(deallocatorCalls, 1);
}

TEST_F(MemoryManager, RuntimeAllocatorFailuresAreToldApartFromTheUsers) {
  EXPECT_TRUE(TavClMemoryManager::hasUserDefinedMgr());  // the counting allocator
  // Installing the runtime's malloc brings its realloc along.
  tavSetNewMemoryManager(&std::malloc, nullptr, &std::free);
  EXPECT_FALSE(TavClMemoryManager::hasUserDefinedMgr());
  tavFree(tavRealloc(tavMalloc(8), 4096));
  expectFatal([] { tavMalloc(kHuge); }, MEMMGR_RUNTIME_OUT_OF_MEMORY, TAV_CLASS_OUT_OF_MEMORY,
              TAV_ACTION_TERMINATE);
}

// 2^33 * 2^31 wraps to 0 in 64 bits; a short block must never be handed out for it.
TEST_F(MemoryManager, CallocZeroFillsAndRefusesAnOverflowingProduct) {
  auto* block = static_cast<unsigned char*>(tavCalloc(3, 1000));
  EXPECT_EQ(std::count(block, block + 3000, 0), 3000);
  tavFree(block);
  const size_t requestsBefore = tav::test::allocationRequests();
  expectFatal([] { tavCalloc(size_t{1} << (sizeof(size_t) * 4 + 1), size_t{1} << 31); },
              MEMMGR_USER_OUT_OF_MEMORY, TAV_CLASS_OUT_OF_MEMORY, TAV_ACTION_TERMINATE);
  EXPECT_EQ(tav::test::allocationRequests(), requestsBefore) << "the allocator was called";
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
