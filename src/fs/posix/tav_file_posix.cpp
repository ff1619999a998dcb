// tav_file_posix.cpp - files and directories on POSIX.
//
// Only code valid on every POSIX system belongs here, with Linux extras (statx for the birth
// time, renameat2 for a rename that never replaces) used where the system offers them.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "../tav_file_io_os.h"
#include "../tav_fs_os.h"

namespace tav::os {

namespace {

OsStatus statusOf(int result) { return result == 0 ? kOsSuccess : statusFromErrno(errno); }

const char* baseNameOf(const char* path) {
  const char* slash = std::strrchr(path, '/');
  return slash != nullptr ? slash + 1 : path;
}

OsStatus copyBytes(int from, int to) {
  uint8_t block[64 * 1024];
  for (;;) {
    uint64_t count = 0;
    const OsStatus read = readFile(from, block, sizeof block, &count);
    if (!read.ok() || count == 0) return read;
    uint64_t written = 0;
    const OsStatus wrote = writeFile(to, block, count, &written);
    if (!wrote.ok()) return wrote;
  }
}

// Copies the bytes and the permission bits, and waits until they have reached the disk.
OsStatus fillNewFile(int from, int to, mode_t mode) {
  const OsStatus copied = copyBytes(from, to);
  if (!copied.ok()) return copied;
  if (::fchmod(to, mode & 07777) != 0) return statusFromErrno(errno);
  return flushFileToDisk(to);
}

}  // namespace

const char* pathListSeparators() { return ";:"; }

OsStatus currentDirectory(char* buffer, size_t size) {
  if (::getcwd(buffer, size) == nullptr) return statusFromErrno(errno);
  const size_t length = std::strlen(buffer);
  if (length > 1 && buffer[length - 1] == '/') buffer[length - 1] = '\0';
  return kOsSuccess;
}

OsStatus changeDirectory(const char* path) { return statusOf(::chdir(path)); }

OsStatus makeDirectory(const char* path) { return statusOf(::mkdir(path, 0777)); }

OsStatus removeDirectory(const char* path) { return statusOf(::rmdir(path)); }

bool isDirectory(const char* path) {
  struct stat status;
  return ::stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

OsStatus fileTimes(const char* path, FileTimes* times) {
  struct stat status;
  if (::stat(path, &status) != 0) return statusFromErrno(errno);
  times->lastAccess = status.st_atime;
  times->lastModification = status.st_mtime;
  times->creation = status.st_ctime;
#if defined(STATX_BTIME)
  struct statx extended;
  if (::statx(AT_FDCWD, path, 0, STATX_BTIME, &extended) == 0 &&
      (extended.stx_mask & STATX_BTIME) != 0) {
    times->creation = static_cast<time_t>(extended.stx_btime.tv_sec);
  }
#endif
  return kOsSuccess;
}

OsStatus fileSize(const char* path, uint64_t* size) {
  struct stat status;
  if (::stat(path, &status) != 0) return statusFromErrno(errno);
  *size = static_cast<uint64_t>(status.st_size);
  return kOsSuccess;
}

bool isHidden(const char* path) {
  const char* name = baseNameOf(path);
  if (name[0] != '.' || std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) return false;
  return ::access(path, F_OK) == 0;
}

// The owner's write bit counts as well as the access test: the superuser passes the access test
// for every file, and a file made read-only should still read as read-only to it.
bool isReadOnly(const char* path) {
  struct stat status;
  if (::stat(path, &status) != 0) return true;
  return (status.st_mode & S_IWUSR) == 0 || ::access(path, W_OK) != 0;
}

OsStatus setReadOnly(const char* path, bool readOnly) {
  struct stat status;
  if (::stat(path, &status) != 0) return statusFromErrno(errno);
  const mode_t mode = readOnly ? (status.st_mode & ~S_IWUSR) : (status.st_mode | S_IWUSR);
  return statusOf(::chmod(path, mode & 07777));
}

OsStatus copyPermissions(const char* source, const char* target) {
  struct stat status;
  if (::stat(source, &status) != 0) return statusFromErrno(errno);
  return statusOf(::chmod(target, status.st_mode & 07777));
}

OsStatus removeFile(const char* path) { return statusOf(::unlink(path)); }

OsStatus renameNoReplace(const char* from, const char* to) {
#if defined(RENAME_NOREPLACE)
  if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return kOsSuccess;
  if (errno != EINVAL && errno != ENOSYS) return statusFromErrno(errno);
#endif
  // Without the kernel's help the test and the rename are two steps.
  if (::access(to, F_OK) == 0) return {OsFailure::alreadyExists, EEXIST};
  return statusOf(::rename(from, to));
}

OsStatus copyToNewFile(const char* source, const char* target) {
  int from = -1;
  const OsStatus opened = openFile(source, FileOpening::read, &from);
  if (!opened.ok()) return opened;
  struct stat status;
  if (::fstat(from, &status) != 0 || !S_ISREG(status.st_mode)) {
    closeFile(from);
    return failureStatus(OsFailure::failed);
  }
  int to = -1;
  const OsStatus created = openFile(target, FileOpening::createNew, &to);
  if (!created.ok()) {
    closeFile(from);
    return created;
  }
  // The data reaches the disk before the rename makes it the target, so a crash leaves the old
  // target rather than an empty new one.
  OsStatus copied = fillNewFile(from, to, status.st_mode);
  const OsStatus closed = closeFile(to);
  if (copied.ok()) copied = closed;
  closeFile(from);
  if (!copied.ok()) ::unlink(target);
  return copied;
}

// The rename is made durable too: the directory that now names the new file reaches the disk,
// so that after a crash the target is the new file rather than the old one, or neither.
OsStatus replaceFile(const char* source, const char* target) {
  const OsStatus renamed = statusOf(::rename(source, target));
  if (!renamed.ok()) return renamed;
  char directory[TAV_PATH_BUFFER_SIZE] = ".";
  const char* slash = std::strrchr(target, '/');
  if (slash != nullptr) {
    const size_t length = slash == target ? 1 : static_cast<size_t>(slash - target);
    if (length >= sizeof directory) return kOsSuccess;
    std::memcpy(directory, target, length);
    directory[length] = '\0';
  }
  const int handle = ::open(directory, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (handle == -1) return kOsSuccess;  // the file is in place; only its durability is unsure
  ::fsync(handle);
  ::close(handle);
  return kOsSuccess;
}

}  // namespace tav::os
