// The trace controller tool, run in this process through TavClTraceController: the status
// display and the formats against golden files, and every failure with its message and exit
// code.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <tuple>
#include <vector>

#include "tav_console.h"
#include "tav_trace.h"
#include "tav_trace_controller.h"
#include "tav_trace_test_support.h"

namespace {

using tav::test::readTestData;
using tav::test::scratchFileName;
using testing::HasSubstr;

const std::string kDemoTrace = std::string(TAV_TRACE_TEST_DATA) + "/demo.trc";

using tav::test::ToolRun;

// Runs the tool on "prog -key tavdemo" and the arguments.
ToolRun runTool(std::vector<std::string> arguments) {
  return tav::test::runTraceTool("tavdemo", std::move(arguments));
}

class TraceController : public testing::Test {
 protected:
  void SetUp() override { TavClConsoleUI::useBuiltInStringTable(true); }
  void TearDown() override { TavClConsoleUI::useBuiltInStringTable(false); }

  tav::test::ScopedTraceVariables variables{"TAVDEMO"};
};

TEST_F(TraceController, StatusDisplayShowsTheTracedProgramsSettingsAndItsFile) {
  const ToolRun run = runTool({"-file", kDemoTrace});
  EXPECT_EQ(run.code, 0);
  std::string golden = readTestData("controller_status.txt");
  golden.replace(golden.find("@FILE@"), 6, kDemoTrace);
  EXPECT_EQ(run.out, golden);

  variables.set("_TRACE_ACTIVE", "yes");
  variables.set("_TRACE_DETAIL", "med");
  variables.set("_TRACE_BUFSIZE", "5");
  variables.set("_TRACE_COMPSET", "*,-7,-20.30");
  const std::string missing = scratchFileName("controller_missing");
  variables.set("_TRACE_FILE", missing.c_str());
  const std::string status = runTool({"-instance", "second", "-verbose"}).out;
  for (const std::string& line : std::vector<std::string>{
           "Key/Instance             : tavdemo/second", "Trace active             : YES",
           "Trace buffer size        : 5120 Bytes", "Trace file               : " + missing,
           "Detail level             : MED", "Include component(s)     : 1-6,8-19,31-255",
           "Exclude component(s)     : 7,20-30"}) {
    EXPECT_THAT(status, HasSubstr(line + "\n"));
  }
}

TEST_F(TraceController, DisplayGivesTheGoldenDefaultNestedAndJsonFormats) {
  variables.set("_TRACE_DETAIL", "high");
  const std::pair<std::vector<std::string>, const char*> rows[] = {
      {{}, "demo_default.txt"},
      {{"-fnest", "-findent", "|  ", "-format", "%x %f %m %d"}, "demo_nested.txt"},
      {{"-format", "chrome"}, "demo_chrome.json"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.second);
    std::vector<std::string> arguments = {"-file", kDemoTrace, "-display"};
    arguments.insert(arguments.end(), row.first.begin(), row.first.end());
    const ToolRun run = runTool(arguments);
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out, readTestData(row.second));
  }
}

// Any file as trace file, and any value of the options: a message and an exit code.
TEST_F(TraceController, EveryFailureHasItsMessageAndExitCode) {
  const std::string missing = scratchFileName("controller_none"), cut = scratchFileName("cut");
  const std::string demo = readTestData("demo.trc");
  std::ofstream(cut, std::ios::binary) << demo.substr(0, demo.size() - 2);  // inside a level
  const std::string text = std::string(TAV_TRACE_TEST_DATA) + "/demo_default.txt";
  const std::string noDirectory = missing + "/sub/x.trc";
  const std::string directory = std::filesystem::temp_directory_path().string();
  variables.set("_TRACE_FILE", missing.c_str());
  const std::tuple<std::vector<std::string>, int, std::string> rows[] = {
      {{"-file", missing, "-display"}, 1, "Specified trace file not found: " + missing},
      {{"-instance", "a b"}, 2, "Invalid instance: a b"},
      {{"-display"},
       3,
       "Trace file could not be identified; specified key may be invalid: tavdemo"},
      {{"-file", noDirectory, "-init"}, 4, "Could not initialize trace: " + noDirectory},
      {{"-file", directory, "-display"},
       5,
       "Could not open trace file for read access: " + directory},
      {{"-file", cut, "-display"}, 6, "Trace file corrupted: unexpected end-of-file: " + cut},
      {{"-file", text, "-display"}, 7, "Trace file corrupted: invalid data found: " + text},
      {{"-format", ""}, 204, "Invalid value specified: -format"},
      {{"-fpid", "4294967296"}, 204, "Invalid value specified: -fpid"},
      {{"-fcompids", "1,2;rm"}, 204, "Invalid value specified: -fcompids"},
  };
  for (const auto& [options, code, message] : rows) {
    SCOPED_TRACE(testing::PrintToString(options));
    const ToolRun run = runTool(options);
    EXPECT_EQ(run.code, code);
    EXPECT_THAT(run.err, HasSubstr("*** A fatal error occurred ***\n    " + message + "\n"));
  }
  std::remove(cut.c_str());
}

}  // namespace
