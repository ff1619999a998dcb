// Formatting a trace file of 1,000,000 records with the default format onto a stream that
// discards the text, beside snprintf of the same fields with the same layout. The records cycle
// through a function entry, a C string, a 32-bit integer, a double and the function exit, with
// the shared message and origin. The snprintf side starts from the fields already in memory, so
// it does none of the reading and decoding the formatter does; in records per second.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>
#include <vector>

#include "bench_trace_common.h"
#include "tav_trace_formatter.h"

namespace {

constexpr int64_t kRecords = 1000000;

// The fields of one record as a program would hold them before printing.
struct Fields {
  TavEnTraceDataType type;
  uint32_t processId;
  uint32_t timeStamp;
  uint32_t detail;
  uint32_t componentId;
  uint32_t level;
  int32_t integer;
  double real;
  const char* text;
};

const char kText[] = "small";

std::vector<Fields> recordFields() {
  const TavEnTraceDataType cycle[] = {TAV_TRACE_TYPE_FUNCTION_ENTRY, TAV_TRACE_TYPE_CSTRING,
                                      TAV_TRACE_TYPE_INT32, TAV_TRACE_TYPE_DOUBLE,
                                      TAV_TRACE_TYPE_FUNCTION_EXIT};
  std::vector<Fields> fields;
  fields.reserve(kRecords);
  for (int64_t i = 0; i < kRecords; ++i) {
    const TavEnTraceDataType type = cycle[i % 5];
    const uint32_t level = type == TAV_TRACE_TYPE_FUNCTION_ENTRY ? 1 : 0;
    fields.push_back({type, 4242, static_cast<uint32_t>(1000000 + i), TAV_TRACE_DETAIL_LOW, 7,
                      level, static_cast<int32_t>(i), static_cast<double>(i) / 8, kText});
  }
  return fields;
}

// Writes the records once per process and variant; removed at exit.
class TraceFile {
 public:
  explicit TraceFile(bool compress)
      : environment(compress, tav::bench::kDefaultBufferSize,
                    tav::bench::benchFileName(compress ? "format_c" : "format_p")) {
    std::ofstream file(environment.getTraceFileName(), std::ios::binary);
    for (const Fields& f : recordFields()) {
      const void* data = &f.level;
      uint64_t size = 4;
      if (f.type == TAV_TRACE_TYPE_CSTRING) {
        data = f.text;
        size = sizeof(kText);
      } else if (f.type == TAV_TRACE_TYPE_INT32) {
        data = &f.integer;
      } else if (f.type == TAV_TRACE_TYPE_DOUBLE) {
        data = &f.real;
        size = 8;
      }
      const TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_LOW, 7, f.type, tav::bench::kOrigin,
                                  tav::bench::kMessage, data, size);
      file.write(reinterpret_cast<const char*>(entry.getHeader()),
                 static_cast<std::streamsize>(entry.getHeaderSize()));
      file.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
    }
  }
  ~TraceFile() { std::remove(environment.getTraceFileName()); }

  tav::bench::BenchEnvironment environment;
};

void BM_TraceFormat_tav(benchmark::State& state, bool compress) {
  static TraceFile plainFile(false);
  static TraceFile compressedFile(true);
  TraceFile& file = compress ? compressedFile : plainFile;
  TavClTraceFormatter formatter(file.environment);
  tav::bench::DiscardingBuffer sink;
  std::ostream output(&sink);
  for (auto _ : state) formatter.format(output);
  state.SetItemsProcessed(state.iterations() * kRecords);
}

void BM_TraceFormat_snprintf(benchmark::State& state) {
  static const std::vector<Fields> fields = recordFields();
  tav::bench::DiscardingBuffer sink;
  std::ostream output(&sink);
  const char* const details[] = {"OFF", "LOW", "MED", "HIGH"};
  char buffer[1024];
  for (auto _ : state) {
    for (const Fields& f : fields) {
      const char* tag = TavClTraceFormatter::getTypeAsShortCString(f.type);
      char data[64];
      switch (f.type) {
        case TAV_TRACE_TYPE_CSTRING: std::snprintf(data, sizeof(data), "%s", f.text); break;
        case TAV_TRACE_TYPE_INT32: std::snprintf(data, sizeof(data), "%d", f.integer); break;
        case TAV_TRACE_TYPE_DOUBLE: std::snprintf(data, sizeof(data), "%.15g", f.real); break;
        default: std::snprintf(data, sizeof(data), "Nesting level: %u", f.level); break;
      }
      const int length = std::snprintf(
          buffer, sizeof(buffer), "%s\n   P: %u, T: %u, D: %s, C: %u\n   Data: %s (%s: %s\n)\n",
          tav::bench::kOrigin, f.processId, f.timeStamp, details[f.detail], f.componentId,
          tav::bench::kMessage, tag, data);
      output.write(buffer, length);
    }
  }
  state.SetItemsProcessed(state.iterations() * kRecords);
}

BENCHMARK_CAPTURE(BM_TraceFormat_tav, plain, false)
    ->Name("BM_TraceFormat/tav")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_TraceFormat_tav, compressed, true)
    ->Name("BM_TraceFormat/tav_compressed")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TraceFormat_snprintf)->Name("BM_TraceFormat/snprintf")->Unit(benchmark::kMillisecond);

}  // namespace
