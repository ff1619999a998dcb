// tav_trace_shared_os_posix.cpp - the shared ring on POSIX: a file mapped with MAP_SHARED and a
// robust, process-shared mutex in its lock area.
//
// The lock area starts with a state word. A new file reads as zeros, so the first process to
// move the state from "empty" to "starting" sets up the mutex and then marks it "ready"; any
// other process waits for "ready" before it locks. A process that dies while setting up leaves
// "starting" behind, which the next process takes over after a second.

#include <errno.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cstddef>

#include "../tav_trace_shared_os.h"

namespace tav::trace {
namespace {

constexpr uint32_t kLockEmpty = 0;
constexpr uint32_t kLockStarting = 1;
constexpr uint32_t kLockReady = 2;

struct LockArea {
  uint32_t state;
  uint32_t reserved;
  pthread_mutex_t mutex;
};
static_assert(sizeof(LockArea) <= SharedRingMapping::kJournalOffset,
              "the lock ends before the journal");

LockArea& lockArea(uint8_t* mapping) { return *reinterpret_cast<LockArea*>(mapping); }

bool setUpMutex(pthread_mutex_t& mutex) {
  pthread_mutexattr_t attributes;
  if (pthread_mutexattr_init(&attributes) != 0) return false;
  const bool done = pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED) == 0 &&
                    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST) == 0 &&
                    pthread_mutex_init(&mutex, &attributes) == 0;
  pthread_mutexattr_destroy(&attributes);
  return done;
}

// Makes sure that the mutex is set up, by this process or another.
bool prepareLock(LockArea& area) {
  constexpr int kStepMilliseconds = 2;
  constexpr int kPatienceMilliseconds = 1000;
  for (int waited = 0;; waited += kStepMilliseconds) {
    uint32_t expected = kLockEmpty;
    const bool starting = __atomic_compare_exchange_n(&area.state, &expected, kLockStarting, false,
                                                      __ATOMIC_ACQ_REL, __ATOMIC_ACQUIRE);
    if (!starting && expected == kLockReady) return true;
    // A setter-up that has not finished within the patience is taken to be dead.
    if (starting || (expected == kLockStarting && waited >= kPatienceMilliseconds)) {
      if (!setUpMutex(area.mutex)) {
        __atomic_store_n(&area.state, kLockEmpty, __ATOMIC_RELEASE);
        return false;
      }
      __atomic_store_n(&area.state, kLockReady, __ATOMIC_RELEASE);
      return true;
    }
    const timespec step{0, kStepMilliseconds * 1000 * 1000};
    nanosleep(&step, nullptr);
  }
}

}  // namespace

SharedRingMapping::SharedRingMapping() = default;

SharedRingMapping::~SharedRingMapping() { close(); }

SharedRingMapping::Status SharedRingMapping::open(const char* path, const char*, uint64_t ringSize,
                                                  bool mayCreate) {
  close();
  int file;
  do {
    file = ::open(path, O_RDWR | O_CLOEXEC | (mayCreate ? O_CREAT : 0), 0600);
  } while (file == -1 && errno == EINTR);
  if (file == -1) {
    errorNumber = static_cast<uint32_t>(errno);
    return !mayCreate && errno == ENOENT ? Status::kMissing : Status::kFailed;
  }
  struct stat status;
  if (fstat(file, &status) != 0) {
    errorNumber = static_cast<uint32_t>(errno);
    ::close(file);
    return Status::kFailed;
  }
  uint64_t size = static_cast<uint64_t>(status.st_size);
  if (mayCreate && size < kLockAreaSize + ringSize) {
    // Growing never cuts what another process has mapped; the new bytes read as zeros.
    size = kLockAreaSize + ringSize;
    if (ftruncate(file, static_cast<off_t>(size)) != 0) {
      errorNumber = static_cast<uint32_t>(errno);
      ::close(file);
      return Status::kFailed;
    }
  }
  if (size <= kLockAreaSize) {
    ::close(file);
    return Status::kTooSmall;
  }
  void* memory =
      mmap(nullptr, static_cast<size_t>(size), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  errorNumber = static_cast<uint32_t>(errno);
  // The mapping keeps the file's contents reachable; the descriptor is no longer needed.
  ::close(file);
  if (memory == MAP_FAILED) return Status::kFailed;
  mapping = static_cast<uint8_t*>(memory);
  mappingSize = size;
  if (!prepareLock(lockArea(mapping))) {
    errorNumber = EINVAL;
    close();
    return Status::kFailed;
  }
  errorNumber = 0;
  return Status::kOk;
}

void SharedRingMapping::close() {
  if (mapping != nullptr) munmap(mapping, static_cast<size_t>(mappingSize));
  mapping = nullptr;
  mappingSize = 0;
}

void SharedRingMapping::lock() {
  pthread_mutex_t& mutex = lockArea(mapping).mutex;
  const int result = pthread_mutex_lock(&mutex);
  // The holder died: what it guarded is taken as it stands, since the ring's positions move
  // only after the bytes they cover are written.
  recovered = result == EOWNERDEAD;
  if (recovered) pthread_mutex_consistent(&mutex);
}

void SharedRingMapping::unlock() { pthread_mutex_unlock(&lockArea(mapping).mutex); }

bool SharedRingMapping::removeFile(const char* path) {
  return ::unlink(path) == 0 || errno == ENOENT;
}

}  // namespace tav::trace
