// Files and directories: attributes, dates, copying (whole or not at all), removing, renaming
// and the search along a path variable; directories made with their parents, removed alone or
// as a tree, made current, moved up and down; and walks over their entries, with names cut at
// 260 characters and running out of memory. Each case works in a scratch directory of its own.

#include <gtest/gtest.h>

#include <cstring>
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

TavClFilename nameIn(const ScratchDirectory& scratch, const char* relative) {
  return TavClFilename(scratch.path(relative).c_str());
}

TEST(File, AttributesAndDatesOfAnExistingAndOfAMissingFile) {
  const ScratchDirectory scratch;
  scratch.writeFile("data.ini", "12345");
  TavClFile file(scratch.path("data.ini").c_str());
  EXPECT_TRUE(file.isExistent() && file.isFile());
  EXPECT_FALSE(file.isDirectory() || file.isReadOnly() || file.isHidden());
  EXPECT_EQ(file.getFileSize(), 5u);
  EXPECT_STREQ(file.getFileType(), "ini");
  EXPECT_EQ(TavClFileABase::getDateTimeOfLastModification(file.getName()),
            file.getDateTimeOfLastModification());

  TavClFile missing(scratch.path("missing").c_str());
  EXPECT_FALSE(missing.isExistent() || missing.isHidden());
  EXPECT_EQ(missing.getFileSize(), 0u);
  EXPECT_STREQ(missing.getFileType(), "");
  EXPECT_TRUE(missing.isReadOnly());  // a name that cannot be written to counts as read-only
  missing.setReadOnly(true);
  expectNoError(missing.getLastError());

  EXPECT_STREQ(TavClFile("/d/data", "ini").getName(), "/d/data.ini");
  EXPECT_STREQ(TavClFile("/d/data.txt", "ini").getName(), "/d/data.txt");
  EXPECT_STREQ(TavClFile(TavClFilename("C:\\d\\data"), nullptr).getName(), "C:\\d\\data");

  // Hidden is an attribute on Windows and a leading dot on POSIX. Wine gives names with a
  // leading dot the hidden attribute too; Windows itself does not.
  scratch.writeFile(".profile", "");
  scratch.writeFile("attribute", "");
  scratch.makeHidden("attribute");
  EXPECT_EQ(TavClFile(scratch.path("attribute").c_str()).isHidden(), !kNativeIsSlash);
  EXPECT_TRUE(!kNativeIsSlash || TavClFile(scratch.path(".profile").c_str()).isHidden());
}

TEST(File, CopyMakesOrReplacesTheTargetWholeOrLeavesItAsItWas) {
  // Backslash-style names are the same in any letter case; the test needs no file for this.
  for (const auto& [from, to] : {std::pair{"C:\\dir\\FILE.TXT", "c:\\Dir\\file.txt"},
                                 std::pair{"/dir/File.txt", "/dir/File.txt"}}) {
    TavClFile self(from);
    EXPECT_FALSE(self.copyTo(TavClFilename(to), false));
    expectError(self.getLastError(), FILE_COULD_NOT_COPY_SELF, TAV_CLASS_INCONSISTENT_SITUATION);
  }

  const ScratchDirectory scratch;
  scratch.writeFile("source.txt", "new contents");
  scratch.writeFile("old.txt", "the old contents, which are longer");
  scratch.makeDirectory("dir");
  TavClFile source(scratch.path("source.txt").c_str());
  ASSERT_TRUE(source.copyTo(nameIn(scratch, "copy.txt"), false));
  ASSERT_TRUE(source.copyTo(nameIn(scratch, "old.txt"), false));
  ASSERT_TRUE(source.copyTo(TavClLocation(scratch.path("dir").c_str()), false));
  // No temporary file stays behind.
  EXPECT_EQ(scratch.countEntries(), 4u);

  source.setReadOnly(true);
  ASSERT_TRUE(source.copyTo(nameIn(scratch, "kept"), true));
  ASSERT_TRUE(source.copyTo(nameIn(scratch, "dropped"), false));
  EXPECT_TRUE(TavClFile(scratch.path("kept").c_str()).isReadOnly());
  EXPECT_FALSE(TavClFile(scratch.path("dropped").c_str()).isReadOnly());

  // Failed copies leave the target and the directory as they were.
  scratch.writeFile("source", "new");
  scratch.writeFile("target", "old");
  scratch.makeDirectory("a directory");
  TavClFile target(scratch.path("target").c_str());
  target.setReadOnly(true);
  // A read-only target is not replaced; a missing source and a directory are no sources.
  for (const char* name : {"source", "missing", "a directory"}) {
    SCOPED_TRACE(name);
    TavClFile from(scratch.path(name).c_str());
    EXPECT_FALSE(from.copyTo(target.getFilename(), false));
    expectError(from.getLastError(), FILE_COULD_NOT_COPY, TAV_CLASS_IO_PROBLEM);
    EXPECT_EQ(scratch.readFile("target"), "old");
    EXPECT_EQ(scratch.countEntries(), 9u);
  }

  // In slash style another letter case is another name. Where the file system ignores case it
  // is the same file, and the copy through a temporary name still leaves it whole.
  const CurrentDirectoryChange change(scratch.text());
  ASSERT_TRUE(TavClFile("dir/source.txt").copyTo(TavClFilename("dir/Source.txt"), false));
  EXPECT_EQ(scratch.readFile("dir/source.txt"), "new contents");
  EXPECT_EQ(scratch.readFile("dir/Source.txt"), "new contents");
}

TEST(File, RemoveMakesAReadOnlyFileWritableAndRenameNeverReplacesAnExistingName) {
  const ScratchDirectory scratch;
  scratch.writeFile("f", "x");
  TavClFile file(scratch.path("f").c_str());
  file.setReadOnly(true);
  ASSERT_TRUE(file.remove());
  EXPECT_FALSE(file.remove());
  expectError(file.getLastError(), FILE_COULD_NOT_REMOVE, TAV_CLASS_IO_NOT_EXISTENT);
  // A directory is no file: it exists, and unlinking it is refused.
  scratch.makeDirectory("d");
  TavClFile directory(scratch.path("d").c_str());
  EXPECT_FALSE(directory.remove());
  expectError(directory.getLastError(), FILE_COULD_NOT_REMOVE, TAV_CLASS_IO_PERMISSION_DENIED);

  scratch.writeFile("a", "first");
  scratch.writeFile("b", "second");
  TavClFile renamed(scratch.path("a").c_str());
  EXPECT_FALSE(renamed.renameAs(nameIn(scratch, "b")));
  expectError(renamed.getLastError(), FILE_COULD_NOT_RENAME, TAV_CLASS_IO_ALREADY_IN_USE);
  EXPECT_EQ(scratch.readFile("b"), "second");
  ASSERT_TRUE(renamed.renameAs(nameIn(scratch, "c")));
  EXPECT_STREQ(renamed.getName(), scratch.path("c").c_str());
  EXPECT_EQ(scratch.readFile("c"), "first");
}

TEST(File, SearchAlongAPathVariable) {
  const ScratchDirectory scratch;
  for (const char* file : {"1/a", "1/both", "2/both", "2/only"}) scratch.writeFile(file, "");
  const std::string list =
      ";" + scratch.path("missing") + ";;" + scratch.path("1") + ";" + scratch.path("2") + ";";
  TavClEnvironmentVariable variable("TAV_TEST_FILE_SEARCH", list.c_str());

  // A name that exists as it stands is kept; others are looked for by their name alone.
  const std::pair<std::string, std::string> found[] = {
      {"both", "1/both"}, {"elsewhere/only", "2/only"}, {scratch.path("2/both"), "2/both"}};
  for (const auto& [name, where] : found) {
    SCOPED_TRACE(name);
    TavClFilename filename(name.c_str());
    ASSERT_TRUE(TavClFile::determineFileInEnvVarPath(filename, "TAV_TEST_FILE_SEARCH"));
    EXPECT_STREQ(filename.getAsCString(), scratch.path(where).c_str());
  }
  TavClFilename nowhere("nowhere.dat");
  EXPECT_FALSE(TavClFile::determineFileInEnvVarPath(nowhere, "TAV_TEST_FILE_SEARCH"));
  variable.resetValue();
  EXPECT_FALSE(TavClFile::determineFileInEnvVarPath(nowhere, "TAV_TEST_FILE_SEARCH"));
}

const char kSep = kNativeSeparator;

// The root of the scratch directory's file system: "/" or "C:\\".
std::string rootOf(const ScratchDirectory& scratch) {
  return scratch.text().substr(0, scratch.text()[0] == '/' ? 1 : 3);
}

TEST(Directory, ConstructionNormalisesAndExpandsAndSetAsCurrentChangesTheWorkingDirectory) {
  const ScratchDirectory scratch;
  scratch.makeDirectory("here");
  const CurrentDirectoryChange change(scratch.text());
  EXPECT_STREQ(TavClDirectory().getName(), scratch.text().c_str());
  // Both separators are accepted and the result uses the native one.
  EXPECT_EQ(TavClDirectory("sub/../x\\y").getName(), scratch.text() + "x" + kSep + "y" + kSep);
  EXPECT_EQ(TavClDirectory(TavClFile(scratch.path("f").c_str())).getName(),
            scratch.path("f") + kSep);
  // The same expansion, on a text in place.
  char text[TAV_PATH_BUFFER_SIZE];
  std::strcpy(text, (std::string("x") + kSep + ".." + kSep + "y" + kSep).c_str());
  EXPECT_TRUE(TavClFileABase::isRelativePath(text));
  ASSERT_TRUE(TavClFileABase::expandRelativePath(text));
  EXPECT_EQ(text, scratch.text() + "y" + kSep);
  EXPECT_FALSE(TavClFileABase::expandRelativePath(nullptr));
  const TavClDirectory aboveRoot((rootOf(scratch) + ".." + kSep).c_str());
  expectError(aboveRoot.getLastError(), DIRECTORY_EXPANSION_FAILED, TAV_CLASS_IO_INVALID_NAME);

  TavClDirectory missing(scratch.path("missing").c_str());
  EXPECT_FALSE(missing.setAsCurrent());
  expectError(missing.getLastError(), DIRECTORY_COULD_NOT_CHANGE, TAV_CLASS_IO_NOT_EXISTENT);
  EXPECT_EQ(missing.getDateTimeOfLastModification(), 0);
  // A success clears the record.
  TavClDirectory here(scratch.path("here").c_str());
  ASSERT_TRUE(here.setAsCurrent());
  EXPECT_EQ(std::filesystem::current_path().string(), scratch.path("here"));
  EXPECT_NE(here.getDateTimeOfLastModification(), 0);
}

TEST(Directory, CreateMakesEveryMissingParentAndRemoveOnlyAnEmptyDirectory) {
  const ScratchDirectory scratch;
  TavClDirectory nested(scratch.path("a/b/c").c_str());
  ASSERT_TRUE(nested.create());
  EXPECT_TRUE(nested.create());  // nothing left to make

  scratch.writeFile("file", "");
  TavClDirectory underFile(scratch.path("file/sub").c_str());
  EXPECT_FALSE(underFile.create());
  expectError(underFile.getLastError(), DIRECTORY_COULD_NOT_CREATE, TAV_CLASS_IO_NOT_EXISTENT);

  TavClDirectory full(scratch.path("a/b").c_str());
  EXPECT_FALSE(full.remove());
  expectError(full.getLastError(), DIRECTORY_COULD_NOT_REMOVE, TAV_CLASS_IO_INVALID_NAME);
  ASSERT_TRUE(nested.remove());
  expectNoError(nested.getLastError());
}

TEST(Directory, RemoveATreeWithFilesAndSubDirectoriesButNoneNamedWithADot) {
  const ScratchDirectory scratch;
  for (const char* file : {"tree/a", "tree/sub/d/c", "tree/sub/ro", "out/k"}) {
    scratch.writeFile(file, "k");
  }
  scratch.makeDirectory("tree/empty");
  TavClFile(scratch.path("tree/sub/ro").c_str()).setReadOnly(true);
  // A link to a directory is removed, and what it points to is kept.
  std::error_code noLinks;
  std::filesystem::create_directory_symlink(scratch.path("out"), scratch.path("tree/link"),
                                            noLinks);
  TavClDirectory tree(scratch.path("tree").c_str());
  ASSERT_TRUE(tree.removeAll(true));
  EXPECT_FALSE(scratch.exists("tree"));
  EXPECT_EQ(scratch.readFile("out/k"), "k");

  // Directories whose names hold a dot are kept, and so is everything on the way to them.
  const char* const kept[] = {"tree/x.y/d", "tree/..z/e", "tree/.git/f", "tree/sub/.cache/g"};
  for (const char* file : kept) scratch.writeFile(file, "k");
  EXPECT_FALSE(tree.removeAll(true));
  expectError(tree.getLastError(), DIRECTORY_COULD_NOT_REMOVE, TAV_CLASS_IO_INVALID_NAME);
  // How much else went depends on the walk's order: it stops at "sub", which cannot go.
  for (const char* file : kept) EXPECT_TRUE(scratch.exists(file)) << file;
}

TEST(Directory, AttachAndDetachSubDirectories) {
  const ScratchDirectory scratch;
  TavClDirectory directory(scratch.text().c_str());
  const unsigned int depth = directory.getNumOfSubDirs();
  directory.attachSubDir(TavClLocation("a/b"));
  directory.attachSubDir(TavClLocation("../c/./d"));
  EXPECT_EQ(directory.getName(), scratch.path("a/c/d") + kSep);

  // Climbing above the root changes nothing.
  std::string up;
  for (unsigned int i = 0; i <= depth + 3; ++i) up += "../";
  directory.attachSubDir(TavClLocation(up.c_str()));
  expectError(directory.getLastError(), DIRECTORY_EXPANSION_FAILED, TAV_CLASS_IO_INVALID_NAME);
  EXPECT_EQ(directory.getName(), scratch.path("a/c/d") + kSep);

  ASSERT_TRUE(directory.detachLastSubDir());
  ASSERT_TRUE(directory.detachSubDirs(2));
  EXPECT_EQ(directory.getName(), scratch.text());
  ASSERT_TRUE(directory.detachSubDirs(depth));
  EXPECT_EQ(directory.getName(), rootOf(scratch));
  EXPECT_FALSE(directory.detachLastSubDir());
  expectError(directory.getLastError(), DIRECTORY_COULD_NOT_DETACH, TAV_CLASS_LOGIC);

}

TEST(DirectoryWalk, PredicatesOnAMissingAnEmptyAndAPopulatedDirectory) {
  const ScratchDirectory scratch;
  TavClDirectoryWalk missing{TavClLocation(scratch.path("missing").c_str())};
  EXPECT_FALSE(missing.isValid());
  expectError(missing.getLastError(), DIRWALK_COULD_NOT_INIT, TAV_CLASS_IO_PROBLEM);

  TavClDirectoryWalk empty{TavClLocation(scratch.text().c_str())};
  size_t entries = 0;
  for (; empty.isValid(); empty.setToNext()) ++entries;
  EXPECT_EQ(entries, 2u);  // "." and ".."
  // After the end the walk stays invalid and answers with nothing.
  EXPECT_FALSE(empty.setToNext());
  EXPECT_FALSE(empty.isDirectory() || empty.isCurrentDirectory() ||
               empty.matchesWildcardPattern("*"));

  // The empty location walks the working directory.
  const CurrentDirectoryChange change(scratch.text());
  scratch.writeFile("plain", "");
  TavClDirectoryWalk here{TavClLocation("")};
  while (here.isValid() && std::string(here.getNameWithoutPath()) != "plain") here.setToNext();
  EXPECT_STREQ(here.getNameWithPath(), "plain");

  for (const char* file : {"a.txt", "B.TXT", ".hidden", "locked"}) scratch.writeFile(file, "");
  for (const char* directory : {"sub", "x.y", "..z", ".git"}) scratch.makeDirectory(directory);
  TavClFile(scratch.path("locked").c_str()).setReadOnly(true);
  scratch.makeHidden("plain");
  std::map<std::string, DataRow> expected;
  for (auto& row : readDataTable("fs/directory_walk_entries.txt", 6)) expected[row.str(0)] = row;
  for (TavClDirectoryWalk walk{TavClDirectory(scratch.text().c_str())}; walk.isValid();
       walk.setToNext()) {
    const std::string name = walk.getNameWithoutPath();
    SCOPED_TRACE(name);
    ASSERT_EQ(expected.count(name), 1u);  // an entry the table names, and seen once only
    const DataRow row = expected.extract(name).mapped();
    EXPECT_EQ(
        (std::vector<bool>{walk.isDirectory(), walk.isSubDirectory(), walk.isParentDirectory(),
                           walk.isCurrentDirectory(), walk.matchesWildcardPattern("*.txt")}),
        (std::vector<bool>{row.flag(1), row.flag(2), row.flag(3), row.flag(4), row.flag(5)}));
    EXPECT_EQ(walk.isReadOnly(), name == "locked");
    // Hidden: a leading dot on POSIX, the attribute on Windows (which Wine also gives to
    // names with a leading dot, so those are left out there).
    const bool dotted = name[0] == '.' && name != "." && name != "..";
    const bool hidden = kNativeIsSlash ? dotted : name == "plain" || (dotted && walk.isHidden());
    EXPECT_EQ(walk.isHidden(), hidden);
  }
  EXPECT_TRUE(expected.empty());  // every entry was seen
}

// Windows cannot make a name that long without long-path support, so this runs on POSIX.
TEST(DirectoryWalk, ANameThatDoesNotFitAfterTheDirectoryIsMarkedCut) {
  if (!kNativeIsSlash) GTEST_SKIP() << "names beyond 260 characters need long-path support";
  const ScratchDirectory scratch;
  std::string deep;
  while (scratch.text().size() + deep.size() < 240) deep += "dddddddddd/";
  scratch.writeFile(deep + std::string(40, 'n'), "");
  TavClDirectoryWalk walk{TavClLocation(scratch.path(deep).c_str())};
  bool cutSeen = false;
  for (; walk.isValid(); walk.setToNext()) {
    EXPECT_LE(std::string(walk.getNameWithPath()).size(), size_t{TAV_PATH_MAX_LENGTH});
    if (walk.getNameWithoutPath()[0] == 'n') cutSeen = walk.isNameWithPathCut();
  }
  EXPECT_TRUE(cutSeen);
}

TEST(DirectoryWalk, RunningOutOfMemoryLeavesNothingBehind) {
  const ScratchDirectory scratch;
  scratch.writeFile("f", "");
  const TavClLocation location(scratch.text().c_str());
  forEachAllocationFailure([&] {
    TavClDirectoryWalk walk(location);
    while (walk.isValid()) walk.setToNext();
  });
}

}  // namespace
