// tav_test_allocator.h - an allocator for tests that fails on demand and counts live blocks.
//
// Installed through tavSetNewMemoryManager, it lets a test fail the Nth allocation from now and
// check afterwards that nothing was leaked. forEachAllocationFailure runs an operation once for
// every allocation it makes, failing that allocation, and checks that each failure surfaces as
// the memory manager's fatal exception and leaves no block behind.

#ifndef TAV_TEST_ALLOCATOR_H
#define TAV_TEST_ALLOCATOR_H

#include <gtest/gtest.h>

#include <cstddef>

#include "tav_error.h"

namespace tav::test {

// Installs the counting allocator (again). Blocks allocated before it was installed may be
// released through it.
void installCountingAllocator();
// The allocation (1 = the next one) that is to fail; 0 lets every allocation succeed.
void failAllocation(size_t nthFromNow);
// Whether an allocation was made to fail since the last failAllocation call.
bool allocationFailureInjected();
// Blocks allocated through the counting allocator and not yet released.
size_t liveBlocks();
// Allocations and reallocations requested since installation, failed ones included.
size_t allocationRequests();

template <typename Operation>
void forEachAllocationFailure(Operation operation) {
  installCountingAllocator();
  for (size_t nth = 1;; ++nth) {
    SCOPED_TRACE(testing::Message() << "allocation " << nth << " fails");
    const size_t before = liveBlocks();
    failAllocation(nth);
    bool threw = false;
    try {
      operation();
    } catch (const TavClExceptionFatal& failure) {
      threw = true;
      EXPECT_EQ(failure.getErrorClass(), TAV_CLASS_OUT_OF_MEMORY);
    }
    const bool injected = allocationFailureInjected();
    failAllocation(0);
    EXPECT_EQ(liveBlocks(), before) << "blocks leaked";
    EXPECT_EQ(threw, injected) << "an exception needs a failed allocation, and the reverse";
    EXPECT_TRUE(injected || nth > 1)
        << "the operation made no allocation through the memory manager";
    if (!injected || testing::Test::HasFailure()) return;
  }
}

}  // namespace tav::test

#endif  // TAV_TEST_ALLOCATOR_H
