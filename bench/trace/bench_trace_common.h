// bench_trace_common.h - what the trace benchmarks share: the message and origin every record
// carries, a fixed trace environment, scratch file names, and spdlog, the logger a program would
// otherwise pick.

#ifndef BENCH_TRACE_COMMON_H
#define BENCH_TRACE_COMMON_H

// The trace figures mean something only beside spdlog's, so the benchmarks are not built without
// its headers (scripts/install-deps.sh test installs them).
#if !__has_include(<spdlog/spdlog.h>)
#error "the trace benchmarks need spdlog's headers: run scripts/install-deps.sh test"
#endif
// Header-only, so that the benchmarks need no library beyond the system's headers.
#define FMT_HEADER_ONLY
#define SPDLOG_HEADER_ONLY
#include <spdlog/spdlog.h>
#define TAV_BENCH_HAVE_SPDLOG 1

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>

#include <benchmark/benchmark.h>

#include <cstring>
#include <initializer_list>
#include <memory>
#include <streambuf>
#include <vector>

#include "tav_environment.h"
#include "tav_process.h"
#include "tav_trace.h"
#include "tav_trace_environment_base.h"

namespace tav::bench {

constexpr const char* kMessage = "value of the counter after reset";  // 32 characters
constexpr const char* kOrigin = "Session::restart";                   // 16 characters
constexpr uint64_t kDefaultBufferSize = 65535;                        // a trace buffer's default

// Settings fixed by the benchmark instead of read from the environment; quiet.
class BenchEnvironment : public TavClTraceEnvironmentABase {
 public:
  explicit BenchEnvironment(bool compress, uint64_t bufferSize = kDefaultBufferSize,
                            std::string fileName = std::string())
      : TavClTraceEnvironmentABase("bench", nullptr),
        compress(compress),
        bufferSize(bufferSize),
        fileName(std::move(fileName)) {}
  bool isCompressionEnabled() const override { return compress; }
  // The buffer's own header takes 48 of its bytes.
  uint64_t getBufferSize() const override { return bufferSize - 48; }
  const char* getTraceFileName() const override { return fileName.c_str(); }
  bool isVerbose() const override { return false; }

 private:
  bool compress;
  uint64_t bufferSize;
  std::string fileName;
};

// A trace file in the temporary directory, named after stem and this process.
inline std::string benchFileName(const std::string& stem) {
  return (std::filesystem::temp_directory_path() /
          ("tav_bench_" + stem + "_" + std::to_string(TavClProcessProperty().getId()) + ".trc"))
      .string();
}

// A stream buffer that takes every character and keeps none: the formatters' output without
// the cost of storing it.
class DiscardingBuffer : public std::streambuf {
 protected:
  int_type overflow(int_type c) override { return traits_type::not_eof(c); }
  std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
};

// The trace variables of a key, each a suffix and its value, set for the lifetime of the object
// and removed at its end.
class BenchTraceVariables {
 public:
  BenchTraceVariables(const std::string& upperCaseKey,
                      std::initializer_list<std::pair<const char*, const char*>> settings) {
    for (const auto& [suffix, value] : settings) {
      variables.push_back(
          std::make_unique<TavClEnvironmentVariable>((upperCaseKey + suffix).c_str(), value));
    }
  }
  ~BenchTraceVariables() {
    for (const auto& variable : variables) variable->resetValue();
  }
  BenchTraceVariables(const BenchTraceVariables&) = delete;
  BenchTraceVariables& operator=(const BenchTraceVariables&) = delete;

 private:
  std::vector<std::unique_ptr<TavClEnvironmentVariable>> variables;
};

// The trace point the instance benchmarks time: a C string record whose data is its message, made
// once per iteration while tracing is enabled, as a program's trace point would.
inline void traceMessageEachIteration(benchmark::State& state) {
  const size_t dataSize = std::strlen(kMessage) + 1;
  for (auto _ : state) {
    if (TAV_TRACE_IS_ENABLED()) {
      tavTraceDump(TAV_TRACE_DETAIL_LOW, 1, TAV_TRACE_TYPE_CSTRING, kOrigin, kMessage, kMessage,
                   dataSize);
    }
  }
}

}  // namespace tav::bench

#endif  // BENCH_TRACE_COMMON_H
