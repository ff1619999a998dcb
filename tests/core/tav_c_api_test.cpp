#include <gtest/gtest.h>

extern "C" int tavCApiCheck(void);

TEST(CApi, HeadersCompileAsCAndWork) { EXPECT_TRUE(tavCApiCheck()); }
