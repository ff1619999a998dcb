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

#include "../tav_fs_os.h"

namespace tav::os {

namespace {

FsStatus statusFromErrno(int error) {
  switch (error) {
    case 0: return FsStatus::ok;
    case ENOENT:
    case ENOTDIR: return FsStatus::notFound;
    case EACCES:
    case EPERM:
    case EROFS:
    case EBUSY:
    case ETXTBSY: return FsStatus::accessDenied;
    case EEXIST: return FsStatus::alreadyExists;
    default: return FsStatus::failed;
  }
}

FsStatus statusOf(int result) { return result == 0 ? FsStatus::ok : statusFromErrno(errno); }

const char* baseNameOf(const char* path) {
  const char* slash = std::strrchr(path, '/');
  return slash != nullptr ? slash + 1 : path;
}

// Writes all of count bytes, resuming after signals and short writes.
bool writeAll(int descriptor, const char* data, size_t count) {
  while (count != 0) {
    const ssize_t written = ::write(descriptor, data, count);
    if (written < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    data += written;
    count -= static_cast<size_t>(written);
  }
  return true;
}

bool copyBytes(int from, int to) {
  char block[64 * 1024];
  for (;;) {
    const ssize_t count = ::read(from, block, sizeof block);
    if (count == 0) return true;
    if (count < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    if (!writeAll(to, block, static_cast<size_t>(count))) return false;
  }
}

}  // namespace

const char* pathListSeparators() { return ";:"; }

bool currentDirectory(char* buffer, size_t size) {
  if (::getcwd(buffer, size) == nullptr) return false;
  const size_t length = std::strlen(buffer);
  if (length > 1 && buffer[length - 1] == '/') buffer[length - 1] = '\0';
  return true;
}

FsStatus changeDirectory(const char* path) { return statusOf(::chdir(path)); }

FsStatus makeDirectory(const char* path) { return statusOf(::mkdir(path, 0777)); }

FsStatus removeDirectory(const char* path) { return statusOf(::rmdir(path)); }

bool isDirectory(const char* path) {
  struct stat status;
  return ::stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

bool fileTimes(const char* path, FileTimes* times) {
  struct stat status;
  if (::stat(path, &status) != 0) return false;
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
  return true;
}

bool fileSize(const char* path, uint64_t* size) {
  struct stat status;
  if (::stat(path, &status) != 0) return false;
  *size = static_cast<uint64_t>(status.st_size);
  return true;
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

bool setReadOnly(const char* path, bool readOnly) {
  struct stat status;
  if (::stat(path, &status) != 0) return false;
  const mode_t mode = readOnly ? (status.st_mode & ~S_IWUSR) : (status.st_mode | S_IWUSR);
  return ::chmod(path, mode & 07777) == 0;
}

FsStatus removeFile(const char* path) { return statusOf(::unlink(path)); }

FsStatus renameNoReplace(const char* from, const char* to) {
#if defined(RENAME_NOREPLACE)
  if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return FsStatus::ok;
  if (errno != EINVAL && errno != ENOSYS) return statusFromErrno(errno);
#endif
  // Without the kernel's help the test and the rename are two steps.
  if (::access(to, F_OK) == 0) return FsStatus::alreadyExists;
  return statusOf(::rename(from, to));
}

FsStatus copyToNewFile(const char* source, const char* target) {
  // Without O_NONBLOCK, opening a FIFO would wait for a writer; it is refused below instead.
  const int from = ::open(source, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (from < 0) return statusFromErrno(errno);
  struct stat status;
  if (::fstat(from, &status) != 0 || !S_ISREG(status.st_mode)) {
    ::close(from);
    return FsStatus::failed;
  }
  const int to = ::open(target, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (to < 0) {
    const int error = errno;
    ::close(from);
    return statusFromErrno(error);
  }
  // The data reaches the disk before the rename makes it the target, so a crash leaves the old
  // target rather than an empty new one.
  bool copied =
      copyBytes(from, to) && ::fchmod(to, status.st_mode & 07777) == 0 && ::fsync(to) == 0;
  copied = ::close(to) == 0 && copied;
  ::close(from);
  if (!copied) {
    ::unlink(target);
    return FsStatus::failed;
  }
  return FsStatus::ok;
}

FsStatus replaceFile(const char* source, const char* target) {
  return statusOf(::rename(source, target));
}

}  // namespace tav::os
