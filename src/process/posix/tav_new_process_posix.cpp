// tav_new_process_posix.cpp - starting programs with posix_spawn.
//
// Only code valid on every POSIX system belongs here; the descriptor clean-up uses the C
// library's closefrom action where there is one (glibc 2.34 and later).

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include "../tav_process_os.h"

// glibc 2.34 and later can close every descriptor from a number on in the spawned child.
#if defined(__GLIBC__) && defined(__GLIBC_PREREQ)
#if __GLIBC_PREREQ(2, 34)
#define TAV_HAVE_SPAWN_CLOSEFROM 1
#endif
#endif

extern char** environ;

namespace tav::os {

namespace {

// Descriptors above standard error must not reach the child, those the caller opened without
// close-on-exec included.
int closeInheritedDescriptors(posix_spawn_file_actions_t* actions) {
#ifdef TAV_HAVE_SPAWN_CLOSEFROM
  return posix_spawn_file_actions_addclosefrom_np(actions, 3);
#else
  // Without it, each open descriptor that would survive exec is closed by its own action. The
  // list is read from /proc where there is one; a descriptor opened meanwhile by another thread
  // is that thread's to mark close-on-exec.
  DIR* list = opendir("/proc/self/fd");
  if (list == nullptr) return 0;
  const int own = dirfd(list);
  int failure = 0;
  while (const dirent* entry = readdir(list)) {
    const int descriptor = atoi(entry->d_name);
    if (descriptor <= 2 || descriptor == own) continue;
    const int flags = fcntl(descriptor, F_GETFD);
    if (flags >= 0 && (flags & FD_CLOEXEC) == 0 && failure == 0) {
      failure = posix_spawn_file_actions_addclose(actions, descriptor);
    }
  }
  closedir(list);
  return failure;
#endif
}

// The child starts with no signal blocked, whatever the calling thread blocks.
int prepareAttributes(posix_spawnattr_t* attributes) {
  sigset_t none;
  sigemptyset(&none);
  int failure = posix_spawnattr_setsigmask(attributes, &none);
  if (failure == 0) failure = posix_spawnattr_setflags(attributes, POSIX_SPAWN_SETSIGMASK);
  return failure;
}

// waitpid, resumed when a signal interrupts it.
pid_t waitForProcess(pid_t process, int* status) {
  pid_t ended;
  do {
    ended = waitpid(process, status, 0);
  } while (ended < 0 && errno == EINTR);
  return ended;
}

// What the intermediate process reports back: the program's id, or why it could not start.
struct SpawnReport {
  int32_t failure;
  int32_t processId;
};

OsStatus spawnDetached(const char* const* arguments, const posix_spawn_file_actions_t* actions,
                       const posix_spawnattr_t* attributes, uint32_t* result) {
  int channel[2];
  if (pipe2(channel, O_CLOEXEC) != 0) return statusFromErrno(errno);
  // The intermediate process starts the program and ends at once. Its end is collected here;
  // the program becomes the child of the system's reaper, which collects it in turn.
  const pid_t intermediate = fork();
  if (intermediate == 0) {
    SpawnReport report{0, 0};
    pid_t program = 0;
    report.failure = posix_spawnp(&program, arguments[0], actions, attributes,
                                  const_cast<char* const*>(arguments), environ);
    report.processId = program;
    const ssize_t ignored = write(channel[1], &report, sizeof report);
    (void)ignored;
    _exit(0);
  }
  const int forkFailure = intermediate < 0 ? errno : 0;
  close(channel[1]);
  SpawnReport report{ECHILD, 0};
  if (intermediate > 0) {
    ssize_t got;
    do {
      got = read(channel[0], &report, sizeof report);
    } while (got < 0 && errno == EINTR);
    if (got != static_cast<ssize_t>(sizeof report)) report = {ECHILD, 0};
    int ignored;
    waitForProcess(intermediate, &ignored);
  }
  close(channel[0]);
  if (forkFailure != 0) return statusFromErrno(forkFailure);
  if (report.failure != 0) return statusFromErrno(report.failure);
  *result = static_cast<uint32_t>(report.processId);
  return kOsSuccess;
}

OsStatus spawnAndWait(const char* const* arguments, const posix_spawn_file_actions_t* actions,
                      const posix_spawnattr_t* attributes, uint32_t* result) {
  pid_t program = 0;
  const int failure = posix_spawnp(&program, arguments[0], actions, attributes,
                                   const_cast<char* const*>(arguments), environ);
  if (failure != 0) return statusFromErrno(failure);
  int status = 0;
  if (waitForProcess(program, &status) < 0) return statusFromErrno(errno);
  if (WIFEXITED(status)) {
    *result = static_cast<uint32_t>(WEXITSTATUS(status));
  } else {
    *result = 128u + static_cast<uint32_t>(WTERMSIG(status));
  }
  return kOsSuccess;
}

}  // namespace

OsStatus startProcess(const ProcessStart& start, uint32_t* result) {
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  int failure = posix_spawn_file_actions_init(&actions);
  if (failure != 0) return statusFromErrno(failure);
  failure = posix_spawnattr_init(&attributes);
  if (failure != 0) {
    posix_spawn_file_actions_destroy(&actions);
    return statusFromErrno(failure);
  }
  failure = closeInheritedDescriptors(&actions);
  if (failure == 0) failure = prepareAttributes(&attributes);
  OsStatus status = statusFromErrno(failure);
  if (failure == 0) {
    status = start.wait ? spawnAndWait(start.arguments, &actions, &attributes, result)
                        : spawnDetached(start.arguments, &actions, &attributes, result);
  }
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  return status;
}

}  // namespace tav::os
