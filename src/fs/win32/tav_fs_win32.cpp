// tav_fs_win32.cpp - the file-name classes' operating-system calls on Windows.
//
// Only code valid on every 64-bit Windows belongs here.

#include <io.h>

#include "../tav_fs_os.h"

namespace tav::os {

TavEnPathStyle nativePathStyle() { return TAV_PATH_STYLE_BACKSLASH; }

bool pathExists(const char* path) { return ::_access(path, 0) == 0; }

const char* const* temporaryDirectoryVariables() {
  static const char* const names[] = {"TMP", "TEMP", nullptr};
  return names;
}

const char* fallbackTemporaryDirectory() { return "C:\\"; }

}  // namespace tav::os
