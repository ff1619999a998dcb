// Launching programs: the command line, arguments reaching the child exactly, exit codes,
// failed starts, what the child inherits, and asynchronous children that are killed.

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tav_environment.h"
#include "tav_exefile.h"
#include "tav_newprocess.h"
#include "tav_process.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

namespace fs = std::filesystem;

#if defined(_WIN32)
constexpr bool kPosix = false;
#else
constexpr bool kPosix = true;
#endif

const std::string kHelper = fs::path(TAV_TEST_PROCESS_HELPER).make_preferred().string();

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

// A directory of its own for each test, removed afterwards.
struct Scratch {
  Scratch() {
    static int counter = 0;
    root =
        fs::temp_directory_path() / ("tav-proc-" + std::to_string(TavClProcessProperty().getId()) +
                                     "-" + std::to_string(counter++));
    fs::remove_all(root);
    fs::create_directories(root);
  }
  ~Scratch() {
    std::error_code ignored;
    fs::remove_all(root, ignored);
  }
  std::string path(const char* name) const { return (root / name).string(); }
  fs::path root;
};

// What the helper wrote: its arguments and the resources it found open.
struct HelperReport {
  bool complete = false;
  std::vector<std::string> arguments;
  std::vector<std::string> resources;
};

HelperReport readReport(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  HelperReport report;
  size_t at = text.find('\n') + 1;
  while (at != 0 && at < text.size()) {
    if (text.compare(at, 4, "arg ") == 0) {
      const size_t colon = text.find(':', at);
      const size_t length = std::stoul(text.substr(at + 4, colon - at - 4));
      report.arguments.push_back(text.substr(colon + 1, length));
      at = colon + 1 + length + 1;
    } else {
      const size_t end = text.find('\n', at);
      const std::string line = text.substr(at, end - at);
      if (line == "end")
        report.complete = true;
      else
        report.resources.push_back(line);
      at = end + 1;
    }
  }
  return report;
}

// Runs the helper with the arguments and waits for it; the report it wrote.
HelperReport runHelper(const std::vector<std::string>& arguments, const Scratch& scratch) {
  const std::string output = scratch.path("report.txt");
  VariableChange target("TAV_HELPER_OUTPUT", output.c_str());
  TavClNewSyncProcess process{TavClExeFile(kHelper.c_str())};
  for (const std::string& argument : arguments) process.addArgument(argument.c_str());
  EXPECT_TRUE(process.launch()) << "system code " << process.getResult();
  EXPECT_EQ(process.getResult(), 0u);
  return readReport(output);
}

TEST(NewProcess, CommandLineStartsWithTheProgramAndQuotesEachArgument) {
  TavClNewSyncProcess process{TavClExeFile(kHelper.c_str())};
  EXPECT_EQ(process.getArgumentCount(), 1);
  EXPECT_EQ(std::string(process.getCommandLine()), kHelper);
  process.addArgument("a");
  process.addArgument(static_cast<const char*>(nullptr));  // adds nothing, not even a blank
  process.addArgument("b c");
  process.addArgument("C:\\dir\\");
  process.addArgument("C:\\my dir\\");
  process.addArgument(-5L);
  process.addArgument(7UL);
  process.addArgument(0);
  process.addArgument(4000000000u);
  EXPECT_EQ(process.getArgumentCount(), 9);
  EXPECT_EQ(std::string(process.getCommandLine()),
            kHelper + " a \"b c\" C:\\dir\\ \"C:\\my dir\\\\\" -5 7 0 4000000000");
  EXPECT_EQ(process.getError().id, NO_ERROR);
  EXPECT_FALSE(process.hasNewConsole());

  // A program path with a blank is quoted as the first item.
  TavClFilename spaced("C:\\Program Files\\tool.exe");
  TavClNewAsyncProcess quoted{TavClExeFile(spaced)};
  EXPECT_EQ(std::string(quoted.getCommandLine()), "\"C:\\Program Files\\tool.exe\"");
}

TEST(NewProcess, ArgumentsReachTheChildExactly) {
  Scratch scratch;
  const std::vector<std::string> arguments = {"plain",
                                              "two words",
                                              "",
                                              "tab\there",
                                              "quote\"inside",
                                              "back\\slash\\",
                                              "\\\\server\\share\\",
                                              "x\" \"--force",
                                              "trailing blank ",
                                              "\xC3\xA9t\xC3\xA9",
                                              "C:\\my dir\\",
                                              "a\\\\\"b",
                                              "\"",
                                              "  ",
                                              "*.txt",
                                              "$HOME",
                                              "`id`;|&"};
  const HelperReport report = runHelper(arguments, scratch);
  EXPECT_TRUE(report.complete);
  EXPECT_EQ(report.arguments, arguments);
}

TEST(NewProcess, SyncLaunchGivesTheExitCodeAndCanBeRepeated) {
  for (const char* code : {"0", "3", "42", "255"}) {
    SCOPED_TRACE(code);
    VariableChange exitCode("TAV_HELPER_EXIT", code);
    TavClNewSyncProcess process{TavClExeFile(kHelper.c_str())};
    ASSERT_TRUE(process.launch());
    EXPECT_EQ(process.getResult(), static_cast<uint32_t>(std::stoul(code)));
    EXPECT_EQ(process.getError().id, NO_ERROR);
    EXPECT_EQ(process.getError().errorClass, TAV_CLASS_UNKNOWN);
    ASSERT_TRUE(process.launch());
    EXPECT_EQ(process.getResult(), static_cast<uint32_t>(std::stoul(code)));
  }
}

TEST(NewProcess, ChildEndedBySignalReports128PlusTheSignal) {
  if (!kPosix) GTEST_SKIP() << "signals end processes on POSIX only";
#if !defined(_WIN32)
  for (int signal : {SIGKILL, SIGTERM, SIGSEGV}) {
    SCOPED_TRACE(signal);
    VariableChange ending("TAV_HELPER_SIGNAL", std::to_string(signal).c_str());
    TavClNewSyncProcess process{TavClExeFile(kHelper.c_str())};
    ASSERT_TRUE(process.launch());
    EXPECT_EQ(process.getResult(), 128u + static_cast<uint32_t>(signal));
  }
#endif
}

TEST(NewProcess, FailedStartKeepsTheSystemCodeAndPresetError) {
  Scratch scratch;
  // A file that exists but cannot be run: no execute permission on POSIX, no program format
  // on Windows.
  const std::string notAProgram = scratch.path(kPosix ? "data" : "data.exe");
  std::ofstream(notAProgram) << "not a program\n";
  struct Case {
    const char* name;
    std::string program;
    std::vector<uint32_t> codes;  // the system codes that may come back
  };
  const Case cases[] = {
      {"missing program", scratch.path(kPosix ? "missing" : "missing.exe"),
       kPosix ? std::vector<uint32_t>{ENOENT} : std::vector<uint32_t>{2, 3}},
      {"missing directory", scratch.path(kPosix ? "gone/prog" : "gone\\prog.exe"),
       kPosix ? std::vector<uint32_t>{ENOENT} : std::vector<uint32_t>{2, 3}},
      {"not executable", notAProgram,
       kPosix ? std::vector<uint32_t>{EACCES} : std::vector<uint32_t>{193, 216, 11}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const TavClExeFile program(c.program.c_str());
    TavClNewSyncProcess sync(program);
    TavClNewAsyncProcess async(program);
    for (TavClNewProcessABase* process :
         {static_cast<TavClNewProcessABase*>(&sync), static_cast<TavClNewProcessABase*>(&async)}) {
      EXPECT_FALSE(process->launch());
      EXPECT_EQ(process->getError().id, PROCESS_COULD_NOT_LAUNCH);
      EXPECT_EQ(process->getError().errorClass, TAV_CLASS_UNKNOWN_PROCESS);
      EXPECT_NE(std::find(c.codes.begin(), c.codes.end(), process->getResult()), c.codes.end())
          << "system code " << process->getResult();
    }
  }
}

TEST(NewProcess, ProgramFoundAlongThePathStarts) {
  // The system's shell, found by its bare name, runs a command that ends with code 5.
  const TavClExeFile shell(kPosix ? "sh" : "cmd");
  ASSERT_TRUE(shell.isFoundInSystemPath());
  TavClNewSyncProcess process(shell);
  process.addArgument(kPosix ? "-c" : "/c");
  process.addArgument("exit 5");
  ASSERT_TRUE(process.launch()) << process.getResult();
  EXPECT_EQ(process.getResult(), 5u);
}

TEST(NewProcess, NothingAboveStandardErrorIsInherited) {
  Scratch scratch;
#if defined(_WIN32)
  // An inheritable handle: passed on only if the launcher allowed inheritance.
  SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
  HANDLE event = CreateEventA(&inheritable, TRUE, FALSE, nullptr);
  ASSERT_NE(event, nullptr);
  VariableChange handle("TAV_HELPER_HANDLE",
                        std::to_string(reinterpret_cast<uintptr_t>(event)).c_str());
  const HelperReport report = runHelper({"x"}, scratch);
  CloseHandle(event);
#else
  // Descriptors the caller opened without close-on-exec, as a careless program would.
  const int file = open(scratch.path("held").c_str(), O_CREAT | O_WRONLY, 0600);
  int channel[2];
  ASSERT_GE(file, 0);
  ASSERT_EQ(pipe(channel), 0);
  const int high = dup2(file, 700);
  ASSERT_EQ(high, 700);
  const HelperReport report = runHelper({"x"}, scratch);
  for (int descriptor : {file, channel[0], channel[1], high}) close(descriptor);
#endif
  EXPECT_TRUE(report.complete);
  EXPECT_EQ(report.resources, std::vector<std::string>{});
}

#if defined(_WIN32)
// Waits until the process of that id has ended.
bool waitForEnd(uint32_t processId) {
  HANDLE process = OpenProcess(SYNCHRONIZE, FALSE, processId);
  if (process == nullptr) return true;
  const bool ended = WaitForSingleObject(process, 10000) == WAIT_OBJECT_0;
  CloseHandle(process);
  return ended;
}
#else
// The state letter of a process and its parent, from /proc; 0 when there is no such process.
char processState(uint32_t processId, long* parent) {
  std::ifstream in("/proc/" + std::to_string(processId) + "/stat");
  std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  const size_t close = text.rfind(')');
  if (close == std::string::npos) return 0;
  char state = 0;
  *parent = 0;
  std::sscanf(text.c_str() + close + 1, " %c %ld", &state, parent);
  return state;
}

// Waits until the process of that id has ended: gone, or a zombie of another parent.
bool waitForEnd(uint32_t processId) {
  for (int step = 0; step < 1000; ++step) {
    long parent = 0;
    const char state = processState(processId, &parent);
    if (state == 0 || state == 'Z') return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}
#endif

TEST(NewProcess, AsyncLaunchGivesTheProgramsIdAndKillEndsIt) {
  Scratch scratch;
  const std::string output = scratch.path("report.txt");
  VariableChange target("TAV_HELPER_OUTPUT", output.c_str());
  VariableChange sleeping("TAV_HELPER_SLEEP", "60");
  TavClNewAsyncProcess process{TavClExeFile(kHelper.c_str())};
  process.addArgument("running late");
  const auto started = std::chrono::steady_clock::now();
  ASSERT_TRUE(process.launch()) << process.getResult();
  EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(20))
      << "the launch waited for the program";
  EXPECT_EQ(process.getError().id, NO_ERROR);
  const uint32_t id = process.getResult();
  ASSERT_NE(id, 0u);

  // The id is the program's own: it is the one that writes the report.
  HelperReport report;
  for (int step = 0; step < 1000 && !report.complete; ++step) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    report = readReport(output);
  }
  EXPECT_EQ(report.arguments, std::vector<std::string>{"running late"});
#if !defined(_WIN32)
  long parent = 0;
  EXPECT_EQ(processState(id, &parent), 'S');
  EXPECT_NE(parent, static_cast<long>(getpid())) << "the program is a child of the caller";
  // The intermediate process has been collected: the caller has no child left to wait for.
  int status = 0;
  EXPECT_EQ(waitpid(-1, &status, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
#endif
  TavClProcess running(id);
  EXPECT_TRUE(running.kill());
  EXPECT_TRUE(waitForEnd(id)) << "the program is still running";
}

TEST(NewProcess, BatchFileWithUnsafeArgumentsIsRefused) {
  if (kPosix) GTEST_SKIP() << "batch files run through the command interpreter on Windows only";
  Scratch scratch;
  const std::string batch = scratch.path("run.bat");
  std::ofstream(batch) << "@exit /b 4\r\n";
  for (const char* unsafe : {"a&calc", "%PATH%", "\"quoted\"", "x|y"}) {
    SCOPED_TRACE(unsafe);
    TavClNewSyncProcess process{TavClExeFile(batch.c_str())};
    process.addArgument("safe");
    process.addArgument(unsafe);
    EXPECT_FALSE(process.launch());
    EXPECT_EQ(process.getResult(), static_cast<uint32_t>(TAV_NEWPROCESS_UNSAFE_BATCH_ARGUMENT));
    EXPECT_EQ(process.getError().id, PROCESS_COULD_NOT_LAUNCH);
  }
  TavClNewSyncProcess safe{TavClExeFile(batch.c_str())};
  safe.addArgument("two words");
  EXPECT_TRUE(safe.launch()) << safe.getResult();
  EXPECT_EQ(safe.getResult(), 4u);
}

}  // namespace
