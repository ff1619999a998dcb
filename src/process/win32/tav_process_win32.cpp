// tav_process_win32.cpp - process identities, kill and the environment on Windows.
//
// Only code valid on every 64-bit Windows belongs here.

#include <windows.h>

#include <cstdlib>
#include <cstring>

#include "../tav_process_os.h"

namespace tav::os {

uint32_t currentProcessId() { return GetCurrentProcessId(); }

uint32_t currentThreadId() { return GetCurrentThreadId(); }

KillResult killProcess(uint32_t processId) {
  HANDLE process = OpenProcess(PROCESS_TERMINATE, FALSE, processId);
  if (process == nullptr) return KillResult::Unreachable;
  const BOOL ended = TerminateProcess(process, 0);
  CloseHandle(process);
  return ended ? KillResult::Ended : KillResult::Refused;
}

const char* getEnvironment(const char* name) { return std::getenv(name); }

// _putenv copies its argument. It removes a variable when given "NAME=", and refuses a bare
// name; a bare name therefore becomes "NAME=", so that removal works as on POSIX.
// Variable names are at most 40 characters.
bool putEnvironment(const char* assignment) {
  if (std::strchr(assignment, '=') == nullptr) {
    char removal[64];
    const size_t nameLength = std::strlen(assignment);
    if (nameLength + 2 > sizeof(removal)) return false;
    std::memcpy(removal, assignment, nameLength);
    removal[nameLength] = '=';
    removal[nameLength + 1] = '\0';
    return _putenv(removal) != -1;
  }
  return _putenv(assignment) != -1;
}

}  // namespace tav::os
