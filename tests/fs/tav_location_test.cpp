// Locations: the separator at the end, normalising, roots, existence and copies.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tav_filename.h"

namespace {

const bool kNativeIsSlash = TavClPathProperty::getNativeStyle() == TAV_PATH_STYLE_SLASH;

TEST(Location, EndsWithTheSeparatorOfItsStyle) {
  const struct {
    const char* text;
    std::string expected;
  } cases[] = {
      {"C:\\tmp", "C:\\tmp\\"},
      {"C:\\tmp\\", "C:\\tmp\\"},
      {"/usr", "/usr/"},
      {"/usr/", "/usr/"},
      {"C:/tmp/", "C:/tmp/"},
      {"C:", "C:\\"},
      {"", ""},
      {"tmp", kNativeIsSlash ? "tmp/" : "tmp\\"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const TavClLocation location(c.text);
    EXPECT_EQ(location.getAsCString(), c.expected);
    EXPECT_EQ(location.getLength(), c.expected.size());
  }
  EXPECT_STREQ(TavClLocation("/usr/lib/x", size_t{8}).getAsCString(), "/usr/lib/");
  EXPECT_STREQ(TavClLocation(TavClFilename("C:\\dir\\f.txt")).getAsCString(), "C:\\dir\\");
  EXPECT_STREQ(TavClLocation(TavClFilename("f.txt")).getAsCString(), "");
}

TEST(Location, NormalisingUsesTheNativeSeparatorInThePathPart) {
  const TavClLocation mixed("C:/a\\b", true);
  EXPECT_STREQ(mixed.getAsCString(), kNativeIsSlash ? "C:/a/b/" : "C:\\a\\b\\");
  EXPECT_TRUE(mixed.isNormalized());
  const TavClLocation server("\\\\srv\\share\\a/b", true);
  EXPECT_STREQ(server.getAsCString(),
               kNativeIsSlash ? "\\\\srv\\share/a/b/" : "\\\\srv\\share\\a\\b\\");
  // The server part stays where it was found before the separators changed.
  EXPECT_TRUE(server.hasServer());
  EXPECT_STREQ(server.getPathStart(), kNativeIsSlash ? "/a/b/" : "\\a\\b\\");
  EXPECT_FALSE(TavClLocation("C:/a\\b").isNormalized());
}

TEST(Location, RootsAreDriveSlashOrServerWithOneSeparator) {
  const struct {
    const char* text;
    bool root;
  } cases[] = {
      {"C:\\", true}, {"/", true},        {"\\\\srv\\share\\", true},
      {"\\", false},  {"C:\\tmp", false}, {"\\\\srv\\share\\x", false},
      {"C:", true},  // becomes "C:\\"
      {"", false},    {"tmp", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(TavClLocation(c.text).isRoot(), c.root);
  }
}

TEST(Location, LongTextsKeep260CharactersWithoutRoomForTheSeparator) {
  const std::string text = "/" + std::string(300, 'x');
  const TavClLocation location(text.c_str());
  EXPECT_EQ(location.getLength(), 260u);
  EXPECT_EQ(std::string(location.getAsCString()), text.substr(0, 260));
  const TavClLocation shorter(text.c_str(), size_t{259});
  EXPECT_EQ(std::string(shorter.getAsCString()), text.substr(0, 259) + "/");
}

TEST(Location, ExistenceOfTheTemporaryDirectory) {
  EXPECT_TRUE(TavClLocation(tavGetTmpDirectory()).isExistent());
  const std::string missing = std::string(tavGetTmpDirectory()) + "/tav-no-such-directory-4711";
  EXPECT_FALSE(TavClLocation(missing.c_str()).isExistent());
  EXPECT_FALSE(TavClLocation("").isExistent());
}

TEST(Location, CopiesAndAssignmentsPointIntoTheirOwnBuffer) {
  auto original = std::make_unique<TavClLocation>("\\\\srv\\share\\dir");
  const TavClLocation copied(*original);
  TavClLocation assigned("/elsewhere");
  assigned = *original;
  original.reset();
  EXPECT_STREQ(copied.getPathStart(), "\\dir\\");
  EXPECT_STREQ(assigned.getPathStart(), "\\dir\\");
  EXPECT_TRUE(assigned.isAbsolute());

  const TavClLocation& alias = assigned;
  assigned = alias;
  EXPECT_STREQ(assigned.getAsCString(), "\\\\srv\\share\\dir\\");
  assigned = assigned.getAsCString() + 11;  // a part of itself
  EXPECT_STREQ(assigned.getAsCString(), "\\dir\\");
  EXPECT_FALSE(assigned.hasServer());
}

}  // namespace
