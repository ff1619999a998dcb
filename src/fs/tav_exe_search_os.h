// tav_exe_search_os.h - where the system looks for programs and libraries, and their extensions.
//
// Implemented once per platform in posix/ and win32/; the program and library file classes
// call only these.

#ifndef TAV_EXE_SEARCH_OS_H
#define TAV_EXE_SEARCH_OS_H

#include <cstddef>

#include "../core/tav_os_status.h"

namespace tav::os {

// The extension a program name gets when it has none ("" for none).
const char* programExtension();
// The extension a library name gets when it has none.
const char* libraryExtension();

// Looks for the program name in the system's search order and writes the full name found into
// found (size characters, terminator included). notFound when no candidate qualifies or the
// full name would not fit; found is then left as it was.
OsStatus searchProgram(const char* name, char* found, size_t size);
// The same for a library. Where the system's loader searches for itself, this finds nothing
// and the loader's own search applies when the library is opened.
OsStatus searchLibrary(const char* name, char* found, size_t size);

}  // namespace tav::os

#endif  // TAV_EXE_SEARCH_OS_H
