// tav_test_child_posix.cpp - the waiting child is a fork that pauses until a signal ends it.

#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include "../tav_test_child.h"

namespace tav::test {

uint32_t startWaitingChild() {
  const pid_t child = fork();
  if (child == 0) {
    for (;;) pause();
  }
  return child > 0 ? static_cast<uint32_t>(child) : 0;
}

bool waitForChildEnd(uint32_t processId, uint32_t timeoutMilliseconds) {
  for (uint32_t waited = 0; waited <= timeoutMilliseconds; waited += 10) {
    int status = 0;
    if (waitpid(static_cast<pid_t>(processId), &status, WNOHANG) == static_cast<pid_t>(processId)) {
      return true;
    }
    const timespec step{0, 10 * 1000 * 1000};
    nanosleep(&step, nullptr);
  }
  return false;
}

uint32_t nativeProcessId() { return static_cast<uint32_t>(getpid()); }

}  // namespace tav::test
