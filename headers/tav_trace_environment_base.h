// tav_trace_environment_base.h - what trace records, the trace buffer and the trace file writer
// need to know about the trace they belong to.
//
// A trace environment is named by a semaphore key (trace key and instance name), knows the
// process that built it, the settings that decide how records are encoded, the size of its
// buffer, its trace file and whether to report on the report stream. The full environment reads
// all that from environment variables; tests and tools derive their own.

#ifndef TAV_TRACE_ENVIRONMENT_BASE_H
#define TAV_TRACE_ENVIRONMENT_BASE_H

#include <stdint.h>

#include "tav_export.h"
#include "tav_resource_key.h"

class TAV_API TavClTraceEnvironmentABase : public TavClResourceKeySemaphore {
 public:
  // The instance name used when none is given.
  static constexpr const char* kDefaultInstance = "TAVTRACEINSTANCE0";

  ~TavClTraceEnvironmentABase() override;

  // Whether new records store their texts compressed.
  virtual bool isCompressionEnabled() const = 0;
  // The buffer's capacity in bytes (without its control block); data blocks are clipped to it.
  virtual uint64_t getBufferSize() const = 0;
  // The trace file that hand-outs of the buffer are appended to.
  virtual const char* getTraceFileName() const = 0;
  // Whether the file writer reports each hand-out on the report stream (tav_error.h).
  virtual bool isVerbose() const = 0;

  // The process that built the environment.
  uint32_t getProcessId() const { return processId; }

  // Adds one expanded text to the compression statistics: the characters it expanded to and
  // the bytes it was stored in.
  void recordCompressionRate(uint64_t expandedCharacters, uint64_t storedBytes);
  // Stored bytes per expanded character over all recorded texts; 0 before there are any.
  float getCompressionRate() const;

 protected:
  // key and instance name the semaphore; a null instance means kDefaultInstance.
  TavClTraceEnvironmentABase(const char* key, const char* instance);

 private:
  uint32_t processId;
  uint64_t expandedCharacterTotal = 0;
  uint64_t storedByteTotal = 0;
};

#endif  // TAV_TRACE_ENVIRONMENT_BASE_H
