// tav_new_process_win32.cpp - starting programs with CreateProcessA.
//
// Only code valid on every 64-bit Windows belongs here.

#include <windows.h>

#include <cstring>
#include <memory>

#include "../tav_command_line.h"
#include "../tav_process_os.h"
#include "tav_memmgr.h"
#include "tav_newprocess.h"

namespace tav::os {

namespace {

// The command interpreter reads a batch file's command line by its own rules: refuse what it
// would read otherwise than the program meant.
bool refusesBatchArguments(const char* const* arguments) {
  if (!tav::process::isBatchFileName(arguments[0])) return false;
  for (const char* const* argument = arguments + 1; *argument != nullptr; ++argument) {
    if (tav::process::isUnsafeBatchArgument(*argument)) return true;
  }
  return false;
}

}  // namespace

OsStatus startProcess(const ProcessStart& start, uint32_t* result) {
  if (refusesBatchArguments(start.arguments)) {
    return {OsFailure::failed, TAV_NEWPROCESS_UNSAFE_BATCH_ARGUMENT};
  }
  STARTUPINFOA startup;
  ZeroMemory(&startup, sizeof startup);
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USECOUNTCHARS;
  startup.dwXCountChars = 80;
  startup.dwYCountChars = 256;
  DWORD flags = CREATE_DEFAULT_ERROR_MODE | NORMAL_PRIORITY_CLASS;
  if (start.newConsole) {
    flags |= CREATE_NEW_CONSOLE;
  } else if (!start.wait) {
    flags |= DETACHED_PROCESS;
  }
  // CreateProcessA may write into the command line, so it gets a copy of its own.
  const size_t length = std::strlen(start.commandLine);
  std::unique_ptr<char, decltype(&tavFree)> commandLine(static_cast<char*>(tavMalloc(length + 1)),
                                                        &tavFree);
  std::memcpy(commandLine.get(), start.commandLine, length + 1);
  PROCESS_INFORMATION process;
  ZeroMemory(&process, sizeof process);
  if (!CreateProcessA(nullptr, commandLine.get(), nullptr, nullptr, FALSE, flags, nullptr, nullptr,
                      &startup, &process)) {
    const DWORD code = GetLastError();
    return {OsFailure::failed, static_cast<int32_t>(code)};
  }
  OsStatus status = kOsSuccess;
  if (start.wait) {
    DWORD exitCode = 0;
    if (WaitForSingleObject(process.hProcess, INFINITE) == WAIT_FAILED ||
        !GetExitCodeProcess(process.hProcess, &exitCode)) {
      status = {OsFailure::failed, static_cast<int32_t>(GetLastError())};
    }
    *result = exitCode;
  } else {
    *result = process.dwProcessId;
  }
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return status;
}

}  // namespace tav::os
