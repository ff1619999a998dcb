// Files and directories: attributes, copying (whole or not at all), removing, renaming and the
// search along a path variable; directories made with their parents, removed alone or as a
// tree, made current, moved up and down; and walks over their entries, with names cut at 260
// characters and running out of memory. Each case works in a scratch directory of its own.

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tav_environment.h"
#include "tav_file.h"
#include "tav_fs_scratch.h"
#include "tav_test_allocator.h"
#include "tav_test_data.h"

namespace {

using namespace tav::test;

const char kSep = kNativeSeparator;

class Fs : public testing::Test {
 protected:
  TavClFilename name(const char* relative) const { return TavClFilename(path(relative).c_str()); }
  TavClFile file(const char* relative) const { return TavClFile(path(relative).c_str()); }
  std::string path(const std::string& relative) const { return scratch.path(relative); }
  // The root of the scratch directory's file system: "/" or "C:\\".
  std::string root() const { return scratch.text().substr(0, scratch.text()[0] == '/' ? 1 : 3); }

  const ScratchDirectory scratch;
};

TEST_F(Fs, AttributesOfAnExistingAndOfAMissingFile) {
  scratch.writeFile("data.ini", "12345");
  TavClFile data = file("data.ini");
  EXPECT_TRUE(data.isExistent() && data.isFile());
  EXPECT_FALSE(data.isDirectory() || data.isReadOnly() || data.isHidden());
  EXPECT_EQ(data.getFileSize(), 5u);
  EXPECT_STREQ(data.getFileType(), "ini");
  EXPECT_NE(data.getDateTimeOfLastModification(), 0);

  TavClFile missing = file("missing");
  EXPECT_FALSE(missing.isExistent() || missing.isHidden());
  EXPECT_EQ(missing.getFileSize(), 0u);
  EXPECT_STREQ(missing.getFileType(), "");
  EXPECT_TRUE(missing.isReadOnly());  // a name that cannot be written to counts as read-only
  missing.setReadOnly(true);
  expectNoError(missing.getLastError());
  // The default extension applies only to a name without one.
  EXPECT_STREQ(TavClFile("/d/data", "ini").getName(), "/d/data.ini");
  EXPECT_STREQ(TavClFile("/d/data.txt", "ini").getName(), "/d/data.txt");

  // Hidden is an attribute on Windows and a leading dot on POSIX. Wine gives names with a
  // leading dot the hidden attribute too; Windows itself does not.
  scratch.writeFile(".profile", "");
  scratch.writeFile("attribute", "");
  scratch.makeHidden("attribute");
  EXPECT_EQ(file("attribute").isHidden(), !kNativeIsSlash);
  EXPECT_TRUE(!kNativeIsSlash || file(".profile").isHidden());
}

// Backslash-style names are the same in any letter case; the test needs no file for this. In
// slash style another letter case is another name. Where the file system ignores case it is the
// same file, and the copy through a temporary name still leaves it whole.
TEST_F(Fs, CopyOntoItselfIsRefusedByTheNameAndHarmlessOtherwise) {
  for (const auto& [from, to] : {std::pair{"C:\\dir\\FILE.TXT", "c:\\Dir\\file.txt"},
                                 std::pair{"/dir/File.txt", "/dir/File.txt"}}) {
    TavClFile self(from);
    EXPECT_FALSE(self.copyTo(TavClFilename(to), false));
    expectError(self.getLastError(), FILE_COULD_NOT_COPY_SELF, TAV_CLASS_INCONSISTENT_SITUATION);
  }
  scratch.writeFile("dir/source.txt", "contents");
  const CurrentDirectoryChange change(scratch.text());
  ASSERT_TRUE(TavClFile("dir/source.txt").copyTo(TavClFilename("dir/Source.txt"), false));
  EXPECT_EQ(scratch.readFile("dir/source.txt"), "contents");
  EXPECT_EQ(scratch.readFile("dir/Source.txt"), "contents");
}

// The names of an error record's id and class, as the step table writes them.
std::string errorNames(const _TavStError& error) {
  std::string names;
#define TAV_ID_NAME(name, value, message) names += error.id == (value) ? #name : "";
#define TAV_CLASS_NAME(name, value, message) names += error.errorClass == (value) ? " " #name : "";
  TAV_ERROR_ID_LIST(TAV_ID_NAME)
  TAV_ERROR_CLASS_LIST(TAV_CLASS_NAME)
#undef TAV_ID_NAME
#undef TAV_CLASS_NAME
  return names;
}

// Runs fs/file_steps.txt: each step on new objects for its name, then the check of its outcome.
TEST_F(Fs, FileAndDirectoryOperationsFollowTheirSteps) {
  for (const DataRow& row : readDataTable("fs/file_steps.txt", 4)) {
    SCOPED_TRACE(row.where);
    const std::string &step = row.str(0), &argument = row.str(2);
    const std::string kSteps =
        "|write|mkdir|link|read-only|copy|copy keeping read-only|copy into|remove|rename|"
        "directory create|directory remove|directory remove tree|contents|entries|is read-only|";
    ASSERT_NE(kSteps.find("|" + step + "|"), std::string::npos) << "no such step";
    TavClFile file(path(row.str(1)).c_str());
    TavClDirectory directory(path(row.str(1)).c_str());
    const _TavStError& error =
        step.rfind("directory", 0) == 0 ? directory.getLastError() : file.getLastError();
    std::error_code noLinks;
    bool ok = true;
    if (step == "write") scratch.writeFile(row.str(1), argument);
    if (step == "mkdir") scratch.makeDirectory(row.str(1));
    if (step == "link") {
      std::filesystem::create_directory_symlink(path(argument), path(row.str(1)), noLinks);
    }
    if (step == "read-only") file.setReadOnly(row.flag(2));
    if (step.rfind("copy", 0) == 0 && step != "copy into") {
      ok = file.copyTo(name(argument.c_str()), step == "copy keeping read-only");
    }
    if (step == "copy into") ok = file.copyTo(TavClLocation(path(argument).c_str()), false);
    if (step == "remove") ok = file.remove();
    if (step == "rename") ok = file.renameAs(name(argument.c_str()));
    if (step == "directory create") ok = directory.create();
    if (step == "directory remove") ok = directory.remove();
    if (step == "directory remove tree") ok = directory.removeAll(true);
    if (step == "contents") {
      EXPECT_EQ(scratch.exists(row.str(1)) ? scratch.readFile(row.str(1)) : "<missing>", argument);
    }
    if (step == "entries") {
      EXPECT_EQ(scratch.countEntries(row.str(1)), static_cast<size_t>(row.number(2)));
    }
    EXPECT_TRUE(step != "is read-only" || file.isReadOnly() == row.flag(2));
    EXPECT_TRUE(step != "rename" || !ok || file.getName() == path(argument)) << file.getName();
    EXPECT_EQ(ok ? "" : errorNames(error), row.str(3));
    if (ok) expectNoError(error);
  }
}

// A name that exists as it stands is kept; others are looked for by their name alone, along
// a list with a missing directory and empty entries.
TEST_F(Fs, SearchAlongAPathVariable) {
  for (const char* each : {"1/both", "2/both", "2/only"}) scratch.writeFile(each, "");
  const std::string list =
      ";" + scratch.path("missing") + ";;" + scratch.path("1") + ";" + scratch.path("2") + ";";
  TavClEnvironmentVariable variable("TAV_TEST_FILE_SEARCH", list.c_str());
  const std::pair<std::string, std::string> cases[] = {
      {"both", "1/both"}, {"elsewhere/only", "2/only"}, {path("2/both"), "2/both"}};
  for (const auto& [given, where] : cases) {
    SCOPED_TRACE(given);
    TavClFilename found(given.c_str());
    ASSERT_TRUE(TavClFile::determineFileInEnvVarPath(found, "TAV_TEST_FILE_SEARCH"));
    EXPECT_EQ(found.getAsCString(), path(where));
  }
  TavClFilename nowhere("nowhere.dat");
  EXPECT_FALSE(TavClFile::determineFileInEnvVarPath(nowhere, "TAV_TEST_FILE_SEARCH"));
  variable.resetValue();
  EXPECT_FALSE(TavClFile::determineFileInEnvVarPath(nowhere, "TAV_TEST_FILE_SEARCH"));
}

TEST_F(Fs, DirectoryNamesAreExpandedAndSetAsCurrentChangesTheWorkingDirectory) {
  scratch.makeDirectory("here");
  const CurrentDirectoryChange change(scratch.text());
  EXPECT_STREQ(TavClDirectory().getName(), scratch.text().c_str());
  // Both separators are accepted and the result uses the native one.
  EXPECT_EQ(TavClDirectory("sub/../x\\y").getName(), scratch.text() + "x" + kSep + "y" + kSep);
  EXPECT_EQ(TavClDirectory(file("f")).getName(), scratch.path("f") + kSep);
  EXPECT_FALSE(TavClFileABase::expandRelativePath(nullptr));
  const TavClDirectory aboveRoot((root() + ".." + kSep).c_str());
  expectError(aboveRoot.getLastError(), DIRECTORY_EXPANSION_FAILED, TAV_CLASS_IO_INVALID_NAME);

  TavClDirectory missing(path("missing").c_str());
  EXPECT_FALSE(missing.setAsCurrent());
  expectError(missing.getLastError(), DIRECTORY_COULD_NOT_CHANGE, TAV_CLASS_IO_NOT_EXISTENT);
  EXPECT_EQ(missing.getDateTimeOfLastModification(), 0);
  TavClDirectory here(path("here").c_str());
  ASSERT_TRUE(here.setAsCurrent());
  EXPECT_EQ(std::filesystem::current_path().string(), scratch.path("here"));
  EXPECT_NE(here.getDateTimeOfLastModification(), 0);
}

TEST_F(Fs, DirectoryAttachAndDetachSubDirectoriesButNotAboveTheRoot) {
  TavClDirectory directory(scratch.text().c_str());
  const unsigned int depth = directory.getNumOfSubDirs();
  directory.attachSubDir(TavClLocation("a/b"));
  directory.attachSubDir(TavClLocation("../c/./d"));
  EXPECT_EQ(directory.getName(), scratch.path("a/c/d") + kSep);
  std::string up;
  for (unsigned int i = 0; i <= depth + 3; ++i) up += "../";
  directory.attachSubDir(TavClLocation(up.c_str()));
  expectError(directory.getLastError(), DIRECTORY_EXPANSION_FAILED, TAV_CLASS_IO_INVALID_NAME);
  EXPECT_EQ(directory.getName(), scratch.path("a/c/d") + kSep);

  ASSERT_TRUE(directory.detachLastSubDir());
  ASSERT_TRUE(directory.detachSubDirs(2));
  EXPECT_EQ(directory.getName(), scratch.text());
  ASSERT_TRUE(directory.detachSubDirs(depth));
  EXPECT_EQ(directory.getName(), root());
  EXPECT_FALSE(directory.detachLastSubDir());
  expectError(directory.getLastError(), DIRECTORY_COULD_NOT_DETACH, TAV_CLASS_LOGIC);
}

TEST_F(Fs, DirectoryWalkOverAMissingAnEmptyAndAPopulatedDirectory) {
  TavClDirectoryWalk missing{TavClLocation(path("missing").c_str())};
  EXPECT_FALSE(missing.isValid());
  expectError(missing.getLastError(), DIRWALK_COULD_NOT_INIT, TAV_CLASS_IO_PROBLEM);
  TavClDirectoryWalk empty{TavClLocation(scratch.text().c_str())};
  size_t entries = 0;
  for (; empty.isValid(); empty.setToNext()) ++entries;
  EXPECT_EQ(entries, 2u);  // "." and ".."
  // After the end the walk stays invalid and answers with nothing.
  EXPECT_FALSE(empty.setToNext() || empty.isDirectory() || empty.isCurrentDirectory() ||
               empty.matchesWildcardPattern("*"));

  // The empty location walks the working directory.
  const CurrentDirectoryChange change(scratch.text());
  scratch.writeFile("plain", "");
  TavClDirectoryWalk here{TavClLocation("")};
  while (here.isValid() && std::string(here.getNameWithoutPath()) != "plain") here.setToNext();
  EXPECT_STREQ(here.getNameWithPath(), "plain");

  for (const char* each : {"a.txt", "B.TXT", ".hidden", "locked"}) scratch.writeFile(each, "");
  for (const char* each : {"sub", "x.y", "..z", ".git"}) scratch.makeDirectory(each);
  file("locked").setReadOnly(true);
  scratch.makeHidden("plain");
  std::map<std::string, DataRow> expected;
  for (auto& row : readDataTable("fs/directory_walk_entries.txt", 6)) expected[row.str(0)] = row;
  for (TavClDirectoryWalk walk{TavClDirectory(scratch.text().c_str())}; walk.isValid();
       walk.setToNext()) {
    const std::string entry = walk.getNameWithoutPath();
    SCOPED_TRACE(entry);
    ASSERT_EQ(expected.count(entry), 1u);  // an entry the table names, and seen once only
    const DataRow row = expected.extract(entry).mapped();
    EXPECT_EQ(
        (std::vector<bool>{walk.isDirectory(), walk.isSubDirectory(), walk.isParentDirectory(),
                           walk.isCurrentDirectory(), walk.matchesWildcardPattern("*.txt")}),
        (std::vector<bool>{row.flag(1), row.flag(2), row.flag(3), row.flag(4), row.flag(5)}));
    EXPECT_EQ(walk.isReadOnly(), entry == "locked");
    // Hidden: a leading dot on POSIX, the attribute on Windows (which Wine also gives to
    // names with a leading dot, so those are left out there).
    const bool dotted = entry[0] == '.' && entry != "." && entry != "..";
    EXPECT_EQ(walk.isHidden(),
              kNativeIsSlash ? dotted : entry == "plain" || (dotted && walk.isHidden()));
  }
  EXPECT_TRUE(expected.empty());  // every entry was seen
}

// Windows cannot make a name that long without long-path support, so this runs on POSIX.
TEST_F(Fs, DirectoryWalkMarksANameCutThatDoesNotFitAfterTheDirectory) {
  if (!kNativeIsSlash) GTEST_SKIP() << "names beyond 260 characters need long-path support";
  std::string deep;
  while (scratch.text().size() + deep.size() < 240) deep += "dddddddddd/";
  scratch.writeFile(deep + std::string(40, 'n'), "");
  bool cutSeen = false;
  for (TavClDirectoryWalk walk{TavClLocation(path(deep).c_str())}; walk.isValid();
       walk.setToNext()) {
    EXPECT_LE(std::string(walk.getNameWithPath()).size(), size_t{TAV_PATH_MAX_LENGTH});
    if (walk.getNameWithoutPath()[0] == 'n') cutSeen = walk.isNameWithPathCut();
  }
  EXPECT_TRUE(cutSeen);
}

TEST_F(Fs, DirectoryWalkRunningOutOfMemoryLeavesNothingBehind) {
  scratch.writeFile("f", "");
  const TavClLocation location(scratch.text().c_str());
  forEachAllocationFailure([&] {
    for (TavClDirectoryWalk walk(location); walk.isValid();) walk.setToNext();
  });
}

}  // namespace
