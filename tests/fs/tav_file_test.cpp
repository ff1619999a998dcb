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
  EXPECT_STREQ(static_cast<const char*>(file), scratch.path("data.ini").c_str());
  // Generous bounds: the file system's clock and ours may differ a little.
  for (time_t date : {file.getDateTimeOfLastModification(), file.getDateTimeOfLastAccess(),
                      file.getDateTimeOfCreation()}) {
    EXPECT_LE(std::abs(static_cast<long long>(date - std::time(nullptr))), 600);
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
  EXPECT_EQ(missing.getDateTimeOfCreation() + missing.getDateTimeOfLastAccess() +
                missing.getDateTimeOfLastModification(),
            0);
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
  if (kNativeIsSlash) EXPECT_TRUE(TavClFile(scratch.path(".profile").c_str()).isHidden());
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
  expectNoError(source.getLastError());
  ASSERT_TRUE(source.copyTo(nameIn(scratch, "old.txt"), false));
  ASSERT_TRUE(source.copyTo(TavClLocation(scratch.path("dir").c_str()), false));
  for (const char* copy : {"copy.txt", "old.txt", "dir/source.txt"}) {
    EXPECT_EQ(scratch.readFile(copy), "new contents") << copy;
  }
  // No temporary file stays behind.
  EXPECT_EQ(scratch.countEntries(), 4u);
  EXPECT_EQ(scratch.countEntries("dir"), 1u);

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
  EXPECT_TRUE(target.isReadOnly());

  // In slash style another letter case is another name. Where the file system ignores case it
  // is the same file, and the copy through a temporary name still leaves it whole.
  const CurrentDirectoryChange change(scratch.text());
  ASSERT_TRUE(TavClFile("source").copyTo(TavClFilename("Source"), false));
  EXPECT_EQ(scratch.readFile("source"), "new");
  EXPECT_EQ(scratch.readFile("Source"), "new");
}

TEST(File, RemoveMakesAReadOnlyFileWritableAndRenameNeverReplacesAnExistingName) {
  const ScratchDirectory scratch;
  scratch.writeFile("f", "x");
  TavClFile file(scratch.path("f").c_str());
  file.setReadOnly(true);
  ASSERT_TRUE(file.remove());
  expectNoError(file.getLastError());
  EXPECT_FALSE(file.remove());
  expectError(file.getLastError(), FILE_COULD_NOT_REMOVE, TAV_CLASS_IO_NOT_EXISTENT);
  // A directory is no file: it exists, and unlinking it is refused.
  scratch.makeDirectory("d");
  TavClFile directory(scratch.path("d").c_str());
  EXPECT_FALSE(directory.remove());
  expectError(directory.getLastError(), FILE_COULD_NOT_REMOVE, TAV_CLASS_IO_PERMISSION_DENIED);
  EXPECT_TRUE(scratch.exists("d"));

  scratch.writeFile("a", "first");
  scratch.writeFile("b", "second");
  TavClFile renamed(scratch.path("a").c_str());
  EXPECT_FALSE(renamed.renameAs(nameIn(scratch, "b")));
  expectError(renamed.getLastError(), FILE_COULD_NOT_RENAME, TAV_CLASS_IO_ALREADY_IN_USE);
  EXPECT_EQ(scratch.readFile("b"), "second");
  EXPECT_STREQ(renamed.getName(), scratch.path("a").c_str());
  ASSERT_TRUE(renamed.renameAs(nameIn(scratch, "c")));
  expectNoError(renamed.getLastError());
  EXPECT_STREQ(renamed.getName(), scratch.path("c").c_str());
  EXPECT_FALSE(scratch.exists("a"));
  EXPECT_EQ(scratch.readFile("c"), "first");
  TavClFile missing(scratch.path("missing").c_str());
  EXPECT_FALSE(missing.renameAs(nameIn(scratch, "e")));
  expectError(missing.getLastError(), FILE_COULD_NOT_RENAME, TAV_CLASS_IO_PERMISSION_DENIED);
}

TEST(File, SearchAlongAPathVariable) {
  const ScratchDirectory scratch;
  for (const char* file : {"first/only-first", "first/both", "second/both", "second/only"}) {
    scratch.writeFile(file, "");
  }
  const std::string list = ";" + scratch.path("missing") + ";;" + scratch.path("first") + ";" +
                           scratch.path("second") + ";";
  TavClEnvironmentVariable variable("TAV_TEST_FILE_SEARCH", list.c_str());

  // A name that exists as it stands is kept; others are looked for by their name alone.
  const std::pair<std::string, std::string> found[] = {
      {"both", "first/both"},
      {"elsewhere/only", "second/only"},
      {scratch.path("second/both"), "second/both"},
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
  EXPECT_FALSE(TavClFile::determineFileInEnvVarPath(nowhere, "TAV_TEST_FILE_SEARCH"));
}

}  // namespace
