// tav_file_io_posix.cpp - the low-level file calls on POSIX.
//
// Only code valid on every POSIX system belongs here.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

#include "../tav_file_io_os.h"

namespace tav::os {

namespace {

OsStatus lastErrno() { return statusFromErrno(errno); }

int openRetrying(const char* name, int flags, mode_t permissions = S_IRUSR | S_IWUSR) {
  int handle;
  do {
    handle = ::open(name, flags | O_CLOEXEC, permissions);
  } while (handle == -1 && errno == EINTR);
  return handle;
}

// POSIX opens a directory for reading; Windows does not. Refuse it here too, so that both report
// it when opening rather than on the first read. Opened without waiting for a writer, a pipe
// then reads blocking as usual.
OsStatus openForReading(const char* name, int* handle) {
  const int opened = openRetrying(name, O_RDONLY | O_NONBLOCK);
  if (opened == -1) return lastErrno();
  struct stat status {};
  OsStatus refused = kOsSuccess;
  if (::fstat(opened, &status) == -1) {
    refused = lastErrno();
  } else if (S_ISDIR(status.st_mode)) {
    refused = {OsFailure::isDirectory, EISDIR};
  } else if (::fcntl(opened, F_SETFL, ::fcntl(opened, F_GETFL) & ~O_NONBLOCK) == -1) {
    refused = lastErrno();
  }
  if (!refused.ok()) {
    ::close(opened);
    return refused;
  }
  *handle = opened;
  return kOsSuccess;
}

size_t chunkOf(uint64_t length) {
  return length > SSIZE_MAX ? static_cast<size_t>(SSIZE_MAX) : static_cast<size_t>(length);
}

}  // namespace

OsStatus openFile(const char* name, FileOpening opening, int* handle) {
  if (opening == FileOpening::read) return openForReading(name, handle);
  const int flags = opening == FileOpening::append ? (O_WRONLY | O_APPEND | O_CREAT)
                                                   : (O_WRONLY | O_CREAT | O_EXCL);
  const mode_t everyone = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
  const int opened = opening == FileOpening::createNewDefault ? openRetrying(name, flags, everyone)
                                                              : openRetrying(name, flags);
  if (opened == -1) return lastErrno();
  *handle = opened;
  return kOsSuccess;
}

OsStatus readFile(int handle, uint8_t* buffer, uint64_t capacity, uint64_t* count) {
  ssize_t result;
  do {
    result = ::read(handle, buffer, chunkOf(capacity));
  } while (result == -1 && errno == EINTR);
  *count = result > 0 ? static_cast<uint64_t>(result) : 0;
  return result == -1 ? lastErrno() : kOsSuccess;
}

OsStatus writeFile(int handle, const uint8_t* bytes, uint64_t length, uint64_t* written) {
  *written = 0;
  while (*written < length) {
    const ssize_t result = ::write(handle, bytes + *written, chunkOf(length - *written));
    if (result > 0) {
      *written += static_cast<uint64_t>(result);
    } else if (result == 0) {
      return {OsFailure::diskFull, ENOSPC};
    } else if (errno != EINTR) {
      return lastErrno();
    }
  }
  return kOsSuccess;
}

OsStatus fileSizeOf(int handle, uint64_t* size) {
  struct stat status {};
  if (::fstat(handle, &status) == -1) return lastErrno();
  *size = static_cast<uint64_t>(status.st_size);
  return kOsSuccess;
}

OsStatus truncateFile(int handle, uint64_t size) {
  int result;
  do {
    result = ::ftruncate(handle, static_cast<off_t>(size));
  } while (result == -1 && errno == EINTR);
  return result == -1 ? lastErrno() : kOsSuccess;
}

OsStatus flushFileToDisk(int handle) { return ::fsync(handle) == -1 ? lastErrno() : kOsSuccess; }

OsStatus closeFile(int handle) { return ::close(handle) == -1 ? lastErrno() : kOsSuccess; }

}  // namespace tav::os
