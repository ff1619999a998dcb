// tav_fs_posix.cpp - the file-name classes' operating-system calls on POSIX.
//
// Only code valid on every POSIX system belongs here.

#include <unistd.h>

#include "../tav_fs_os.h"

namespace tav::os {

TavEnPathStyle nativePathStyle() { return TAV_PATH_STYLE_SLASH; }

bool pathExists(const char* path) { return ::access(path, F_OK) == 0; }

const char* const* temporaryDirectoryVariables() {
  static const char* const names[] = {"TMP", "TEMP", "TMPDIR", nullptr};
  return names;
}

const char* fallbackTemporaryDirectory() { return "/tmp/"; }

}  // namespace tav::os
