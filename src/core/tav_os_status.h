// tav_os_status.h - how an operating-system call ended, in one vocabulary for every seam.
//
// Each subsystem's OS calls (tav_*_os.h, implemented in posix/ and win32/) report a failure as
// an OsStatus: the kind of failure, which is all a caller needs to pick its error id and class,
// and the system's own number, which reports may print. The kind comes from one of two tables,
// one for errno values and one for Windows error codes. Both are plain data, so each is tested on
// every platform.

#ifndef TAV_OS_STATUS_H
#define TAV_OS_STATUS_H

#include <cstdint>

#include "tav_export.h"

namespace tav::os {

// The failures that callers tell apart; anything else is `failed`.
enum class OsFailure : uint8_t {
  none,           // the call succeeded
  notFound,       // the name, or a directory on its way, does not exist
  accessDenied,   // not permitted, read-only, or in use by another
  alreadyExists,  // the name to be created exists
  isDirectory,    // a file was wanted and the name is a directory
  notEmpty,       // a directory to remove still holds entries
  diskFull,       // no space left on the device, or a quota reached
  outOfMemory,    // the system ran out of memory or handles
  invalidName,    // the name is too long or malformed
  failed,         // anything else
};

struct OsStatus {
  OsFailure failure = OsFailure::none;
  // errno or the Windows error code as the system gave it; 0 for success and for failures the
  // seam found itself.
  int32_t code = 0;

  bool ok() const { return failure == OsFailure::none; }
  bool is(OsFailure kind) const { return failure == kind; }
};

inline constexpr OsStatus kOsSuccess{};

// The status of a failure with this errno value; success for 0. The values are the C runtime's
// of the platform the library is built for.
TAV_INTERNAL_API OsStatus statusFromErrno(int errorNumber);

// The status of a failure with this Windows error code (GetLastError); success for 0.
TAV_INTERNAL_API OsStatus statusFromWindowsError(uint32_t code);

// A failure the seam detected itself, with no system number.
inline OsStatus failureStatus(OsFailure kind) { return {kind, 0}; }

}  // namespace tav::os

#endif  // TAV_OS_STATUS_H
