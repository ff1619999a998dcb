// Ring-to-file throughput: records written through the trace buffer, whose hand-outs the file
// writer appends to a trace file (opening and closing it for each hand-out), beside the same
// record bytes written to the same kind of file with plain fwrite through one open FILE. Both
// sides write the record one call at a time, as a program tracing would, and both end with
// everything in the file (a flush, an fclose). Sizes are in bytes of records per second.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "bench_trace_common.h"
#include "tav_trace_buffer.h"

namespace {

using tav::bench::BenchEnvironment;
using tav::bench::benchFileName;
using tav::bench::kMessage;
using tav::bench::kOrigin;
constexpr uint64_t kBytesPerIteration = 8 << 20;

void BM_RingToFile(benchmark::State& state) {
  const auto bufferSize = static_cast<uint64_t>(state.range(0));
  BenchEnvironment environment(false, bufferSize, benchFileName("ring"));
  std::vector<uint64_t> memory(bufferSize / 8 + 1);
  TavClTraceBufferManager manager(environment, memory.data(), bufferSize);
  TavClTraceFileWriter writer(environment);
  manager.setOverflowCallback(&TavClTraceFileWriter::appendHandOut, &writer);
  uint64_t data = 7;
  const TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_LOW, 7, TAV_TRACE_TYPE_UINT64, kOrigin,
                              kMessage, &data, sizeof(data));
  const uint64_t recordSize = entry.getHeaderSize() + sizeof(data);
  const uint64_t records = kBytesPerIteration / recordSize;
  std::filesystem::remove(environment.getTraceFileName());
  for (auto _ : state) {
    for (uint64_t record = 0; record < records; ++record) manager.write(entry);
    manager.flush();
    state.PauseTiming();
    std::filesystem::remove(environment.getTraceFileName());
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * records * recordSize));
}

void BM_Fwrite(benchmark::State& state) {
  // The same record bytes, taken from a record built once.
  BenchEnvironment environment(false, 65535, benchFileName("fwrite"));
  uint64_t data = 7;
  const TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_LOW, 7, TAV_TRACE_TYPE_UINT64, kOrigin,
                              kMessage, &data, sizeof(data));
  std::string bytes(reinterpret_cast<const char*>(entry.getHeader()), entry.getHeaderSize());
  bytes.append(reinterpret_cast<const char*>(&data), sizeof(data));
  const uint64_t records = kBytesPerIteration / bytes.size();
  const std::string fileName = environment.getTraceFileName();
  std::filesystem::remove(fileName);
  for (auto _ : state) {
    std::FILE* file = std::fopen(fileName.c_str(), "ab");
    if (file == nullptr) {
      state.SkipWithError("cannot open the file");
      break;
    }
    for (uint64_t record = 0; record < records; ++record) {
      std::fwrite(bytes.data(), 1, bytes.size(), file);
    }
    std::fclose(file);
    state.PauseTiming();
    std::filesystem::remove(fileName);
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * records * bytes.size()));
}

[[maybe_unused]] const bool kRegistered = [] {
  benchmark::RegisterBenchmark("BM_TraceToFile/ring_64KiB/tav", BM_RingToFile)
      ->Arg(65535)
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
  benchmark::RegisterBenchmark("BM_TraceToFile/ring_1MiB/tav", BM_RingToFile)
      ->Arg(1 << 20)
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
  benchmark::RegisterBenchmark("BM_TraceToFile/fwrite", BM_Fwrite)
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
  return true;
}();

}  // namespace
