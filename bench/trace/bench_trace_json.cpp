// Writing a trace file of 1,000,000 records as trace-event JSON, beside formatting the same file
// as text with the default format, in the same run; both onto a stream that discards the output,
// in records per second. The records cycle through a function entry, a C string, a 32-bit
// integer, a double and the function exit, with the shared message and origin, texts
// compressed as a trace stores them by default.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <ostream>
#include <string>

#include "bench_trace_common.h"
#include "tav_trace_formatter.h"
#include "tav_trace_json.h"

namespace {

constexpr int64_t kRecords = 1000000;

// Written once per process, removed at exit. Time stamps advance a millisecond every 100
// records, so that the JSON writer's time line sees both steps and equal ticks.
class JsonBenchFile {
 public:
  JsonBenchFile()
      : environment(true, tav::bench::kDefaultBufferSize, tav::bench::benchFileName("json")) {
    std::ofstream file(environment.getTraceFileName(), std::ios::binary);
    const char text[] = "small";
    for (int64_t i = 0; i < kRecords; ++i) {
      uint32_t level = i % 5 == 0 ? 1 : 0;
      const int32_t integer = static_cast<int32_t>(i);
      const double real = static_cast<double>(i) / 8;
      TavEnTraceDataType type = TAV_TRACE_TYPE_FUNCTION_ENTRY;
      const void* data = &level;
      uint64_t size = 4;
      switch (i % 5) {
        case 1: type = TAV_TRACE_TYPE_CSTRING, data = text, size = sizeof(text); break;
        case 2: type = TAV_TRACE_TYPE_INT32, data = &integer; break;
        case 3: type = TAV_TRACE_TYPE_DOUBLE, data = &real, size = 8; break;
        case 4: type = TAV_TRACE_TYPE_FUNCTION_EXIT; break;
        default: break;
      }
      TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_LOW, 7, type, tav::bench::kOrigin,
                            tav::bench::kMessage, data, size);
      // The time stamp is the record's bytes 4 to 7, little-endian.
      std::string header(reinterpret_cast<const char*>(entry.getHeader()),
                         static_cast<size_t>(entry.getHeaderSize()));
      const uint32_t ticks = static_cast<uint32_t>(1000000 + i / 100);
      for (int b = 0; b < 4; ++b) header[4 + b] = static_cast<char>(ticks >> (8 * b));
      file.write(header.data(), static_cast<std::streamsize>(header.size()));
      file.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
    }
  }
  ~JsonBenchFile() { std::remove(environment.getTraceFileName()); }

  tav::bench::BenchEnvironment environment;
};

JsonBenchFile& benchFile() {
  static JsonBenchFile file;
  return file;
}

void BM_TraceJson_json(benchmark::State& state) {
  TavClTraceFormatter formatter(benchFile().environment);
  tav::bench::DiscardingBuffer sink;
  std::ostream output(&sink);
  for (auto _ : state) TavClTraceJsonWriter(formatter).write(output);
  state.SetItemsProcessed(state.iterations() * kRecords);
}

void BM_TraceJson_text(benchmark::State& state) {
  TavClTraceFormatter formatter(benchFile().environment);
  tav::bench::DiscardingBuffer sink;
  std::ostream output(&sink);
  for (auto _ : state) formatter.format(output);
  state.SetItemsProcessed(state.iterations() * kRecords);
}

BENCHMARK(BM_TraceJson_json)->Name("BM_TraceJson/json")->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TraceJson_text)->Name("BM_TraceJson/text")->Unit(benchmark::kMillisecond);

}  // namespace
