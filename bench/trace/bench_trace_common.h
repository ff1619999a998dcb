// bench_trace_common.h - what the trace benchmarks share: the message and origin every record
// carries, and spdlog, the logger a program would otherwise pick, when its headers are there.

#ifndef BENCH_TRACE_COMMON_H
#define BENCH_TRACE_COMMON_H

#if __has_include(<spdlog/spdlog.h>)
// Header-only, so that the benchmarks need no library beyond the system's headers.
#define FMT_HEADER_ONLY
#define SPDLOG_HEADER_ONLY
#include <spdlog/spdlog.h>
#define TAV_BENCH_HAVE_SPDLOG 1
#endif

namespace tav::bench {

constexpr const char* kMessage = "value of the counter after reset";  // 32 characters
constexpr const char* kOrigin = "Session::restart";                   // 16 characters

}  // namespace tav::bench

#endif  // BENCH_TRACE_COMMON_H
