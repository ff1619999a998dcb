// File names and locations: splitting a name into server, path, base name and extension,
// comparing and matching those parts, replacing them, the 260-character limit, copies,
// locations with the separator at their end, in both path styles; and temporary names in the
// temporary directory.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <string>

#include "tav_environment.h"
#include "tav_filename.h"
#include "tav_fs_scratch.h"
#include "tav_test_data.h"
#include "tav_test_environment.h"

namespace {

using namespace tav::test;

const int kNativeStyle = TavClPathProperty::getNativeStyle();

// The parts a name is split into, read through the extract functions.
std::string extracted(const TavClFilenameABase& name, int part) {
  char out[TAV_PATH_BUFFER_SIZE];
  if (part == 0) name.extractServer(out);
  if (part == 1 || part == 2) name.extractPath(out, part == 2);
  if (part == 3) name.extractBaseName(out);
  return out;
}

TEST(FilenameParsing, PartsInBothStyles) {
  for (const DataRow& row : readDataTable("fs/filename_parts.txt", 9)) {
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
}

TEST(FilenameParsing, TextsEditsAndLocationsStopAt260Characters) {
  const std::string text = std::string(255, 'd') + "/b.txt";  // 261 characters
  const TavClFilename name(text.c_str());
  EXPECT_EQ(name.getLength(), 260u);
  EXPECT_EQ(std::string(name.getAsCString()), text.substr(0, 260));
  EXPECT_STREQ(name.getExtension(), ".tx");

  const std::string huge(5000, 'x');
  EXPECT_EQ(TavClFilename(huge.c_str(), 300).getLength(), 260u);
  EXPECT_STREQ(TavClFilename("ab", 50).getAsCString(), "ab");  // stops at the terminator
  EXPECT_STREQ(TavClFilename(nullptr).getAsCString(), "");
  // No edit goes past 260 characters either.
  const std::string directory = "C:\\" + std::string(250, 'd');  // 253 characters
  TavClFilename edited(directory.c_str(), "name", "extension");
  EXPECT_EQ(std::string(edited.getAsCString()), directory + "\\name.e");
  edited.setNewPath(std::string(300, 'p').c_str());
  // The path fills the buffer: neither separator nor name had room.
  EXPECT_EQ(std::string(edited.getAsCString()), std::string(260, 'p'));
  const TavClBakFilename cut(TavClFilename((directory + "\\abcd").c_str()));
  EXPECT_EQ(std::string(cut.getAsCString()), directory + "\\abcd.B");
  // Long locations keep 260 characters, without room for the separator.
  const std::string location = "/" + std::string(300, 'x');
  EXPECT_EQ(std::string(TavClLocation(location.c_str()).getAsCString()), location.substr(0, 260));
  EXPECT_EQ(std::string(TavClLocation(location.c_str(), size_t{259}).getAsCString()),
            location.substr(0, 259) + "/");
}

TEST(FilenameParsing, NormalisingChangesTheSeparatorsOfThePathPart) {
  char text[] = "C:/a\\b/c";
  TavClPathProperty::normalizePath(text, TAV_PATH_STYLE_BACKSLASH);
  EXPECT_STREQ(text, "C:\\a\\b\\c");
  TavClPathProperty::normalizePath(text);
  EXPECT_STREQ(text, kNativeIsSlash ? "C:/a/b/c" : "C:\\a\\b\\c");
  // A location keeps its server part where it was found before the separators changed.
  const TavClLocation server("\\\\srv\\share\\a/b", true);
  EXPECT_STREQ(server.getAsCString(),
               kNativeIsSlash ? "\\\\srv\\share/a/b/" : "\\\\srv\\share\\a\\b\\");
  EXPECT_FALSE(TavClLocation("C:/a\\b").isNormalized());
}

TEST(FilenameMatching, PathBaseNameExtensionWildcardAndFat83) {
  for (const auto& row : readDataTable("fs/filename_match.txt", 4)) {
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
  for (const auto& row : readDataTable("fs/filename_edits.txt", 4)) {
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
    EXPECT_EQ(name.getPathStyle(), name.getStyle(row.text(2)));
  }
}

// Each original lives on the heap and is gone before the copy is read: a part pointer left
// pointing into it is a use after free under AddressSanitizer, and a wrong part everywhere.
// Assigning a name to itself, or a part of its own text, keeps the text whole.
TEST(FilenameCopies, EveryPartPointerFollowsTheCopy) {
  auto original = std::make_unique<TavClFilename>("\\\\srv\\share\\dir\\file.txt");
  const TavClFilename copied(*original);
  TavClFilename assigned, fromBackup;
  assigned = *original;
  fromBackup = TavClBakFilename(*original);
  original.reset();
  const TavClFilename& alias = assigned;
  assigned = alias;
  assigned = static_cast<const TavClFilenameABase&>(alias);
  for (const TavClFilename* name : {&copied, static_cast<const TavClFilename*>(&assigned)}) {
    EXPECT_EQ(extracted(*name, 0), "\\\\srv\\share");
    EXPECT_EQ(extracted(*name, 1), "\\\\srv\\share\\dir");
    EXPECT_STREQ(name->getExtension(), ".txt");
  }
  EXPECT_STREQ(fromBackup.getAsCString(), "\\\\srv\\share\\dir\\file.txt.BAK");
  EXPECT_STREQ(fromBackup.getExtension(), ".txt.BAK");

  auto location = std::make_unique<TavClLocation>("\\\\srv\\share\\dir");
  const TavClLocation copiedLocation(*location);
  TavClLocation assignedLocation("/elsewhere");
  assignedLocation = *location;
  location.reset();
  EXPECT_STREQ(copiedLocation.getPathStart(), "\\dir\\");
  const TavClLocation& locationAlias = assignedLocation;
  assignedLocation = locationAlias;
  EXPECT_STREQ(assignedLocation.getAsCString(), "\\\\srv\\share\\dir\\");
  assignedLocation = assignedLocation.getAsCString() + 11;  // a part of itself
  EXPECT_STREQ(assignedLocation.getAsCString(), "\\dir\\");
}

// The expected text of a table row, with the platform's separator put in.
std::string withNativeSeparator(std::string text) {
  const size_t marker = text.find("<native>");
  if (marker != std::string::npos) text.replace(marker, 8, kNativeIsSlash ? "/" : "\\");
  return text;
}

TEST(Location, EndsWithTheSeparatorOfItsStyle) {
  for (const auto& row : readDataTable("fs/location_text.txt", 3)) {
    SCOPED_TRACE(row.where);
    const TavClLocation location(row.text(0));
    EXPECT_EQ(location.getAsCString(), withNativeSeparator(row.str(1)));
    EXPECT_EQ(location.isRoot(), row.flag(2));
  }
  for (const auto& row : readDataTable("fs/filename_joined.txt", 4)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(TavClFilename(row.text(0), row.text(1), row.text(2)).getAsCString(),
              withNativeSeparator(row.str(3)));
  }
  EXPECT_TRUE(TavClLocation(tavGetTmpDirectory()).isExistent());
}

namespace fs = std::filesystem;

// Puts back the variables that choose the temporary directory, and gives each test a scratch
// directory of its own.
class TemporaryNames : public testing::Test {
 protected:
  static void set(const char* name, const char* value) { TavClEnvironmentVariable(name, value); }
  const VariableChange tmp{"TMP"}, temp{"TEMP"}, tmpdir{"TMPDIR"};
  const ScratchDirectory scratch;
  const std::string scratchText = scratch.text();
};

// TMP comes first and empty counts as unset; POSIX asks TMPDIR as well, Windows never does.
TEST_F(TemporaryNames, DirectoryAndNewNamesMadeOfPrefixRandomCharactersAndProcessDigits) {
  set("TMP", "/from/tmp");
  set("TEMP", "/from/temp");
  set("TMPDIR", "/from/tmpdir");
  EXPECT_STREQ(tavGetTmpDirectory(), "/from/tmp");
  set("TMP", "");
  set("TEMP", nullptr);
  EXPECT_STREQ(tavGetTmpDirectory(), kNativeIsSlash ? "/from/tmpdir" : "C:\\");
  set("TMPDIR", nullptr);
  EXPECT_STREQ(tavGetTmpDirectory(), kNativeIsSlash ? "/tmp/" : "C:\\");

  // A name is the prefix, random characters and the process id's last three digits, units
  // first.
  std::string digits = std::to_string(1000 + TavClProcessProperty().getId() % 1000).substr(1);
  std::reverse(digits.begin(), digits.end());
  const TavClLocation directory(scratchText.c_str());
  for (const auto& [prefix, expected] : {std::pair<const char*, std::string>{"ABCDEFGH", "ABCDE"},
                                         {"ab", "ab"},
                                         {"", ""},
                                         {nullptr, "TMP"}}) {
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
  for (int i = 0; i < 300; ++i) {
    const TavClTmpFilename name(directory, "ABCDE");
    ASSERT_TRUE(!name.isExistent() && names.insert(name.getAsCString()).second)
        << name.getAsCString();
    std::ofstream(name.getAsCString()).put('x');
  }
  // The default directory is the temporary one.
  set("TMP", nullptr);
  set("TEMP", scratchText.c_str());
  EXPECT_EQ(fs::path(TavClLocation(TavClTmpFilename()).getAsCString()), fs::path(scratchText));
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
