// tav_test_self_child_posix.cpp - the child is a fork that executes this program afresh, so that
// it starts with nothing of the parent's memory but its environment.

#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include "../tav_test_self_child.h"

namespace tav::test {

uint32_t startSelfChild(const char* variable, const char* value) {
  const pid_t child = fork();
  if (child == 0) {
    setenv(variable, value, 1);
    char program[] = "/proc/self/exe";
    char* arguments[] = {program, nullptr};
    execv(program, arguments);
    _exit(127);
  }
  return child > 0 ? static_cast<uint32_t>(child) : 0;
}

bool killChild(uint32_t processId) {
  const auto child = static_cast<pid_t>(processId);
  if (kill(child, SIGKILL) != 0) return false;
  int status = 0;
  return waitpid(child, &status, 0) == child;
}

bool waitForChildExit(uint32_t processId, uint32_t timeoutMilliseconds, int* exitCode) {
  for (uint32_t waited = 0; waited <= timeoutMilliseconds; waited += 5) {
    int status = 0;
    if (waitpid(static_cast<pid_t>(processId), &status, WNOHANG) == static_cast<pid_t>(processId)) {
      *exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
      return true;
    }
    const timespec step{0, 5 * 1000 * 1000};
    nanosleep(&step, nullptr);
  }
  return false;
}

uint32_t nativeProcessId() { return static_cast<uint32_t>(getpid()); }

}  // namespace tav::test
