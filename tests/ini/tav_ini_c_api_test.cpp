// tav_ini_c_api_test.cpp - configuration files through the C interface, from a program in C
// and from here: the C functions only forward to the model, so one walk covers them.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tav_ini_c.h"

extern "C" long tavIniCRaisePort(const char* fileName, const char* text);

namespace {

// Each look-up answers 1 with the value, or 0 leaving the out argument as it was; what is
// saved loads back exactly.
TEST(IniCApi, LoadLookUpSetSaveAndLoadBack) {
  const std::string name = testing::TempDir() + "tav_ini_c_" +
                           std::to_string(testing::UnitTest::GetInstance()->random_seed()) + ".ini";
  TavStIniFile* file = tavIniFileCreate(name.c_str());
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(tavIniFileLoad(file), 0);  // no file yet
  EXPECT_EQ(tavIniCRaisePort(name.c_str(), "[server]\n"), -1);
  EXPECT_EQ(tavIniCRaisePort(name.c_str(),
                             "[server]\nport = 8080\nverbose = Yes\nname = \" main \"\nx = no\n"),
            8081);
  ASSERT_EQ(tavIniFileLoad(file), 1);
  EXPECT_STREQ(tavIniFileGetText(file, "SERVER", "Name"), " main ");
  EXPECT_EQ(tavIniFileGetText(file, "server", "missing"), nullptr);
  long number = 7;
  EXPECT_EQ(tavIniFileGetInteger(file, "server", "absent", &number), 0);
  EXPECT_EQ(tavIniFileGetInteger(file, "server", "port", &number), 1);
  EXPECT_EQ(number, 8081);
  int truth[3] = {7, 7, 7};
  EXPECT_EQ(tavIniFileGetBool(file, "server", "verbose", &truth[0]), 1);
  EXPECT_EQ(tavIniFileGetBool(file, "server", "x", &truth[1]), 1);
  EXPECT_EQ(tavIniFileGetBool(file, "server", "absent", &truth[2]), 0);
  EXPECT_EQ(truth[0] * 100 + truth[1] * 10 + truth[2], 107);
  EXPECT_EQ(tavIniFileSetText(file, "new", "key", "a;b"), 1);  // adds section and option
  EXPECT_STREQ(tavIniFileGetText(file, "new", "key"), "a;b");

  // Null arguments are refused.
  EXPECT_EQ(tavIniFileLoadFromBuffer(file, nullptr, 3) +
                tavIniFileSetText(file, "s", nullptr, "v") +
                tavIniFileGetInteger(file, "s", "o", nullptr) + tavIniFileLoad(nullptr) +
                tavIniFileSave(nullptr),
            0);
  EXPECT_EQ(tavIniFileCreate(nullptr), nullptr);
  tavIniFileDestroy(nullptr);
  tavIniFileDestroy(file);
  std::filesystem::remove(name);
}

}  // namespace
