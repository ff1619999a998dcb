// tav_os_status_test.cpp - the errno and Windows error code tables behind every seam's status.
//
// Both tables are plain data: the errno rows use the C runtime's names, so they check the table
// against the values of the platform the tests run on; the Windows rows are the system's fixed
// numbers and read the same everywhere.

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <string>

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
  const struct {
    const char* name;
    int code;
    const char* expected;
  } rows[] = {
      {"0", 0, "none"},
      {"ENOENT", ENOENT, "notFound"},
      {"ENOTDIR", ENOTDIR, "notFound"},
      {"EACCES", EACCES, "accessDenied"},
      {"EPERM", EPERM, "accessDenied"},
      {"EEXIST", EEXIST, "alreadyExists"},
      {"EISDIR", EISDIR, "isDirectory"},
      {"ENOTEMPTY", ENOTEMPTY, "notEmpty"},
      {"ENOSPC", ENOSPC, "diskFull"},
      {"ENOMEM", ENOMEM, "outOfMemory"},
      {"ENAMETOOLONG", ENAMETOOLONG, "invalidName"},
      {"EIO", EIO, "failed"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    expectStatus(tav::os::statusFromErrno(row.code), row.code, row.expected);
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
