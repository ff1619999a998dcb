// Environment variables: the on/off rule, setting, appending, removing and the name limit.

#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "tav_environment.h"
#include "tav_test_allocator.h"

namespace {

// Each test uses its own variable names and removes them afterwards.
class EnvironmentVariable : public testing::Test {
 protected:
  void TearDown() override {
    for (const char* name : {"TAV_TEST_SWITCH", "TAV_TEST_PATH", "TAV_TEST_VALUE"}) {
      TavClEnvironmentVariable(name, nullptr);
    }
  }
};

TEST_F(EnvironmentVariable, OnlyOnYesTrueAndOneInAnyCaseAreEnabled) {
  TavClEnvironmentVariable variable("TAV_TEST_SWITCH", nullptr);
  const std::pair<const char*, bool> cases[] = {
      {nullptr, false}, {"on", true},  {"Yes", true}, {"TRUE", true},  {"1", true}, {"", false},
      {"0", false},     {" 1", false}, {"1 ", false}, {"yess", false}, {"o", false}};
  for (const auto& [value, enabled] : cases) {
    variable.setNewValue(value);
    EXPECT_EQ(variable.hasValueEnabled(), enabled) << "'" << (value ? value : "<null>") << "'";
  }
}

TEST_F(EnvironmentVariable, SetReadAppendAndRemoveAndTheValueOutlivesTheObject) {
  TavClEnvironmentVariable variable("TAV_TEST_VALUE", "first");
  EXPECT_STREQ(variable.getAssignment(), "TAV_TEST_VALUE=first");
  EXPECT_TRUE(variable.setNewValue("second value"));
  EXPECT_STREQ(TavClEnvironmentVariableQueryOnly("TAV_TEST_VALUE").getValue(), "second value");
  variable.resetValue();
  EXPECT_STREQ(variable.getAssignment(), "TAV_TEST_VALUE");
  variable.setNewValue(nullptr);
  EXPECT_FALSE(variable.hasValue());
  // An empty value is set and empty on POSIX, and removes the variable on Windows.
  variable.setNewValue("");
  EXPECT_TRUE(variable.getValue() == nullptr || *variable.getValue() == '\0');

  // Appending adds text without a separator, also to a variable that is not set.
  TavClEnvironmentVariable path("TAV_TEST_PATH", nullptr);
  EXPECT_TRUE(path.appendValue(";C:\\x"));
  EXPECT_STREQ(path.getValue(), ";C:\\x");
  variable.setNewValue("a");
  EXPECT_TRUE(variable.appendValue(std::string(5000, 'x').c_str()));
  EXPECT_EQ(variable.getValue(), "a" + std::string(5000, 'x'));

  { TavClEnvironmentVariable scoped("TAV_TEST_SWITCH", "kept"); }
  EXPECT_STREQ(TavClEnvironmentVariableQueryOnly("TAV_TEST_SWITCH").getValue(), "kept");
}

TEST_F(EnvironmentVariable, LongNamesAreKeptWholeAndQueriesFollowTheirName) {
  const std::string longName = "TAV_TEST_VALUE_" + std::string(100, 'N');
  TavClEnvironmentVariable variable(longName.c_str(), "whole");
  EXPECT_EQ(TavClEnvironmentVariableQueryOnly(longName.substr(0, 40).c_str()).getValue(), nullptr);
  // Copies own their long names: each one outlives the others.
  TavClEnvironmentVariableQueryOnly assigned;
  {
    const TavClEnvironmentVariableQueryOnly original(longName.c_str());
    assigned = TavClEnvironmentVariableQueryOnly(original);
  }
  EXPECT_EQ(assigned.getName(), longName);
  EXPECT_STREQ(assigned.getValue(), "whole");
  EXPECT_STREQ(TavClEnvironmentVariableQueryOnly(variable).getValue(), "whole");
  variable.resetValue();

  TavClEnvironmentVariableQueryOnly query;
  query.setNewName("TAV_TEST_SWITCH");
  EXPECT_STREQ(query.getValue(), nullptr);
}

TEST_F(EnvironmentVariable, AllocationFailuresLeaveNoBlockBehind) {
  tav::test::forEachAllocationFailure([] {
    TavClEnvironmentVariable variable("TAV_TEST_VALUE", "start");
    variable.appendValue(std::string(300, 'y').c_str());
    variable.setNewValue(std::string(1000, 'z').c_str());
  });
}

}  // namespace
