// tav_test_self_child_win32.cpp - the child is this program started again with one more
// variable in its environment.

#include <windows.h>

#include <map>

#include "../tav_test_self_child.h"

namespace tav::test {
namespace {

// The children's process handles, kept open so that a child's exit code outlives the child.
std::map<uint32_t, HANDLE>& children() {
  static std::map<uint32_t, HANDLE> handles;
  return handles;
}

// Takes the handle of a child out of the table; null for a process that is no child.
HANDLE takeChild(uint32_t processId) {
  const auto found = children().find(processId);
  if (found == children().end()) return nullptr;
  const HANDLE child = found->second;
  children().erase(found);
  return child;
}

}  // namespace

uint32_t startSelfChild(const char* variable, const char* value) {
  char program[MAX_PATH];
  if (GetModuleFileNameA(nullptr, program, sizeof(program)) == 0) return 0;
  SetEnvironmentVariableA(variable, value);
  STARTUPINFOA startup{};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process{};
  const BOOL started = CreateProcessA(program, nullptr, nullptr, nullptr, FALSE, 0, nullptr,
                                      nullptr, &startup, &process);
  SetEnvironmentVariableA(variable, nullptr);
  if (!started) return 0;
  CloseHandle(process.hThread);
  children()[process.dwProcessId] = process.hProcess;
  return process.dwProcessId;
}

bool killChild(uint32_t processId) {
  const HANDLE child = takeChild(processId);
  if (child == nullptr) return false;
  const bool ended =
      TerminateProcess(child, 9) != 0 && WaitForSingleObject(child, 10000) == WAIT_OBJECT_0;
  CloseHandle(child);
  return ended;
}

bool waitForChildExit(uint32_t processId, uint32_t timeoutMilliseconds, int* exitCode) {
  const auto found = children().find(processId);
  if (found == children().end()) return false;
  DWORD code = 0;
  if (WaitForSingleObject(found->second, timeoutMilliseconds) != WAIT_OBJECT_0 ||
      GetExitCodeProcess(found->second, &code) == 0) {
    return false;
  }
  CloseHandle(takeChild(processId));
  *exitCode = static_cast<int>(code);
  return true;
}

uint32_t nativeProcessId() { return GetCurrentProcessId(); }

}  // namespace tav::test
