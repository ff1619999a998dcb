// tav_winerror_test.cpp - tavWinGetErrorAsString(): known names, gaps and table size.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "tav_error.h"
#include "tav_test_data.h"

namespace {

TEST(TavWinGetErrorAsString, NamesTheCodesOfItsTableAndNoOthers) {
  for (const auto& row : tav::test::readDataTable("core/windows_error_names.txt", 2)) {
    SCOPED_TRACE(row.where);
    const char* name = tavWinGetErrorAsString(static_cast<unsigned long>(row.number(0)));
    EXPECT_EQ(name == nullptr ? "<null>" : std::string(name), row.str(1));
  }
  int named = 0;
  for (int32_t code = -20; code <= 7000; ++code) {
    named += tavWinGetErrorAsString(static_cast<uint32_t>(code)) != nullptr ? 1 : 0;
  }
  EXPECT_EQ(named, 573);
  // Bits above the 32 of a Windows error code are ignored.
  if (sizeof(unsigned long) > 4) {
    const unsigned long high = static_cast<unsigned long>(1) << (sizeof(unsigned long) * 8 - 1);
    EXPECT_STREQ(tavWinGetErrorAsString(high | 2), "ERROR_FILE_NOT_FOUND");
  }
}

}  // namespace
