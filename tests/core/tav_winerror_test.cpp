// tav_winerror_test.cpp - tavWinGetErrorAsString(): known names, gaps and table size.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "tav_error.h"

namespace {

struct KnownCode {
  unsigned long code;
  const char* name;
};

TEST(TavWinGetErrorAsString, NamesKnownCodes) {
  const KnownCode cases[] = {
      {0, "NO_ERROR"},  // not its twin ERROR_SUCCESS
      {2, "ERROR_FILE_NOT_FOUND"},
      {4294967288UL, "LZERROR_UNKNOWNALG"},   // -8, the first entry
      {4294967295UL, "LZERROR_BADINHANDLE"},  // -1
      {1700, "RPC_S_INVALID_STRING_BINDING"},
      {1753, "EPT_S_NOT_REGISTERED"},
      {1783, "RPC_X_BAD_STUB_DATA"},
      {1899, "EPT_S_CANT_CREATE"},
      {1900, "RPC_S_INVALID_OBJECT"},
      {6118, "ERROR_NO_BROWSER_SERVERS_FOUND"},  // the last entry
  };
  for (const KnownCode& c : cases) {
    const char* name = tavWinGetErrorAsString(c.code);
    ASSERT_NE(name, nullptr) << "code " << c.code;
    EXPECT_EQ(std::string(name), c.name) << "code " << c.code;
  }
}

TEST(TavWinGetErrorAsString, ReturnsNullForCodesNotInTable) {
  // Gaps inside the table, just past either end (4294967287 is -9), and the signed extremes.
  const unsigned long codes[] = {35,   37,           1729,         1754,
                                 6119, 4294967287UL, 0x80000000UL, 0x7FFFFFFFUL};
  for (unsigned long code : codes) {
    EXPECT_EQ(tavWinGetErrorAsString(code), nullptr) << "code " << code;
  }
}

TEST(TavWinGetErrorAsString, IgnoresBitsAbove32) {
  if (sizeof(unsigned long) <= 4) GTEST_SKIP() << "unsigned long has 32 bits here";
  const unsigned long high = static_cast<unsigned long>(1) << (sizeof(unsigned long) * 8 - 1);
  const char* name = tavWinGetErrorAsString(high | 2);
  ASSERT_NE(name, nullptr);
  EXPECT_EQ(std::string(name), "ERROR_FILE_NOT_FOUND");
}

TEST(TavWinGetErrorAsString, CoversExactlyTheTable) {
  int named = 0;
  for (int32_t code = -20; code <= 7000; ++code) {
    if (tavWinGetErrorAsString(static_cast<unsigned long>(static_cast<uint32_t>(code))) !=
        nullptr) {
      ++named;
    }
  }
  EXPECT_EQ(named, 573);
}

}  // namespace
