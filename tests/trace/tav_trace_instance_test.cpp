// The trace instance and the C trace functions: enabling, what reaches the trace file, the
// nesting level, user callbacks, and the trace file written at process exit.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "tav_trace.h"
#include "tav_trace_test_support.h"

namespace {

using tav::test::littleEndian;
using tav::test::readFileBytes;
using tav::test::readRecords;
using tav::test::RecordRead;
using tav::test::ScopedTraceVariables;
using tav::test::scratchFileName;
using tav::test::TestTraceEnvironment;

// Every test leaves the process without a trace instance.
class TraceInstance : public testing::Test {
 protected:
  void TearDown() override { TavClTraceInstance::deleteInstance(); }
};

// The records of a trace file, time stamps and ids cleared so that whole records compare.
std::vector<RecordRead> recordsOf(const std::string& file) {
  TestTraceEnvironment reader;
  bool endsOnRecord = false;
  std::vector<RecordRead> records = readRecords(reader, readFileBytes(file), &endsOnRecord);
  EXPECT_TRUE(endsOnRecord);
  for (RecordRead& record : records) record.timeStamp = record.processId = record.threadId = 0;
  std::remove(file.c_str());
  return records;
}

template <typename Value>
std::string bytesOf(const Value& value) {
  return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

constexpr auto kEntry = TAV_TRACE_TYPE_FUNCTION_ENTRY;
constexpr auto kExit = TAV_TRACE_TYPE_FUNCTION_EXIT;
constexpr auto kInt32 = TAV_TRACE_TYPE_INT32;

// A record as a trace call leaves it, time stamp and ids cleared.
RecordRead traced(TavEnTraceDataType type, TavEnTraceDetail detail, uint16_t componentId,
                  const char* message, const char* origin, const std::string& data) {
  return {type, detail, componentId, 0, 0, 0, message, origin, data};
}

// Later creations return the first instance, which, inactive, is enabled only after activation.
TEST_F(TraceInstance, TheFirstInstanceIsEnabledOnlyWhenActive) {
  ScopedTraceVariables variables("TIFIRST");
  tavTraceCreateInstance("tifirst", nullptr);
  TavClTraceInstance* instance = TavClTraceInstance::getCreatedInstance();
  ASSERT_NE(instance, nullptr);
  EXPECT_EQ(TavClTraceInstance::createInstance("tiother", "other"), instance);
  TavClTraceInstance::deleteInstance();  // never active
  tavTraceCreateInstance("tifirst", nullptr);
  instance = TavClTraceInstance::getCreatedInstance();
  instance->enable();
  EXPECT_FALSE(TavClTraceInstance::isEnabled());
  instance->activate();
  instance->enable();
  EXPECT_TRUE(TAV_TRACE_IS_ENABLED());
  tavTraceDeleteInstance();
  EXPECT_FALSE(tavTraceIsEnabled());
  EXPECT_EQ(TavClTraceInstance::getCreatedInstance(), nullptr);
}

TEST_F(TraceInstance, RecordsPassTheDetailAndComponentFilters) {
  const std::string file = scratchFileName("instance_filters");
  ScopedTraceVariables variables("TIFILTER");
  variables.set("_TRACE_ACTIVE", "on");
  variables.set("_TRACE_FILE", file.c_str());
  variables.set("_TRACE_COMPSET", "5");
  tavTraceCreateInstance("tifilter", nullptr);
  ASSERT_TRUE(tavTraceIsEnabled());
  const int32_t value = -12;
  // Function entry at LOW always passes, stored as OFF; at MED it does not pass a LOW trace.
  const struct {
    TavEnTraceDetail detail;
    uint16_t componentId;
    TavEnTraceDataType type;
    const char* message;
  } calls[] = {{TAV_TRACE_DETAIL_LOW, 5, kEntry, "ignored"},
               {TAV_TRACE_DETAIL_MED, 5, kEntry, nullptr},
               {TAV_TRACE_DETAIL_LOW, 5, kInt32, "kept"},
               {TAV_TRACE_DETAIL_LOW, 6, kInt32, "other component"},
               {TAV_TRACE_DETAIL_MED, 5, kInt32, "too detailed"},
               {TAV_TRACE_DETAIL_LOW, 0, kInt32, "component 0"},
               {TAV_TRACE_DETAIL_LOW, 5, kExit, nullptr}};
  for (const auto& call : calls) {
    tavTraceDump(call.detail, call.componentId, call.type, "outer", call.message, &value,
                 sizeof value);
  }
  tavTraceFlush();
  tavTraceDeleteInstance();

  // The exit's level counts the filtered entry too.
  EXPECT_EQ(recordsOf(file),
            (std::vector<RecordRead>{
                traced(kEntry, TAV_TRACE_DETAIL_OFF, 5, "", "outer", littleEndian(1, 4)),
                traced(kInt32, TAV_TRACE_DETAIL_LOW, 5, "kept", "outer", bytesOf(value)),
                traced(kInt32, TAV_TRACE_DETAIL_LOW, 0, "component 0", "outer", bytesOf(value)),
                traced(kExit, TAV_TRACE_DETAIL_OFF, 5, "", "outer", littleEndian(1, 4))}));
}

// Collects what the trace functions pass to a program's own back end, as records.
void collect(void* context, TavEnTraceDetail detail, uint16_t componentId, TavEnTraceDataType type,
             const char* origin, const char* message, const void* data, uint64_t size) {
  static_cast<std::vector<RecordRead>*>(context)->push_back(
      traced(type, detail, componentId, message, origin,
             data != nullptr ? std::string(static_cast<const char*>(data), size) : ""));
}

TEST_F(TraceInstance, UserCallbackReceivesDataAndFunctionRecords) {
  ScopedTraceVariables variables("TICALLBACK");
  variables.set("_TRACE_ACTIVE", "on");
  variables.set("_TRACE_COMPSET", "");
  TavClTraceInstance* instance = TavClTraceInstance::createInstance("ticallback");
  EXPECT_TRUE(instance->usesTavBackEnd());
  std::vector<RecordRead> calls;
  instance->registerUserCallback(collect, &calls);
  EXPECT_FALSE(instance->usesTavBackEnd());

  const double number = 2.5;
  // The program's back end sees every call: the trace's filters are the built-in back end's.
  // Function records carry the nesting level; an exit without entry wraps round.
  tavTraceDump(TAV_TRACE_DETAIL_HIGH, 9, TAV_TRACE_TYPE_DOUBLE, "f", "number", &number,
               sizeof number);
  tavTraceDump(TAV_TRACE_DETAIL_LOW, 9, kExit, "f", "m", &number, 8);
  tavTraceDump(TAV_TRACE_DETAIL_HIGH, 9, kEntry, "g", "m", &number, 8);
  tavTraceDump(TAV_TRACE_DETAIL_LOW, 9, kEntry, "h", "m", &number, 8);
  EXPECT_EQ(
      calls,
      (std::vector<RecordRead>{
          traced(TAV_TRACE_TYPE_DOUBLE, TAV_TRACE_DETAIL_HIGH, 9, "number", "f", bytesOf(number)),
          traced(kExit, TAV_TRACE_DETAIL_OFF, 9, "", "f", littleEndian(0xFFFFFFFF, 4)),
          traced(kEntry, TAV_TRACE_DETAIL_HIGH, 9, "", "g", littleEndian(0, 4)),
          traced(kEntry, TAV_TRACE_DETAIL_OFF, 9, "", "h", littleEndian(1, 4))}));
  EXPECT_EQ(instance->getNestingLevel(), 1u);
}

// A program that ends without deleting its trace instance still leaves every record in the
// file: the instance is deleted at exit and autosave writes the buffer out. The child is this
// test program run again; it inherits the file name from the parent's environment.
TEST_F(TraceInstance, TheTraceFileIsCompleteAfterANormalExit) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const char* inherited = std::getenv("TIEXIT_TRACE_FILE");
  const std::string file = inherited != nullptr ? inherited : scratchFileName("exit");
  ScopedTraceVariables variables("TIEXIT");
  variables.set("_TRACE_FILE", file.c_str());
  variables.set("_TRACE_ACTIVE", "on");
  constexpr int kRecords = 300;
  EXPECT_EXIT(
      {
        tavTraceCreateInstance("tiexit", nullptr);
        for (int record = 0; record < kRecords; ++record) {
          if (TAV_TRACE_IS_ENABLED()) {
            tavTraceDump(TAV_TRACE_DETAIL_LOW, 1, kInt32, "child", "record number", &record,
                         sizeof record);
          }
        }
        std::exit(0);
      },
      testing::ExitedWithCode(0), "");
  std::vector<RecordRead> expected;
  for (int record = 0; record < kRecords; ++record) {
    expected.push_back(
        traced(kInt32, TAV_TRACE_DETAIL_LOW, 1, "record number", "child", bytesOf(record)));
  }
  EXPECT_EQ(recordsOf(file), expected);
}

}  // namespace
