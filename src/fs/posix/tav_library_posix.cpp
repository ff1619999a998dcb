// tav_library_posix.cpp - dynamic libraries through dlopen, dlsym and dlclose.

#include <dlfcn.h>

#include <cerrno>
#include <cstring>

#include "../tav_library_os.h"

namespace tav::os {

OsStatus openLibrary(const char* name, LibraryHandle* handle, char* detail, size_t detailSize) {
  errno = 0;
  *handle = dlopen(name, RTLD_NOW | RTLD_LOCAL);
  if (*handle != nullptr) return kOsSuccess;
  // glibc hands out the errno of the step that failed (ENOENT for a missing file) only when
  // dlerror is asked, so the text comes first. A file that opened but is no library leaves
  // none, and counts as not executable.
  const char* text = dlerror();
  int code = errno != 0 ? errno : ENOEXEC;
  if (detail != nullptr && detailSize > 0) {
    std::strncpy(detail, text != nullptr ? text : "", detailSize - 1);
    detail[detailSize - 1] = '\0';
  }
  return statusFromErrno(code);
}

void* findLibrarySymbol(LibraryHandle handle, const char* symbol) {
  return handle != nullptr ? dlsym(handle, symbol) : nullptr;
}

void closeLibrary(LibraryHandle handle) {
  if (handle != nullptr) dlclose(handle);
}

}  // namespace tav::os
