// Directory walks: the entries of an empty and of a populated directory with the predicates,
// a directory that cannot be read, names cut at 260 characters, and running out of memory.

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "tav_file.h"
#include "tav_fs_scratch.h"
#include "tav_test_allocator.h"
#include "tav_test_data.h"

namespace {

using tav::test::kNativeIsSlash;
using tav::test::ScratchDirectory;

struct Seen {
  std::vector<bool> kind;  // directory, sub-directory, parent, current, matches "*.txt"
  bool hidden, readOnly;
  std::string withPath;
};

std::map<std::string, Seen> walkAll(TavClDirectoryWalk& walk) {
  std::map<std::string, Seen> seen;
  for (; walk.isValid(); walk.setToNext()) {
    seen[walk.getNameWithoutPath()] = {
        {walk.isDirectory(), walk.isSubDirectory(), walk.isParentDirectory(),
         walk.isCurrentDirectory(), walk.matchesWildcardPattern("*.txt")},
        walk.isHidden(),
        walk.isReadOnly(),
        walk.getNameWithPath()};
  }
  return seen;
}

TEST(DirectoryWalk, PredicatesOnAMissingAnEmptyAndAPopulatedDirectory) {
  const ScratchDirectory scratch;
  TavClDirectoryWalk missing{TavClLocation(scratch.path("missing").c_str())};
  EXPECT_FALSE(missing.isValid());
  tav::test::expectError(missing.getLastError(), DIRWALK_COULD_NOT_INIT, TAV_CLASS_IO_PROBLEM);
  EXPECT_FALSE(missing.setToNext());
  EXPECT_FALSE(missing.isReadOnly() || missing.isHidden() || missing.isSubDirectory());

  TavClDirectoryWalk empty{TavClLocation(scratch.text().c_str())};
  ASSERT_TRUE(empty.isValid());
  EXPECT_EQ(walkAll(empty).size(), 2u);  // "." and ".."
  tav::test::expectNoError(empty.getLastError());
  // After the end the walk stays invalid and answers with nothing.
  EXPECT_FALSE(empty.setToNext());
  EXPECT_STREQ(empty.getNameWithPath(), "");
  EXPECT_STREQ(empty.getNameWithoutPath(), "");
  EXPECT_FALSE(empty.isDirectory() || empty.isCurrentDirectory() ||
               empty.matchesWildcardPattern("*"));

  // The empty location walks the working directory.
  const tav::test::CurrentDirectoryChange change(scratch.text());
  scratch.writeFile("plain", "");
  TavClDirectoryWalk here{TavClLocation("")};
  EXPECT_EQ(walkAll(here)["plain"].withPath, "plain");

  for (const char* file : {"a.txt", "B.TXT", ".hidden", "locked"}) {
    scratch.writeFile(file, "");
  }
  for (const char* directory : {"sub", "x.y", "..z", ".git"}) scratch.makeDirectory(directory);
  TavClFile(scratch.path("locked").c_str()).setReadOnly(true);
  scratch.makeHidden("plain");
  TavClDirectoryWalk walk{TavClDirectory(scratch.text().c_str())};
  const auto seen = walkAll(walk);
  ASSERT_EQ(seen.size(), 11u);
  for (const auto& row : tav::test::readDataTable("fs/directory_walk_entries.txt", 6)) {
    SCOPED_TRACE(row.where);
    const std::string name = row.str(0);
    ASSERT_EQ(seen.count(name), 1u);
    const Seen& s = seen.at(name);
    EXPECT_EQ(s.kind,
              (std::vector<bool>{row.flag(1), row.flag(2), row.flag(3), row.flag(4), row.flag(5)}));
    EXPECT_EQ(s.withPath, scratch.text() + name);
    EXPECT_EQ(s.readOnly, name == "locked");
    // Hidden: a leading dot on POSIX, the attribute on Windows (which Wine also gives to
    // names with a leading dot, so those are left out there).
    const bool dotted = name[0] == '.' && name != "." && name != "..";
    if (kNativeIsSlash || !dotted) EXPECT_EQ(s.hidden, kNativeIsSlash ? dotted : name == "plain");
  }
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
  tav::test::forEachAllocationFailure([&] {
    TavClDirectoryWalk walk(location);
    while (walk.isValid()) walk.setToNext();
  });
}

}  // namespace
