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
#include <tuple>
#include <vector>

#include "../ini/tav_test_escapes.h"
#include "tav_exefile.h"
#include "tav_newprocess.h"
#include "tav_process.h"
#include "tav_test_data.h"
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

// The command line is the program and the arguments quoted by the Windows rules, on every
// platform. The child receives each argument exactly, and nothing open above standard error:
// the test holds a descriptor (or handle) open that a careless launcher would pass on.
TEST(NewProcess, ArgumentsReachTheChildExactlyAndNothingElseIsInherited) {
  VariableChange output("TAV_HELPER_OUTPUT", kOutput.c_str());
#if defined(_WIN32)
  SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
  HANDLE event = CreateEventA(&inheritable, TRUE, FALSE, nullptr);
  VariableChange handle("TAV_HELPER_HANDLE",
                        std::to_string(reinterpret_cast<uintptr_t>(event)).c_str());
#else
  // Opened without close-on-exec, one of them high.
  int channel[2];
  ASSERT_EQ(pipe(channel), 0);
  ASSERT_EQ(dup2(channel[0], 700), 700);
#endif
  TavClNewSyncProcess process(kHelper);
  std::vector<std::string> arguments;
  std::string line = kHelper.getName();
  for (const auto& row : tav::test::readDataTable("process/quoting.txt", 2)) {
    arguments.push_back(tav::test::unescape(row.str(0)));
    line += " " + tav::test::unescape(row.str(1));
    process.addArgument(arguments.back().c_str());
  }
  process.addArgument(static_cast<const char*>(nullptr));  // adds nothing, not even a blank
  process.addArgument(-5L);
  process.addArgument(4000000000UL);
  EXPECT_EQ(process.getArgumentCount(), static_cast<int>(arguments.size()) + 3);  // and argument 0
  EXPECT_EQ(process.getCommandLine(), line + " -5 4000000000");
  EXPECT_TRUE(process.launch()) << "system code " << process.getResult();
  EXPECT_EQ(process.getResult(), 0u);
#if defined(_WIN32)
  CloseHandle(event);
#else
  for (int descriptor : {channel[0], channel[1], 700}) close(descriptor);
#endif
  arguments.insert(arguments.end(), {"-5", "4000000000", "end"});
  EXPECT_EQ(readReport(), arguments);
  fs::remove(kOutput);
}

TEST(NewProcess, SyncLaunchGivesTheExitCodeOr128PlusTheEndingSignal) {
  std::vector<std::tuple<const char*, const char*, uint32_t>> cases = {
      {"TAV_HELPER_EXIT", "0", 0}, {"TAV_HELPER_EXIT", "255", 255}};
  if (kPosix) cases.emplace_back("TAV_HELPER_SIGNAL", "9", 128 + 9);  // SIGKILL
  for (const auto& [variable, value, result] : cases) {
    SCOPED_TRACE(std::string(variable) + "=" + value);
    VariableChange ending(variable, value);
    TavClNewSyncProcess process(kHelper);
    for (int launch = 0; launch < 2; ++launch) {  // a launcher can be launched again
      ASSERT_TRUE(process.launch());
      EXPECT_EQ(process.getResult(), result);
      EXPECT_EQ(process.getError().id, NO_ERROR);
    }
  }
}

TEST(NewProcess, FailedStartKeepsTheSystemCodeAndPresetError) {
  // A file that cannot be run: no execute permission on POSIX, no program format on Windows.
  const std::string data = kOutput + (kPosix ? "" : ".exe");
  std::ofstream(data) << "not a program\n";
  using Codes = std::vector<uint32_t>;
  const std::pair<std::string, Codes> cases[] = {
      {kOutput + "-missing" + (kPosix ? "" : ".exe"), kPosix ? Codes{ENOENT} : Codes{2, 3}},
      {data, kPosix ? Codes{EACCES} : Codes{11, 193, 216}}};
  for (const auto& [program, codes] : cases) {
    SCOPED_TRACE(program);
    TavClNewSyncProcess sync{TavClExeFile(program.c_str())};
    TavClNewAsyncProcess async{TavClExeFile(program.c_str())};
    for (TavClNewProcessABase* process :
         std::initializer_list<TavClNewProcessABase*>{&sync, &async}) {
      EXPECT_FALSE(process->launch());
      EXPECT_EQ(process->getError().id, PROCESS_COULD_NOT_LAUNCH);
      EXPECT_NE(std::find(codes.begin(), codes.end(), process->getResult()), codes.end())
          << "system code " << process->getResult();
    }
  }
  fs::remove(data);
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
