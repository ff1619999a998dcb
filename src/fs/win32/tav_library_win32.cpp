// tav_library_win32.cpp - dynamic libraries through LoadLibraryA, GetProcAddress and FreeLibrary.

#include <windows.h>

#include <cstring>

#include "../tav_library_os.h"

namespace tav::os {

OsStatus openLibrary(const char* name, LibraryHandle* handle, char* detail, size_t detailSize) {
  HMODULE module = LoadLibraryA(name);
  *handle = reinterpret_cast<LibraryHandle>(module);
  if (module != nullptr) return kOsSuccess;
  DWORD code = GetLastError();
  if (detail != nullptr && detailSize > 0) {
    DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                  nullptr, code, 0, detail, static_cast<DWORD>(detailSize),
                                  nullptr);
    // The system's text ends in a line break; a report adds its own.
    while (length > 0 && (detail[length - 1] == '\n' || detail[length - 1] == '\r')) --length;
    detail[length < detailSize ? length : detailSize - 1] = '\0';
  }
  return statusFromWindowsError(code);
}

void* findLibrarySymbol(LibraryHandle handle, const char* symbol) {
  if (handle == nullptr) return nullptr;
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle), symbol));
}

void closeLibrary(LibraryHandle handle) {
  if (handle != nullptr) FreeLibrary(static_cast<HMODULE>(handle));
}

}  // namespace tav::os
