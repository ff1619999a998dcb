// Programs found along the system's search order, dynamic libraries and their entry points.

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tav_environment.h"
#include "tav_exefile.h"
#include "tav_fs_scratch.h"
#include "tav_test_allocator.h"

namespace {

using tav::test::kNativeIsSlash;
using tav::test::ScratchDirectory;

// Sets a variable for the lifetime of the object and puts the old value back afterwards.
class VariableChange {
 public:
  VariableChange(const char* name, const char* value) : variable(name, nullptr) {
    if (const char* old = TavClEnvironmentVariableQueryOnly(name).getValue()) previous = old;
    variable.setNewValue(value);
  }
  ~VariableChange() { variable.setNewValue(previous ? previous->c_str() : nullptr); }

 private:
  TavClEnvironmentVariable variable;
  std::optional<std::string> previous;
};

// The name a program file has on disk: with ".exe" on Windows.
std::string programFile(const std::string& base) { return kNativeIsSlash ? base : base + ".exe"; }

void makeProgram(const ScratchDirectory& scratch, const std::string& relative, bool executable) {
  scratch.writeFile(relative, "#!/bin/sh\nexit 0\n");
  namespace fs = std::filesystem;
  fs::permissions(scratch.path(relative), fs::perms::owner_exec,
                  executable ? fs::perm_options::add : fs::perm_options::remove);
}

// One directory list for PATH, in the native form.
std::string pathList(const std::vector<std::string>& directories) {
  std::string list;
  for (const std::string& directory : directories) {
    if (!list.empty() || &directory != &directories.front()) list += kNativeIsSlash ? ':' : ';';
    list += directory;
  }
  return list;
}

TEST(ExeFile, BareNameIsFoundAlongThePathAndTakesTheFullName) {
  ScratchDirectory scratch;
  makeProgram(scratch, "bin/" + programFile("tavprogram"), true);
  VariableChange path("PATH", scratch.path("bin").c_str());

  TavClExeFile program("tavprogram");
  EXPECT_TRUE(program.isFoundInSystemPath());
  EXPECT_TRUE(std::filesystem::equivalent(program.getName(),
                                          scratch.path("bin/" + programFile("tavprogram"))));
  EXPECT_TRUE(program.isExistent());

  TavClExeFile missing("tav-no-such-program");
  EXPECT_FALSE(missing.isFoundInSystemPath());
  EXPECT_EQ(std::string(missing.getFilename().getName()),
            kNativeIsSlash ? "tav-no-such-program" : "tav-no-such-program.EXE");
  EXPECT_EQ(std::string(TavClExeFile::getDefaultFileType()), kNativeIsSlash ? "" : "EXE");
  EXPECT_EQ(std::string(TavClExeFile::getSystemPathEnvironmentVariable()), "PATH");
}

// The rules of execvp: which entry of PATH supplies the program.
TEST(ExeFile, PosixSearchTakesTheFirstRegularExecutableFileAlongPath) {
  if (!kNativeIsSlash) GTEST_SKIP() << "execute permissions are a POSIX rule";
  struct Case {
    const char* name;
    std::vector<std::string> entries;  // directories of PATH, "" for the current directory
    const char* expected;              // the directory that supplies the program, or null
  };
  const Case cases[] = {
      {"a file without execute permission is passed over", {"plain", "exec"}, "exec"},
      {"a directory of the program's name is passed over", {"dir", "exec"}, "exec"},
      {"the first of two executables wins", {"exec", "exec2"}, "exec"},
      {"an empty entry is the current directory", {"plain", "", "exec"}, "cwd"},
      {"nothing runnable anywhere", {"plain", "dir"}, nullptr},
      {"a directory that does not exist is skipped", {"missing", "exec2"}, "exec2"},
  };
  ScratchDirectory scratch;
  makeProgram(scratch, "plain/tavp", false);
  scratch.makeDirectory("dir/tavp");
  makeProgram(scratch, "exec/tavp", true);
  makeProgram(scratch, "exec2/tavp", true);
  makeProgram(scratch, "cwd/tavp", true);
  tav::test::CurrentDirectoryChange cwd(scratch.path("cwd"));
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<std::string> directories;
    for (const std::string& entry : c.entries) {
      directories.push_back(entry.empty() ? "" : scratch.path(entry));
    }
    VariableChange path("PATH", pathList(directories).c_str());
    TavClExeFile program("tavp");
    EXPECT_EQ(program.isFoundInSystemPath(), c.expected != nullptr);
    const std::string expected =
        c.expected ? scratch.path(std::string(c.expected) + "/tavp") : "tavp";
    EXPECT_EQ(std::string(program.getName()), expected);
  }
}

TEST(ExeFile, PosixSearchUsesTheSystemDefaultWhenPathIsUnset) {
  if (!kNativeIsSlash) GTEST_SKIP() << "Windows always has its system directories";
  VariableChange path("PATH", nullptr);
  TavClExeFile shell("sh");
  EXPECT_TRUE(shell.isFoundInSystemPath());
  EXPECT_EQ(shell.getName()[0], '/');
}

TEST(ExeFile, NameWithDirectoryIsKeptAndSearchedOnlyWhenTheSwitchIsOn) {
  ScratchDirectory scratch;
  const std::string file = programFile("tavprogram");
  makeProgram(scratch, "bin/" + file, true);
  makeProgram(scratch, "other/" + file, true);
  VariableChange path("PATH", scratch.path("bin").c_str());

  {
    SCOPED_TRACE("an existing name is taken as it stands, though the path has one too");
    VariableChange on("TAV_NEWPROCESS_USEPATH", "on");
    TavClExeFile program(scratch.path("other/" + file).c_str());
    EXPECT_FALSE(program.isFoundInSystemPath());
    EXPECT_EQ(std::string(program.getName()), scratch.path("other/" + file));
  }
  for (const char* value : {static_cast<const char*>(nullptr), "0", "off", "yes", "TRUE"}) {
    SCOPED_TRACE(value ? value : "(unset)");
    VariableChange switchValue("TAV_NEWPROCESS_USEPATH", value);
    const bool enabled = value != nullptr && (value[0] == 'y' || value[0] == 'T');
    const std::string gone = scratch.path("gone/" + file);
    TavClExeFile program(gone.c_str());
    EXPECT_EQ(program.isFoundInSystemPath(), enabled);
    const std::string expected = enabled ? scratch.path("bin/" + file) : gone;
    EXPECT_EQ(std::string(program.getName()), expected);
  }
  {
    SCOPED_TRACE("a directory part is never searched along the path itself");
    makeProgram(scratch, "bin/sub/" + file, true);
    TavClExeFile program(("sub/" + file).c_str());
    EXPECT_FALSE(program.isFoundInSystemPath());
    // Asked explicitly, SearchPathA tries a relative name with a directory in each directory
    // of its order; execvp never does.
    if (kNativeIsSlash) {
      EXPECT_FALSE(program.determinePath(0, "PATH"));
      EXPECT_FALSE(program.isFoundInSystemPath());
    }
  }
}

TEST(ExeFile, DeterminePathReportsTheSearchAndClearsTheFlagOnAMiss) {
  ScratchDirectory scratch;
  makeProgram(scratch, "bin/" + programFile("tavprogram"), true);
  VariableChange path("PATH", scratch.path("bin").c_str());
  TavClExeFile program("tavprogram");
  ASSERT_TRUE(program.isFoundInSystemPath());
  // Searching again by the full name finds the same file; the named variable plays no part.
  EXPECT_TRUE(kNativeIsSlash ? !program.determinePath(0, "NOT_PATH")
                             : program.determinePath(0, "NOT_PATH"));
  EXPECT_EQ(program.isFoundInSystemPath(), !kNativeIsSlash);
  std::filesystem::remove(scratch.path("bin/" + programFile("tavprogram")));
  TavClExeFile gone("tavprogram");
  EXPECT_FALSE(gone.isFoundInSystemPath());
}

// The library's own file, which every test program can load.
const char* const kLibraryFile = TAV_TEST_LIBRARY_FILE;

TEST(DllFile, LoadsOnConstructionAndFindsEntryPoints) {
  TavClDllProcLoaderFile library(kLibraryFile);
  ASSERT_TRUE(library.isLoaded()) << library.getLoadFailureText();
  tav::test::expectNoError(library.getLastError());
  EXPECT_FALSE(library.isFoundInSystemPath());  // named with its directory
  EXPECT_STREQ(library.getLoadFailureText(), "");
  EXPECT_EQ(library.getProcedure("tavDllProcLoaderOpen"),
            reinterpret_cast<void*>(&tavDllProcLoaderOpen));
  EXPECT_EQ(library.getProcedure("tav_no_such_entry_point"), nullptr);
  EXPECT_EQ(std::string(TavClDllFile::getDefaultFileType()), kNativeIsSlash ? ".so" : ".DLL");
}

TEST(DllFile, BareSystemLibraryLoadsThroughTheSystemsSearch) {
  // Windows finds the file itself and names it in full; POSIX leaves the search to dlopen.
  TavClDllProcLoaderFile library(kNativeIsSlash ? "libc.so.6" : "kernel32");
  ASSERT_TRUE(library.isLoaded()) << library.getLoadFailureText();
  EXPECT_EQ(library.isFoundInSystemPath(), !kNativeIsSlash);
  EXPECT_NE(library.getProcedure(kNativeIsSlash ? "getpid" : "GetCurrentProcessId"), nullptr);
}

TEST(DllFile, FailedLoadRecordsTheSystemCodeAsResourceMissing) {
  ScratchDirectory scratch;
  scratch.writeFile("notalib" + std::string(TavClDllFile::getDefaultFileType()), "not a library");
  struct Case {
    const char* name;
    std::string file;
  };
  const Case cases[] = {
      {"missing", scratch.path("tav-no-such-library")},
      {"not a library", scratch.path("notalib")},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    TavClDllProcLoaderFile library(c.file.c_str());
    EXPECT_FALSE(library.isLoaded());
    EXPECT_NE(library.getLastError().id, 0u);
    EXPECT_EQ(library.getLastError().errorClass, TAV_CLASS_RESOURCE_MISSING);
    EXPECT_STRNE(library.getLoadFailureText(), "");
    EXPECT_EQ(library.getProcedure("tavDllProcLoaderOpen"), nullptr);
  }
  // The code is the system's: ENOENT on POSIX, ERROR_MOD_NOT_FOUND (126) on Windows.
  TavClDllFile missing(cases[0].file.c_str());
  EXPECT_EQ(missing.getLastError().id, kNativeIsSlash ? static_cast<uint32_t>(ENOENT) : 126u);
}

TEST(DllProcLoader, CFunctionsOpenLookUpAndCloseWithoutLeaks) {
  tav::test::installCountingAllocator();
  const size_t before = tav::test::liveBlocks();
  EXPECT_EQ(tavDllProcLoaderOpen("tav-no-such-library"), nullptr);
  EXPECT_EQ(tav::test::liveBlocks(), before) << "a failed open keeps nothing";

  void* handle = tavDllProcLoaderOpen(kLibraryFile);
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(tav::test::liveBlocks(), before + 1);
  EXPECT_EQ(tavDllProcLoaderGetProcedure(handle, "tavDllProcLoaderClose"),
            reinterpret_cast<void*>(&tavDllProcLoaderClose));
  EXPECT_EQ(tavDllProcLoaderGetProcedure(handle, "tav_no_such_entry_point"), nullptr);
  EXPECT_EQ(tavDllProcLoaderGetProcedure(nullptr, "tavDllProcLoaderClose"), nullptr);
  tavDllProcLoaderClose(handle);
  tavDllProcLoaderClose(nullptr);
  EXPECT_EQ(tav::test::liveBlocks(), before);
}

}  // namespace
