// The trace ring in shared memory: the same tavTraceDump of a C string record as in
// bench_trace_instance.cpp (1 MiB ring, autosave to a trace file), with the ring in a file
// mapping under a lock that works across processes, beside the same ring in private memory.
// The difference is the price of a flight recorder that keeps every record of a killed program.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "../../src/trace/tav_trace_shared_os.h"
#include "bench_trace_common.h"
#include "tav_environment.h"
#include "tav_filename.h"
#include "tav_trace.h"

namespace {

constexpr benchmark::IterationCount kRecords = 2000000;

void BM_TraceDumpShared(benchmark::State& state, bool shared) {
  const std::string file = tav::bench::benchFileName("shared_dump");
  std::remove(file.c_str());
  const tav::bench::BenchTraceVariables variables(
      "TAVBENCHSHARED", {{"_TRACE_ACTIVE", "on"},
                         {"_TRACE_BUFSIZE", "1024"},
                         {"_TRACE_FILE", file.c_str()},
                         {"_TRACE_SHARED", shared ? "on" : "off"}});
  TavClTraceInstance* instance = TavClTraceInstance::createInstance("tavbenchshared");
  if (shared && !instance->getEnvironment().usesSharedMemory()) {
    state.SkipWithError("the shared ring could not be mapped");
  }
  tav::bench::traceMessageEachIteration(state);
  TavClTraceInstance::deleteInstance();
  std::remove(file.c_str());
  const TavClResourceKeySemaphore key("tavbenchshared",
                                      TavClTraceEnvironmentABase::kDefaultInstance);
  tav::trace::SharedRingMapping::removeFile(
      tav::trace::sharedRingFileName(tavGetTmpDirectory(), key.getKey()).c_str());
}

[[maybe_unused]] const bool kRegistered = [] {
  benchmark::RegisterBenchmark("BM_TraceDump/compressed/tav_private_ring", BM_TraceDumpShared,
                               false)
      ->Iterations(kRecords);
  benchmark::RegisterBenchmark("BM_TraceDump/compressed/tav_shared_ring", BM_TraceDumpShared, true)
      ->Iterations(kRecords);
  return true;
}();

}  // namespace
