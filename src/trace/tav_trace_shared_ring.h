// tav_trace_shared_ring.h - a trace ring in memory that processes share: the mapping of the
// key's ring file, seen by the buffer manager as its lock.
//
// A program that traces opens the ring, creating its file when there is none; a controller only
// attaches to a file that is there. Whether the memory holds a valid ring is the buffer
// manager's to check, under this lock, when it takes the memory.
//
// Hand-outs of a shared ring go to the trace file through appendHandOut, which keeps a journal
// in the ring file: the hand-out mark it starts from and the trace file's size before it. The
// ring moves its mark only after the hand-out is written, so a process killed in between leaves
// records in the file that the ring still holds as pending. The next hand-out, by any process,
// finds the journal naming the mark the ring still has, cuts the file back to its size before,
// and writes those records again, once.

#ifndef TAV_TRACE_SHARED_RING_H
#define TAV_TRACE_SHARED_RING_H

#include <cstdint>
#include <string>

#include "tav_trace_buffer.h"
#include "tav_trace_lock.h"
#include "tav_trace_shared_os.h"

namespace tav::trace {

class TAV_INTERNAL_API SharedTraceRing final : public TavClTraceBufferLock {
 public:
  // The ring file of resourceKey in directory (see sharedRingFileName).
  SharedTraceRing(const char* directory, const char* resourceKey);
  ~SharedTraceRing() override;

  // For a program that traces: a ring of totalSize bytes, control block included. False, with
  // getProblem() saying why, when the system refuses the file or its mapping.
  bool open(uint64_t totalSize);
  // For a controller: the file as it is. False when there is none (getProblem() then stays
  // empty) or when it cannot be mapped.
  bool attach();

  uint8_t* getMemory() const { return mapping.getRingMemory(); }
  uint64_t getSize() const { return mapping.getRingSize(); }
  const char* getFileName() const { return fileName.c_str(); }
  // Why the last open or attach failed; empty after success and for a missing file.
  const std::string& getProblem() const { return problem; }

  // Hand-outs go to writer, whose environment names the trace file; set before the first.
  void setFileWriter(TavClTraceFileWriter* writer, const TavClTraceEnvironmentABase* environment) {
    fileWriter = writer;
    writerEnvironment = environment;
  }
  // The overflow callback for a manager of this ring, with the ring as its context.
  static void appendHandOut(const _TavStTraceHandOut* handOut);

  TavEnTraceLockState lock() override;
  void unlock() override { mapping.unlock(); }

 private:
  bool check(SharedRingMapping::Status status);

  void append(const _TavStTraceHandOut& handOut);

  SharedRingMapping mapping;
  TavClTraceFileWriter* fileWriter = nullptr;
  const TavClTraceEnvironmentABase* writerEnvironment = nullptr;
  std::string fileName;
  std::string lockName;
  std::string problem;
};

}  // namespace tav::trace

#endif  // TAV_TRACE_SHARED_RING_H
