// One trace record into the ring buffer, without file output: building the record (time stamp,
// thread id, texts copied or compressed) and writing it under the buffer's lock. The message
// has 32 characters, the origin 16, the data 8 bytes. Beside it, the same call logged through
// spdlog into its in-memory ring buffer sink, the logger a program would otherwise pick.
// The "parts" show where the time of a plain record goes.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "bench_trace_common.h"
#ifdef TAV_BENCH_HAVE_SPDLOG
#include <spdlog/sinks/ringbuffer_sink.h>
#endif

#include "tav_process.h"
#include "tav_trace_buffer.h"
#include "tav_utils.h"

namespace {

using tav::bench::BenchEnvironment;
using tav::bench::kMessage;
using tav::bench::kOrigin;
constexpr uint64_t kBufferSize = tav::bench::kDefaultBufferSize;

// A ring without a callback wraps and overwrites, so no file is ever touched.
void BM_RecordIntoRing(benchmark::State& state, bool compress) {
  BenchEnvironment environment(compress);
  std::vector<uint64_t> memory(kBufferSize / 8 + 1);
  TavClTraceBufferManager manager(environment, memory.data(), kBufferSize);
  uint64_t data = 0x0123456789ABCDEF;
  uint64_t bytes = 0;
  for (auto _ : state) {
    const TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_LOW, 7, TAV_TRACE_TYPE_UINT64,
                                kOrigin, kMessage, &data, sizeof(data));
    manager.write(entry);
    bytes += entry.getHeaderSize() + sizeof(data);
    ++data;
  }
  state.counters["record_bytes"] =
      static_cast<double>(bytes) / static_cast<double>(state.iterations());
}

#ifdef TAV_BENCH_HAVE_SPDLOG
// One logger for all threads of a run, as a program has.
void BM_RecordIntoSpdlogRing(benchmark::State& state) {
  static spdlog::logger logger("bench", std::make_shared<spdlog::sinks::ringbuffer_sink_mt>(1024));
  uint64_t data = 0x0123456789ABCDEF;
  for (auto _ : state) {
    logger.log(spdlog::source_loc{__FILE__, __LINE__, kOrigin}, spdlog::level::info, "{} {:016x}",
               kMessage, data);
    ++data;
  }
  state.SetItemsProcessed(state.iterations());
}
#endif

void BM_PartTimeStamp(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(tavGetTimeStamp());
}

void BM_PartThreadId(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(TavClThreadProperty().getId());
}

void BM_PartBuildPlainRecord(benchmark::State& state) {
  BenchEnvironment environment(false);
  uint64_t data = 1;
  for (auto _ : state) {
    const TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_LOW, 7, TAV_TRACE_TYPE_UINT64,
                                kOrigin, kMessage, &data, sizeof(data));
    benchmark::DoNotOptimize(entry.getHeader());
  }
}

void BM_PartWritePrebuiltRecord(benchmark::State& state) {
  BenchEnvironment environment(false);
  std::vector<uint64_t> memory(kBufferSize / 8 + 1);
  TavClTraceBufferManager manager(environment, memory.data(), kBufferSize);
  uint64_t data = 1;
  const TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_LOW, 7, TAV_TRACE_TYPE_UINT64, kOrigin,
                              kMessage, &data, sizeof(data));
  for (auto _ : state) manager.write(entry);
}

[[maybe_unused]] const bool kRegistered = [] {
  benchmark::RegisterBenchmark("BM_TraceRecord/uncompressed/tav", BM_RecordIntoRing, false);
  benchmark::RegisterBenchmark("BM_TraceRecord/compressed/tav", BM_RecordIntoRing, true);
#ifdef TAV_BENCH_HAVE_SPDLOG
  benchmark::RegisterBenchmark("BM_TraceRecord/spdlog_ringbuffer_sink", BM_RecordIntoSpdlogRing);
  benchmark::RegisterBenchmark("BM_TraceRecord/spdlog_ringbuffer_sink", BM_RecordIntoSpdlogRing)
      ->Threads(2);
#endif
  benchmark::RegisterBenchmark("BM_TraceRecordParts/time_stamp", BM_PartTimeStamp);
  benchmark::RegisterBenchmark("BM_TraceRecordParts/thread_id", BM_PartThreadId);
  benchmark::RegisterBenchmark("BM_TraceRecordParts/build_uncompressed", BM_PartBuildPlainRecord);
  benchmark::RegisterBenchmark("BM_TraceRecordParts/write_built_record",
                               BM_PartWritePrebuiltRecord);
  return true;
}();

}  // namespace
