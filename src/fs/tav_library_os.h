// tav_library_os.h - loading dynamic libraries and finding their entry points.
//
// Implemented once per platform in posix/ and win32/. The dynamic-library classes and every
// part of the library that loads an optional system library at run time go through these calls.

#ifndef TAV_LIBRARY_OS_H
#define TAV_LIBRARY_OS_H

#include <cstddef>

#include "../core/tav_os_status.h"

namespace tav::os {

// An opaque handle of a loaded library; null stands for none.
using LibraryHandle = void*;

// Loads the library of that name or path, resolving every symbol at once and keeping its symbols
// to itself. A name without a directory is found by the system's own library search. On failure
// *handle is null, the status carries the system's code (errno on POSIX, GetLastError on
// Windows), and when detail is not null the system's own words for the failure are copied into
// it (cut to detailSize - 1 characters, always terminated).
OsStatus openLibrary(const char* name, LibraryHandle* handle, char* detail = nullptr,
                     size_t detailSize = 0);

// The address of the named entry point, or null when the library has none of that name.
void* findLibrarySymbol(LibraryHandle handle, const char* symbol);

// Unloads a library; null is ignored.
void closeLibrary(LibraryHandle handle);

}  // namespace tav::os

#endif  // TAV_LIBRARY_OS_H
