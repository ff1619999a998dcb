// tav_process_posix.cpp - process identities, kill and the environment on POSIX.
//
// Only code valid on every POSIX system with Linux's gettid belongs here.

#include <errno.h>
#include <pthread.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <climits>
#include <memory>

#include "../tav_process_os.h"
#include "tav_memmgr.h"

namespace tav::os {

uint32_t currentProcessId() { return static_cast<uint32_t>(getpid()); }

// The thread id costs a system call, and trace records ask for it every time: keep it per thread.
uint32_t currentThreadId() {
  // The initial-exec model reads the variable without a call into the dynamic linker.
  static thread_local uint32_t cached __attribute__((tls_model("initial-exec"))) = 0;
  if (cached == 0) cached = static_cast<uint32_t>(syscall(SYS_gettid));
  return cached;
}

// A thread-specific key whose destructor runs when a thread with a value ends.
bool callAtThreadEnd(void (*atEnd)(void* value), void* value) {
  struct Key {
    pthread_key_t key;
    bool made;
  };
  static const Key threadEnd = [atEnd] {
    Key made{};
    made.made = pthread_key_create(&made.key, atEnd) == 0;
    return made;
  }();
  return threadEnd.made && pthread_setspecific(threadEnd.key, value) == 0;
}

OsStatus killProcess(uint32_t processId) {
  // kill() gives 0 and negative ids the meaning "a whole process group"; no such id names a
  // single process, so none can be reached.
  if (processId == 0 || processId > static_cast<uint32_t>(INT_MAX)) {
    return failureStatus(OsFailure::notFound);
  }
  if (::kill(static_cast<pid_t>(processId), SIGKILL) == 0) return kOsSuccess;
  const OsStatus status = statusFromErrno(errno);
  // A process of another user is as far out of reach as one that does not exist.
  return status.is(OsFailure::accessDenied) ? OsStatus{OsFailure::notFound, status.code} : status;
}

const char* getEnvironment(const char* name) { return ::getenv(name); }

// setenv and unsetenv copy what they are given, so the environment never points into a buffer
// that its owner may free. setenv wants the name apart: it is copied out of the assignment, on
// the stack when it is short, as environment names almost always are.
OsStatus putEnvironment(const char* assignment) {
  const char* equals = strchr(assignment, '=');
  if (equals == nullptr) return ::unsetenv(assignment) == 0 ? kOsSuccess : statusFromErrno(errno);
  const size_t nameLength = static_cast<size_t>(equals - assignment);
  char shortName[64];
  std::unique_ptr<char, decltype(&tavFree)> longName(nullptr, &tavFree);
  char* name = shortName;
  if (nameLength >= sizeof shortName) {
    longName.reset(static_cast<char*>(tavMalloc(nameLength + 1)));
    name = longName.get();
  }
  memcpy(name, assignment, nameLength);
  name[nameLength] = '\0';
  return ::setenv(name, equals + 1, 1) == 0 ? kOsSuccess : statusFromErrno(errno);
}

}  // namespace tav::os
