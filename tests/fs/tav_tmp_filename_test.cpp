// Temporary names and the temporary directory.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <string>

#include "tav_environment.h"
#include "tav_fs_scratch.h"

extern "C" int tavFsCApiCheck(void);

namespace {

namespace fs = std::filesystem;
using namespace tav::test;

void setVariable(const char* name, const char* value) { TavClEnvironmentVariable(name, value); }
std::optional<std::string> valueOf(const char* name) {
  const char* value = TavClEnvironmentVariableQueryOnly(name).getValue();
  return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

// Puts back the variables that choose the temporary directory, and gives each test a scratch
// directory of its own.
class TemporaryNames : public testing::Test {
 protected:
  ~TemporaryNames() override {
    for (auto& [name, value] : saved) setVariable(name, value ? value->c_str() : nullptr);
  }

  std::pair<const char*, std::optional<std::string>> saved[3] = {
      {"TMP", valueOf("TMP")}, {"TEMP", valueOf("TEMP")}, {"TMPDIR", valueOf("TMPDIR")}};
  const ScratchDirectory scratch;
  const std::string scratchText = scratch.text();
};

TEST_F(TemporaryNames, DirectoryComesFromTmpThenTempThenTheFallback) {
  setVariable("TMP", "/from/tmp");
  setVariable("TEMP", "/from/temp");
  setVariable("TMPDIR", "/from/tmpdir");
  EXPECT_STREQ(tavGetTmpDirectory(), "/from/tmp");
  setVariable("TMP", "");  // empty counts as unset
  EXPECT_STREQ(tavGetTmpDirectory(), "/from/temp");
  setVariable("TEMP", nullptr);
  // POSIX asks TMPDIR as well; Windows never does.
  EXPECT_STREQ(tavGetTmpDirectory(), kNativeIsSlash ? "/from/tmpdir" : "C:\\");
  setVariable("TMPDIR", nullptr);
  EXPECT_STREQ(tavGetTmpDirectory(), kNativeIsSlash ? "/tmp/" : "C:\\");
  EXPECT_EQ(tavFsCApiCheck(), 1);  // the C part of the header compiles as C
}

// A name is the prefix, random characters and the process id's last digits reversed; names are
// distinct and never those of existing files.
TEST_F(TemporaryNames, NamesAreNewAndMadeOfPrefixRandomCharactersAndReversedProcessDigits) {
  // The last three digits of the process id, units first.
  std::string digits = std::to_string(1000 + TavClProcessProperty().getId() % 1000).substr(1);
  std::reverse(digits.begin(), digits.end());
  const TavClLocation directory(scratchText.c_str());
  const std::pair<const char*, std::string> cases[] = {
      {"ABCDEFGH", "ABCDE"}, {"ab", "ab"}, {"", ""}, {nullptr, "TMP"}};
  for (const auto& [prefix, expected] : cases) {
    SCOPED_TRACE(expected);
    const TavClTmpFilename name(directory, prefix);
    EXPECT_TRUE(name.matchesPath(TavClFilename(scratch.path("x").c_str())));
    const std::string base(name.getName(), name.getBaseNameLength());
    ASSERT_EQ(base.size(), 8u) << name.getAsCString();
    EXPECT_EQ(base.substr(0, expected.size()), expected);
    EXPECT_EQ(base.find_first_not_of(TavClTmpFilename::kAlphabet, expected.size()),
              std::string::npos);
    EXPECT_EQ(std::string(name.getExtension()), "." + digits);
  }

  // Three random characters leave 68921 names, so among a few hundred draws some repeat: the
  // existence test must then move on. Each name is taken by creating its file.
  std::set<std::string> names;
  for (int i = 0; i < 400; ++i) {
    const TavClTmpFilename name(directory, "ABCDE");
    ASSERT_FALSE(name.isExistent());
    ASSERT_TRUE(names.insert(name.getAsCString()).second) << name.getAsCString();
    std::ofstream(name.getAsCString()).put('x');
  }

  // The default directory is the temporary one, and a file name gives its own.
  setVariable("TMP", nullptr);
  setVariable("TEMP", scratchText.c_str());
  const TavClTmpFilename name;
  EXPECT_EQ(fs::path(TavClLocation(name).getAsCString()), fs::path(scratchText));
  const TavClFilename beside(scratch.path("data.ini").c_str());
  const TavClTmpFilename next(beside, "INI");
  EXPECT_TRUE(next.matchesPath(beside));
}

// A directory of 260 characters leaves no room for a name, so every attempt tests the
// directory itself, which exists: the search must give up rather than spin.
TEST_F(TemporaryNames, NoRoomForTheNameIsReportedNotRetriedForever) {
  std::string deep = scratchText.substr(0, scratchText.size() - 1);
  if (deep.size() > 200) GTEST_SKIP() << "the scratch directory is too long: " << deep;
  while (deep.size() < 260) {
    deep += kNativeSeparator + std::string(std::min<size_t>(60, 259 - deep.size()), 'd');
  }
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
  for (fs::path level = deep; level.string().size() >= scratchText.size();
       level = level.parent_path()) {
    fs::remove(level, error);
  }
}

}  // namespace
