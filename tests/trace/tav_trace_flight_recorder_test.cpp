// The trace ring in shared memory and the flight recorder: programs started as children trace
// numbered records into a shared ring, one of them killed at a random point, and the trace
// controller's dump action saves what the ring still holds. Also: two processes tracing into
// one ring, a second dump adding nothing, a hand-out cut short by death, and mappings that are
// not a ring refused.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "../../src/trace/tav_trace_shared_os.h"
#include "tav_console.h"
#include "tav_file.h"
#include "tav_filename.h"
#include "tav_process.h"
#include "tav_test_environment.h"
#include "tav_test_self_child.h"
#include "tav_trace.h"
#include "tav_trace_controller.h"
#include "tav_trace_test_support.h"

namespace {

using tav::test::ScopedTraceVariables;
using tav::trace::SharedRingMapping;
using testing::HasSubstr;

// The trace key, its own to each run of the test program so that runs at the same time use
// rings of their own; children are told the parent's.
const std::string kKeyStem = "tavflight";
std::string traceKey = kKeyStem + std::to_string(TavClProcessProperty().getId());
constexpr char kRoleVariable[] = "TAV_TRACE_TEST_TRACER";
constexpr uint16_t kComponent = 7;

// The role's text: "<key>|<progress file>|<tag>|<records, 0 for no end>|<w to wait at the end>".
std::string tracerRole(const std::string& progressFile, char tag, uint32_t records, bool wait) {
  return traceKey + "|" + progressFile + "|" + tag + "|" + std::to_string(records) + "|" +
         (wait ? "w" : "x");
}

// The progress file: the number of the last record whose trace call returned, and the signal
// that lets the children start.
struct Progress {
  std::atomic<uint64_t> done;
  std::atomic<uint64_t> go;
};

std::string lockNameOf(const std::string& path) {
  return tav::trace::sharedRingLockName(path.substr(path.find_last_of("/\\") + 1).c_str());
}

// The child's role: once the parent says go, traces records numbered from 1 under the key, each
// a UINT32 with the tag as its message, and stores the number of every record whose trace call
// has returned in the progress file. After the last record it ends with exit code 0, flushing
// the ring as a program does, or waits to be killed without flushing.
const bool tracesAsChild = [] {
  const char* role = std::getenv(kRoleVariable);
  if (role == nullptr) return false;
  std::istringstream fields(role);
  std::string progressFile, tag, records, then;
  for (std::string* field : {&traceKey, &progressFile, &tag, &records, &then}) {
    std::getline(fields, *field, '|');
  }
  const auto last = static_cast<uint32_t>(std::stoul(records));
  SharedRingMapping progress;
  if (progress.attach(progressFile.c_str(), lockNameOf(progressFile).c_str()) !=
      SharedRingMapping::Status::kOk) {
    std::_Exit(3);
  }
  auto& shared = *reinterpret_cast<Progress*>(progress.getRingMemory());
  tavTraceCreateInstance(traceKey.c_str(), nullptr);
  if (!TAV_TRACE_IS_ENABLED()) std::_Exit(4);
  // A child whose parent gave up on it ends by itself after a minute.
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  const auto late = [deadline] { return std::chrono::steady_clock::now() > deadline; };
  while (shared.go.load(std::memory_order_acquire) == 0) {
    if (late()) std::_Exit(5);
    std::this_thread::yield();
  }
  for (uint32_t number = 1; last == 0 || number <= last; ++number) {
    if (last == 0 && number % 1024 == 0 && late()) std::_Exit(5);
    tavTraceDump(TAV_TRACE_DETAIL_LOW, kComponent, TAV_TRACE_TYPE_UINT32, "child", tag.c_str(),
                 &number, sizeof number);
    shared.done.store(number, std::memory_order_release);
  }
  while (then == "w" && !late()) std::this_thread::sleep_for(std::chrono::milliseconds(100));
  tavTraceDeleteInstance();
  std::_Exit(0);
}();

using tav::test::ToolRun;

// Runs "tavtrace -key <this run's key>" with the arguments in this process.
ToolRun runTool(std::vector<std::string> arguments) {
  return tav::test::runTraceTool(traceKey, std::move(arguments));
}

class FlightRecorder : public testing::Test {
 protected:
  void SetUp() override {
    TavClConsoleUI::useBuiltInStringTable(true);
    ringFile = tav::trace::sharedRingFileName(
        tavGetTmpDirectory(),
        TavClResourceKeySemaphore(traceKey.c_str(), TavClTraceEnvironmentABase::kDefaultInstance)
            .getKey());
    SharedRingMapping::removeFile(ringFile.c_str());
    variables.set("_TRACE_ACTIVE", "on");
    variables.set("_TRACE_SHARED", "on");
    variables.set("_TRACE_BUFSIZE", "4");  // a small ring, handed out to the file many times
    variables.set("_TRACE_FILE", traceFile.c_str());
    ASSERT_EQ(progress.create(progressFile.c_str(), lockNameOf(progressFile).c_str(), 64),
              SharedRingMapping::Status::kOk);
  }
  void TearDown() override {
    TavClConsoleUI::useBuiltInStringTable(false);
    SharedRingMapping::removeFile(ringFile.c_str());
    std::remove(traceFile.c_str());
  }

  Progress& shared() const { return *reinterpret_cast<Progress*>(progress.getRingMemory()); }
  uint64_t recordsDone() const { return shared().done.load(std::memory_order_acquire); }
  void letChildrenGo() const { shared().go.store(1, std::memory_order_release); }

  // Waits until the children have traced records between them, or for 30 seconds.
  void waitForRecords(uint64_t records) const {
    for (int waited = 0; recordsDone() < records && waited < 30000; waited += 1) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }

  uint32_t startTracer(char tag, uint32_t records, bool wait) const {
    return tav::test::startSelfChild(kRoleVariable,
                                     tracerRole(progressFile, tag, records, wait).c_str());
  }

  // How many of the tag's records the trace file holds, checking that they are numbered 1, 2,
  // 3, ... without a gap, as one process traces them; and whether the file ends on a record.
  size_t recordsIn(char tag, bool* endsOnRecord) const {
    tav::test::TestTraceEnvironment environment(true, 4096 - 48);
    uint32_t count = 0;
    for (const tav::test::RecordRead& record :
         tav::test::readRecords(environment, tav::test::readFileBytes(traceFile), endsOnRecord)) {
      if (record.message != std::string(1, tag)) continue;
      EXPECT_EQ(record.type, TAV_TRACE_TYPE_UINT32);
      EXPECT_EQ(record.componentId, kComponent);
      EXPECT_EQ(record.origin, "child");
      if (record.data != tav::test::littleEndian(++count, 4)) {
        ADD_FAILURE() << "record " << count << " is not the next in order";
        break;
      }
    }
    return count;
  }

  ScopedTraceVariables variables{"TAVFLIGHT" + traceKey.substr(kKeyStem.size())};
  std::string ringFile;
  const std::string traceFile = tav::test::scratchFileName("flight");
  const std::string progressFile = tav::test::scratchFileName("flight-progress");
  SharedRingMapping progress;
  bool endsOnRecord = false;
};

TEST_F(FlightRecorder, AProgramKilledWhileTracingLosesNoFinishedRecord) {
  std::mt19937 random{std::random_device{}()};
  const uint64_t killAfter = std::uniform_int_distribution<uint64_t>(50, 5000)(random);
  SCOPED_TRACE("killed after record " + std::to_string(killAfter));
  const uint32_t child = startTracer('k', 0, true);
  ASSERT_NE(child, 0u);
  letChildrenGo();
  waitForRecords(killAfter);
  ASSERT_TRUE(tav::test::killChild(child));
  const uint64_t done = recordsDone();
  ASSERT_GE(done, killAfter) << "the child did not trace in time";
  EXPECT_THAT(runTool({}).out, testing::ContainsRegex("Trace uses shared memory *: YES"));

  const ToolRun dump = runTool({"-dump"});
  EXPECT_EQ(dump.code, 0) << dump.err;
  // The record under way when the child died may be there as well, or a part of it.
  const size_t saved = recordsIn('k', &endsOnRecord);
  EXPECT_GE(saved, done);
  EXPECT_LE(saved, done + 1);

  // What is saved is saved once.
  const std::string bytes = tav::test::readFileBytes(traceFile);
  EXPECT_EQ(runTool({"-dump"}).code, 0);
  EXPECT_EQ(tav::test::readFileBytes(traceFile), bytes);
}

TEST_F(FlightRecorder, TwoProcessesTraceIntoOneRing) {
  constexpr uint32_t kRecords = 3000;
  const uint32_t children[] = {startTracer('a', kRecords, false),
                               startTracer('b', kRecords, false)};
  // Both are ready before either starts, so that their records meet in the ring.
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  letChildrenGo();
  for (const uint32_t child : children) {
    int exitCode = -1;
    ASSERT_TRUE(child != 0 && tav::test::waitForChildExit(child, 60000, &exitCode));
    EXPECT_EQ(exitCode, 0);
  }

  // Both wrote their last records out when they ended: the dump finds nothing left.
  const std::string written = tav::test::readFileBytes(traceFile);
  EXPECT_EQ(runTool({"-dump"}).code, 0);
  EXPECT_EQ(tav::test::readFileBytes(traceFile), written);
  for (const char tag : {'a', 'b'}) {
    SCOPED_TRACE(std::string("tag ") + tag);
    EXPECT_EQ(recordsIn(tag, &endsOnRecord), kRecords);
    EXPECT_TRUE(endsOnRecord);
  }
}

TEST_F(FlightRecorder, AHandOutCutShortByDeathIsWrittenAgainInFull) {
  // Five records wait in the ring, and a writer died handing them out after writing a part of
  // them to the file, as its journal entry tells: the mark and the file size before.
  {
    TavClTraceEnvironment program(traceKey.c_str(), nullptr, false);
    for (uint32_t number = 1; number <= 5; ++number) {
      program.add(TavClTraceEntry(program, TAV_TRACE_DETAIL_LOW, kComponent, TAV_TRACE_TYPE_UINT32,
                                  "child", "j", &number, sizeof number));
    }
    SharedRingMapping ring;
    ASSERT_EQ(ring.attach(ringFile.c_str(), lockNameOf(ringFile).c_str()),
              SharedRingMapping::Status::kOk);
    const auto& control = *reinterpret_cast<const _TavStTraceBufferControl*>(ring.getRingMemory());
    // The journal's layout in the ring file: mark, file size before, FNV-1a of the file name.
    uint64_t nameHash = 14695981039346656037u;
    for (const char c : traceFile)
      nameHash = (nameHash ^ static_cast<unsigned char>(c)) * 1099511628211u;
    const uint64_t journal[3] = {control.handOutMark, 0, nameHash};
    std::memcpy(ring.getJournal(), journal, sizeof journal);
    std::ofstream(traceFile, std::ios::binary)
        .write(reinterpret_cast<const char*>(ring.getRingMemory() + control.handOutMark), 30);
  }  // the program's final flush is the next hand-out, and finds the journal
  EXPECT_EQ(runTool({"-dump"}).code, 0);
  EXPECT_EQ(recordsIn('j', &endsOnRecord), 5u);
  EXPECT_TRUE(endsOnRecord);
}

// Which field of the control block is spoilt the ring's own check tells (the buffer tests try
// each); the tool refuses such a ring, and a program starts it afresh.
TEST_F(FlightRecorder, AMappingThatIsNoRingIsRefusedAndLeftAsItIs) {
  {
    TavClTraceEnvironment(traceKey.c_str(), nullptr, false);  // makes a valid, empty ring
    SharedRingMapping ring;
    ASSERT_EQ(ring.attach(ringFile.c_str(), lockNameOf(ringFile).c_str()),
              SharedRingMapping::Status::kOk);
    const uint64_t writePosition = 7;  // inside the control block
    std::memcpy(ring.getRingMemory() + 40, &writePosition, sizeof writePosition);
    const auto ringBytes = [&ring] {
      return std::string(reinterpret_cast<char*>(ring.getRingMemory()), ring.getRingSize());
    };
    const std::string before = ringBytes();

    const ToolRun dump = runTool({"-dump"});
    EXPECT_EQ(dump.code, TavClTraceController::kExitSharedRingRefused);
    EXPECT_THAT(
        dump.err,
        HasSubstr(std::string("Shared trace buffer refused: ") +
                  TavClTraceBufferManager::describeRingCheck(TAV_TRACE_RING_BAD_WRITE_POSITION) +
                  " (" + ringFile + ")"));
    EXPECT_EQ(ringBytes(), before);
    EXPECT_FALSE(TavClFile(traceFile.c_str()).isExistent());

    TavClTraceEnvironment program(traceKey.c_str(), nullptr, false);
    EXPECT_TRUE(program.usesSharedMemory());
    EXPECT_EQ(TavClTraceBufferManager::checkRing(ring.getRingMemory(), ring.getRingSize()),
              TAV_TRACE_RING_VALID);
  }

  // A file with no room for a ring behind the lock area.
  SharedRingMapping::removeFile(ringFile.c_str());
  std::ofstream(ringFile, std::ios::binary) << std::string(SharedRingMapping::kLockAreaSize, '\0');
  const ToolRun dump = runTool({"-dump"});
  EXPECT_EQ(dump.code, TavClTraceController::kExitSharedRingRefused);
  EXPECT_THAT(dump.err, HasSubstr("the memory is too small for a trace ring"));
}

TEST_F(FlightRecorder, AProgramTracesIntoPrivateMemoryWhenTheRingCannotBeMapped) {
  const std::string nowhere = traceFile + ".missing-directory";
  // The temporary directory is TMP's on both systems. Its old value comes back at the end, even
  // after a failed assertion, since the C runtime's temporary files need it.
  const tav::test::VariableChange temporary("TMP", nowhere.c_str());
  {
    TavClTraceEnvironment program(traceKey.c_str(), nullptr, false);
    EXPECT_FALSE(program.usesSharedMemory());
    ASSERT_NE(program.getSharedRingProblem(), nullptr);
    EXPECT_THAT(program.getSharedRingProblem(), HasSubstr("the system refused to map the file"));
    const uint32_t number = 1;
    program.add(TavClTraceEntry(program, TAV_TRACE_DETAIL_LOW, kComponent, TAV_TRACE_TYPE_UINT32,
                                "child", "p", &number, sizeof number));
  }
  EXPECT_EQ(recordsIn('p', &endsOnRecord), 1u);
}

TEST_F(FlightRecorder, WithoutARingFileTheDumpSavesNothing) {
  EXPECT_EQ(runTool({"-dump"}).code, TavClTraceController::kExitUnknownKey);
  EXPECT_FALSE(TavClFile(ringFile.c_str()).isExistent());
}

}  // namespace
