// tav_os_status_test.cpp - the errno and Windows error code tables behind every seam's status.
//
// Both tables are plain data: the errno rows use the C runtime's names, so they check the table
// against the values of the platform the tests run on; the Windows rows are the system's fixed
// numbers and read the same everywhere.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <string>
#include <utility>

#include "../../src/core/tav_os_status.h"
#include "tav_test_data.h"

namespace {

// The failures in the order of their enumeration, as the tables below name them.
const char* const kFailureNames[] = {"none",        "notFound", "accessDenied", "alreadyExists",
                                     "isDirectory", "notEmpty", "diskFull",     "outOfMemory",
                                     "invalidName", "failed"};

void expectStatus(const tav::os::OsStatus& status, int32_t code, const std::string& expected) {
  EXPECT_EQ(kFailureNames[static_cast<int>(status.failure)], expected);
  EXPECT_EQ(status.code, code);
  EXPECT_EQ(status.ok(), expected == "none");
}

TEST(OsStatus, ErrnoValuesMapToTheFailuresCallersTellApart) {
  const std::pair<int, const char*> rows[] = {{0, "none"},
                                              {ENOENT, "notFound"},
                                              {ENOTDIR, "notFound"},
                                              {EACCES, "accessDenied"},
                                              {EPERM, "accessDenied"},
                                              {EEXIST, "alreadyExists"},
                                              {EISDIR, "isDirectory"},
                                              {ENOTEMPTY, "notEmpty"},
                                              {ENOSPC, "diskFull"},
                                              {ENOMEM, "outOfMemory"},
                                              {ENAMETOOLONG, "invalidName"},
                                              {EIO, "failed"}};
  for (const auto& [code, expected] : rows) {
    SCOPED_TRACE(code);
    expectStatus(tav::os::statusFromErrno(code), code, expected);
  }
}

TEST(OsStatus, WindowsErrorCodesMapToTheFailuresCallersTellApart) {
  for (const tav::test::DataRow& row :
       tav::test::readDataTable("core/windows_error_status.txt", 3)) {
    SCOPED_TRACE(row.where + " " + row.str(0));
    const auto code = static_cast<uint32_t>(row.number(1));
    expectStatus(tav::os::statusFromWindowsError(code), static_cast<int32_t>(code), row.str(2));
  }
}

}  // namespace
