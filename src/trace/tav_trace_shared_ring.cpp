// tav_trace_shared_ring.cpp - a shared trace ring's file, its mapping and its lock.

#include "tav_trace_shared_ring.h"

#include "../fs/tav_file_io_os.h"
#include "../fs/tav_fs_os.h"

namespace tav::trace {
namespace {

// What the last hand-out of the ring noted before it wrote. Offsets count from the ring's
// control block; 0 names no hand-out, since the data bytes start behind the block.
struct HandOutJournal {
  uint64_t markOffset;
  uint64_t fileSizeBefore;
  uint64_t fileNameHash;  // processes sharing a ring may name different trace files
};
static_assert(sizeof(HandOutJournal) <=
                  SharedRingMapping::kLockAreaSize - SharedRingMapping::kJournalOffset,
              "the journal fits its area");

// Cuts the file back to size, when it has grown beyond it.
void cutBack(const char* fileName, uint64_t size) {
  int file = -1;
  if (!tav::os::openFile(fileName, tav::os::FileOpening::append, &file).ok()) return;
  uint64_t current = 0;
  if (tav::os::fileSizeOf(file, &current).ok() && current > size) {
    tav::os::truncateFile(file, size);
  }
  tav::os::closeFile(file);
}

// FNV-1a of the name: tells two trace files apart without keeping their names.
uint64_t hashOf(const char* text) {
  uint64_t hash = 14695981039346656037u;
  for (; *text != '\0'; ++text) hash = (hash ^ static_cast<unsigned char>(*text)) * 1099511628211u;
  return hash;
}

}  // namespace

SharedTraceRing::SharedTraceRing(const char* directory, const char* resourceKey)
    : fileName(sharedRingFileName(directory, resourceKey)),
      lockName(sharedRingLockName(resourceKey)) {}

SharedTraceRing::~SharedTraceRing() = default;

bool SharedTraceRing::open(uint64_t totalSize) {
  return check(mapping.create(fileName.c_str(), lockName.c_str(), totalSize));
}

bool SharedTraceRing::attach() { return check(mapping.attach(fileName.c_str(), lockName.c_str())); }

bool SharedTraceRing::check(SharedRingMapping::Status status) {
  problem.clear();
  switch (status) {
    case SharedRingMapping::Status::kOk: return true;
    case SharedRingMapping::Status::kMissing: return false;
    case SharedRingMapping::Status::kTooSmall:
      problem = "the memory is too small for a trace ring";
      return false;
    case SharedRingMapping::Status::kFailed:
      problem = "the system refused to map the file (error " +
                std::to_string(mapping.getErrorNumber()) + ")";
      return false;
  }
  return false;
}

void SharedTraceRing::appendHandOut(const _TavStTraceHandOut* handOut) {
  static_cast<SharedTraceRing*>(handOut->context)->append(*handOut);
}

void SharedTraceRing::append(const _TavStTraceHandOut& handOut) {
  auto& journal = *reinterpret_cast<HandOutJournal*>(mapping.getJournal());
  const char* fileName = writerEnvironment->getTraceFileName();
  const auto markOffset = static_cast<uint64_t>(handOut.firstPiece - getMemory());
  const uint64_t fileNameHash = hashOf(fileName);
  // The last hand-out started where this one does: its writer died before the ring moved its
  // mark, and what it wrote of these records to this file goes.
  if (journal.markOffset == markOffset && journal.fileNameHash == fileNameHash) {
    cutBack(fileName, journal.fileSizeBefore);
  }
  uint64_t size = 0;
  journal.fileSizeBefore = tav::os::fileSize(fileName, &size).ok() ? size : 0;
  journal.fileNameHash = fileNameHash;
  journal.markOffset = markOffset;
  fileWriter->append(handOut.firstPiece, handOut.firstLength, handOut.secondPiece,
                     handOut.secondLength);
}

TavEnTraceLockState SharedTraceRing::lock() {
  mapping.lock();
  return mapping.wasRecovered() ? TAV_TRACE_LOCK_ACQUIRED_FROM_DEAD_HOLDER
                                : TAV_TRACE_LOCK_ACQUIRED;
}

}  // namespace tav::trace
