// tav_trace_environment.h - what a trace records and where it goes, read from environment
// variables.
//
// A program that traces picks a key, say "myapp". Its trace is then configured by variables
// whose names are the key in upper case followed by a suffix:
//
//   MYAPP_TRACE_ACTIVE     on/off     whether records are made at all (default off)
//   MYAPP_TRACE_DETAIL     HIGH, MED, LOW, anything else means OFF (default LOW)
//   MYAPP_TRACE_AUTOSAVE   on         write the buffer to the trace file (already on)
//   MYAPP_TRACE_AUTOFLUSH  on         flush after every record (default off)
//   MYAPP_TRACE_AUTOCLEAR  on         delete the trace file when the trace starts (default off)
//   MYAPP_TRACE_COMPRESS   on         store texts compressed (already on)
//   MYAPP_TRACE_COMPSET    component ids to record, e.g. "*,-7" or "3.9,12" (default all)
//   MYAPP_TRACE_BUFSIZE    buffer size in kilobytes, 4 to 16384 (default 65535 bytes)
//   MYAPP_TRACE_FILE       the trace file (default <key>trace.trc in the temporary directory)
//   MYAPP_TRACE_FORMAT     the default format of the trace formatter
//   MYAPP_TRACE_VERBOSE    on         report the settings and every file write (see below)
//   MYAPP_TRACE_SHARED     on         keep the buffer in a file mapping that other processes
//                                     share and that outlives the program (default off)
//
// "on" is whatever the environment variable facility counts as enabled (ON, YES, TRUE, 1). The
// flag variables can only switch a flag on: since compression and autosave start on, the
// environment cannot switch them off; only the program can, through TavClTraceSettings.
// Keys of any length name their variables in full. The default trace file name is a file name
// like any other and so is kept to TAV_PATH_MAX_LENGTH characters.
//
// Each thread builds its records in an area of its own in front of a private buffer, and they
// enter the buffer as a run when the area is full, when the thread ends and whenever the trace
// is flushed (tavTraceFlush, autoflush, deleting the instance). So the buffer and the file keep
// every thread's records whole and in that thread's order, while records of different threads
// come in runs. A shared buffer gets every record when its trace call returns, so that a
// program that dies loses none of them.
//
// Nothing read from the environment can fail: bad numbers become the nearest valid value (a bad
// buffer size 4096 bytes), a bad detail becomes OFF, and unknown characters are skipped.

#ifndef TAV_TRACE_ENVIRONMENT_H
#define TAV_TRACE_ENVIRONMENT_H

#include <stddef.h>
#include <stdint.h>

#include <string>

#include "tav_export.h"
#include "tav_filename.h"
#include "tav_memmgr.h"
#include "tav_trace_buffer.h"
#include "tav_trace_entry.h"
#include "tav_trace_environment_base.h"

namespace tav::trace {
class RecordStaging;
class SharedTraceRing;
}

// Which records pass: the detail level, the component ids, and a process and a thread (0 for
// any). Recording uses the detail and the component ids; the formatter uses all four.
class TAV_API TavClTraceFilter {
 public:
  static constexpr uint32_t kMaxComponentId = 255;

  // Level LOW, any process and thread, every component id.
  TavClTraceFilter();

  // The level from text, ignoring case: text starting with "HIGH" gives HIGH, else with "MED"
  // MED, else with "LOW" LOW, and anything else (null included) OFF.
  void setDetail(const char* text);
  void setDetail(TavEnTraceDetail level) { detail = level; }
  TavEnTraceDetail getDetail() const { return static_cast<TavEnTraceDetail>(detail); }
  // "OFF", "LOW", "MED" or "HIGH"; null for any other value.
  static const char* getDetailAsCString(uint32_t detail);

  // The decimal number at the start of text (blanks skipped); 0, meaning any, when there is
  // none. Numbers beyond 32 bits keep their low 32 bits.
  void setProcessId(const char* text);
  void setThreadId(const char* text);
  uint32_t getProcessId() const { return processId; }
  uint32_t getThreadId() const { return threadId; }

  // Ids above kMaxComponentId are ignored.
  void enableComponentId(uint32_t id);
  void disableComponentId(uint32_t id);
  void enableAllComponentIds();
  void disableAllComponentIds();
  // Applies a component set text, read left to right:
  //   digits  a number, stored as the start of the range, or as its end after a "."
  //   "."     what follows is the end of the range: 3.7 and 3..7 both mean 3 to 7
  //   "*"     the range 1 to 255
  //   "-"     the range is cleared instead of set; "+" sets it again
  //   ","     applies the range and starts a new one (set, start and end 0)
  // anything else is skipped, and the range is applied once more at the end. A range that
  // starts at 0 changes nothing; one without an end is the single id. Note that "-" is not a
  // range mark: "1-10" clears id 10 and nothing else. Id 0 is in no range and always matches.
  void enableComponentIds(const char* text);

  bool matchesDetail(TavEnTraceDetail level) const {
    return static_cast<uint32_t>(level) <= detail;
  }
  // Id 0 always matches. A record keeps only the low eight bits of its id, and so does this
  // test, so that the test and the record agree.
  bool matchesCompId(uint32_t id) const {
    id &= kMaxComponentId;
    return id == 0 || (componentIds[id >> 3] >> (id & 7) & 1) != 0;
  }
  bool matchesProcessId(uint32_t pid) const { return processId == 0 || processId == pid; }
  bool matchesThreadId(uint32_t tid) const { return threadId == 0 || threadId == tid; }
  // Whether any id from 1 to 255 is excluded.
  bool usesCompIdFilter() const;

 private:
  void setComponentIdSet(uint32_t from, uint32_t to, bool include);

  uint32_t detail;
  uint32_t processId;
  uint32_t threadId;
  uint8_t componentIds[32];  // bit i of byte i / 8, least significant bit first
};

// The part of the settings a trace consults for every record.
struct _TavStTraceSettingsBlock {
  uint32_t signature;
  uint32_t flags;
  TavClTraceFilter filter;
};

class TAV_API TavClTraceSettings : public TavClMemoryManagedObject {
 public:
  static constexpr uint32_t kSignature = 0x53564154;  // "TAVS" in memory
  static constexpr uint32_t kCompression = 1;
  static constexpr uint32_t kAutosave = 2;
  static constexpr uint32_t kAutoclear = 4;
  static constexpr uint32_t kAutoflush = 8;
  static constexpr uint32_t kVerbose = 16;
  static constexpr uint32_t kInitialFlags = kCompression | kAutosave;

  // Settings in this object.
  TavClTraceSettings();
  // Settings in sizeof(_TavStTraceSettingsBlock) bytes at memory, suitably aligned, which must
  // outlive the object; whatever the memory held is overwritten.
  explicit TavClTraceSettings(void* memory);
  TavClTraceSettings(const TavClTraceSettings&) = delete;
  TavClTraceSettings& operator=(const TavClTraceSettings&) = delete;

  // Writes the signature and sets the flags to compression and autosave.
  void init();

  void enableCompression(bool on) { setFlag(kCompression, on); }
  void enableAutosave(bool on) { setFlag(kAutosave, on); }
  void enableAutoclear(bool on) { setFlag(kAutoclear, on); }
  void enableAutoflush(bool on) { setFlag(kAutoflush, on); }
  void enableVerbose(bool on) { setFlag(kVerbose, on); }
  bool isCompressionEnabled() const { return (block->flags & kCompression) != 0; }
  bool isAutosaveEnabled() const { return (block->flags & kAutosave) != 0; }
  bool isAutoclearEnabled() const { return (block->flags & kAutoclear) != 0; }
  bool isAutoflushEnabled() const { return (block->flags & kAutoflush) != 0; }
  bool isVerboseEnabled() const { return (block->flags & kVerbose) != 0; }

  void setDetailLevel(const char* text) { block->filter.setDetail(text); }
  // Clears every component id, then applies the text (see TavClTraceFilter).
  void initComponentIds(const char* text);

  TavClTraceFilter& getFilter() { return block->filter; }
  const TavClTraceFilter& getFilter() const { return block->filter; }
  const _TavStTraceSettingsBlock& getBlock() const { return *block; }

 private:
  void setFlag(uint32_t flag, bool on) {
    block->flags = on ? block->flags | flag : block->flags & ~flag;
  }

  _TavStTraceSettingsBlock* block;
  _TavStTraceSettingsBlock ownBlock;
};

// A trace's settings, buffer and file, read from the environment variables of a key when built
// (see the top of this header). With autosave on, the buffer is handed to the trace file
// whenever it fills up and when it is flushed; with autosave off it keeps only its most recent
// records. A trace file that cannot be written loses those records, is reported when verbose is
// on, and tracing goes on. Reports go to the library's report stream (tavSetReportStream in
// tav_error.h), standard output by default.
class TAV_API TavClTraceEnvironment : public TavClTraceEnvironmentABase,
                                      public TavClMemoryManagedObject {
 public:
  static constexpr uint32_t kDefaultBufferSize = 65535;
  static constexpr uint32_t kMinBufferSize = 4096;
  static constexpr uint32_t kMaxBufferSize = 16777216;
  static constexpr size_t kMaxFormatLength = 512;
  static constexpr const char* kDefaultFileSuffix = "trace.trc";
  static constexpr const char* kDefaultFormat =
      "%f%n   P: %p, T: %s, D: %l, C: %c%n   Data: %m (%x: %d%n)";

  // key names the variables and the default trace file; a null instance means
  // kDefaultInstance. A controller environment (for a tool that watches a trace) never clears
  // the trace file.
  TavClTraceEnvironment(const char* key, const char* instance, bool controller);
  // Flushes the buffer into the trace file (with autosave on) and releases it.
  ~TavClTraceEnvironment() override;
  TavClTraceEnvironment(const TavClTraceEnvironment&) = delete;
  TavClTraceEnvironment& operator=(const TavClTraceEnvironment&) = delete;

  // Writes a record into the buffer, and flushes after it when autoflush is on.
  void add(const TavClTraceEntry& entry);
  // The same for a record given in its parts (see TavClTraceBufferManager::writeRecord).
  void addRecord(const uint8_t* header, const char* message, uint64_t messageLength,
                 const char* origin, uint64_t originLength, const void* data);
  // Hands the buffer to the trace file, with the records that wait in the threads' areas.
  void flush();
  // The threads' areas in front of the buffer, or null when records go straight into it.
  tav::trace::RecordStaging* getStaging() const { return staging; }

  void activate() { active = true; }
  bool isActive() const { return active; }
  bool isController() const { return controller; }
  // Whether the buffer is the key's shared ring (MYAPP_TRACE_SHARED on, and the ring usable).
  bool usesSharedMemory() const { return sharedMemory; }
  // With MYAPP_TRACE_SHARED on, why the shared ring is not used, or null: the system refused its
  // file or mapping, or (for a controller) its memory is no valid ring. The buffer is then in
  // private memory. A controller finding no ring file at all reports no problem.
  const char* getSharedRingProblem() const {
    return sharedRingProblem.empty() ? nullptr : sharedRingProblem.c_str();
  }
  // The shared ring's file when MYAPP_TRACE_SHARED is on, used or not; otherwise null.
  const char* getSharedRingFileName() const {
    return sharedRingFileName.empty() ? nullptr : sharedRingFileName.c_str();
  }
  // The flight recorder: appends the records of the shared ring that no hand-out has yet passed
  // on to the trace file, under the ring's lock, so that no record is appended twice. Nothing
  // without a shared ring.
  void saveSharedRing();

  // The buffer's capacity: its size without the control block.
  uint64_t getBufferSize() const override {
    return bufferSize - TavClTraceBufferManager::kControlBlockSize;
  }
  // The buffer's size with its control block, as read from the environment.
  uint32_t getTotalBufferSize() const { return bufferSize; }
  bool isCompressionEnabled() const override { return settings->isCompressionEnabled(); }
  const char* getTraceFileName() const override { return traceFileName.getAsCString(); }
  bool isVerbose() const override { return settings->isVerboseEnabled(); }

  // Copies at most kMaxFormatLength characters; null means empty.
  void setFormatString(const char* text);
  const char* getFormatString() const { return formatString; }

  TavClTraceSettings& getSettings() { return *settings; }
  const TavClTraceSettings& getSettings() const { return *settings; }

  // The number of kilobytes text starts with (blanks and a sign allowed), times 1024, kept
  // within kMinBufferSize and kMaxBufferSize; text without a number gives kMinBufferSize.
  static uint32_t bufferSizeFromText(const char* text);

 private:
  void determineSettingsFromEnvVars(const char* key);
  void reportSettings(const char* key) const;
  // Maps the key's shared ring and builds the buffer manager on it; false when it cannot be
  // used, with nothing left built.
  bool useSharedRing();
  // Makes the buffer hand out to the trace file (through the shared ring's journal, if any).
  void installFileWriter();
  // Flushes and frees the buffer, then the settings; each piece only when it was built.
  void release();

  TavClTraceBufferManager* bufferManager = nullptr;
  TavClTraceSettings* settings = nullptr;
  uint32_t bufferSize = kDefaultBufferSize;
  TavClFilename traceFileName;
  char formatString[kMaxFormatLength + 1] = {};
  uint8_t* bufferMemory = nullptr;
  tav::trace::SharedTraceRing* sharedRing = nullptr;
  // The threads' areas in front of a private ring; none before a shared ring, whose records must
  // be in the ring when the trace call returns.
  tav::trace::RecordStaging* staging = nullptr;
  std::string sharedRingProblem;
  std::string sharedRingFileName;
  bool active = false;
  bool sharedMemoryRequested = false;
  bool sharedMemory = false;
  bool controller;
  TavClTraceFileWriter fileWriter;
};

#endif  // TAV_TRACE_ENVIRONMENT_H
