// tav_exe_search_posix.cpp - finding programs along PATH as execvp does.
//
// Only code valid on every POSIX system belongs here.

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "../tav_exe_search_os.h"

namespace tav::os {

const char* programExtension() { return ""; }

const char* libraryExtension() { return ".so"; }

namespace {

// The path execvp searches when PATH is not set: the system's default, else the classic one.
const char* defaultSearchPath() {
  static char path[256] = {};
  if (path[0] == '\0') {
    const size_t length = confstr(_CS_PATH, path, sizeof path);
    if (length == 0 || length > sizeof path) std::strcpy(path, "/bin:/usr/bin");
  }
  return path;
}

// Only what exec would run: a regular file (after links) that this process may execute. A
// directory or a plain data file passes the access test for some users, so both tests count.
bool isRunnable(const char* candidate) {
  struct stat status;
  return ::stat(candidate, &status) == 0 && S_ISREG(status.st_mode) &&
         ::access(candidate, X_OK) == 0;
}

}  // namespace

OsStatus searchProgram(const char* name, char* found, size_t size) {
  // A name with a slash in it names its directory itself: execvp does not search it.
  if (name == nullptr || *name == '\0' || std::strchr(name, '/') != nullptr) {
    return failureStatus(OsFailure::notFound);
  }
  const char* path = std::getenv("PATH");
  if (path == nullptr) path = defaultSearchPath();
  const size_t nameLength = std::strlen(name);
  char candidate[4096];
  for (const char* entry = path;; ++entry) {
    const size_t entryLength = std::strcspn(entry, ":");
    size_t length = 0;
    if (entryLength == 0) {
      // An empty entry is the current directory; the full name starts from it.
      if (::getcwd(candidate, sizeof candidate) != nullptr) length = std::strlen(candidate);
    } else if (entryLength < sizeof candidate) {
      std::memcpy(candidate, entry, entryLength);
      length = entryLength;
    }
    if (length != 0 && length + 1 + nameLength < sizeof candidate) {
      if (candidate[length - 1] != '/') candidate[length++] = '/';
      std::memcpy(candidate + length, name, nameLength + 1);
      if (length + nameLength < size && isRunnable(candidate)) {
        std::memcpy(found, candidate, length + nameLength + 1);
        return kOsSuccess;
      }
    }
    entry += entryLength;
    if (*entry == '\0') break;
  }
  return failureStatus(OsFailure::notFound);
}

OsStatus searchLibrary(const char*, char*, size_t) { return failureStatus(OsFailure::notFound); }

}  // namespace tav::os
