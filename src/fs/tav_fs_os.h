// tav_fs_os.h - the operating-system calls of the file-name classes.
//
// Implemented once per platform in posix/ and win32/; the generic files call only these.

#ifndef TAV_FS_OS_H
#define TAV_FS_OS_H

#include "tav_filename.h"

namespace tav::os {

// Backslash style on Windows, slash style on POSIX.
TavEnPathStyle nativePathStyle();

// Whether a file or directory of that name exists (the C runtime's access in existence mode).
bool pathExists(const char* path);

// The environment variables that name the temporary directory, in the order they are asked,
// ending with a null entry; and the directory to use when none of them is set.
const char* const* temporaryDirectoryVariables();
const char* fallbackTemporaryDirectory();

}  // namespace tav::os

#endif  // TAV_FS_OS_H
