// The trace functions as a program calls them. A trace point while tracing is off (one test of
// the enabled-instance pointer), and one tavTraceDump of a C string record (message of 32
// characters, origin of 16, the message as the record's C string data) with tracing on, into a
// 1 MiB buffer that autosave hands to a trace file; plain and compressed. Beside it, the same
// message logged through spdlog into a file, with an asynchronous and a synchronous logger,
// the loggers a program would otherwise pick. Every run writes the same number of records, so
// that the files stay a few hundred megabytes; each file is removed afterwards.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "bench_trace_common.h"
#ifdef TAV_BENCH_HAVE_SPDLOG
#include <spdlog/async.h>
#include <spdlog/sinks/basic_file_sink.h>
#endif

#include "tav_environment.h"
#include "tav_filename.h"
#include "tav_trace.h"

namespace {

using tav::bench::kMessage;
using tav::bench::kOrigin;
constexpr benchmark::IterationCount kRecords = 2000000;

std::string benchFile(const char* name) {
  return TavClFilename(tavGetTmpDirectory(), name, nullptr).getAsCString();
}

void BM_TracePointOff(benchmark::State& state) {
  TavClTraceInstance::deleteInstance();
  int counter = 0;
  for (auto _ : state) {
    benchmark::ClobberMemory();  // the pointer is read at every trace point, as in a program
    if (TAV_TRACE_IS_ENABLED()) {
      tavTraceDump(TAV_TRACE_DETAIL_LOW, 1, TAV_TRACE_TYPE_INT32, kOrigin, kMessage, &counter,
                   sizeof counter);
    }
    ++counter;
  }
  benchmark::DoNotOptimize(counter);
}

void BM_TraceDumpToFile(benchmark::State& state, bool compress) {
  const std::string file = benchFile("tav_bench_trace_dump.trc");
  std::remove(file.c_str());
  {
    const tav::bench::BenchTraceVariables variables(
        "TAVBENCH",
        {{"_TRACE_ACTIVE", "on"}, {"_TRACE_BUFSIZE", "1024"}, {"_TRACE_FILE", file.c_str()}});
    TavClTraceInstance* instance = TavClTraceInstance::createInstance("tavbench");
    instance->getEnvironment().getSettings().enableCompression(compress);
    tav::bench::traceMessageEachIteration(state);
    TavClTraceInstance::deleteInstance();
  }
  std::remove(file.c_str());
}

// The trace file is the null device: hand-outs cost a write that stores nothing.
void BM_TraceCall(benchmark::State& state, bool compress) {
  std::unique_ptr<tav::bench::BenchTraceVariables> variables;
  if (state.thread_index() == 0) {
    variables = std::make_unique<tav::bench::BenchTraceVariables>(
        "TAVBENCHCALL",
        std::initializer_list<std::pair<const char*, const char*>>{
            {"_TRACE_ACTIVE", "on"}, {"_TRACE_BUFSIZE", "64"}, {"_TRACE_FILE", "/dev/null"}});
    TavClTraceInstance* instance = TavClTraceInstance::createInstance("tavbenchcall");
    instance->getEnvironment().getSettings().enableCompression(compress);
  }
  // The loop starts in every thread once the first has made the instance.
  tav::bench::traceMessageEachIteration(state);
  state.SetItemsProcessed(state.iterations());
  if (state.thread_index() == 0) TavClTraceInstance::deleteInstance();
}

#ifdef TAV_BENCH_HAVE_SPDLOG
void BM_SpdlogToFile(benchmark::State& state, bool asynchronous) {
  const std::string file = benchFile("tav_bench_spdlog.log");
  std::remove(file.c_str());
  std::shared_ptr<spdlog::logger> logger;
  if (asynchronous) {
    spdlog::init_thread_pool(8192, 1);
    logger = spdlog::basic_logger_mt<spdlog::async_factory>("bench_async", file, true);
  } else {
    logger = spdlog::basic_logger_mt("bench_sync", file, true);
  }
  const spdlog::source_loc origin{__FILE__, __LINE__, kOrigin};
  for (auto _ : state) logger->log(origin, spdlog::level::info, "{}", kMessage);
  logger->flush();
  logger.reset();
  spdlog::shutdown();  // drains the asynchronous queue and ends its thread
  std::remove(file.c_str());
}
#endif

[[maybe_unused]] const bool kRegistered = [] {
  benchmark::RegisterBenchmark("BM_TracePoint/off/tav", BM_TracePointOff);
  benchmark::RegisterBenchmark("BM_TraceDump/uncompressed/tav", BM_TraceDumpToFile, false)
      ->Iterations(kRecords);
  benchmark::RegisterBenchmark("BM_TraceDump/compressed/tav", BM_TraceDumpToFile, true)
      ->Iterations(kRecords);
  benchmark::RegisterBenchmark("BM_TraceCall/uncompressed/tav", BM_TraceCall, false);
  benchmark::RegisterBenchmark("BM_TraceCall/compressed/tav", BM_TraceCall, true);
  benchmark::RegisterBenchmark("BM_TraceCall/uncompressed/tav", BM_TraceCall, false)->Threads(2);
  benchmark::RegisterBenchmark("BM_TraceCall/compressed/tav", BM_TraceCall, true)->Threads(2);
#ifdef TAV_BENCH_HAVE_SPDLOG
  benchmark::RegisterBenchmark("BM_TraceDump/spdlog_async_file", BM_SpdlogToFile, true)
      ->Iterations(kRecords);
  benchmark::RegisterBenchmark("BM_TraceDump/spdlog_sync_file", BM_SpdlogToFile, false)
      ->Iterations(kRecords);
#endif
  return true;
}();

}  // namespace
