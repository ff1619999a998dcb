// tav_test_child_win32.cpp - the waiting child is this test program started again with a
// variable that makes it wait before any test runs.

#include <windows.h>

#include <cstdlib>
#include <map>

#include "../tav_test_child.h"

namespace tav::test {
namespace {

const char kWaitVariable[] = "TAV_TEST_CHILD_WAIT";

// Runs before main() in the child and never returns there.
const bool waitsForever = [] {
  if (std::getenv(kWaitVariable) != nullptr) {
    for (;;) Sleep(INFINITE);
  }
  return false;
}();

std::map<uint32_t, HANDLE>& children() {
  static std::map<uint32_t, HANDLE> handles;
  return handles;
}

}  // namespace

uint32_t startWaitingChild() {
  char program[MAX_PATH];
  if (GetModuleFileNameA(nullptr, program, sizeof(program)) == 0) return 0;
  SetEnvironmentVariableA(kWaitVariable, "1");
  STARTUPINFOA startup{};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process{};
  const BOOL started = CreateProcessA(program, nullptr, nullptr, nullptr, FALSE, 0, nullptr,
                                      nullptr, &startup, &process);
  SetEnvironmentVariableA(kWaitVariable, nullptr);
  if (!started) return 0;
  CloseHandle(process.hThread);
  children()[process.dwProcessId] = process.hProcess;
  return process.dwProcessId;
}

bool waitForChildEnd(uint32_t processId, uint32_t timeoutMilliseconds) {
  const auto child = children().find(processId);
  if (child == children().end()) return false;
  if (WaitForSingleObject(child->second, timeoutMilliseconds) != WAIT_OBJECT_0) return false;
  CloseHandle(child->second);
  children().erase(child);
  return true;
}

uint32_t nativeProcessId() { return GetCurrentProcessId(); }

}  // namespace tav::test
