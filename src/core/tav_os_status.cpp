// tav_os_status.cpp - the errno and Windows error code tables behind OsStatus.
//
// Codes missing from a table are `failed`. The Windows codes are fixed numbers of the system's
// interface, so that table is written with them and needs no system header; its names follow
// winerror.h.

#include "tav_os_status.h"

#include <cerrno>
#include <cstddef>

namespace tav::os {

namespace {

struct Mapping {
  int32_t code;
  OsFailure failure;
};

constexpr Mapping kErrnoFailures[] = {
    {ENOENT, OsFailure::notFound},
    {ENOTDIR, OsFailure::notFound},
    {ESRCH, OsFailure::notFound},
    {EACCES, OsFailure::accessDenied},
    {EPERM, OsFailure::accessDenied},
    {EROFS, OsFailure::accessDenied},
    {EBUSY, OsFailure::accessDenied},
    {ETXTBSY, OsFailure::accessDenied},
    {EEXIST, OsFailure::alreadyExists},
    {EISDIR, OsFailure::isDirectory},
    {ENOTEMPTY, OsFailure::notEmpty},
    {ENOSPC, OsFailure::diskFull},
    {EFBIG, OsFailure::diskFull},
    {ENOMEM, OsFailure::outOfMemory},
    {EMFILE, OsFailure::outOfMemory},
    {ENFILE, OsFailure::outOfMemory},
    {ENAMETOOLONG, OsFailure::invalidName},
    {EINVAL, OsFailure::invalidName},
};

constexpr Mapping kWindowsFailures[] = {
    {2, OsFailure::notFound},          // ERROR_FILE_NOT_FOUND
    {3, OsFailure::notFound},          // ERROR_PATH_NOT_FOUND
    {15, OsFailure::notFound},         // ERROR_INVALID_DRIVE
    {53, OsFailure::notFound},         // ERROR_BAD_NETPATH
    {126, OsFailure::notFound},        // ERROR_MOD_NOT_FOUND
    {317, OsFailure::notFound},        // ERROR_MR_MID_NOT_FOUND
    {1813, OsFailure::notFound},       // ERROR_RESOURCE_TYPE_NOT_FOUND
    {1815, OsFailure::notFound},       // ERROR_RESOURCE_LANG_NOT_FOUND
    {5, OsFailure::accessDenied},      // ERROR_ACCESS_DENIED
    {19, OsFailure::accessDenied},     // ERROR_WRITE_PROTECT
    {32, OsFailure::accessDenied},     // ERROR_SHARING_VIOLATION
    {33, OsFailure::accessDenied},     // ERROR_LOCK_VIOLATION
    {80, OsFailure::alreadyExists},    // ERROR_FILE_EXISTS
    {183, OsFailure::alreadyExists},   // ERROR_ALREADY_EXISTS
    {145, OsFailure::notEmpty},        // ERROR_DIR_NOT_EMPTY
    {39, OsFailure::diskFull},         // ERROR_HANDLE_DISK_FULL
    {112, OsFailure::diskFull},        // ERROR_DISK_FULL
    {1295, OsFailure::diskFull},       // ERROR_DISK_QUOTA_EXCEEDED
    {4, OsFailure::outOfMemory},       // ERROR_TOO_MANY_OPEN_FILES
    {8, OsFailure::outOfMemory},       // ERROR_NOT_ENOUGH_MEMORY
    {14, OsFailure::outOfMemory},      // ERROR_OUTOFMEMORY
    {123, OsFailure::invalidName},     // ERROR_INVALID_NAME
    {161, OsFailure::invalidName},     // ERROR_BAD_PATHNAME
    {206, OsFailure::invalidName},     // ERROR_FILENAME_EXCED_RANGE
};

template <size_t N>
OsStatus lookUp(const Mapping (&table)[N], int32_t code) {
  if (code == 0) return kOsSuccess;
  for (const Mapping& mapping : table) {
    if (mapping.code == code) return {mapping.failure, code};
  }
  return {OsFailure::failed, code};
}

}  // namespace

OsStatus statusFromErrno(int errorNumber) { return lookUp(kErrnoFailures, errorNumber); }

OsStatus statusFromWindowsError(uint32_t code) {
  return lookUp(kWindowsFailures, static_cast<int32_t>(code));
}

}  // namespace tav::os
