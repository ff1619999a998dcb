// tav_file_win32.cpp - files and directories on Windows.
//
// Only code valid on every 64-bit Windows belongs here. The C runtime's calls serve where they
// do what is needed; copying, replacing and the attributes use the kernel's calls.

#include <direct.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "../tav_fs_os.h"

namespace tav::os {

namespace {

FsStatus statusFromErrno(int error) {
  switch (error) {
    case 0: return FsStatus::ok;
    case ENOENT: return FsStatus::notFound;
    case EACCES:
    case EPERM:
    case EBUSY: return FsStatus::accessDenied;
    case EEXIST: return FsStatus::alreadyExists;
    default: return FsStatus::failed;
  }
}

FsStatus statusFromLastError(DWORD error) {
  switch (error) {
    case ERROR_SUCCESS: return FsStatus::ok;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_DRIVE: return FsStatus::notFound;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_WRITE_PROTECT: return FsStatus::accessDenied;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS: return FsStatus::alreadyExists;
    default: return FsStatus::failed;
  }
}

FsStatus statusOf(int result) { return result == 0 ? FsStatus::ok : statusFromErrno(errno); }

FsStatus statusOfCall(BOOL succeeded) {
  return succeeded ? FsStatus::ok : statusFromLastError(::GetLastError());
}

}  // namespace

const char* pathListSeparators() { return ";"; }

bool currentDirectory(char* buffer, size_t size) {
  if (::_getcwd(buffer, static_cast<int>(size)) == nullptr) return false;
  const size_t length = std::strlen(buffer);
  // "C:\\" keeps its separator; every other directory comes without one.
  if (length > 3 && buffer[length - 1] == '\\') buffer[length - 1] = '\0';
  return true;
}

FsStatus changeDirectory(const char* path) { return statusOf(::_chdir(path)); }

FsStatus makeDirectory(const char* path) { return statusOf(::_mkdir(path)); }

FsStatus removeDirectory(const char* path) { return statusOf(::_rmdir(path)); }

bool isDirectory(const char* path) {
  const DWORD attributes = ::GetFileAttributesA(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool fileTimes(const char* path, FileTimes* times) {
  struct _stat64 status;
  if (::_stat64(path, &status) != 0) return false;
  times->creation = static_cast<time_t>(status.st_ctime);
  times->lastAccess = static_cast<time_t>(status.st_atime);
  times->lastModification = static_cast<time_t>(status.st_mtime);
  return true;
}

bool fileSize(const char* path, uint64_t* size) {
  struct _stat64 status;
  if (::_stat64(path, &status) != 0) return false;
  *size = static_cast<uint64_t>(status.st_size);
  return true;
}

bool isHidden(const char* path) {
  const DWORD attributes = ::GetFileAttributesA(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_HIDDEN) != 0;
}

bool isReadOnly(const char* path) { return ::_access(path, 2) != 0; }

bool setReadOnly(const char* path, bool readOnly) {
  return ::_chmod(path, readOnly ? _S_IREAD : (_S_IREAD | _S_IWRITE)) == 0;
}

FsStatus removeFile(const char* path) { return statusOf(::_unlink(path)); }

// The C runtime's rename never replaces an existing name on Windows.
FsStatus renameNoReplace(const char* from, const char* to) {
  if (::GetFileAttributesA(to) != INVALID_FILE_ATTRIBUTES) return FsStatus::alreadyExists;
  return statusOf(std::rename(from, to));
}

// CopyFileA copies the attributes too, read-only included; failing when target exists makes
// the temporary name the caller's own.
FsStatus copyToNewFile(const char* source, const char* target) {
  if (::CopyFileA(source, target, TRUE)) return FsStatus::ok;
  const DWORD error = ::GetLastError();
  // A copy that failed part of the way may leave a piece behind.
  if (error != ERROR_FILE_EXISTS && error != ERROR_ALREADY_EXISTS) {
    ::SetFileAttributesA(target, FILE_ATTRIBUTE_NORMAL);
    ::DeleteFileA(target);
  }
  return statusFromLastError(error);
}

FsStatus replaceFile(const char* source, const char* target) {
  return statusOfCall(
      ::MoveFileExA(source, target, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH));
}

}  // namespace tav::os
