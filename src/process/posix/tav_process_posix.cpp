// tav_process_posix.cpp - process identities, kill and the environment on POSIX.
//
// Only code valid on every POSIX system with Linux's gettid belongs here.

#include <errno.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <climits>

#include "../tav_process_os.h"

namespace tav::os {

uint32_t currentProcessId() { return static_cast<uint32_t>(getpid()); }

// The thread id costs a system call, and trace records ask for it every time: keep it per thread.
uint32_t currentThreadId() {
  // The initial-exec model reads the variable without a call into the dynamic linker.
  static thread_local uint32_t cached __attribute__((tls_model("initial-exec"))) = 0;
  if (cached == 0) cached = static_cast<uint32_t>(syscall(SYS_gettid));
  return cached;
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
// that its owner may free. Variable names are at most 40 characters.
OsStatus putEnvironment(const char* assignment) {
  const char* equals = strchr(assignment, '=');
  if (equals == nullptr) return ::unsetenv(assignment) == 0 ? kOsSuccess : statusFromErrno(errno);
  char name[64];
  const size_t nameLength = static_cast<size_t>(equals - assignment);
  if (nameLength >= sizeof(name)) return failureStatus(OsFailure::invalidName);
  memcpy(name, assignment, nameLength);
  name[nameLength] = '\0';
  return ::setenv(name, equals + 1, 1) == 0 ? kOsSuccess : statusFromErrno(errno);
}

}  // namespace tav::os
