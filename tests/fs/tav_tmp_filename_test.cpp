// Temporary names and the temporary directory.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include "tav_environment.h"
#include "tav_error.h"
#include "tav_filename.h"
#include "tav_process.h"
#include "tav_utils.h"

extern "C" int tavFsCApiCheck(void);

namespace {

namespace fs = std::filesystem;

const bool kNativeIsSlash = TavClPathProperty::getNativeStyle() == TAV_PATH_STYLE_SLASH;

// The last three digits of the process id, units first.
std::string reversedProcessDigits() {
  uint32_t id = TavClProcessProperty().getId();
  std::string digits;
  for (int i = 0; i < 3; ++i, id /= 10) digits += static_cast<char>('0' + id % 10);
  return digits;
}

// Saves the variables that choose the temporary directory and gives each test a scratch
// directory of its own; both are put back afterwards.
class TemporaryNames : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"TMP", "TEMP", "TMPDIR"}) {
      const char* value = TavClEnvironmentVariableQueryOnly(name).getValue();
      saved.emplace_back(name, value != nullptr ? std::optional<std::string>(value) : std::nullopt);
    }
    // The time stamp keeps names apart when an earlier run with the same process id left a
    // directory behind (Wine reuses small process ids, and cannot always remove long paths).
    scratch = fs::temp_directory_path() /
              ("tav-tmpname-" + std::to_string(TavClProcessProperty().getId()) + "-" +
               std::to_string(tavGetTimeStamp()) + "-" +
               testing::UnitTest::GetInstance()->current_test_info()->name());
    std::error_code ignored;
    fs::remove_all(scratch, ignored);
    fs::create_directories(scratch);
    scratchText = scratch.string();
  }
  void TearDown() override {
    for (const auto& [name, value] : saved) setVariable(name, value ? value->c_str() : nullptr);
    std::error_code ignored;
    fs::remove_all(scratch, ignored);
  }

  static void setVariable(const char* name, const char* value) {
    TavClEnvironmentVariable(name, value);
  }

  std::vector<std::pair<const char*, std::optional<std::string>>> saved;
  fs::path scratch;
  std::string scratchText;
};

TEST_F(TemporaryNames, DirectoryComesFromTmpThenTempThenTheFallback) {
  setVariable("TMP", "/from/tmp");
  setVariable("TEMP", "/from/temp");
  setVariable("TMPDIR", "/from/tmpdir");
  EXPECT_STREQ(tavGetTmpDirectory(), "/from/tmp");
  setVariable("TMP", "");  // empty counts as unset
  EXPECT_STREQ(tavGetTmpDirectory(), "/from/temp");
  setVariable("TMP", nullptr);
  EXPECT_STREQ(tavGetTmpDirectory(), "/from/temp");
  setVariable("TEMP", nullptr);
  // POSIX asks TMPDIR as well; Windows never does.
  EXPECT_STREQ(tavGetTmpDirectory(), kNativeIsSlash ? "/from/tmpdir" : "C:\\");
  setVariable("TMPDIR", nullptr);
  EXPECT_STREQ(tavGetTmpDirectory(), kNativeIsSlash ? "/tmp/" : "C:\\");
}

// A name is the prefix, random characters and the process id's last digits reversed; names are
// distinct and never those of existing files.
TEST_F(TemporaryNames, NamesAreNewAndMadeOfPrefixRandomCharactersAndReversedProcessDigits) {
  const struct {
    const char* prefix;
    std::string expectedPrefix;
  } cases[] = {{"ABCDEFGH", "ABCDE"}, {"ab", "ab"}, {"", ""}, {nullptr, "TMP"}};
  const TavClLocation directory(scratchText.c_str());
  for (const auto& c : cases) {
    SCOPED_TRACE(c.expectedPrefix);
    const TavClTmpFilename name(directory, c.prefix);
    EXPECT_EQ(std::strncmp(name.getAsCString(), directory.getAsCString(), directory.getLength()),
              0);
    const std::string base(name.getName(), name.getBaseNameLength());
    ASSERT_EQ(base.size(), 8u) << name.getAsCString();
    EXPECT_EQ(base.substr(0, c.expectedPrefix.size()), c.expectedPrefix);
    EXPECT_EQ(base.find_first_not_of(TavClTmpFilename::kAlphabet, c.expectedPrefix.size()),
              std::string::npos)
        << base;
    EXPECT_EQ(std::string(name.getExtension()), "." + reversedProcessDigits());
  }

  // Three random characters leave 68921 names, so among a few hundred draws some repeat: the
  // existence test must then move on. Each name is taken by creating its file.
  std::set<std::string> names;
  for (int i = 0; i < 400; ++i) {
    const TavClTmpFilename name(directory, "ABCDE");
    ASSERT_FALSE(name.isExistent());
    ASSERT_TRUE(names.insert(name.getAsCString()).second) << name.getAsCString();
    std::ofstream(name.getAsCString()).put('x');
    ASSERT_TRUE(name.isExistent());
  }

  // The default directory is the temporary one, and a file name gives its own.
  setVariable("TMP", nullptr);
  setVariable("TEMP", scratchText.c_str());
  const TavClTmpFilename name;
  const TavClLocation where(name);
  EXPECT_EQ(fs::path(where.getAsCString()), fs::path(scratchText) / "");
  char base[TAV_PATH_BUFFER_SIZE];
  name.extractBaseName(base);
  EXPECT_EQ(std::strncmp(base, "TMP", 3), 0);

  const TavClFilename beside((scratchText + "/data.ini").c_str());
  const TavClTmpFilename next(beside, "INI");
  EXPECT_TRUE(next.matchesPath(beside));
  EXPECT_EQ(std::strncmp(next.getName(), "INI", 3), 0);
}

// A directory of 260 characters leaves no room for a name, so every attempt tests the
// directory itself, which exists: the search must give up rather than spin.
TEST_F(TemporaryNames, NoRoomForTheNameIsReportedNotRetriedForever) {
  std::string deep = scratchText;
  if (deep.size() > 200) GTEST_SKIP() << "the scratch directory is too long: " << deep;
  while (deep.size() < 260) {
    const size_t component = std::min<size_t>(60, 260 - deep.size() - 1);
    deep += "/" + std::string(component, 'd');
  }
  ASSERT_EQ(deep.size(), 260u);
  std::error_code error;
  fs::create_directories(deep, error);
  if (error || !TavClLocation(deep.c_str()).isExistent()) {
    GTEST_SKIP() << "this platform cannot make a directory of 260 characters: " << error.message();
  }
  try {
    TavClTmpFilename name(deep.c_str(), "TMP");
    ADD_FAILURE() << "made " << name.getAsCString();
  } catch (const TavClException& failure) {
    EXPECT_EQ(failure.getErrorClass(), TAV_CLASS_RESOURCE_EXHAUSTED);
    EXPECT_NE(std::strstr(failure.getCause(), "temporary"), nullptr);
  }
  // Deepest first, one level at a time: a recursive removal can fail on paths this long.
  for (fs::path level = deep; level.string().size() > scratchText.size();
       level = level.parent_path()) {
    fs::remove(level, error);
  }
}

TEST(FilenameCApi, TemporaryDirectoryIsCallableFromC) { EXPECT_EQ(tavFsCApiCheck(), 1); }

}  // namespace
