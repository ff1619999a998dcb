// tav_test_child_win32.cpp - the waiting child is this test program started again with a
// variable that makes it wait before any test runs.

#include <windows.h>

#include <cstdlib>

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
  CloseHandle(process.hProcess);
  return process.dwProcessId;
}

// A process that can no longer be opened has ended.
bool waitForChildEnd(uint32_t processId, uint32_t timeoutMilliseconds) {
  const HANDLE child = OpenProcess(SYNCHRONIZE, FALSE, processId);
  if (child == nullptr) return true;
  const bool ended = WaitForSingleObject(child, timeoutMilliseconds) == WAIT_OBJECT_0;
  CloseHandle(child);
  return ended;
}

uint32_t nativeProcessId() { return GetCurrentProcessId(); }

}  // namespace tav::test
