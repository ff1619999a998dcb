// The record a trace call writes: the bytes tavTraceDump puts into the trace file are exactly
// those of a TavClTraceEntry built from the same arguments, for every kind of text and data.

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "tav_trace.h"
#include "tav_trace_test_support.h"

namespace {

using tav::test::readFileBytes;
using tav::test::recordBytes;
using tav::test::ScopedTraceVariables;
using tav::test::scratchFileName;
using tav::test::TestTraceEnvironment;

// The time stamp is the only field that two records of the same call may differ in.
constexpr size_t kTimeStampOffset = 4;

struct Call {
  const char* name;
  TavEnTraceDataType type;
  const char* origin;
  const char* message;
  const void* data;
  uint64_t size;
};

class TraceRecordPath : public testing::TestWithParam<bool> {
 protected:
  void TearDown() override { TavClTraceInstance::deleteInstance(); }
};

TEST_P(TraceRecordPath, TraceCallsWriteTheRecordsThatEntriesBuild) {
  const bool compress = GetParam();
  const std::string file = scratchFileName(compress ? "record_path_z" : "record_path");
  ScopedTraceVariables variables("TRPATH");
  variables.set("_TRACE_ACTIVE", "on");
  variables.set("_TRACE_FILE", file.c_str());
  variables.set("_TRACE_BUFSIZE", "4");
  tavTraceCreateInstance("trpath", nullptr);
  ASSERT_TRUE(tavTraceIsEnabled());
  TavClTraceInstance& instance = *TavClTraceInstance::getCreatedInstance();
  instance.getEnvironment().getSettings().enableCompression(compress);
  const uint64_t capacity = instance.getEnvironment().getBufferSize();

  const std::string longText(400, 'x');             // cut to 255 bytes, compressed too
  const std::string longDigits(400, '7');           // compressed to 256 bytes, stored as length 0
  const std::string escapes = "1:2;3\x01\xff\x7f";  // digits and bytes outside the alphabet
  const std::string bigData(capacity + 10, 'd');    // clipped, and larger than the ring
  const int32_t value = -7;
  const Call calls[] = {
      {"plain", TAV_TRACE_TYPE_INT32, "origin", "message", &value, sizeof value},
      {"null texts", TAV_TRACE_TYPE_INT32, nullptr, nullptr, &value, sizeof value},
      {"empty texts", TAV_TRACE_TYPE_NO_DATA, "", "", &value, 0},
      {"null data", TAV_TRACE_TYPE_CSTRING, "o", "m", nullptr, 12},
      {"long texts", TAV_TRACE_TYPE_DATA, longText.c_str(), longText.c_str(), &value, 1},
      {"long escaped texts", TAV_TRACE_TYPE_DATA, longDigits.c_str(), longDigits.c_str(), &value,
       4},
      {"escaped bytes", TAV_TRACE_TYPE_DATA, escapes.c_str(), escapes.c_str(), &value, 2},
      {"clipped data", TAV_TRACE_TYPE_DATA, "big", "block", bigData.data(), bigData.size()},
  };
  TestTraceEnvironment reference(compress, capacity);
  std::vector<std::string> expected;
  for (const Call& call : calls) {
    tavTraceDump(TAV_TRACE_DETAIL_LOW, 3, call.type, call.origin, call.message, call.data,
                 call.size);
    expected.push_back(
        recordBytes(TavClTraceEntry(reference, TAV_TRACE_DETAIL_LOW, 3, call.type, call.origin,
                                    call.message, call.data, call.size)));
  }
  tavTraceDeleteInstance();

  std::string written = readFileBytes(file);
  std::remove(file.c_str());
  size_t at = 0;
  for (size_t i = 0; i < expected.size(); at += expected[i++].size()) {
    SCOPED_TRACE(calls[i].name);
    ASSERT_LE(at + expected[i].size(), written.size());
    written.replace(at + kTimeStampOffset, 4, expected[i], kTimeStampOffset, 4);
    EXPECT_EQ(written.substr(at, expected[i].size()), expected[i]);
  }
  EXPECT_EQ(at, written.size()) << "more bytes than records";
}

INSTANTIATE_TEST_SUITE_P(Texts, TraceRecordPath, testing::Values(false, true),
                         [](const testing::TestParamInfo<bool>& info) {
                           return info.param ? "Compressed" : "Plain";
                         });

}  // namespace
