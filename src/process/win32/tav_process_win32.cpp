// tav_process_win32.cpp - process identities, kill and the environment on Windows.
//
// Only code valid on every 64-bit Windows belongs here.

#include <windows.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "../tav_process_os.h"
#include "tav_memmgr.h"

namespace tav::os {

uint32_t currentProcessId() { return GetCurrentProcessId(); }

uint32_t currentThreadId() { return GetCurrentThreadId(); }


// A fiber-local slot: the system calls its callback when a thread with a value in it ends. The
// library stays loaded from then on, so that the callback is still there when a thread ends.
bool callAtThreadEnd(void (*atEnd)(void* value), void* value) {
  static void (*function)(void*) = nullptr;
  static const DWORD slot = [atEnd] {
    function = atEnd;
    HMODULE library = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                       reinterpret_cast<LPCSTR>(&callAtThreadEnd), &library);
    return FlsAlloc([](PVOID ending) { function(ending); });
  }();
  return slot != FLS_OUT_OF_INDEXES && FlsSetValue(slot, value) != 0;
}

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
// name; a bare name therefore becomes "NAME=", so that removal works as on POSIX. That text is
// built on the stack when the name is short, as environment names almost always are.
OsStatus putEnvironment(const char* assignment) {
  if (std::strchr(assignment, '=') != nullptr) {
    return _putenv(assignment) != -1 ? kOsSuccess : statusFromErrno(errno);
  }
  const size_t nameLength = std::strlen(assignment);
  char shortRemoval[64];
  std::unique_ptr<char, decltype(&tavFree)> longRemoval(nullptr, &tavFree);
  char* removal = shortRemoval;
  if (nameLength + 2 > sizeof shortRemoval) {
    longRemoval.reset(static_cast<char*>(tavMalloc(nameLength + 2)));
    removal = longRemoval.get();
  }
  std::memcpy(removal, assignment, nameLength);
  removal[nameLength] = '=';
  removal[nameLength + 1] = '\0';
  return _putenv(removal) != -1 ? kOsSuccess : statusFromErrno(errno);
}

}  // namespace tav::os
