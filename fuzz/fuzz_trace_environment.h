// The trace environment of the trace fuzz targets: fixed settings, no file, no report lines.
#ifndef TAV_FUZZ_TRACE_ENVIRONMENT_H
#define TAV_FUZZ_TRACE_ENVIRONMENT_H

#include <cstdint>

#include "tav_trace_environment_base.h"

namespace tav_fuzz {

class TraceEnvironment : public TavClTraceEnvironmentABase {
 public:
  TraceEnvironment() : TavClTraceEnvironmentABase("fuzz", nullptr) {}
  bool isCompressionEnabled() const override { return false; }
  // A default trace buffer less its 48-byte header.
  std::uint64_t getBufferSize() const override { return 65535 - 48; }
  const char* getTraceFileName() const override { return ""; }
  bool isVerbose() const override { return false; }
};

}  // namespace tav_fuzz

#endif  // TAV_FUZZ_TRACE_ENVIRONMENT_H
