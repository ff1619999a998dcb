// Files: attributes, dates, copying (whole or not at all), removing, renaming and the search
// along a path variable, each in a scratch directory of its own.

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>
#include <utility>

#include "tav_environment.h"
#include "tav_file.h"
#include "tav_fs_scratch.h"

#if defined(_WIN32)
#include <windows.h>  // only to set the hidden attribute
#endif

namespace {

using tav::test::expectError;
using tav::test::expectNoError;
using tav::test::kNativeIsSlash;
using tav::test::ScratchDirectory;

#if defined(_WIN32)
void makeHidden(const std::string& path) {
  SetFileAttributesA(path.c_str(), GetFileAttributesA(path.c_str()) | FILE_ATTRIBUTE_HIDDEN);
}
#else
void makeHidden(const std::string&) {}
#endif

TEST(File, AttributesAndDatesOfAnExistingAndOfAMissingFile) {
  const ScratchDirectory scratch;
  scratch.writeFile("data.ini", "12345");
  TavClFile file(scratch.path("data.ini").c_str());
  EXPECT_TRUE(file.isExistent() && file.isFile());
  EXPECT_FALSE(file.isDirectory() || file.isReadOnly() || file.isHidden());
  EXPECT_EQ(file.getFileSize(), 5u);
  EXPECT_STREQ(file.getFileType(), "ini");
  EXPECT_STREQ(static_cast<const char*>(file), scratch.path("data.ini").c_str());
  // Generous bounds: the file system's clock and ours may differ a little.
  const time_t now = std::time(nullptr);
  for (time_t date : {file.getDateTimeOfLastModification(), file.getDateTimeOfLastAccess(),
                      file.getDateTimeOfCreation()}) {
    EXPECT_LE(std::abs(static_cast<long long>(date - now)), 600);
  }
  EXPECT_EQ(TavClFileABase::getDateTimeOfLastModification(file.getName()),
            file.getDateTimeOfLastModification());
  file.setReadOnly(true);
  EXPECT_TRUE(file.isReadOnly());
  file.setReadOnly(false);
  EXPECT_FALSE(file.isReadOnly());

  TavClFile missing(scratch.path("missing").c_str());
  EXPECT_FALSE(missing.isExistent() || missing.isHidden());
  EXPECT_EQ(missing.getFileSize(), 0u);
  EXPECT_STREQ(missing.getFileType(), "");
  EXPECT_TRUE(missing.isReadOnly());  // a name that cannot be written to counts as read-only
  EXPECT_EQ(missing.getDateTimeOfCreation(), 0);
  EXPECT_EQ(missing.getDateTimeOfLastAccess(), 0);
  EXPECT_EQ(missing.getDateTimeOfLastModification(), 0);
  missing.setReadOnly(true);
  expectNoError(missing.getLastError());

  EXPECT_STREQ(TavClFile("/d/data", "ini").getName(), "/d/data.ini");
  EXPECT_STREQ(TavClFile("/d/data", ".ini").getName(), "/d/data.ini");
  EXPECT_STREQ(TavClFile("/d/data.txt", "ini").getName(), "/d/data.txt");
  EXPECT_STREQ(TavClFile(TavClFilename("C:\\d\\data"), nullptr).getName(), "C:\\d\\data");
}

// Hidden is an attribute on Windows and a leading dot on POSIX.
TEST(File, HiddenFiles) {
  const ScratchDirectory scratch;
  scratch.writeFile(".profile", "");
  scratch.writeFile("attribute", "");
  makeHidden(scratch.path("attribute"));
  scratch.writeFile("plain", "");
  EXPECT_EQ(TavClFile(scratch.path("attribute").c_str()).isHidden(), !kNativeIsSlash);
  EXPECT_FALSE(TavClFile(scratch.path("plain").c_str()).isHidden());
  // Wine gives names with a leading dot the hidden attribute too; Windows itself does not.
  if (kNativeIsSlash) {
    EXPECT_TRUE(TavClFile(scratch.path(".profile").c_str()).isHidden());
  }
}

TEST(File, CopyMakesOrReplacesTheTargetWholeKeepingOrDroppingReadOnly) {
  const ScratchDirectory scratch;
  scratch.writeFile("source.txt", "new contents");
  scratch.writeFile("old.txt", "the old contents, which are longer");
  scratch.makeDirectory("dir");
  TavClFile source(scratch.path("source.txt").c_str());
  ASSERT_TRUE(source.copyTo(TavClFilename(scratch.path("copy.txt").c_str()), false));
  expectNoError(source.getLastError());
  ASSERT_TRUE(source.copyTo(TavClFilename(scratch.path("old.txt").c_str()), false));
  ASSERT_TRUE(source.copyTo(TavClLocation(scratch.path("dir").c_str()), false));
  for (const char* copy : {"copy.txt", "old.txt", "dir/source.txt"}) {
    EXPECT_EQ(scratch.readFile(copy), "new contents") << copy;
  }
  // No temporary file stays behind.
  EXPECT_EQ(scratch.countEntries(), 4u);
  EXPECT_EQ(scratch.countEntries("dir"), 1u);

  source.setReadOnly(true);
  ASSERT_TRUE(source.copyTo(TavClFilename(scratch.path("kept").c_str()), true));
  ASSERT_TRUE(source.copyTo(TavClFilename(scratch.path("dropped").c_str()), false));
  EXPECT_TRUE(TavClFile(scratch.path("kept").c_str()).isReadOnly());
  EXPECT_FALSE(TavClFile(scratch.path("dropped").c_str()).isReadOnly());
  EXPECT_TRUE(source.isReadOnly());
}

TEST(File, CopyOntoItsOwnNameFailsByTheRuleOfItsStyle) {
  // Backslash-style names are the same in any letter case; the test needs no file for this.
  TavClFile upper("C:\\dir\\FILE.TXT");
  EXPECT_FALSE(upper.copyTo(TavClFilename("c:\\Dir\\file.txt"), false));
  expectError(upper.getLastError(), FILE_COULD_NOT_COPY_SELF, TAV_CLASS_INCONSISTENT_SITUATION);
  TavClFile slash("/dir/File.txt");
  EXPECT_FALSE(slash.copyTo(TavClFilename("/dir/File.txt"), false));
  expectError(slash.getLastError(), FILE_COULD_NOT_COPY_SELF, TAV_CLASS_INCONSISTENT_SITUATION);

  // In slash style another letter case is another name. Where the file system ignores case it
  // is the same file, and the copy through a temporary name still leaves it whole.
  const ScratchDirectory scratch;
  scratch.writeFile("sub/File.txt", "contents");
  const tav::test::CurrentDirectoryChange change(scratch.text());
  TavClFile relative("sub/File.txt");
  ASSERT_TRUE(relative.copyTo(TavClFilename("sub/file.txt"), false));
  EXPECT_EQ(scratch.readFile("sub/File.txt"), "contents");
  EXPECT_EQ(scratch.readFile("sub/file.txt"), "contents");
}

TEST(File, FailedCopiesLeaveTheTargetAndTheDirectoryAsTheyWere) {
  const ScratchDirectory scratch;
  scratch.writeFile("source", "new");
  scratch.writeFile("target", "old");
  scratch.makeDirectory("a directory");
  TavClFile target(scratch.path("target").c_str());
  target.setReadOnly(true);
  // A read-only target is not replaced; a missing source and a directory are no sources.
  for (const char* name : {"source", "missing", "a directory"}) {
    SCOPED_TRACE(name);
    TavClFile source(scratch.path(name).c_str());
    EXPECT_FALSE(source.copyTo(target.getFilename(), false));
    expectError(source.getLastError(), FILE_COULD_NOT_COPY, TAV_CLASS_IO_PROBLEM);
    EXPECT_EQ(scratch.readFile("target"), "old");
    EXPECT_TRUE(target.isReadOnly());
    EXPECT_EQ(scratch.countEntries(), 3u);
  }
  // Once writable, the same target is replaced.
  target.setReadOnly(false);
  EXPECT_TRUE(TavClFile(scratch.path("source").c_str()).copyTo(target.getFilename(), false));
  EXPECT_EQ(scratch.readFile("target"), "new");
}

TEST(File, RemoveMakesAReadOnlyFileWritableFirst) {
  const ScratchDirectory scratch;
  scratch.writeFile("f", "x");
  TavClFile file(scratch.path("f").c_str());
  file.setReadOnly(true);
  ASSERT_TRUE(file.remove());
  expectNoError(file.getLastError());
  EXPECT_FALSE(scratch.exists("f"));

  EXPECT_FALSE(file.remove());
  expectError(file.getLastError(), FILE_COULD_NOT_REMOVE, TAV_CLASS_IO_NOT_EXISTENT);

  // A directory is no file: it exists, and unlinking it is refused.
  scratch.makeDirectory("d");
  TavClFile directory(scratch.path("d").c_str());
  EXPECT_FALSE(directory.remove());
  expectError(directory.getLastError(), FILE_COULD_NOT_REMOVE, TAV_CLASS_IO_PERMISSION_DENIED);
  EXPECT_TRUE(scratch.exists("d"));
}

TEST(File, RenameNeverReplacesAnExistingName) {
  const ScratchDirectory scratch;
  scratch.writeFile("a", "first");
  scratch.writeFile("b", "second");
  TavClFile file(scratch.path("a").c_str());

  EXPECT_FALSE(file.renameAs(TavClFilename(scratch.path("b").c_str())));
  expectError(file.getLastError(), FILE_COULD_NOT_RENAME, TAV_CLASS_IO_ALREADY_IN_USE);
  EXPECT_EQ(scratch.readFile("a"), "first");
  EXPECT_EQ(scratch.readFile("b"), "second");
  EXPECT_STREQ(file.getName(), scratch.path("a").c_str());

  ASSERT_TRUE(file.renameAs(TavClFilename(scratch.path("c").c_str())));
  expectNoError(file.getLastError());
  EXPECT_STREQ(file.getName(), scratch.path("c").c_str());
  EXPECT_FALSE(scratch.exists("a"));
  EXPECT_EQ(scratch.readFile("c"), "first");

  TavClFile missing(scratch.path("missing").c_str());
  EXPECT_FALSE(missing.renameAs(TavClFilename(scratch.path("d").c_str())));
  expectError(missing.getLastError(), FILE_COULD_NOT_RENAME, TAV_CLASS_IO_PERMISSION_DENIED);
}

TEST(File, SearchAlongAPathVariable) {
  const ScratchDirectory scratch;
  scratch.writeFile("first/only-first.dat", "");
  scratch.writeFile("second/both.dat", "");
  scratch.writeFile("first/both.dat", "");
  scratch.writeFile("second/only-second.dat", "");
  const std::string list = ";" + scratch.path("missing") + ";;" + scratch.path("first") + ";" +
                           scratch.path("second") + ";";
  TavClEnvironmentVariable variable("TAV_TEST_FILE_SEARCH", list.c_str());

  // A name that exists as it stands is kept; others are looked for by their name alone.
  const std::string present = scratch.path("second/both.dat");
  const std::pair<std::string, std::string> found[] = {
      {"both.dat", "first/both.dat"},
      {"elsewhere/only-second.dat", "second/only-second.dat"},
      {present, "second/both.dat"},
  };
  for (const auto& [name, where] : found) {
    SCOPED_TRACE(name);
    TavClFilename filename(name.c_str());
    ASSERT_TRUE(TavClFile::determineFileInEnvVarPath(filename, "TAV_TEST_FILE_SEARCH"));
    EXPECT_STREQ(filename.getAsCString(), scratch.path(where).c_str());
  }
  TavClFilename nowhere("nowhere.dat");
  EXPECT_FALSE(TavClFile::determineFileInEnvVarPath(nowhere, "TAV_TEST_FILE_SEARCH"));
  EXPECT_STREQ(nowhere.getAsCString(), "nowhere.dat");
  variable.resetValue();
  TavClFilename unset("both.dat");
  EXPECT_FALSE(TavClFile::determineFileInEnvVarPath(unset, "TAV_TEST_FILE_SEARCH"));
}

}  // namespace
