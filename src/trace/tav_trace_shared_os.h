// tav_trace_shared_os.h - the operating system's part of a shared trace ring: a mapping of a
// file that several processes open by name, and a lock that works across processes.
//
// The file lies in the temporary directory and is named after the ring's resource key, so that
// every process that uses the same key (a traced program, a second one tracing into the same
// ring, the controller dumping it) maps the same bytes. The mapping outlives any process that
// has it open: a program killed in the middle of tracing leaves its records in the file.
//
// The file starts with kLockAreaSize bytes for the lock; the ring's memory follows. On POSIX the
// lock is a robust, process-shared mutex kept in the first kJournalOffset bytes of that area; on
// Windows it is a named mutex and those bytes stay unused. The rest of the area, the journal, is
// for the lock's holders to note what they are doing, for whoever takes the lock after them. Either
// way a holder that dies leaves the lock to the next taker, who is told so (wasRecovered) and may
// then find a record half written beyond the write position. Every handle is closed on exec, so
// that child processes inherit none.

#ifndef TAV_TRACE_SHARED_OS_H
#define TAV_TRACE_SHARED_OS_H

#include <cstdint>
#include <string>

#include "tav_export.h"

namespace tav::trace {

class TAV_INTERNAL_API SharedRingMapping {
 public:
  static constexpr uint64_t kLockAreaSize = 128;
  static constexpr uint64_t kJournalOffset = 64;

  enum class Status {
    kOk,
    kMissing,   // attaching only, and there is no file
    kTooSmall,  // attaching only, and the file holds no more than its lock area
    kFailed     // the system refused; getErrorNumber() says why
  };

  SharedRingMapping();
  // Unmaps and closes; the file stays for the next process.
  ~SharedRingMapping();
  SharedRingMapping(const SharedRingMapping&) = delete;
  SharedRingMapping& operator=(const SharedRingMapping&) = delete;

  // Opens the file at path with ringSize bytes of ring memory behind the lock area, creating it
  // or growing it when it is smaller. Memory that the file did not hold before reads as zeros.
  Status create(const char* path, const char* lockName, uint64_t ringSize);
  // Opens an existing file at path as it is, whatever its size; never creates or grows it.
  Status attach(const char* path, const char* lockName);

  // The ring's memory behind the lock area, and its size; null and 0 when nothing is open.
  uint8_t* getRingMemory() const { return mapping == nullptr ? nullptr : mapping + kLockAreaSize; }
  uint64_t getRingSize() const { return mapping == nullptr ? 0 : mappingSize - kLockAreaSize; }
  // The journal's kLockAreaSize - kJournalOffset bytes; null when nothing is open.
  uint8_t* getJournal() const { return mapping == nullptr ? nullptr : mapping + kJournalOffset; }
  // The operating system's error number of the last failure (errno, or GetLastError).
  uint32_t getErrorNumber() const { return errorNumber; }

  // Takes and releases the lock; any thread of any process that maps the file waits for it.
  void lock();
  void unlock();
  // Whether the last lock was taken over from a holder that died while holding it.
  bool wasRecovered() const { return recovered; }

  // Removes the file of a ring (and nothing else); true when it is gone afterwards.
  static bool removeFile(const char* path);

 private:
  Status open(const char* path, const char* lockName, uint64_t ringSize, bool mayCreate);
  void close();

  uint8_t* mapping = nullptr;
  uint64_t mappingSize = 0;
  void* lockHandle = nullptr;  // the named mutex on Windows; unused on POSIX
  void* fileHandle = nullptr;  // the file mapping object on Windows; unused on POSIX
  uint32_t errorNumber = 0;
  bool recovered = false;
};

// The file of the ring named resourceKey in directory: "tavring-" and the key with every ":"
// replaced by ".", then ".shm". The key alphabet leaves nothing else a file name could not hold.
TAV_INTERNAL_API std::string sharedRingFileName(const char* directory, const char* resourceKey);
// The name of the ring's lock, for systems whose locks have names of their own: "tavring-" and
// the key with every ":" replaced by ".".
TAV_INTERNAL_API std::string sharedRingLockName(const char* resourceKey);

}  // namespace tav::trace

#endif  // TAV_TRACE_SHARED_OS_H
