// tav_process_win32.cpp - process identities, kill and the environment on Windows.
//
// Only code valid on every 64-bit Windows belongs here.

#include <windows.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "../tav_process_os.h"

namespace tav::os {

uint32_t currentProcessId() { return GetCurrentProcessId(); }

uint32_t currentThreadId() { return GetCurrentThreadId(); }

OsStatus killProcess(uint32_t processId) {
  HANDLE process = OpenProcess(PROCESS_TERMINATE, FALSE, processId);
  // No such process (ERROR_INVALID_PARAMETER) or not ours (ERROR_ACCESS_DENIED): out of reach.
  if (process == nullptr) return {OsFailure::notFound, static_cast<int32_t>(GetLastError())};
  const BOOL ended = TerminateProcess(process, 0);
  const DWORD error = GetLastError();
  CloseHandle(process);
  if (ended) return kOsSuccess;
  // Reached, so whatever went wrong counts as a failure to end it, never as out of reach.
  const OsStatus status = statusFromWindowsError(error);
  return status.is(OsFailure::notFound) ? OsStatus{OsFailure::failed, status.code} : status;
}

const char* getEnvironment(const char* name) { return std::getenv(name); }

// _putenv copies its argument. It removes a variable when given "NAME=", and refuses a bare
// name; a bare name therefore becomes "NAME=", so that removal works as on POSIX.
// Variable names are at most 40 characters.
OsStatus putEnvironment(const char* assignment) {
  if (std::strchr(assignment, '=') == nullptr) {
    char removal[64];
    const size_t nameLength = std::strlen(assignment);
    if (nameLength + 2 > sizeof(removal)) return failureStatus(OsFailure::invalidName);
    std::memcpy(removal, assignment, nameLength);
    removal[nameLength] = '=';
    removal[nameLength + 1] = '\0';
    return _putenv(removal) != -1 ? kOsSuccess : statusFromErrno(errno);
  }
  return _putenv(assignment) != -1 ? kOsSuccess : statusFromErrno(errno);
}

}  // namespace tav::os
