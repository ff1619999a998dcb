// tav_trace_environment_base.cpp - the identity and compression statistics of a trace.

#include "tav_trace_environment_base.h"

#include "tav_process.h"

TavClTraceEnvironmentABase::TavClTraceEnvironmentABase(const char* key, const char* instance)
    : TavClResourceKeySemaphore(key, instance != nullptr ? instance : kDefaultInstance),
      processId(TavClProcessProperty().getId()) {}

TavClTraceEnvironmentABase::~TavClTraceEnvironmentABase() = default;

void TavClTraceEnvironmentABase::recordCompressionRate(uint64_t expandedCharacters,
                                                       uint64_t storedBytes) {
  expandedCharacterTotal += expandedCharacters;
  storedByteTotal += storedBytes;
}

float TavClTraceEnvironmentABase::getCompressionRate() const {
  if (expandedCharacterTotal == 0 || storedByteTotal == 0) return 0.0f;
  return static_cast<float>(static_cast<double>(storedByteTotal) /
                            static_cast<double>(expandedCharacterTotal));
}
