// File names and locations: splitting a name into server, path, base name and extension,
// comparing and matching those parts, replacing them, the 260-character limit, copies, and
// locations with the separator at their end, in both path styles.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "tav_filename.h"
#include "tav_test_data.h"

namespace {

const int kNativeStyle = TavClPathProperty::getNativeStyle();
const bool kNativeIsSlash = kNativeStyle == TAV_PATH_STYLE_SLASH;

// The parts a name is split into, read through the extract functions.
std::string extracted(const TavClFilenameABase& name, int part) {
  char out[TAV_PATH_BUFFER_SIZE];
  if (part == 0) name.extractServer(out);
  if (part == 1 || part == 2) name.extractPath(out, part == 2);
  if (part == 3) name.extractBaseName(out);
  return out;
}

TEST(FilenameParsing, PartsInBothStyles) {
  for (const tav::test::DataRow& row : tav::test::readDataTable("fs/filename_parts.txt", 9)) {
    SCOPED_TRACE(row.where);
    const TavClFilename name(row.text(0));
    EXPECT_STREQ(name.getAsCString(), row.text(0));
    for (int part = 0; part < 4; ++part) EXPECT_EQ(extracted(name, part), row.str(part + 1));
    EXPECT_EQ(name.getExtension(), row.str(5));
    const int style = row.str(6) == "native"  ? kNativeStyle
                      : row.str(6) == "slash" ? TAV_PATH_STYLE_SLASH
                                              : TAV_PATH_STYLE_BACKSLASH;
    EXPECT_EQ(name.getPathStyle(), style);
    EXPECT_EQ(name.hasDrive(), row.flag(7));
    EXPECT_EQ(name.isAbsolute(), row.flag(8));
    EXPECT_EQ(name.hasServer(), !row.str(1).empty());
  }
  EXPECT_EQ(TavClFilename().getPathSep("a/b"), '/');
  EXPECT_EQ(TavClFilename().getPathSep("C:"), '\\');
}

TEST(FilenameParsing, LongTextsAreCutAt260Characters) {
  const std::string text = std::string(255, 'd') + "/b.txt";  // 261 characters
  const TavClFilename name(text.c_str());
  EXPECT_EQ(name.getLength(), 260u);
  EXPECT_EQ(std::string(name.getAsCString()), text.substr(0, 260));
  EXPECT_STREQ(name.getExtension(), ".tx");

  const std::string huge(5000, 'x');
  EXPECT_EQ(TavClFilename(huge.c_str(), 300).getLength(), 260u);
  EXPECT_STREQ(TavClFilename("abc/def.g", 5).getAsCString(), "abc/d");
  EXPECT_STREQ(TavClFilename("ab", 50).getAsCString(), "ab");  // stops at the terminator
  EXPECT_STREQ(TavClFilename(nullptr).getAsCString(), "");
}

TEST(FilenameParsing, NormalisingChangesTheSeparatorsOfThePathPart) {
  char text[] = "C:/a\\b/c";
  TavClPathProperty::normalizePath(text, TAV_PATH_STYLE_BACKSLASH);
  EXPECT_STREQ(text, "C:\\a\\b\\c");
  TavClPathProperty::normalizePath(text);
  EXPECT_STREQ(text, kNativeIsSlash ? "C:/a/b/c" : "C:\\a\\b\\c");
  EXPECT_TRUE(TavClFilename(text).isNormalized());
  // A location keeps its server part where it was found before the separators changed.
  const TavClLocation server("\\\\srv\\share\\a/b", true);
  EXPECT_STREQ(server.getAsCString(),
               kNativeIsSlash ? "\\\\srv\\share/a/b/" : "\\\\srv\\share\\a\\b\\");
  EXPECT_TRUE(server.isNormalized());
  EXPECT_STREQ(server.getPathStart(), kNativeIsSlash ? "/a/b/" : "\\a\\b\\");
  EXPECT_FALSE(TavClLocation("C:/a\\b").isNormalized());
}

TEST(FilenameMatching, PathBaseNameExtensionWildcardAndFat83) {
  for (const auto& row : tav::test::readDataTable("fs/filename_match.txt", 4)) {
    SCOPED_TRACE(row.where);
    const TavClFilename name(row.text(0));
    const std::string& rule = row.str(2);
    bool matches = false;
    if (rule == "path") matches = name.matchesPath(TavClFilename(row.text(1)));
    if (rule == "base") matches = name.matchesBase(TavClFilename(row.text(1)));
    if (rule == "extension") matches = name.matchesExtension(row.text(1));
    if (rule == "wildcard") matches = name.matchesWildcardPattern(row.text(1));
    if (rule == "8.3") matches = name.isStyleFAT_8_3();
    if (rule == "normalized") matches = name.isNormalized();
    if (rule == "backslash") matches = name.getStyle(row.text(0)) == TAV_PATH_STYLE_BACKSLASH;
    EXPECT_EQ(matches, row.flag(3));
  }
  // A bare name takes the platform's style: only backslash style can be 8.3.
  EXPECT_EQ(TavClFilename("ABCDEFGH.TXT").isStyleFAT_8_3(),
            kNativeStyle == TAV_PATH_STYLE_BACKSLASH);
}

TEST(FilenameEditing, EachEditorReplacesOnlyItsPart) {
  TavClFilename name("C:\\old\\f.txt");
  for (const auto& row : tav::test::readDataTable("fs/filename_edits.txt", 4)) {
    SCOPED_TRACE(row.where);
    const std::string& edit = row.str(0);
    const std::string& field = row.str(1);
    const char* argument = field == "<own name>"        ? name.getName()
                           : field == "<own extension>" ? name.getExtension()
                           : field == "<own text>"      ? name.getAsCString()
                                                        : row.text(1);
    if (edit == "base name") name.setNewBaseName(argument);
    if (edit == "extension") name.setNewExtension(argument);
    if (edit == "name") name.setNewName(argument);
    if (edit == "location") name.setNewPath(TavClLocation(argument));
    if (edit == "path") name.setNewPath(argument);
    if (edit == "location, name") name.setNew(TavClLocation(argument), "b.c");
    if (edit == "remove path") name.removePath();
    EXPECT_EQ(name.getAsCString(), row.str(2));
    EXPECT_EQ(name.getExtension(), row.str(3));
    EXPECT_EQ(name.hasServer(), row.str(2).compare(0, 2, "\\\\") == 0);
    EXPECT_EQ(name.getPathStyle(), name.getStyle(row.text(2)));
  }
  EXPECT_STREQ(TavClFilename(TavClLocation("C:\\tmp"), "f", "ini").getAsCString(),
               "C:\\tmp\\f.ini");
}

TEST(FilenameEditing, NoEditGoesPast260Characters) {
  const std::string directory = "C:\\" + std::string(250, 'd');  // 253 characters
  TavClFilename name(directory.c_str(), "name", "extension");
  EXPECT_EQ(std::string(name.getAsCString()), directory + "\\name.e");
  name.setNewPath(std::string(300, 'p').c_str());
  // The path fills the buffer: neither separator nor name had room.
  EXPECT_EQ(std::string(name.getAsCString()), std::string(260, 'p'));
  const TavClBakFilename cut(TavClFilename((directory + "\\abcd").c_str()));
  EXPECT_EQ(std::string(cut.getAsCString()), directory + "\\abcd.B");
  EXPECT_STREQ(TavClBakFilename(TavClFilename("/x/DATA")).getExtension(), ".BAK");
}

// The original lives on the heap and is gone before the copy is read: a part pointer left
// pointing into it is a use after free under AddressSanitizer, and a wrong part everywhere.
TEST(FilenameCopies, EveryPartPointerFollowsTheCopy) {
  auto original = std::make_unique<TavClFilename>("\\\\srv\\share\\dir\\file.txt");
  const TavClFilename copied(*original);
  TavClFilename assigned;
  assigned = *original;
  const TavClBakFilename backup(*original);
  TavClFilename fromBackup;
  fromBackup = backup;
  original.reset();
  // Assigning a name to itself keeps it.
  const TavClFilename& alias = assigned;
  assigned = alias;
  assigned = static_cast<const TavClFilenameABase&>(alias);

  for (const TavClFilename* name : {&copied, static_cast<const TavClFilename*>(&assigned)}) {
    EXPECT_EQ(extracted(*name, 0), "\\\\srv\\share");
    EXPECT_EQ(extracted(*name, 1), "\\\\srv\\share\\dir");
    EXPECT_STREQ(name->getName(), "file.txt");
    EXPECT_STREQ(name->getExtension(), ".txt");
    EXPECT_STREQ(name->getPathStart(), "\\dir\\file.txt");
  }
  EXPECT_STREQ(fromBackup.getAsCString(), "\\\\srv\\share\\dir\\file.txt.BAK");
  EXPECT_STREQ(fromBackup.getExtension(), ".txt.BAK");
  EXPECT_EQ(fromBackup.getBaseNameLength(), 4u);
}

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
  EXPECT_TRUE(TavClLocation(tavGetTmpDirectory()).isExistent());
  EXPECT_FALSE(TavClLocation("").isExistent());

  // Long texts keep 260 characters, without room for the separator.
  const std::string text = "/" + std::string(300, 'x');
  EXPECT_EQ(std::string(TavClLocation(text.c_str()).getAsCString()), text.substr(0, 260));
  EXPECT_EQ(std::string(TavClLocation(text.c_str(), size_t{259}).getAsCString()),
            text.substr(0, 259) + "/");
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
