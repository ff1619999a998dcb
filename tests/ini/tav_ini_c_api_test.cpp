// tav_ini_c_api_test.cpp - configuration files through the C interface.

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "tav_ini_c.h"

extern "C" long tavIniCRaisePort(const char* fileName, const char* text);

namespace {

std::string scratchName(const char* name) {
  return (std::filesystem::temp_directory_path() /
          (std::string("tav_ini_c_") +
           std::to_string(::testing::UnitTest::GetInstance()->random_seed()) + name))
      .string();
}

const char kText[] =
    "[server]\nport = 8080 ; listening\nverbose = Yes\nname = \" main \"\n[client]\nretries = x\n";

// Each look-up answers 1 with the value, or 0 leaving the out argument as it was.
TEST(IniCApi, LooksUpTextNumbersAndTruthValues) {
  TavStIniFile* file = tavIniFileCreate(scratchName("lookup.ini").c_str());
  ASSERT_NE(file, nullptr);
  ASSERT_EQ(tavIniFileLoadFromBuffer(file, kText, std::strlen(kText)), 1);
  EXPECT_STREQ(tavIniFileGetText(file, "SERVER", "Name"), " main ");
  EXPECT_EQ(tavIniFileGetText(file, "server", "missing"), nullptr);
  long number = 7;
  EXPECT_EQ(tavIniFileGetInteger(file, "server", "absent", &number), 0);
  EXPECT_EQ(tavIniFileGetInteger(file, "server", "port", &number), 1);
  EXPECT_EQ(number, 8080);
  int truth[3] = {7, 7, 7};
  EXPECT_EQ(tavIniFileGetBool(file, "server", "verbose", &truth[0]), 1);
  EXPECT_EQ(tavIniFileGetBool(file, "client", "retries", &truth[1]), 1);
  EXPECT_EQ(tavIniFileGetBool(file, "client", "absent", &truth[2]), 0);
  EXPECT_EQ(truth[0] * 100 + truth[1] * 10 + truth[2], 107);

  EXPECT_EQ(tavIniFileLoadFromBuffer(file, nullptr, 3), 0);
  EXPECT_EQ(tavIniFileGetInteger(file, "s", "o", nullptr), 0);
  EXPECT_EQ(tavIniFileSetText(file, "s", nullptr, "v"), 0);
  tavIniFileDestroy(file);
  EXPECT_EQ(tavIniFileCreate(nullptr), nullptr);
  tavIniFileDestroy(nullptr);
  EXPECT_EQ(tavIniFileLoad(nullptr), 0);
}

TEST(IniCApi, SetsAndSavesSoThatTheFileLoadsBack) {
  const std::string name = scratchName("set.ini");
  TavStIniFile* file = tavIniFileCreate(name.c_str());
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(tavIniFileLoad(file), 0);                          // no file yet
  EXPECT_EQ(tavIniFileSetText(file, "new", "key", "a;b"), 1);  // adds section and option
  EXPECT_EQ(tavIniFileSetText(file, "new", "key", "c"), 1);    // changes the option
  EXPECT_EQ(tavIniFileSetText(file, "new", "other", " x "), 1);
  EXPECT_EQ(tavIniFileSave(file), 1);
  tavIniFileDestroy(file);

  TavStIniFile* again = tavIniFileCreate(name.c_str());
  ASSERT_EQ(tavIniFileLoad(again), 1);
  EXPECT_STREQ(tavIniFileGetText(again, "new", "key"), "c");
  EXPECT_STREQ(tavIniFileGetText(again, "new", "other"), " x ");
  tavIniFileDestroy(again);
  std::filesystem::remove(name);
}

TEST(IniCApi, CProgramChangesAValue) {
  const std::string name = scratchName("c.ini");
  EXPECT_EQ(tavIniCRaisePort(name.c_str(), kText), 8081);
  EXPECT_EQ(tavIniCRaisePort(name.c_str(), "[server]\n"), -1);
  std::filesystem::remove(name);
}

}  // namespace
