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

OsStatus statusOf(int result) { return result == 0 ? kOsSuccess : statusFromErrno(errno); }

OsStatus statusOfCall(BOOL succeeded) {
  return succeeded ? kOsSuccess : statusFromWindowsError(::GetLastError());
}

}  // namespace

const char* pathListSeparators() { return ";"; }

OsStatus currentDirectory(char* buffer, size_t size) {
  if (::_getcwd(buffer, static_cast<int>(size)) == nullptr) return statusFromErrno(errno);
  const size_t length = std::strlen(buffer);
  // "C:\\" keeps its separator; every other directory comes without one.
  if (length > 3 && buffer[length - 1] == '\\') buffer[length - 1] = '\0';
  return kOsSuccess;
}

OsStatus changeDirectory(const char* path) { return statusOf(::_chdir(path)); }

OsStatus makeDirectory(const char* path) { return statusOf(::_mkdir(path)); }

OsStatus removeDirectory(const char* path) { return statusOf(::_rmdir(path)); }

bool isDirectory(const char* path) {
  const DWORD attributes = ::GetFileAttributesA(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

OsStatus fileTimes(const char* path, FileTimes* times) {
  struct _stat64 status;
  if (::_stat64(path, &status) != 0) return statusFromErrno(errno);
  times->creation = static_cast<time_t>(status.st_ctime);
  times->lastAccess = static_cast<time_t>(status.st_atime);
  times->lastModification = static_cast<time_t>(status.st_mtime);
  return kOsSuccess;
}

OsStatus fileSize(const char* path, uint64_t* size) {
  struct _stat64 status;
  if (::_stat64(path, &status) != 0) return statusFromErrno(errno);
  *size = static_cast<uint64_t>(status.st_size);
  return kOsSuccess;
}

bool isHidden(const char* path) {
  const DWORD attributes = ::GetFileAttributesA(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_HIDDEN) != 0;
}

bool isReadOnly(const char* path) { return ::_access(path, 2) != 0; }

OsStatus setReadOnly(const char* path, bool readOnly) {
  return statusOf(::_chmod(path, readOnly ? _S_IREAD : (_S_IREAD | _S_IWRITE)));
}

OsStatus copyPermissions(const char* source, const char* target) {
  const DWORD attributes = ::GetFileAttributesA(source);
  if (attributes == INVALID_FILE_ATTRIBUTES) return statusFromWindowsError(::GetLastError());
  const DWORD kept = attributes & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                                   FILE_ATTRIBUTE_ARCHIVE);
  return statusOfCall(::SetFileAttributesA(target, kept == 0 ? FILE_ATTRIBUTE_NORMAL : kept));
}

OsStatus removeFile(const char* path) { return statusOf(::_unlink(path)); }

// The C runtime's rename never replaces an existing name on Windows.
OsStatus renameNoReplace(const char* from, const char* to) {
  if (::GetFileAttributesA(to) != INVALID_FILE_ATTRIBUTES) {
    return {OsFailure::alreadyExists, static_cast<int32_t>(ERROR_ALREADY_EXISTS)};
  }
  return statusOf(std::rename(from, to));
}

// CopyFileA copies the attributes too, read-only included; failing when target exists makes
// the temporary name the caller's own.
OsStatus copyToNewFile(const char* source, const char* target) {
  if (::CopyFileA(source, target, TRUE)) return kOsSuccess;
  const DWORD error = ::GetLastError();
  // A copy that failed part of the way may leave a piece behind.
  if (error != ERROR_FILE_EXISTS && error != ERROR_ALREADY_EXISTS) {
    ::SetFileAttributesA(target, FILE_ATTRIBUTE_NORMAL);
    ::DeleteFileA(target);
  }
  return statusFromWindowsError(error);
}

OsStatus replaceFile(const char* source, const char* target) {
  return statusOfCall(
      ::MoveFileExA(source, target, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH));
}

}  // namespace tav::os
