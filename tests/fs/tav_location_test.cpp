// Locations and joined file names: the separator at the end, normalising, roots, existence and
// copies.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tav_filename.h"
#include "tav_test_data.h"

namespace {

const bool kNativeIsSlash = TavClPathProperty::getNativeStyle() == TAV_PATH_STYLE_SLASH;

// The expected text of a table row, with the platform's separator put in.
std::string withNativeSeparator(std::string text) {
  const size_t marker = text.find("<native>");
  if (marker != std::string::npos) text.replace(marker, 8, kNativeIsSlash ? "/" : "\\");
  return text;
}

TEST(Location, EndsWithTheSeparatorOfItsStyle) {
  for (const auto& row : tav::test::readDataTable("fs/location_text.txt", 3)) {
    SCOPED_TRACE(row.where);
    const TavClLocation location(row.text(0));
    EXPECT_EQ(location.getAsCString(), withNativeSeparator(row.str(1)));
    EXPECT_EQ(location.getLength(), withNativeSeparator(row.str(1)).size());
    EXPECT_EQ(location.isRoot(), row.flag(2));
  }
  for (const auto& row : tav::test::readDataTable("fs/filename_joined.txt", 4)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(TavClFilename(row.text(0), row.text(1), row.text(2)).getAsCString(),
              withNativeSeparator(row.str(3)));
  }
  EXPECT_STREQ(TavClLocation("/usr/lib/x", size_t{8}).getAsCString(), "/usr/lib/");
  EXPECT_STREQ(TavClLocation(TavClFilename("C:\\dir\\f.txt")).getAsCString(), "C:\\dir\\");
  EXPECT_STREQ(TavClLocation(TavClFilename("f.txt")).getAsCString(), "");

  // Long texts keep 260 characters, without room for the separator.
  const std::string text = "/" + std::string(300, 'x');
  EXPECT_EQ(std::string(TavClLocation(text.c_str()).getAsCString()), text.substr(0, 260));
  EXPECT_EQ(std::string(TavClLocation(text.c_str(), size_t{259}).getAsCString()),
            text.substr(0, 259) + "/");
}

TEST(Location, NormalisingUsesTheNativeSeparatorInThePathPart) {
  const TavClLocation mixed("C:/a\\b", true);
  EXPECT_STREQ(mixed.getAsCString(), kNativeIsSlash ? "C:/a/b/" : "C:\\a\\b\\");
  EXPECT_TRUE(mixed.isNormalized());
  EXPECT_FALSE(TavClLocation("C:/a\\b").isNormalized());
  // The server part stays where it was found before the separators changed.
  const TavClLocation server("\\\\srv\\share\\a/b", true);
  EXPECT_STREQ(server.getAsCString(),
               kNativeIsSlash ? "\\\\srv\\share/a/b/" : "\\\\srv\\share\\a\\b\\");
  EXPECT_TRUE(server.hasServer());
  EXPECT_STREQ(server.getPathStart(), kNativeIsSlash ? "/a/b/" : "\\a\\b\\");
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
