// tav_file_io_win32.cpp - the low-level file calls on Windows.
//
// Only code valid on every 64-bit Windows belongs here. The C runtime's low-level calls keep
// the handles and the system numbers the same kind as on POSIX.

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

#include <cerrno>

#include "../tav_file_io_os.h"

namespace tav::os {

namespace {

OsStatus lastErrno() { return statusFromErrno(errno); }

bool isDirectory(const char* name) {
  const DWORD attributes = ::GetFileAttributesA(name);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// _read and _write take an unsigned int count; larger pieces go in several calls.
constexpr uint64_t kMaxChunk = 1u << 30;

unsigned int chunkOf(uint64_t length) {
  return static_cast<unsigned int>(length > kMaxChunk ? kMaxChunk : length);
}

}  // namespace

OsStatus openFile(const char* name, FileOpening opening, int* handle) {
  int flags = _O_BINARY | _O_NOINHERIT;
  switch (opening) {
    case FileOpening::read: flags |= _O_RDONLY; break;
    case FileOpening::append: flags |= _O_WRONLY | _O_APPEND | _O_CREAT; break;
    case FileOpening::createNew:
    case FileOpening::createNewDefault: flags |= _O_WRONLY | _O_CREAT | _O_EXCL; break;
  }
  const int opened = ::_open(name, flags, _S_IREAD | _S_IWRITE);
  if (opened == -1) {
    // Opening a directory is refused as access denied; tell it apart as POSIX does.
    if (errno == EACCES && isDirectory(name)) return {OsFailure::isDirectory, EISDIR};
    return lastErrno();
  }
  *handle = opened;
  return kOsSuccess;
}

OsStatus readFile(int handle, uint8_t* buffer, uint64_t capacity, uint64_t* count) {
  const int result = ::_read(handle, buffer, chunkOf(capacity));
  *count = result > 0 ? static_cast<uint64_t>(result) : 0;
  return result == -1 ? lastErrno() : kOsSuccess;
}

OsStatus writeFile(int handle, const uint8_t* bytes, uint64_t length, uint64_t* written) {
  *written = 0;
  while (*written < length) {
    const int result = ::_write(handle, bytes + *written, chunkOf(length - *written));
    if (result > 0) {
      *written += static_cast<uint64_t>(result);
    } else if (result == 0) {
      return {OsFailure::diskFull, ENOSPC};
    } else {
      return lastErrno();
    }
  }
  return kOsSuccess;
}

OsStatus fileSizeOf(int handle, uint64_t* size) {
  const int64_t length = ::_filelengthi64(handle);
  if (length == -1) return lastErrno();
  *size = static_cast<uint64_t>(length);
  return kOsSuccess;
}

OsStatus truncateFile(int handle, uint64_t size) {
  const errno_t result = ::_chsize_s(handle, static_cast<__int64>(size));
  return result != 0 ? statusFromErrno(result) : kOsSuccess;
}

OsStatus flushFileToDisk(int handle) { return ::_commit(handle) == -1 ? lastErrno() : kOsSuccess; }

OsStatus closeFile(int handle) { return ::_close(handle) == -1 ? lastErrno() : kOsSuccess; }

}  // namespace tav::os
