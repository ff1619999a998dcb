// tav_trace_posix.cpp - the trace file calls on POSIX.
//
// Only code valid on every POSIX system belongs here.

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>

#include "../tav_trace_os.h"

namespace tav::os {

int openTraceFileForAppend(const char* name, int* errorNumber) {
  int handle;
  do {
    handle = ::open(name, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
  } while (handle == -1 && errno == EINTR);
  if (handle == -1) *errorNumber = errno;
  return handle;
}

uint64_t writeTraceFile(int handle, const uint8_t* bytes, uint64_t length, int* errorNumber) {
  uint64_t written = 0;
  while (written < length) {
    const uint64_t remaining = length - written;
    const size_t chunk =
        remaining > SSIZE_MAX ? static_cast<size_t>(SSIZE_MAX) : static_cast<size_t>(remaining);
    const ssize_t result = ::write(handle, bytes + written, chunk);
    if (result > 0) {
      written += static_cast<uint64_t>(result);
    } else if (result == -1 && errno == EINTR) {
      continue;
    } else {
      // A regular file that takes no bytes without an error is full.
      *errorNumber = result == 0 ? ENOSPC : errno;
      break;
    }
  }
  return written;
}

int64_t traceFileSize(int handle, int* errorNumber) {
  struct stat status {};
  if (::fstat(handle, &status) == -1) {
    *errorNumber = errno;
    return -1;
  }
  return static_cast<int64_t>(status.st_size);
}

bool truncateTraceFile(int handle, uint64_t size, int* errorNumber) {
  int result;
  do {
    result = ::ftruncate(handle, static_cast<off_t>(size));
  } while (result == -1 && errno == EINTR);
  if (result == -1) *errorNumber = errno;
  return result == 0;
}

int openTraceFileForRead(const char* name, int* errorNumber) {
  int handle;
  do {
    handle = ::open(name, O_RDONLY | O_CLOEXEC);
  } while (handle == -1 && errno == EINTR);
  if (handle == -1) {
    *errorNumber = errno;
    return -1;
  }
  // POSIX opens a directory for reading; Windows does not. Refuse it here too, so that both
  // report it when opening rather than on the first read.
  struct stat status {};
  if (::fstat(handle, &status) == -1 || S_ISDIR(status.st_mode)) {
    *errorNumber = S_ISDIR(status.st_mode) ? EISDIR : errno;
    ::close(handle);
    return -1;
  }
  return handle;
}

int64_t readTraceFile(int handle, uint8_t* buffer, uint64_t capacity, int* errorNumber) {
  const size_t chunk =
      capacity > SSIZE_MAX ? static_cast<size_t>(SSIZE_MAX) : static_cast<size_t>(capacity);
  ssize_t result;
  do {
    result = ::read(handle, buffer, chunk);
  } while (result == -1 && errno == EINTR);
  if (result == -1) *errorNumber = errno;
  return static_cast<int64_t>(result);
}

int closeTraceFile(int handle) { return ::close(handle) == 0 ? 0 : -1; }

}  // namespace tav::os
