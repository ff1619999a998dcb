// Several threads tracing through the trace functions into one trace file: every record must
// arrive whole and in its thread's order; and the process lock that guards a ring lets one
// thread in at a time. The test command also runs these tests under ThreadSanitizer.

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "tav_process.h"
#include "tav_trace.h"
#include "tav_trace_buffer.h"
#include "tav_trace_test_support.h"

namespace {

using tav::test::RecordRead;
using tav::test::TestTraceEnvironment;

constexpr int kThreads = 4;

// The message and data of a thread's record follow from the thread and the record number, so
// that a record with another record's bytes inside it cannot pass.
std::string messageFor(int thread, int number) {
  return "thread " + std::to_string(thread) + " record " + std::to_string(number);
}

std::string dataFor(int thread, int number) {
  std::string data(static_cast<size_t>((number * 7 + thread * 13) % 300), '\0');
  for (size_t index = 0; index < data.size(); ++index) {
    data[index] = static_cast<char>(thread * 31 + number + static_cast<int>(index));
  }
  return data;
}

// Every thread's records in the file, whole and in order, each data record between a function
// entry and exit of its own.
void expectEachThreadInOrder(const std::string& fileName, const std::vector<uint32_t>& threadIds,
                             int perThread) {
  TestTraceEnvironment reader;
  bool endsOnRecord = false;
  const auto records =
      tav::test::readRecords(reader, tav::test::readFileBytes(fileName), &endsOnRecord);
  std::filesystem::remove(fileName);
  EXPECT_TRUE(endsOnRecord);
  std::map<uint32_t, std::vector<std::string>> byThread;
  for (const RecordRead& record : records) {
    byThread[record.threadId].push_back(record.type == TAV_TRACE_TYPE_DATA
                                            ? std::to_string(record.componentId) + " " +
                                                  record.message + " " + record.origin + " " +
                                                  record.data
                                            : std::to_string(record.type));
  }
  ASSERT_EQ(byThread.size(), static_cast<size_t>(kThreads));
  for (int thread = 0; thread < kThreads; ++thread) {
    std::vector<std::string> expected;
    for (int number = 0; number < perThread; ++number) {
      expected.push_back(std::to_string(TAV_TRACE_TYPE_FUNCTION_ENTRY));
      expected.push_back(std::to_string(thread) + " " + messageFor(thread, number) + " worker " +
                         dataFor(thread, number));
      expected.push_back(std::to_string(TAV_TRACE_TYPE_FUNCTION_EXIT));
    }
    EXPECT_TRUE(byThread[threadIds[thread]] == expected)
        << "thread " << thread;  // too long to print
  }
}

TEST(TraceThreads, TraceCallsFromManyThreadsAllReachTheFileWhole) {
  constexpr int kRepetitions = 800;
  const std::string file = tav::test::scratchFileName("instance_threads");
  tav::test::ScopedTraceVariables variables("TITHREADS");
  variables.set("_TRACE_ACTIVE", "on");
  variables.set("_TRACE_FILE", file.c_str());
  variables.set("_TRACE_BUFSIZE", "4");  // the smallest buffer: it is handed out very often
  tavTraceCreateInstance("tithreads", nullptr);
  ASSERT_TRUE(tavTraceIsEnabled());
  std::vector<uint32_t> threadIds(kThreads);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&threadIds, thread] {
      threadIds[thread] = TavClThreadProperty().getId();
      for (int number = 0; number < kRepetitions && TAV_TRACE_IS_ENABLED(); ++number) {
        const std::string message = messageFor(thread, number);
        const std::string data = dataFor(thread, number);
        tavTraceDump(TAV_TRACE_DETAIL_LOW, 1, TAV_TRACE_TYPE_FUNCTION_ENTRY, "work", nullptr,
                     nullptr, 0);
        tavTraceDump(TAV_TRACE_DETAIL_LOW, static_cast<uint16_t>(thread), TAV_TRACE_TYPE_DATA,
                     "worker", message.c_str(), data.data(), data.size());
        tavTraceDump(TAV_TRACE_DETAIL_LOW, 1, TAV_TRACE_TYPE_FUNCTION_EXIT, "work", nullptr,
                     nullptr, 0);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  tavTraceDeleteInstance();
  expectEachThreadInOrder(file, threadIds, kRepetitions);
}

// The threads start while the lock is held, so that each of them first waits for it; then they
// take turns on a count that only the lock protects (ThreadSanitizer also watches it).
TEST(TraceThreads, TheProcessLockLetsOneThreadInAtATime) {
  constexpr int kRounds = 20000;
  TavClTraceProcessLock lock;
  int inside = 0;
  int total = 0;
  bool overlapped = false;
  std::atomic<int> started{0};
  EXPECT_EQ(lock.lock(), TAV_TRACE_LOCK_ACQUIRED);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&] {
      started.fetch_add(1);
      for (int round = 0; round < kRounds; ++round) {
        EXPECT_EQ(lock.lock(), TAV_TRACE_LOCK_ACQUIRED);
        overlapped = overlapped || ++inside != 1;
        ++total;
        --inside;
        lock.unlock();
      }
    });
  }
  while (started.load() != kThreads) std::this_thread::yield();
  lock.unlock();
  for (std::thread& thread : threads) thread.join();
  EXPECT_FALSE(overlapped);
  EXPECT_EQ(total, kThreads * kRounds);
}

}  // namespace
