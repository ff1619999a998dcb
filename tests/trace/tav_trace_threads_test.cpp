// Several threads tracing into one buffer that is written to a file: every record must arrive
// whole and in each thread's order. The test command also runs this under ThreadSanitizer.

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "tav_process.h"
#include "tav_trace_buffer.h"
#include "tav_trace_test_support.h"

namespace {

using tav::test::readFileBytes;
using tav::test::readRecords;
using tav::test::scratchFileName;
using tav::test::TestTraceEnvironment;

constexpr int kThreads = 4;
constexpr int kRecordsPerThread = 1500;

// Data whose length and contents follow from the thread and the record number, so that a
// record with another record's bytes inside it cannot pass.
std::string dataFor(int thread, int number) {
  std::string data(static_cast<size_t>((number * 7 + thread * 13) % 300), '\0');
  for (size_t index = 0; index < data.size(); ++index) {
    data[index] = static_cast<char>(thread * 31 + number + static_cast<int>(index));
  }
  return data;
}

TEST(TraceBufferThreads, RecordsFromConcurrentThreadsEachArriveWhole) {
  // The smallest buffer a trace environment makes, so that the ring wraps very often.
  constexpr uint64_t kBufferSize = 4096;
  for (const bool compress : {false, true}) {
    SCOPED_TRACE(compress ? "compressed" : "plain");
    TestTraceEnvironment environment(compress, kBufferSize - 48);
    environment.fileName = scratchFileName("threads");
    std::vector<uint64_t> memory(kBufferSize / 8);
    TavClTraceBufferManager manager(environment, memory.data(), kBufferSize);
    TavClTraceFileWriter writer(environment);
    manager.setOverflowCallback(&TavClTraceFileWriter::appendHandOut, &writer);

    std::vector<uint32_t> threadIds(kThreads);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
      threads.emplace_back([&, thread] {
        threadIds[thread] = TavClThreadProperty().getId();
        for (int number = 0; number < kRecordsPerThread; ++number) {
          const std::string message =
              "thread " + std::to_string(thread) + " record " + std::to_string(number);
          const std::string data = dataFor(thread, number);
          const TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_LOW,
                                      static_cast<uint16_t>(thread), TAV_TRACE_TYPE_DATA, "worker",
                                      message.c_str(), data.data(), data.size());
          manager.write(entry);
          if (number % 500 == 0) manager.flush();
        }
      });
    }
    for (std::thread& thread : threads) thread.join();
    manager.flush();

    bool endsOnRecord = false;
    const auto records =
        readRecords(environment, readFileBytes(environment.fileName), &endsOnRecord);
    std::filesystem::remove(environment.fileName);
    EXPECT_TRUE(endsOnRecord);
    ASSERT_EQ(records.size(), static_cast<size_t>(kThreads * kRecordsPerThread));
    std::vector<int> nextNumber(kThreads, 0);
    for (const auto& record : records) {
      const int thread = record.componentId;
      ASSERT_LT(thread, kThreads);
      const int number = nextNumber[thread]++;
      ASSERT_EQ(record.message,
                "thread " + std::to_string(thread) + " record " + std::to_string(number));
      ASSERT_EQ(record.origin, "worker");
      ASSERT_EQ(record.threadId, threadIds[thread]);
      ASSERT_EQ(record.data, dataFor(thread, number)) << record.message;
    }
  }
}

}  // namespace
