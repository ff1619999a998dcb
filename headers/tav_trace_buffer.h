// tav_trace_buffer.h - the ring buffer that trace records are written into, and the writer that
// appends what the ring hands out to the trace file.
//
// The ring lives in memory given by its owner, which several processes may map at different
// addresses. The first 48 bytes of that memory are the control block; every position in it is an
// offset from the start of the block, so that it reads the same wherever the memory is mapped:
//
//   offset  size  field
//    0      4     magic "TAVT"
//    4      4     flags: 1 while the pending bytes hold part of a record
//    8      8     capacity: memory size - 48
//   16      8     offset of the first data byte (48)
//   24      8     offset of the last data byte (48 + capacity - 1)
//   32      8     hand-out mark: offset of the first byte not yet handed out
//   40      8     write position: offset where the next byte goes
//
// The records from the hand-out mark up to the write position, wrapping round the end, are
// pending; the two are equal when nothing is. Both stand at record boundaries, and the write
// position moves on only once a whole record is in the ring, so the memory of a writer that died
// holds whole records only. When a record does not fit in the room before the mark, the pending
// records are first handed to the overflow callback as at most two contiguous pieces, oldest
// first; a flush does the same. Without a callback they are given up and the ring keeps the most
// recent records. (A record larger than the ring passes through it in pieces, each handed out as
// it fills the ring.)

#ifndef TAV_TRACE_BUFFER_H
#define TAV_TRACE_BUFFER_H

#include <stdint.h>

#include "tav_export.h"
#include "tav_resource_key.h"
#include "tav_trace_entry.h"
#include "tav_trace_environment_base.h"
#include "tav_trace_lock.h"

// What the ring hands out: the callback's context and the pending bytes in order. A second
// piece is present only when the pending bytes wrap round the end of the ring.
struct _TavStTraceHandOut {
  void* context;
  const uint8_t* firstPiece;
  uint64_t firstLength;
  const uint8_t* secondPiece;  // null when secondLength is 0
  uint64_t secondLength;
  // 1 when the pieces are whole records, as they are unless a record larger than the ring is
  // passing through it; 0 when that is not known.
  uint32_t wholeRecords;
};

typedef void (*TavPfuTraceOverflow)(const _TavStTraceHandOut* handOut);

// The control block at the start of the buffer memory.
struct _TavStTraceBufferControl {
  char magic[4];
  uint32_t flags;
  uint64_t capacity;
  uint64_t firstOffset;
  uint64_t lastOffset;
  uint64_t handOutMark;
  uint64_t writePosition;
};

// What memory holds where a ring is expected. Only a valid ring is trusted: any other value
// would let writes or hand-outs reach outside the memory.
enum TavEnTraceRingCheck {
  TAV_TRACE_RING_VALID = 0,
  TAV_TRACE_RING_TOO_SMALL = 1,           // no room for the control block and two data bytes
  TAV_TRACE_RING_NO_MAGIC = 2,            // not a ring: it does not start with "TAVT"
  TAV_TRACE_RING_BAD_CAPACITY = 3,        // the capacity is not the memory size less the block
  TAV_TRACE_RING_BAD_BOUNDS = 4,          // the first or last data byte is misplaced
  TAV_TRACE_RING_BAD_HAND_OUT_MARK = 5,   // the mark lies outside the data bytes
  TAV_TRACE_RING_BAD_WRITE_POSITION = 6,  // the write position lies outside the data bytes
};

// What a buffer manager does with memory that holds no valid ring.
enum TavEnTraceRingAttach {
  TAV_TRACE_RING_START_EMPTY = 0,  // starts an empty ring in it
  TAV_TRACE_RING_ATTACH_ONLY = 1,  // leaves it as it is and holds no ring
};

class TAV_API TavClTraceBufferManager {
 public:
  static constexpr uint64_t kControlBlockSize = 48;

  // Manages size bytes of memory as a ring. Memory that holds a valid ring (see checkRing) is
  // taken over with its contents; other memory is started empty, or with ATTACH_ONLY left
  // alone. Memory that is not 8-byte aligned is used from its first aligned byte on; a ring
  // needs 50 bytes from there. Records written while the manager holds no ring are dropped.
  //
  // lock guards the ring; it must outlive the manager and be the lock of every other party
  // that writes the same memory. Without one (null) the semaphore key's process lock is used.
  TavClTraceBufferManager(TavClResourceKeySemaphore& semaphoreKey, void* memory, uint64_t size,
                          TavClTraceBufferLock* lock = nullptr,
                          TavEnTraceRingAttach attach = TAV_TRACE_RING_START_EMPTY);
  // Forgets the memory, the callback and its context; the memory itself belongs to the owner.
  ~TavClTraceBufferManager();
  TavClTraceBufferManager(const TavClTraceBufferManager&) = delete;
  TavClTraceBufferManager& operator=(const TavClTraceBufferManager&) = delete;

  // Whether size bytes of memory (used from the first 8-byte aligned byte) hold a ring whose
  // control block can be trusted; otherwise why not. Reads the control block only, so while
  // others may write the memory, call it with the ring's lock held.
  static TavEnTraceRingCheck checkRing(const void* memory, uint64_t size);
  // The reason as a sentence for a report, such as "the write position lies outside the ring".
  static const char* describeRingCheck(TavEnTraceRingCheck check);

  // What the memory held when this manager took it: VALID when an existing ring was taken
  // over, otherwise why it was started empty (or, with ATTACH_ONLY, left alone).
  TavEnTraceRingCheck getAttachCheck() const { return attachCheck; }

  // Installs the callback that receives hand-outs, or none (null). The callback runs while the
  // buffer's lock is held, so it must not write to or flush the same buffer.
  void setOverflowCallback(TavPfuTraceOverflow callback, void* context);

  // A record in its parts, as writeRecord takes them.
  struct RecordParts {
    const uint8_t* header;
    const char* message;
    uint64_t messageLength;
    const char* origin;
    uint64_t originLength;
    const void* data;
  };
  // The parts of entry's record: the texts from the caller's strings, or from the entry where it
  // holds them (as it does compressed texts).
  static RecordParts partsOf(const TavClTraceEntry& entry);

  // Writes one record: its header and texts, then its data block. Other threads' records
  // never interleave with it.
  void write(const TavClTraceEntry& entry);
  // The same for a record given in its parts: the 20-byte header, the texts with the lengths
  // stored in it, and the data block of the size stored in it.
  void writeRecord(const uint8_t* header, const char* message, uint64_t messageLength,
                   const char* origin, uint64_t originLength, const void* data);
  // Writes a run of whole records, as built by writeRecord, in one piece: records of other
  // threads go before or after the run, never into it.
  void writeRecords(const uint8_t* records, uint64_t length);
  // Hands out the pending records; nothing when none are pending.
  void flush();
  // How many bytes are pending.
  uint64_t getPendingSize();

  // The control block, or null when the memory holds no ring.
  const _TavStTraceBufferControl* getControlBlock() const { return control; }

 private:
  // The process lock is taken here, inline; a handed-in lock through lockSharedRing.
  void lockRing() {
    if (lock == nullptr) {
      semaphoreKey.getLock().lock();
    } else {
      lockSharedRing();
    }
  }
  void unlockRing() {
    if (lock == nullptr) {
      semaphoreKey.getLock().unlock();
    } else {
      lock->unlock();
    }
  }
  void lockSharedRing();
  class RingGuard;

  void startEmpty();
  // Puts length bytes at position, wrapping round the end; returns the position after them.
  uint64_t copyIn(uint64_t position, const uint8_t* bytes, uint64_t length);
  // Writes a record too large for the ring, handing out each ringful as it is complete.
  void streamIn(const uint8_t* bytes, uint64_t length);
  void handOut();

  TavClResourceKeySemaphore& semaphoreKey;
  TavClTraceBufferLock* lock;
  // The start of the control block, and the block itself; both null when there is no ring.
  uint8_t* base;
  _TavStTraceBufferControl* control;
  uint64_t usableSize;
  TavEnTraceRingCheck attachCheck;
  TavPfuTraceOverflow callback;
  void* callbackContext;
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
  // Appends the two pieces of one hand-out. When they are known to be whole records and the
  // file ends on a record, the records need not be followed through the bytes.
  void append(const uint8_t* firstPiece, uint64_t firstLength, const uint8_t* secondPiece,
              uint64_t secondLength, bool wholeRecords = false);

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
