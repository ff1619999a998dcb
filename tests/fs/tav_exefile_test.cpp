// Programs found along the system's search order, dynamic libraries and their entry points.

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "tav_exefile.h"
#include "tav_fs_scratch.h"
#include "tav_test_allocator.h"
#include "tav_test_environment.h"

namespace {

using namespace tav::test;

// A program file in the scratch directory: "NAME.exe" on Windows; on POSIX with or without
// execute permission.
std::string makeProgram(const ScratchDirectory& scratch, const std::string& name,
                        bool executable = true) {
  const std::string file = kNativeIsSlash ? name : name + ".exe";
  scratch.writeFile(file, "#!/bin/sh\n");
  std::filesystem::permissions(
      scratch.path(file), std::filesystem::perms::owner_exec,
      executable ? std::filesystem::perm_options::add : std::filesystem::perm_options::remove);
  return scratch.path(file);
}

TEST(ExeFile, SearchFollowsTheSystemsOrderAndRules) {
  ScratchDirectory scratch;
  const std::string found = makeProgram(scratch, "exec/tavp");
  makeProgram(scratch, "plain/tavp", false);
  scratch.makeDirectory(kNativeIsSlash ? "dir/tavp" : "dir/tavp.exe");
  const char sep = kNativeIsSlash ? ':' : ';';
  // On POSIX a file without execute permission and a directory are passed over; Windows takes
  // the first name that exists, so there only the program's own directory is listed.
  const std::string path = kNativeIsSlash ? scratch.path("plain") + sep + scratch.path("dir") +
                                                sep + scratch.path("exec")
                                          : scratch.path("exec");
  VariableChange pathChange("PATH", path.c_str());
  TavClExeFile program("tavp");
  EXPECT_TRUE(program.isFoundInSystemPath());
  EXPECT_TRUE(std::filesystem::equivalent(program.getName(), found)) << program.getName();

  TavClExeFile missing("tav-no-such-program");
  EXPECT_FALSE(missing.isFoundInSystemPath());
  EXPECT_STREQ(missing.getName(),
               kNativeIsSlash ? "tav-no-such-program" : "tav-no-such-program.EXE");

  if (!kNativeIsSlash) return;
  {
    SCOPED_TRACE("an empty entry is the current directory");
    const std::string here = makeProgram(scratch, "cwd/tavp");
    CurrentDirectoryChange cwd(scratch.path("cwd"));
    VariableChange emptyEntry("PATH",
                              (scratch.path("plain") + "::" + scratch.path("exec")).c_str());
    EXPECT_EQ(std::string(TavClExeFile("tavp").getName()), here);
  }
  {
    SCOPED_TRACE("without PATH the system's default path applies");
    VariableChange unset("PATH", nullptr);
    EXPECT_TRUE(TavClExeFile("sh").isFoundInSystemPath());
  }
}

// An existing name is taken as it stands whatever the switch says; a missing one is looked
// for along PATH by its name alone when the switch is on.
TEST(ExeFile, NameWithDirectoryIsKeptAndSearchedOnlyWhenTheSwitchIsOn) {
  ScratchDirectory scratch;
  const std::string found = makeProgram(scratch, "bin/tavp");
  const std::string other = makeProgram(scratch, "other/tavp");
  const std::string gone = scratch.path("gone/") + std::filesystem::path(found).filename().string();
  VariableChange path("PATH", scratch.path("bin").c_str());
  for (const char* value : {static_cast<const char*>(nullptr), "off", "yes"}) {
    SCOPED_TRACE(value ? value : "(unset)");
    VariableChange switchValue("TAV_NEWPROCESS_USEPATH", value);
    const bool enabled = value != nullptr && value[0] == 'y';
    const TavClExeFile existing(other.c_str()), moved(gone.c_str());
    EXPECT_FALSE(existing.isFoundInSystemPath());
    EXPECT_EQ(std::string(existing.getName()), other);
    EXPECT_EQ(moved.isFoundInSystemPath(), enabled);
    EXPECT_EQ(std::string(moved.getName()), enabled ? found : gone);
  }
  // A relative name with a directory is not searched along PATH, though bin/ holds one.
  makeProgram(scratch, "bin/sub/tavp");
  EXPECT_FALSE(TavClExeFile(kNativeIsSlash ? "sub/tavp" : "sub\\tavp").isFoundInSystemPath());
}

// The library's own file, which every test program can load.
const char* const kLibraryFile = TAV_TEST_LIBRARY_FILE;

TEST(DllFile, FailedLoadRecordsTheSystemCodeAsResourceMissing) {
  ScratchDirectory scratch;
  scratch.writeFile(std::string("data") + TavClDllFile::getDefaultFileType(), "not a library");
  // ENOENT on POSIX, ERROR_MOD_NOT_FOUND on Windows; then a file that is no library.
  const std::pair<std::string, uint32_t> cases[] = {
      {scratch.path("missing"), kNativeIsSlash ? ENOENT : 126}, {scratch.path("data"), 0}};
  for (const auto& [file, code] : cases) {
    SCOPED_TRACE(file);
    TavClDllProcLoaderFile library(file.c_str());
    EXPECT_FALSE(library.isLoaded());
    EXPECT_TRUE(code != 0 ? library.getLastError().id == code : library.getLastError().id != 0)
        << library.getLastError().id;
    EXPECT_EQ(library.getLastError().errorClass, TAV_CLASS_RESOURCE_MISSING);
    EXPECT_EQ(library.getProcedure("tavDllProcLoaderOpen"), nullptr);
  }
}

// The C functions, one smoke test for them all, reach the library's own file; a bare name
// reaches a system library: Windows finds the file and names it in full, POSIX leaves that to
// dlopen.
TEST(DllFile, LoadsFindsEntryPointsAndClosesWithoutLeaks) {
  installCountingAllocator();
  const size_t before = liveBlocks();
  EXPECT_EQ(tavDllProcLoaderOpen("tav-no-such-library"), nullptr);
  EXPECT_EQ(liveBlocks(), before) << "a failed open keeps nothing";
  void* handle = tavDllProcLoaderOpen(kLibraryFile);
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(tavDllProcLoaderGetProcedure(handle, "tavDllProcLoaderClose"),
            reinterpret_cast<void*>(&tavDllProcLoaderClose));
  EXPECT_EQ(tavDllProcLoaderGetProcedure(handle, "tav_no_such_entry_point"), nullptr);
  tavDllProcLoaderClose(handle);
  tavDllProcLoaderClose(nullptr);
  EXPECT_EQ(tavDllProcLoaderGetProcedure(nullptr, "tavDllProcLoaderClose"), nullptr);
  EXPECT_EQ(liveBlocks(), before);

  TavClDllProcLoaderFile system(kNativeIsSlash ? "libc.so.6" : "kernel32");
  ASSERT_TRUE(system.isLoaded()) << system.getLoadFailureText();
  expectNoError(system.getLastError());
  EXPECT_EQ(system.isFoundInSystemPath(), !kNativeIsSlash);
  EXPECT_NE(system.getProcedure(kNativeIsSlash ? "getpid" : "GetCurrentProcessId"), nullptr);
}

}  // namespace
