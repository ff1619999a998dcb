// tav_process_os.h - the operating-system calls of the process and environment classes.
//
// Implemented once per platform in posix/ and win32/; the generic files call only these.

#ifndef TAV_PROCESS_OS_H
#define TAV_PROCESS_OS_H

#include <cstdint>

namespace tav::os {

uint32_t currentProcessId();
uint32_t currentThreadId();

enum class KillResult {
  Ended,        // the process was told to end
  Unreachable,  // no such process, or not ours to end
  Refused,      // reached, but ending it failed
};
KillResult killProcess(uint32_t processId);

// The value of a variable, or null.
const char* getEnvironment(const char* name);
// Hands an assignment to the environment: "NAME=value" sets NAME, the bare "NAME" removes it.
// The text is copied; the caller's buffer may change afterwards. False when refused.
bool putEnvironment(const char* assignment);

}  // namespace tav::os

#endif  // TAV_PROCESS_OS_H
