// tav_exe_search_win32.cpp - finding programs and libraries with SearchPathA.
//
// Only code valid on every 64-bit Windows belongs here.

#include <windows.h>

#include "../tav_exe_search_os.h"

namespace tav::os {

const char* programExtension() { return "EXE"; }

const char* libraryExtension() { return ".DLL"; }

OsStatus searchProgram(const char* name, char* found, size_t size) {
  // Into a buffer of our own, so that a name too long for the caller's leaves it untouched.
  char result[MAX_PATH + 1];
  const DWORD length = SearchPathA(nullptr, name, nullptr, sizeof result, result, nullptr);
  if (length == 0) return {OsFailure::notFound, static_cast<int32_t>(GetLastError())};
  if (length >= sizeof result || length >= size) return failureStatus(OsFailure::notFound);
  CopyMemory(found, result, length + 1);
  return kOsSuccess;
}

OsStatus searchLibrary(const char* name, char* found, size_t size) {
  return searchProgram(name, found, size);
}

}  // namespace tav::os
