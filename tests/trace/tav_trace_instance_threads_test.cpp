// Several threads tracing through the trace functions into one trace file: no record may be
// lost or damaged, and each thread's records keep their order. The test command also runs
// this under ThreadSanitizer.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "tav_process.h"
#include "tav_trace.h"
#include "tav_trace_test_support.h"

namespace {

using tav::test::readFileBytes;
using tav::test::readRecords;
using tav::test::RecordRead;
using tav::test::ScopedTraceVariables;
using tav::test::scratchFileName;
using tav::test::TestTraceEnvironment;

constexpr int kThreads = 4;
constexpr int kRepetitions = 800;

void traceFromOneThread(int thread) {
  const std::string message = "thread " + std::to_string(thread);
  for (int number = 0; number < kRepetitions; ++number) {
    if (!TAV_TRACE_IS_ENABLED()) return;
    tavTraceDump(TAV_TRACE_DETAIL_LOW, 1, TAV_TRACE_TYPE_FUNCTION_ENTRY, "work", nullptr, nullptr,
                 0);
    const std::string data(static_cast<size_t>(number % 97), static_cast<char>('a' + thread));
    tavTraceDump(TAV_TRACE_DETAIL_LOW, 2, TAV_TRACE_TYPE_INT32, message.c_str(), data.c_str(),
                 &number, sizeof number);
    tavTraceDump(TAV_TRACE_DETAIL_LOW, 1, TAV_TRACE_TYPE_FUNCTION_EXIT, "work", nullptr, nullptr,
                 0);
  }
}

TEST(TraceInstanceThreads, ConcurrentTraceCallsAllReachTheFileWhole) {
  const std::string file = scratchFileName("instance_threads");
  ScopedTraceVariables variables("TITHREADS");
  variables.set("_TRACE_ACTIVE", "on");
  variables.set("_TRACE_FILE", file.c_str());
  variables.set("_TRACE_BUFSIZE", "4");  // the smallest buffer: it is handed out very often
  tavTraceCreateInstance("tithreads", nullptr);
  ASSERT_TRUE(tavTraceIsEnabled());
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread)
    threads.emplace_back(traceFromOneThread, thread);
  for (std::thread& thread : threads) thread.join();
  tavTraceDeleteInstance();

  TestTraceEnvironment reader;
  bool endsOnRecord = false;
  const std::vector<RecordRead> records = readRecords(reader, readFileBytes(file), &endsOnRecord);
  EXPECT_TRUE(endsOnRecord);
  ASSERT_EQ(records.size(), static_cast<size_t>(kThreads * kRepetitions * 3));

  // Per thread: entry, data, exit, in order, with the data of the right repetition.
  std::map<uint32_t, std::vector<const RecordRead*>> byThread;
  for (const RecordRead& record : records) byThread[record.threadId].push_back(&record);
  ASSERT_EQ(byThread.size(), static_cast<size_t>(kThreads));
  for (const auto& [threadId, own] : byThread) {
    SCOPED_TRACE(testing::Message() << "thread id " << threadId);
    ASSERT_EQ(own.size(), static_cast<size_t>(kRepetitions * 3));
    const std::string message = own[1]->origin;
    ASSERT_EQ(message.rfind("thread ", 0), 0u);
    const char letter = static_cast<char>('a' + std::stoi(message.substr(7)));
    for (int number = 0; number < kRepetitions; ++number) {
      const RecordRead& entry = *own[number * 3];
      const RecordRead& data = *own[number * 3 + 1];
      const RecordRead& exit = *own[number * 3 + 2];
      EXPECT_EQ(entry.type, TAV_TRACE_TYPE_FUNCTION_ENTRY);
      EXPECT_EQ(exit.type, TAV_TRACE_TYPE_FUNCTION_EXIT);
      EXPECT_EQ(data.origin, message);
      EXPECT_EQ(data.message, std::string(static_cast<size_t>(number % 97), letter));
      ASSERT_EQ(data.data, std::string(reinterpret_cast<const char*>(&number), sizeof number));
    }
  }
  std::remove(file.c_str());
}

}  // namespace
