// tav_os_status_test.cpp - the errno and Windows error code tables behind every seam's status.
//
// Both tables are plain data: the errno rows use the C runtime's names, so they check the table
// against the values of the platform the tests run on; the Windows rows are the system's fixed
// numbers and read the same everywhere.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>

#include "../../src/core/tav_os_status.h"

namespace {

using tav::os::OsFailure;

struct Row {
  const char* name;
  int32_t code;
  OsFailure expected;
};

void checkRows(const Row* rows, size_t count, tav::os::OsStatus (*map)(int32_t)) {
  for (size_t i = 0; i < count; ++i) {
    SCOPED_TRACE(rows[i].name);
    const tav::os::OsStatus status = map(rows[i].code);
    EXPECT_EQ(status.failure, rows[i].expected);
    EXPECT_EQ(status.code, rows[i].code);
    EXPECT_EQ(status.ok(), rows[i].expected == OsFailure::none);
  }
}

TEST(OsStatus, ErrnoValuesMapToTheFailuresCallersTellApart) {
  static const Row rows[] = {
      {"0", 0, OsFailure::none},
      {"ENOENT", ENOENT, OsFailure::notFound},
      {"ENOTDIR", ENOTDIR, OsFailure::notFound},
      {"ESRCH", ESRCH, OsFailure::notFound},
      {"EACCES", EACCES, OsFailure::accessDenied},
      {"EPERM", EPERM, OsFailure::accessDenied},
      {"EROFS", EROFS, OsFailure::accessDenied},
      {"EBUSY", EBUSY, OsFailure::accessDenied},
      {"EEXIST", EEXIST, OsFailure::alreadyExists},
      {"EISDIR", EISDIR, OsFailure::isDirectory},
      {"ENOTEMPTY", ENOTEMPTY, OsFailure::notEmpty},
      {"ENOSPC", ENOSPC, OsFailure::diskFull},
      {"ENOMEM", ENOMEM, OsFailure::outOfMemory},
      {"EMFILE", EMFILE, OsFailure::outOfMemory},
      {"ENAMETOOLONG", ENAMETOOLONG, OsFailure::invalidName},
      {"EIO", EIO, OsFailure::failed},
      {"-1", -1, OsFailure::failed},
  };
  checkRows(rows, std::size(rows), [](int32_t code) { return tav::os::statusFromErrno(code); });
}

TEST(OsStatus, WindowsErrorCodesMapToTheFailuresCallersTellApart) {
  static const Row rows[] = {
      {"ERROR_SUCCESS", 0, OsFailure::none},
      {"ERROR_FILE_NOT_FOUND", 2, OsFailure::notFound},
      {"ERROR_PATH_NOT_FOUND", 3, OsFailure::notFound},
      {"ERROR_MOD_NOT_FOUND", 126, OsFailure::notFound},
      {"ERROR_RESOURCE_LANG_NOT_FOUND", 1815, OsFailure::notFound},
      {"ERROR_ACCESS_DENIED", 5, OsFailure::accessDenied},
      {"ERROR_SHARING_VIOLATION", 32, OsFailure::accessDenied},
      {"ERROR_FILE_EXISTS", 80, OsFailure::alreadyExists},
      {"ERROR_ALREADY_EXISTS", 183, OsFailure::alreadyExists},
      {"ERROR_DIR_NOT_EMPTY", 145, OsFailure::notEmpty},
      {"ERROR_DISK_FULL", 112, OsFailure::diskFull},
      {"ERROR_NOT_ENOUGH_MEMORY", 8, OsFailure::outOfMemory},
      {"ERROR_FILENAME_EXCED_RANGE", 206, OsFailure::invalidName},
      {"ERROR_GEN_FAILURE", 31, OsFailure::failed},
      {"E_FAIL", static_cast<int32_t>(0x80004005u), OsFailure::failed},
  };
  checkRows(rows, std::size(rows), [](int32_t code) {
    return tav::os::statusFromWindowsError(static_cast<uint32_t>(code));
  });
}

}  // namespace
