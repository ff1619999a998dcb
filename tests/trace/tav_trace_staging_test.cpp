// The threads' areas in front of a trace ring: records wait in their thread's area until a flush
// from any thread, a full area or the thread's end moves them into the ring, whole and in the
// thread's order; areas of ended threads are taken again; and a thread that moves between traces
// never writes into an area that is gone.

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "../../src/trace/tav_trace_record_layout.h"
#include "../../src/trace/tav_trace_staging.h"
#include "tav_test_allocator.h"
#include "tav_trace_test_support.h"

namespace {

using tav::trace::RecordStaging;

// A private ring with its staging; what the ring hands out is collected.
class StagedRing {
 public:
  explicit StagedRing(uint64_t size = 65536)
      : memory(size), ring(environment, memory.data(), size) {
    ring.setOverflowCallback(collect, this);
    staging = new RecordStaging(ring, ring.getControlBlock()->capacity);
  }
  ~StagedRing() { delete staging; }

  // The messages of every record moved into the ring so far, in ring order.
  std::vector<std::string> messages() {
    ring.flush();
    bool endsOnRecord = false;
    std::vector<std::string> found;
    for (const auto& record : tav::test::readRecords(environment, handedOut, &endsOnRecord)) {
      found.push_back(record.message);
    }
    EXPECT_TRUE(endsOnRecord);
    return found;
  }

  tav::test::TestTraceEnvironment environment;
  std::vector<uint8_t> memory;
  TavClTraceBufferManager ring;
  RecordStaging* staging;
  std::string handedOut;

 private:
  static void collect(const _TavStTraceHandOut* handOut) {
    auto& self = *static_cast<StagedRing*>(handOut->context);
    self.handedOut.append(reinterpret_cast<const char*>(handOut->firstPiece), handOut->firstLength);
    if (handOut->secondLength != 0) {
      self.handedOut.append(reinterpret_cast<const char*>(handOut->secondPiece),
                            handOut->secondLength);
    }
  }
};

// Adds a record with message and dataSize bytes of data.
void add(RecordStaging& staging, const std::string& message, size_t dataSize = 0) {
  const std::string data(dataSize, 'd');
  uint8_t header[TavClTraceEntry::kHeaderSize];
  tav::trace_record::storeCallHeader(header, TAV_TRACE_DETAIL_LOW, 1, TAV_TRACE_TYPE_DATA, false,
                                     data.data(), dataSize, UINT32_MAX,
                                     static_cast<uint8_t>(message.size()), 1, 0, 1, 1);
  staging.add(header, message.data(), message.size(), "o", 1, data.data());
}

using Messages = std::vector<std::string>;

TEST(TraceStagingThreads, RecordsWaitInTheirThreadsAreaUntilAFlushFromAnyThread) {
  StagedRing staged;
  std::atomic<int> step{0};
  std::thread worker([&] {
    for (const char* message : {"a1", "a2", "a3"}) add(*staged.staging, message);
    step = 1;
    while (step.load() != 2) std::this_thread::yield();
    for (const char* message : {"a4", "a5"}) add(*staged.staging, message);
  });
  while (step.load() != 1) std::this_thread::yield();
  EXPECT_EQ(staged.ring.getPendingSize(), 0u);
  // The worker is still alive: a flush from this thread takes its records all the same.
  staged.staging->drainAll();
  EXPECT_EQ(staged.messages(), (Messages{"a1", "a2", "a3"}));
  step = 2;
  worker.join();
  // Its end moved the rest, without a flush.
  EXPECT_NE(staged.ring.getPendingSize(), 0u);
  EXPECT_EQ(staged.messages(), (Messages{"a1", "a2", "a3", "a4", "a5"}));
}

TEST(TraceStagingThreads, FullAreasAndLargeRecordsKeepTheThreadsOrder) {
  StagedRing staged(4096);  // areas of 1,012 bytes
  ASSERT_EQ(staged.staging->getAreaSize(), 1012u);
  Messages expected;
  for (int number = 0; number < 60; ++number) {
    expected.push_back("n" + std::to_string(number));
    // Every seventh record is larger than an area and goes straight into the ring.
    add(*staged.staging, expected.back(), number % 7 == 0 ? 1100 : 10);
  }
  staged.staging->drainAll();
  EXPECT_EQ(staged.messages(), expected);
}

TEST(TraceStagingThreads, TheAreaOfAThreadThatEndedIsTakenByTheNext) {
  StagedRing staged;
  Messages expected;
  for (int number = 0; number < 40; ++number) {
    expected.push_back("t" + std::to_string(number));
    std::thread([&] { add(*staged.staging, expected.back()); }).join();
  }
  EXPECT_EQ(staged.staging->countAreas(), 1u);
  EXPECT_EQ(staged.messages(), expected);
}

TEST(TraceStagingThreads, AThreadMovingBetweenTracesWritesOnlyToLiveAreas) {
  StagedRing first;
  {
    StagedRing second;
    add(*first.staging, "f1");
    add(*second.staging, "s1");  // the thread's area in the first goes back to it
    add(*first.staging, "f2");
    EXPECT_EQ(second.messages(), (Messages{"s1"}));
  }
  // A staging made where a gone one was must not be taken for it.
  StagedRing third;
  delete third.staging;
  add(*first.staging, "f3");
  third.staging = new RecordStaging(third.ring, third.ring.getControlBlock()->capacity);
  add(*third.staging, "t1");
  first.staging->drainAll();
  third.staging->drainAll();
  EXPECT_EQ(first.messages(), (Messages{"f1", "f2", "f3"}));
  EXPECT_EQ(third.messages(), (Messages{"t1"}));
}

TEST(TraceStagingThreads, WithoutMemoryForAnAreaRecordsGoStraightIntoTheRing) {
  tav::test::installCountingAllocator();
  StagedRing staged;
  std::thread([&] {
    tav::test::failAllocation(1);
    add(*staged.staging, "direct");
    EXPECT_TRUE(tav::test::allocationFailureInjected());
    tav::test::failAllocation(0);
    EXPECT_NE(staged.ring.getPendingSize(), 0u);
  }).join();
  EXPECT_EQ(staged.staging->countAreas(), 0u);
  EXPECT_EQ(staged.messages(), (Messages{"direct"}));
}

}  // namespace
