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

std::vector<RecordRead> recordsOf(const std::string& file) {
  TestTraceEnvironment reader;
  bool endsOnRecord = false;
  std::vector<RecordRead> records = readRecords(reader, readFileBytes(file), &endsOnRecord);
  EXPECT_TRUE(endsOnRecord);
  return records;
}

uint32_t levelIn(const RecordRead& record) {
  uint32_t level = 0;
  EXPECT_EQ(record.data.size(), sizeof level);
  std::memcpy(&level, record.data.data(), sizeof level);
  return level;
}

TEST_F(TraceInstance, LaterCreationsReturnTheFirstInstance) {
  ScopedTraceVariables variables("TIFIRST");
  TavClTraceInstance* first = TavClTraceInstance::createInstance("tifirst");
  EXPECT_EQ(TavClTraceInstance::createInstance("tiother", "other"), first);
  EXPECT_EQ(TavClTraceInstance::createControllerInstance("tiother"), first);
  EXPECT_STREQ(first->getEnvironment().getKey(), "SEM32:tifirst:TAVTRACEINSTANCE0");
  EXPECT_EQ(TavClTraceInstance::getCreatedInstance(), first);
  TavClTraceInstance::deleteInstance();
  EXPECT_EQ(TavClTraceInstance::getCreatedInstance(), nullptr);
  TavClTraceInstance::deleteInstance();  // nothing left to delete
}

TEST_F(TraceInstance, AnInactiveInstanceIsEnabledOnlyAfterActivation) {
  ScopedTraceVariables variables("TIINACTIVE");
  tavTraceCreateInstance("tiinactive", nullptr);
  TavClTraceInstance* instance = TavClTraceInstance::getCreatedInstance();
  ASSERT_NE(instance, nullptr);
  EXPECT_FALSE(tavTraceIsEnabled());
  EXPECT_FALSE(instance->isActive());
  instance->enable();
  EXPECT_FALSE(TavClTraceInstance::isEnabled());
  instance->activate();
  instance->enable();
  EXPECT_TRUE(tavTraceIsEnabled());
  EXPECT_TRUE(TAV_TRACE_IS_ENABLED());
  EXPECT_EQ(TavClTraceInstance_getInstance(), instance);
  instance->disable();
  EXPECT_FALSE(tavTraceIsEnabled());
  EXPECT_EQ(TavClTraceInstance_getInstance(), nullptr);
  instance->enable();
  tavTraceDeleteInstance();
  EXPECT_FALSE(tavTraceIsEnabled());
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
  tavTraceDump(TAV_TRACE_DETAIL_LOW, 5, TAV_TRACE_TYPE_FUNCTION_ENTRY, "outer", "ignored", &value,
               sizeof value);
  tavTraceDump(TAV_TRACE_DETAIL_MED, 5, TAV_TRACE_TYPE_FUNCTION_ENTRY, "dropped", nullptr, nullptr,
               0);
  tavTraceDump(TAV_TRACE_DETAIL_LOW, 5, TAV_TRACE_TYPE_INT32, "outer", "kept", &value,
               sizeof value);
  tavTraceDump(TAV_TRACE_DETAIL_LOW, 6, TAV_TRACE_TYPE_INT32, "outer", "other component", &value,
               sizeof value);
  tavTraceDump(TAV_TRACE_DETAIL_MED, 5, TAV_TRACE_TYPE_INT32, "outer", "too detailed", &value,
               sizeof value);
  tavTraceDump(TAV_TRACE_DETAIL_LOW, 0, TAV_TRACE_TYPE_CSTRING, "outer", "component 0", "text", 5);
  tavTraceDump(TAV_TRACE_DETAIL_LOW, 5, TAV_TRACE_TYPE_FUNCTION_EXIT, "outer", nullptr, nullptr, 0);
  tavTraceFlush();
  tavTraceDeleteInstance();

  const std::vector<RecordRead> records = recordsOf(file);
  ASSERT_EQ(records.size(), 4u);
  EXPECT_EQ(records[0].type, TAV_TRACE_TYPE_FUNCTION_ENTRY);
  EXPECT_EQ(records[0].detail, TAV_TRACE_DETAIL_OFF);
  EXPECT_EQ(records[0].origin, "outer");
  EXPECT_EQ(records[0].message, "");
  EXPECT_EQ(levelIn(records[0]), 1u);
  EXPECT_EQ(records[1].message, "kept");
  EXPECT_EQ(records[1].data, std::string(reinterpret_cast<const char*>(&value), sizeof value));
  EXPECT_EQ(records[2].componentId, 0);
  EXPECT_EQ(records[2].data, std::string("text", 5));
  EXPECT_EQ(records[3].type, TAV_TRACE_TYPE_FUNCTION_EXIT);
  EXPECT_EQ(levelIn(records[3]), 1u);  // the filtered entry counted too
  std::remove(file.c_str());
}

struct CallbackCall {
  void* context;
  TavEnTraceDetail detail;
  uint16_t componentId;
  TavEnTraceDataType type;
  std::string origin;
  std::string message;
  std::string data;
};

void collect(void* context, TavEnTraceDetail detail, uint16_t componentId, TavEnTraceDataType type,
             const char* origin, const char* message, const void* data, uint64_t size) {
  auto* calls = static_cast<std::vector<CallbackCall>*>(context);
  calls->push_back({context, detail, componentId, type, origin, message,
                    data != nullptr ? std::string(static_cast<const char*>(data), size) : ""});
}

TEST_F(TraceInstance, UserCallbackReceivesDataAndFunctionRecords) {
  ScopedTraceVariables variables("TICALLBACK");
  variables.set("_TRACE_ACTIVE", "on");
  variables.set("_TRACE_COMPSET", "");
  TavClTraceInstance* instance = TavClTraceInstance::createInstance("ticallback");
  EXPECT_TRUE(instance->usesTavBackEnd());
  std::vector<CallbackCall> calls;
  instance->registerUserCallback(collect, &calls);
  EXPECT_FALSE(instance->usesTavBackEnd());

  const double number = 2.5;
  // The program's back end sees every call: the trace's filters are the built-in back end's.
  tavTraceDump(TAV_TRACE_DETAIL_HIGH, 9, TAV_TRACE_TYPE_DOUBLE, "f", "number", &number,
               sizeof number);
  tavTraceDump(TAV_TRACE_DETAIL_LOW, 9, TAV_TRACE_TYPE_FUNCTION_EXIT, "f", "m", &number, 8);
  tavTraceDump(TAV_TRACE_DETAIL_HIGH, 9, TAV_TRACE_TYPE_FUNCTION_ENTRY, "g", "m", &number, 8);
  tavTraceDump(TAV_TRACE_DETAIL_LOW, 9, TAV_TRACE_TYPE_FUNCTION_ENTRY, "h", "m", &number, 8);

  ASSERT_EQ(calls.size(), 4u);
  EXPECT_EQ(calls[0].context, &calls);
  EXPECT_EQ(calls[0].detail, TAV_TRACE_DETAIL_HIGH);
  EXPECT_EQ(calls[0].componentId, 9);
  EXPECT_EQ(calls[0].type, TAV_TRACE_TYPE_DOUBLE);
  EXPECT_EQ(calls[0].message, "number");
  EXPECT_EQ(calls[0].data, std::string(reinterpret_cast<const char*>(&number), sizeof number));
  const struct {
    TavEnTraceDetail detail;
    std::string origin;
    uint32_t level;
  } functions[] = {{TAV_TRACE_DETAIL_OFF, "f", 0xFFFFFFFFu},  // an exit without entry wraps
                   {TAV_TRACE_DETAIL_HIGH, "g", 0},
                   {TAV_TRACE_DETAIL_OFF, "h", 1}};
  for (size_t index = 0; index < 3; ++index) {
    SCOPED_TRACE(functions[index].origin);
    const CallbackCall& call = calls[index + 1];
    EXPECT_EQ(call.detail, functions[index].detail);
    EXPECT_EQ(call.origin, functions[index].origin);
    EXPECT_EQ(call.message, "");
    EXPECT_EQ(call.data, std::string(reinterpret_cast<const char*>(&functions[index].level), 4));
  }
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
            tavTraceDump(TAV_TRACE_DETAIL_LOW, 1, TAV_TRACE_TYPE_INT32, "child", "record number",
                         &record, sizeof record);
          }
        }
        std::exit(0);
      },
      testing::ExitedWithCode(0), "");
  const std::vector<RecordRead> records = recordsOf(file);
  ASSERT_EQ(records.size(), static_cast<size_t>(kRecords));
  for (int record = 0; record < kRecords; ++record) {
    EXPECT_EQ(records[record].data,
              std::string(reinterpret_cast<const char*>(&record), sizeof record));
  }
  std::remove(file.c_str());
}

}  // namespace
