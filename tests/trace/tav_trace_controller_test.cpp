// The trace controller tool, run in this process through TavClTraceController: the status
// display and the formats against golden files, every display switch and filter option against
// the formatter set up by hand, the actions, and every failure with its message and exit code.
// The faults the console ends the process for run in a child process.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "tav_console.h"
#include "tav_dump.h"
#include "tav_file.h"
#include "tav_trace.h"
#include "tav_trace_controller.h"
#include "tav_trace_formatter.h"
#include "tav_trace_test_support.h"

namespace {

using tav::test::readFileBytes;
using tav::test::readTestData;
using tav::test::ScopedTraceVariables;
using tav::test::scratchFileName;
using testing::HasSubstr;

const std::string kDemoTrace = std::string(TAV_TRACE_TEST_DATA) + "/demo.trc";

std::string readBack(FILE* file) {
  std::fflush(file);
  std::string text(static_cast<size_t>(std::ftell(file)), '\0');
  std::rewind(file);
  text.resize(std::fread(&text[0], 1, text.size(), file));
  return text;
}

void writeFile(const std::string& name, const std::string& bytes) {
  std::ofstream(name, std::ios::binary) << bytes;
}

// Runs the tool on "prog" and the arguments with the standard streams, for a child process.
void runToolOnStandardStreams(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "prog");
  std::vector<const char*> argv;
  for (const std::string& argument : arguments) argv.push_back(argument.c_str());
  argv.push_back(nullptr);
  TavClConsoleUI console(static_cast<int>(arguments.size()), argv.data());
  std::exit(TavClTraceController(console).run());
}

struct ToolRun {
  int code;
  std::string out;
  std::string err;
};

// Runs the tool on "prog" and the arguments, its output and errors caught in temporary files.
// The trace instance the tool makes is deleted afterwards, so that the next run makes its own.
ToolRun runTool(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "prog");
  std::vector<const char*> argv;
  for (const std::string& argument : arguments) argv.push_back(argument.c_str());
  argv.push_back(nullptr);
  std::unique_ptr<FILE, int (*)(FILE*)> output(std::tmpfile(), std::fclose);
  std::unique_ptr<FILE, int (*)(FILE*)> error(std::tmpfile(), std::fclose);
  TavClConsoleUI console(static_cast<int>(arguments.size()), argv.data());
  console.getParams().redirectStreams(output.get(), error.get());
  const int code = TavClTraceController(console).run();
  TavClTraceInstance::deleteInstance();
  return {code, readBack(output.get()), readBack(error.get())};
}

// What the formatter itself writes from the demo trace when set up by configure.
std::string formatDemo(const std::function<void(TavClTraceFormatter&)>& configure) {
  tav::test::TestTraceEnvironment environment;
  environment.fileName = kDemoTrace;
  TavClTraceFormatter formatter(environment);
  formatter.getFilter().setDetail(TAV_TRACE_DETAIL_HIGH);
  configure(formatter);
  std::ostringstream text;
  formatter.format(text);
  return text.str();
}

std::string replaceAll(std::string text, const std::string& from, const std::string& to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
  return text;
}

class TraceController : public testing::Test {
 protected:
  void SetUp() override { TavClConsoleUI::useBuiltInStringTable(true); }
  void TearDown() override { TavClConsoleUI::useBuiltInStringTable(false); }

  ScopedTraceVariables variables{"TAVDEMO"};
};

TEST_F(TraceController, StatusDisplayShowsEverySettingAndTheFilesRecords) {
  const ToolRun run = runTool({"-key", "tavdemo", "-file", kDemoTrace});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out, replaceAll(readTestData("controller_status.txt"), "@FILE@", kDemoTrace));
}

TEST_F(TraceController, StatusDisplayFollowsTheTracedProgramsVariables) {
  variables.set("_TRACE_ACTIVE", "yes");
  variables.set("_TRACE_DETAIL", "med");
  variables.set("_TRACE_BUFSIZE", "5");
  variables.set("_TRACE_COMPSET", "*,-7,-20.30");
  const std::string missing = scratchFileName("controller_missing");
  variables.set("_TRACE_FILE", missing.c_str());
  const ToolRun run = runTool({"-key", "tavdemo", "-instance", "second"});
  EXPECT_EQ(run.code, 0);
  for (const char* line : {
           "Key/Instance             : tavdemo/second\n",
           "    Trace active             : YES\n",
           "    Trace enabled            : YES\n",
           "    Trace buffer size        : 5120 Bytes\n",
           "    Compression rate         : -\n",
           "    Number of entries        : -\n",
           "    Detail level             : MED\n",
           "    Component Set            : *,-7,-20.30\n",
           "    Include component(s)     : 1-6,8-19,31-255\n",
           "    Exclude component(s)     : 7,20-30\n",
       }) {
    EXPECT_THAT(run.out, HasSubstr(line));
  }
  EXPECT_THAT(run.out, HasSubstr("    Trace file               : " + missing + "\n"));
}

TEST_F(TraceController, DisplayGivesTheGoldenDefaultNestedAndJsonFormats) {
  variables.set("_TRACE_DETAIL", "high");
  const ToolRun plain = runTool({"-key", "tavdemo", "-file", kDemoTrace, "-display"});
  EXPECT_EQ(plain.code, 0);
  EXPECT_EQ(plain.out, readTestData("demo_default.txt"));
  const ToolRun nested = runTool({"-key", "tavdemo", "-file", kDemoTrace, "-display", "-fnest",
                                  "-findent", "|  ", "-format", "%x %f %m %d"});
  EXPECT_EQ(nested.code, 0);
  EXPECT_EQ(nested.out, readTestData("demo_nested.txt"));
  const ToolRun json =
      runTool({"-key", "tavdemo", "-file", kDemoTrace, "-display", "-format", "chrome"});
  EXPECT_EQ(json.code, 0);
  EXPECT_EQ(json.out, readTestData("demo_chrome.json"));
}

// Each option reaches the formatter: the tool writes what the formatter set up the same way
// writes. The demo trace was recorded at detail HIGH by one thread of one process.
TEST_F(TraceController, EveryDisplaySwitchAndFilterOptionReachesTheFormatter) {
  variables.set("_TRACE_DETAIL", "high");
  variables.set("_TRACE_FORMAT", "%x %l %c %f %d");
  tav::test::TestTraceEnvironment reader;
  bool endsOnRecord = false;
  const std::string pid = std::to_string(
      tav::test::readRecords(reader, readTestData("demo.trc"), &endsOnRecord)[0].processId);
  struct Row {
    std::vector<std::string> options;
    std::function<void(TavClTraceFormatter&)> configure;
  };
  const std::string format = "%x %l %c %f %d";
  const std::vector<Row> rows = {
      {{}, [&](TavClTraceFormatter& f) { f.setFormatString(format.c_str()); }},
      {{"-format", "%m|%s"}, [](TavClTraceFormatter& f) { f.setFormatString("%m|%s"); }},
      {{"-fnest", "-findent", ">"},
       [&](TavClTraceFormatter& f) {
         f.setFormatString(format.c_str());
         f.enableNesting(true);
         f.setDisplayIndentation(">");
       }},
      {{"-fnofhd"},
       [&](TavClTraceFormatter& f) {
         f.setFormatString(format.c_str());
         f.enableFunctionHeaders(false);
       }},
      {{"-fssfhd"},
       [&](TavClTraceFormatter& f) {
         f.setFormatString(format.c_str());
         f.enableRepeatedOrigins(false);
       }},
      {{"-fhex", "-fbin"},
       [&](TavClTraceFormatter& f) {
         f.setFormatString(format.c_str());
         f.enableHexData(true);
         f.enableBinData(true);
       }},
      {{"-fdetail", "med"},
       [&](TavClTraceFormatter& f) {
         f.setFormatString(format.c_str());
         f.getFilter().setDetail(TAV_TRACE_DETAIL_MED);
       }},
      {{"-fcompids", "1.3,-2"},
       [&](TavClTraceFormatter& f) {
         f.setFormatString(format.c_str());
         f.getFilter().disableAllComponentIds();
         f.getFilter().enableComponentIds("1.3,-2");
       }},
      {{"-fpid", pid, "-ftid", "1"},
       [&](TavClTraceFormatter& f) {
         f.setFormatString(format.c_str());
         f.getFilter().setProcessId(pid.c_str());
         f.getFilter().setThreadId("1");
       }},
      {{"-fpid", pid},
       [&](TavClTraceFormatter& f) {
         f.setFormatString(format.c_str());
         f.getFilter().setProcessId(pid.c_str());
       }},
  };
  for (const Row& row : rows) {
    std::vector<std::string> arguments = {"-key", "tavdemo", "-file", kDemoTrace, "-display"};
    arguments.insert(arguments.end(), row.options.begin(), row.options.end());
    SCOPED_TRACE(testing::PrintToString(row.options));
    const ToolRun run = runTool(arguments);
    EXPECT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.out, formatDemo(row.configure));
  }
}

TEST_F(TraceController, DetailDefaultsToTheTracedProgramsLevel) {
  variables.set("_TRACE_FORMAT", "%l");
  const ToolRun low = runTool({"-key", "tavdemo", "-file", kDemoTrace, "-display"});
  EXPECT_THAT(low.out, testing::Not(HasSubstr("HIGH")));
  EXPECT_THAT(low.out, HasSubstr("LOW"));
  variables.set("_TRACE_DETAIL", "high");
  EXPECT_THAT(runTool({"-key", "tavdemo", "-file", kDemoTrace, "-display"}).out, HasSubstr("HIGH"));
}

TEST_F(TraceController, ResetInitAndDumpWorkOnTheKeysTraceFile) {
  const std::string file = scratchFileName("controller_actions");
  variables.set("_TRACE_FILE", file.c_str());
  writeFile(file, readTestData("demo.trc"));

  const ToolRun dump = runTool({"-key", "tavdemo", "-dump"});
  EXPECT_EQ(dump.code, 0);
  const std::string bytes = readTestData("demo.trc");
  EXPECT_EQ(std::count(dump.out.begin(), dump.out.end(), '\n'),
            static_cast<long>((bytes.size() + 15) / 16));
  EXPECT_EQ(
      dump.out.rfind(
          std::string(TavClStrepHexDump(size_t{0}, bytes.data(), 16).getAsCString()) + "\n", 0),
      0u);

  EXPECT_EQ(runTool({"-key", "tavdemo", "-reset"}).code, 0);
  EXPECT_FALSE(TavClFile(file.c_str()).isExistent());
  // Removing what is not there is no failure.
  EXPECT_EQ(runTool({"-key", "tavdemo", "-reset"}).code, 0);

  const ToolRun init = runTool({"-key", "tavdemo", "-init", "-display"});
  EXPECT_EQ(init.code, 0);
  EXPECT_EQ(init.out, "");
  EXPECT_EQ(readFileBytes(file), "");

  // With -verbose the status comes first.
  const ToolRun verbose = runTool({"-key", "tavdemo", "-display", "-verbose"});
  EXPECT_THAT(verbose.out, HasSubstr("    Number of entries        : 0\n"));
  std::remove(file.c_str());
}

// Any file as trace file, and any value of the options: a message and an exit code.
TEST_F(TraceController, EveryFailureHasItsMessageAndExitCode) {
  const std::string missing = scratchFileName("controller_none");
  const std::string cut = scratchFileName("controller_cut");
  const std::string demo = readTestData("demo.trc");
  writeFile(cut, demo.substr(0, demo.size() - 2));  // inside the last exit's level
  const std::string damaged = scratchFileName("controller_damaged");
  writeFile(damaged, std::string("\x03\x01\x00\x00", 4) + std::string(12, '\0') +
                         std::string("\x02\x00\x00\x00", 4) + "xx");
  const std::string text = std::string(TAV_TRACE_TEST_DATA) + "/demo_default.txt";
  const std::string noDirectory = missing + "/sub/x.trc";
  struct Row {
    std::vector<std::string> options;
    int code;
    std::string message;
  };
  const std::vector<Row> rows = {
      {{"-file", missing, "-display"}, 1, "Specified trace file not found: " + missing},
      {{"-file", missing, "-dump"}, 1, "Specified trace file not found: " + missing},
      {{"-instance", "a b"}, 2, "Invalid instance: a b"},
      {{"-instance", ""}, 2, "Invalid instance"},
      {{"-instance", std::string(65, 'i')}, 2, "Invalid instance"},
      {{"-display"},
       3,
       "Trace file could not be identified; specified key may be invalid: tavdemo"},
      {{"-file", noDirectory, "-init"}, 4, "Could not initialize trace: " + noDirectory},
      {{"-file", cut, "-display"}, 6, "Trace file corrupted: unexpected end-of-file: " + cut},
      {{"-file", damaged, "-display"}, 7, "Trace file corrupted: invalid data found: " + damaged},
      {{"-file", text, "-display"}, 7, "Trace file corrupted: invalid data found: " + text},
      {{"-format", ""}, 204, "Invalid value specified: -format"},
      {{"-fpid", "4294967296"}, 204, "Invalid value specified: -fpid"},
      {{"-fpid", "99999999999999999999999"}, 204, "Invalid value specified: -fpid"},
      {{"-ftid", "12x"}, 204, "Invalid value specified: -ftid"},
      {{"-fdetail", "loud"}, 204, "Invalid value specified: -fdetail"},
      {{"-fcompids", "1,2;rm"}, 204, "Invalid value specified: -fcompids"},
      {{"-fcompids", ""}, 204, "Invalid value specified: -fcompids"},
  };
  variables.set("_TRACE_FILE", missing.c_str());
  for (const Row& row : rows) {
    std::vector<std::string> arguments = {"-key", "tavdemo"};
    arguments.insert(arguments.end(), row.options.begin(), row.options.end());
    SCOPED_TRACE(testing::PrintToString(row.options));
    const ToolRun run = runTool(arguments);
    EXPECT_EQ(run.code, row.code);
    EXPECT_THAT(run.err, HasSubstr("*** A fatal error occurred ***\n"));
    EXPECT_THAT(run.err, HasSubstr("    " + row.message));
  }
  // A key the tool cannot name a file for.
  const ToolRun empty = runTool({"-key", "", "-display"});
  EXPECT_EQ(empty.code, 3);
  for (const std::string& name : {cut, damaged}) std::remove(name.c_str());
}

// Whatever the file holds, the display ends with success or a trace-file failure.
TEST_F(TraceController, AnyBytesAsTraceFileEndInADefinedWay) {
  const std::string file = scratchFileName("controller_any");
  const std::string demo = readTestData("demo.trc");
  uint32_t seed = 12345;
  for (int round = 0; round < 60; ++round) {
    std::string bytes = demo.substr(0, static_cast<size_t>(round * 37) % demo.size());
    for (int flip = 0; flip < round % 7; ++flip) {
      seed = seed * 1103515245u + 12345u;
      if (!bytes.empty()) bytes[seed % bytes.size()] = static_cast<char>(seed >> 16);
    }
    writeFile(file, bytes);
    SCOPED_TRACE(round);
    const ToolRun run = runTool({"-key", "tavdemo", "-file", file, "-display", "-fdetail", "high"});
    EXPECT_THAT(run.code, testing::AnyOf(0, 6, 7));
    EXPECT_EQ(run.err.empty(), run.code == 0);
  }
  std::remove(file.c_str());
}

// The console's own faults end the process with its codes, after its report.
TEST_F(TraceController, CommandLineFaultsEndWithTheConsolesCodes) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  struct Row {
    std::vector<std::string> arguments;
    int code;
    const char* report;
  };
  const std::vector<Row> rows = {
      {{"-display"}, 201, "Missing command line switch: -key"},
      {{"-key", "k", "-bogus"}, 201, "Unknown command line argument: -bogus"},
      {{"-key", "k", "extra"}, 201, "Unknown command line argument: extra"},
      {{"-key", "k", "-file"}, 203, "No value specified for command line switch: -file"},
      {{"-key"}, 203, "No value specified for command line switch: -key"},
      {{"-h"}, 201, ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.arguments));
    EXPECT_EXIT(runToolOnStandardStreams(row.arguments), testing::ExitedWithCode(row.code),
                HasSubstr(row.report));
  }
}

}  // namespace
