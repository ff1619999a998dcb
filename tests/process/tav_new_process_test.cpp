// Launching programs: the command line, arguments reaching the child exactly, exit codes,
// failed starts, what the child inherits, and an asynchronous child that is killed. The child
// is tav_process_helper, which writes back what it received.

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "tav_exefile.h"
#include "tav_newprocess.h"
#include "tav_process.h"
#include "tav_test_environment.h"

#if defined(_WIN32)
#include <windows.h>
constexpr bool kPosix = false;
#else
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
constexpr bool kPosix = true;
#endif

namespace {

namespace fs = std::filesystem;
using tav::test::VariableChange;

const TavClExeFile kHelper(fs::path(TAV_TEST_PROCESS_HELPER).make_preferred().string().c_str());
const std::string kOutput =
    (fs::temp_directory_path() / ("tav-helper-" + std::to_string(TavClProcessProperty().getId())))
        .string();

// The helper's report: its arguments, then what it found open, then "end" when complete.
std::vector<std::string> readReport() {
  std::ifstream in(kOutput, std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::vector<std::string> items;
  for (size_t at = 0; at < text.size();) {
    size_t end = text.find('\n', at);
    if (text.compare(at, 4, "arg ") == 0) {
      const size_t colon = text.find(':', at);
      end = colon + 1 + std::stoul(text.substr(at + 4, colon - at - 4));
      items.push_back(text.substr(colon + 1, end - colon - 1));
    } else {
      items.push_back(text.substr(at, end - at));
    }
    at = end + 1;
  }
  return items;
}

TEST(NewProcess, ArgumentsReachTheChildExactlyAsWritten) {
  VariableChange output("TAV_HELPER_OUTPUT", kOutput.c_str());
  TavClNewSyncProcess process(kHelper);
  const std::vector<std::string> arguments = {
      "a",         "b c",           "C:\\dir\\", "C:\\my dir\\",      "",
      "tab\there", "x\" \"--force", "a\\\\\"b",  "\xC3\xA9t\xC3\xA9", "$HOME`id`;|&*"};
  for (const std::string& argument : arguments) process.addArgument(argument.c_str());
  process.addArgument(static_cast<const char*>(nullptr));  // adds nothing, not even a blank
  process.addArgument(-5L);
  process.addArgument(4000000000UL);
  EXPECT_EQ(process.getArgumentCount(), 13);
  // The program first; only what needs quotes is quoted; the numbers last.
  const std::string line = process.getCommandLine();
  const std::string start =
      std::string(kHelper.getName()) + " a \"b c\" C:\\dir\\ \"C:\\my dir\\\\\" \"\" \"tab\t";
  EXPECT_EQ(line.compare(0, start.size(), start), 0) << line;
  EXPECT_EQ(line.substr(line.size() - 14), " -5 4000000000") << line;
  ASSERT_TRUE(process.launch()) << "system code " << process.getResult();
  EXPECT_EQ(process.getResult(), 0u);
  std::vector<std::string> expected = arguments;
  expected.insert(expected.end(), {"-5", "4000000000", "end"});
  EXPECT_EQ(readReport(), expected);
  fs::remove(kOutput);
}

TEST(NewProcess, SyncLaunchGivesTheExitCodeOr128PlusTheEndingSignal) {
  struct Case {
    const char* variable;
    const char* value;
    uint32_t result;
  };
  std::vector<Case> cases = {{"TAV_HELPER_EXIT", "0", 0}, {"TAV_HELPER_EXIT", "255", 255}};
#if !defined(_WIN32)
  cases.push_back({"TAV_HELPER_SIGNAL", "9", 128 + SIGKILL});
#endif
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.variable) + "=" + c.value);
    VariableChange ending(c.variable, c.value);
    TavClNewSyncProcess process(kHelper);
    for (int launch = 0; launch < 2; ++launch) {  // a launcher can be launched again
      ASSERT_TRUE(process.launch());
      EXPECT_EQ(process.getResult(), c.result);
      EXPECT_EQ(process.getError().id, NO_ERROR);
    }
  }
}

TEST(NewProcess, FailedStartKeepsTheSystemCodeAndPresetError) {
  // A file that cannot be run: no execute permission on POSIX, no program format on Windows.
  const std::string data = kOutput + (kPosix ? "" : ".exe");
  std::ofstream(data) << "not a program\n";
  const std::vector<uint32_t> missing =
      kPosix ? std::vector<uint32_t>{ENOENT} : std::vector<uint32_t>{2, 3};
  const std::vector<uint32_t> refused =
      kPosix ? std::vector<uint32_t>{EACCES} : std::vector<uint32_t>{11, 193, 216};
  const std::pair<std::string, std::vector<uint32_t>> cases[] = {
      {kOutput + "-missing" + (kPosix ? "" : ".exe"), missing}, {data, refused}};
  for (const auto& [program, codes] : cases) {
    SCOPED_TRACE(program);
    TavClNewSyncProcess sync{TavClExeFile(program.c_str())};
    TavClNewAsyncProcess async{TavClExeFile(program.c_str())};
    for (TavClNewProcessABase* process :
         {static_cast<TavClNewProcessABase*>(&sync), static_cast<TavClNewProcessABase*>(&async)}) {
      EXPECT_FALSE(process->launch());
      EXPECT_EQ(process->getError().id, PROCESS_COULD_NOT_LAUNCH);
      EXPECT_NE(std::find(codes.begin(), codes.end(), process->getResult()), codes.end())
          << "system code " << process->getResult();
    }
  }
  fs::remove(data);
}

TEST(NewProcess, NothingAboveStandardErrorIsInherited) {
  VariableChange output("TAV_HELPER_OUTPUT", kOutput.c_str());
#if defined(_WIN32)
  // An inheritable handle reaches the child only if the launcher let handles be inherited.
  SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
  HANDLE event = CreateEventA(&inheritable, TRUE, FALSE, nullptr);
  VariableChange handle("TAV_HELPER_HANDLE",
                        std::to_string(reinterpret_cast<uintptr_t>(event)).c_str());
  EXPECT_TRUE(TavClNewSyncProcess(kHelper).launch());
  CloseHandle(event);
#else
  // Descriptors opened without close-on-exec, as a careless caller would, one of them high.
  int channel[2];
  ASSERT_EQ(pipe(channel), 0);
  ASSERT_EQ(dup2(channel[0], 700), 700);
  EXPECT_TRUE(TavClNewSyncProcess(kHelper).launch());
  for (int descriptor : {channel[0], channel[1], 700}) close(descriptor);
#endif
  EXPECT_EQ(readReport(), std::vector<std::string>{"end"});
  fs::remove(kOutput);
}

TEST(NewProcess, AsyncLaunchGivesTheProgramsIdLeavesNoZombieAndCanBeKilled) {
  VariableChange output("TAV_HELPER_OUTPUT", kOutput.c_str());
  VariableChange sleeping("TAV_HELPER_SLEEP", "60");
  TavClNewAsyncProcess process(kHelper);
  process.addArgument("running late");
  ASSERT_TRUE(process.launch()) << process.getResult();
  const uint32_t id = process.getResult();
  // The id is the program's own: the process of that id is the one that writes the report.
  for (int step = 0; step < 500 && readReport().size() < 2; ++step) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_EQ(readReport(), (std::vector<std::string>{"running late", "end"}));
  TavClProcess running(id);
#if defined(_WIN32)
  HANDLE handle = OpenProcess(SYNCHRONIZE, FALSE, id);
  ASSERT_NE(handle, nullptr);
  EXPECT_TRUE(running.kill());
  EXPECT_EQ(WaitForSingleObject(handle, 10000), WAIT_OBJECT_0);
  CloseHandle(handle);
#else
  // The intermediate process is collected and the program is not this process's child: once
  // ended, nothing of it is left for the caller to wait for.
  int status = 0;
  EXPECT_EQ(waitpid(-1, &status, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
  EXPECT_EQ(::kill(static_cast<pid_t>(id), 0), 0) << "the program is not running";
  EXPECT_TRUE(running.kill());
  EXPECT_EQ(waitpid(static_cast<pid_t>(id), &status, 0), -1);
#endif
  fs::remove(kOutput);
}

}  // namespace
