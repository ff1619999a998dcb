// tav_trace_win32.cpp - the trace file calls on Windows.
//
// Only code valid on every Windows system belongs here. The C runtime's low-level calls keep
// the handles and error numbers the same as on POSIX.

#include <errno.h>
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include "../tav_trace_os.h"

namespace tav::os {

namespace {

bool isDirectory(const char* name) {
  struct _stat64 status {};
  return ::_stat64(name, &status) == 0 && (status.st_mode & _S_IFDIR) != 0;
}

}  // namespace

int openTraceFileForAppend(const char* name, int* errorNumber) {
  const int handle = ::_open(name, _O_WRONLY | _O_APPEND | _O_CREAT | _O_BINARY | _O_NOINHERIT,
                             _S_IREAD | _S_IWRITE);
  if (handle == -1) *errorNumber = errno;
  return handle;
}

uint64_t writeTraceFile(int handle, const uint8_t* bytes, uint64_t length, int* errorNumber) {
  // _write takes an unsigned int count; larger pieces go in several calls.
  constexpr uint64_t kMaxChunk = 1u << 30;
  uint64_t written = 0;
  while (written < length) {
    const uint64_t remaining = length - written;
    const auto chunk = static_cast<unsigned int>(remaining > kMaxChunk ? kMaxChunk : remaining);
    const int result = ::_write(handle, bytes + written, chunk);
    if (result > 0) {
      written += static_cast<uint64_t>(result);
    } else {
      *errorNumber = result == 0 ? ENOSPC : errno;
      break;
    }
  }
  return written;
}

int64_t traceFileSize(int handle, int* errorNumber) {
  const int64_t size = ::_filelengthi64(handle);
  if (size == -1) *errorNumber = errno;
  return size;
}

bool truncateTraceFile(int handle, uint64_t size, int* errorNumber) {
  const errno_t result = ::_chsize_s(handle, static_cast<__int64>(size));
  if (result != 0) *errorNumber = result;
  return result == 0;
}

int openTraceFileForRead(const char* name, int* errorNumber) {
  const int handle = ::_open(name, _O_RDONLY | _O_BINARY | _O_NOINHERIT);
  if (handle == -1) *errorNumber = errno == EACCES && isDirectory(name) ? EISDIR : errno;
  return handle;
}

int64_t readTraceFile(int handle, uint8_t* buffer, uint64_t capacity, int* errorNumber) {
  // _read takes an unsigned int count.
  constexpr uint64_t kMaxChunk = 1u << 30;
  const auto chunk = static_cast<unsigned int>(capacity > kMaxChunk ? kMaxChunk : capacity);
  const int result = ::_read(handle, buffer, chunk);
  if (result == -1) *errorNumber = errno;
  return result;
}

int closeTraceFile(int handle) { return ::_close(handle) == 0 ? 0 : -1; }

}  // namespace tav::os
