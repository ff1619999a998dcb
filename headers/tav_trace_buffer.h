// tav_trace_buffer.h - the ring buffer that trace records are written into, and the writer that
// appends what the ring hands out to the trace file.
//
// The ring lives in memory given by its owner. The first 48 bytes of that memory are the
// control block, laid out so that a second party attaching to the same memory can read it:
//
//   offset  size  field
//    0      4     magic "TAVT"
//    4      4     reserved
//    8      8     capacity: memory size - 48
//   16      8     address of the first data byte (memory + 48)
//   24      8     address of the last data byte (first + capacity - 1)
//   32      8     hand-out mark: the first byte not yet handed out
//   40      8     write position: where the next byte goes
//
// When writing reaches the end of the ring, and on a flush, the bytes not yet handed out are
// passed to the overflow callback as at most two contiguous pieces, oldest first. Without a
// callback the ring wraps and overwrites its oldest bytes.

#ifndef TAV_TRACE_BUFFER_H
#define TAV_TRACE_BUFFER_H

#include <stdint.h>

#include "tav_export.h"
#include "tav_resource_key.h"
#include "tav_trace_entry.h"
#include "tav_trace_environment_base.h"

// What the ring hands out: the callback's context and the pending bytes in order. A second
// piece is present only when the pending bytes wrap round the end of the ring.
struct _TavStTraceHandOut {
  void* context;
  const uint8_t* firstPiece;
  uint64_t firstLength;
  const uint8_t* secondPiece;  // null when secondLength is 0
  uint64_t secondLength;
};

typedef void (*TavPfuTraceOverflow)(const _TavStTraceHandOut* handOut);

// The control block at the start of the buffer memory (64-bit platforms).
struct _TavStTraceBufferControl {
  char magic[4];
  uint32_t reserved;
  uint64_t capacity;
  uint8_t* first;
  uint8_t* last;
  uint8_t* handOutMark;
  uint8_t* writePosition;
};

class TAV_API TavClTraceBufferManager {
 public:
  static constexpr uint64_t kControlBlockSize = 48;

  // Manages size bytes of memory as a ring, guarded by semaphoreKey's lock. Memory that already
  // starts with a control block describing exactly this memory is taken over with its contents;
  // any other memory is initialised as an empty ring. Memory that is not 8-byte aligned is used
  // from its first aligned byte on. Less than 49 usable bytes hold no ring, and records written
  // to such a buffer are dropped.
  TavClTraceBufferManager(TavClResourceKeySemaphore& semaphoreKey, void* memory, uint64_t size);
  // Forgets the memory, the callback and its context; the memory itself belongs to the owner.
  ~TavClTraceBufferManager();
  TavClTraceBufferManager(const TavClTraceBufferManager&) = delete;
  TavClTraceBufferManager& operator=(const TavClTraceBufferManager&) = delete;

  // Installs the callback that receives hand-outs, or none (null). The callback runs while the
  // buffer's lock is held, so it must not write to or flush the same buffer.
  void setOverflowCallback(TavPfuTraceOverflow callback, void* context);

  // Writes one record: its header and texts, then its data block. Other threads' records
  // never interleave with it.
  void write(const TavClTraceEntry& entry);
  // Hands out what was written since the last flush; nothing when nothing was written.
  void flush();

  // The control block, or null when the memory holds no ring.
  const _TavStTraceBufferControl* getControlBlock() const { return control; }

 private:
  void write(const uint8_t* bytes, uint64_t length);
  void copyToWritePosition(const uint8_t* bytes, uint64_t length);
  void overflow();
  bool describesMemory(const uint8_t* memory, uint64_t size) const;

  TavClResourceKeySemaphore& semaphoreKey;
  _TavStTraceBufferControl* control;
  TavPfuTraceOverflow callback;
  void* callbackContext;
  uint32_t writtenSinceLastFlush;
};

// Appends hand-outs of a trace buffer to the environment's trace file, opening and closing the
// file for each so that the file is complete whenever no hand-out is under way. With verbose
// on, each step is reported on the report stream as a line "[TAV: TRACE: ...]".
//
// A hand-out that cannot be written is lost, but never leaves part of a record behind: the
// writer follows the record boundaries through the bytes it is handed, cuts the file back to
// the end of its last whole record when a write fails, and skips the rest of any record whose
// start was lost. It assumes that the first hand-out it sees starts at a record, as a new ring
// does.
class TAV_API TavClTraceFileWriter {
 public:
  explicit TavClTraceFileWriter(TavClTraceEnvironmentABase& environment);
  virtual ~TavClTraceFileWriter();
  TavClTraceFileWriter(const TavClTraceFileWriter&) = delete;
  TavClTraceFileWriter& operator=(const TavClTraceFileWriter&) = delete;

  // The overflow callback to install on a buffer manager, with the writer as its context.
  static void appendHandOut(const _TavStTraceHandOut* handOut);
  // Appends the two pieces of one hand-out.
  void append(const uint8_t* firstPiece, uint64_t firstLength, const uint8_t* secondPiece,
              uint64_t secondLength);

 protected:
  // Writes length bytes to the open file. Returns the number written; fewer than length means
  // the write failed, with the C runtime's error number in *errorNumber. Tests override it to
  // make writes fail.
  virtual uint64_t writeToFile(int fileHandle, const uint8_t* bytes, uint64_t length,
                               int* errorNumber);

 private:
  // Offsets just past the first and the last record that end in a run of bytes.
  struct Boundaries {
    uint64_t first;
    uint64_t last;
  };
  // Moves over handed-out bytes, record by record.
  Boundaries followRecords(const uint8_t* bytes, uint64_t length);
  void loseHandOut(bool endsOnRecord);
  // Cuts the lost bytes off the end of the open file; *size is its size before and after.
  bool cutBack(int file, int64_t* size, bool verbose);

  TavClTraceEnvironmentABase& environment;
  // Where the handed-out bytes stand: the header of the current record as far as seen, and how
  // many bytes of its texts and data are still to come.
  uint8_t header[TavClTraceEntry::kHeaderSize] = {};
  uint32_t headerBytesSeen = 0;
  uint64_t bodyBytesToCome = 0;
  // The bytes at the end of the file that belong to the unfinished current record; when
  // danglingBytesLost, bytes of lost records to cut off before anything else is appended.
  uint64_t danglingBytes = 0;
  bool danglingBytesLost = false;
  // The current record's start never reached the file: the rest of it stays out too.
  bool skippingLostRecord = false;
};

#endif  // TAV_TRACE_BUFFER_H
