// The trace-event JSON writer: golden output of a small trace and of the demo trace, each
// document parsed by a strict parser and its begin and end events checked for nesting per
// thread; damaged files still give valid JSON.

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "tav_error.h"
#include "tav_test_json.h"
#include "tav_trace_formatter.h"
#include "tav_trace_json.h"
#include "tav_trace_test_support.h"

namespace {

using tav::test::JsonParser;
using tav::test::JsonValue;
using tav::test::littleEndian;
using tav::test::readTestData;

constexpr auto FE = TAV_TRACE_TYPE_FUNCTION_ENTRY;
constexpr auto FX = TAV_TRACE_TYPE_FUNCTION_EXIT;

struct Record {
  TavEnTraceDataType type;
  uint32_t ticks;
  std::string origin, message = "", data = "";
  uint32_t threadId = 7;
};

// Records of process 42, detail LOW, component 1; function records carry their nesting level.
std::string bytesOf(const std::vector<Record>& records) {
  std::string bytes;
  std::map<uint32_t, uint32_t> levels;
  for (const Record& r : records) {
    std::string data = r.data;
    if (r.type == FE || r.type == FX)
      data = littleEndian(levels[r.threadId] += r.type == FE ? 1 : -1, 4);
    bytes += std::string{static_cast<char>(r.type | TAV_TRACE_DETAIL_LOW << 6), 1,
                         static_cast<char>(r.message.size()), static_cast<char>(r.origin.size())};
    bytes += littleEndian(r.ticks, 4) + littleEndian(42, 4) + littleEndian(r.threadId, 4) +
             littleEndian(data.size(), 4) + r.message + r.origin + data;
  }
  return bytes;
}

// Two threads, nested calls, a C string that needs escapes, a number and untyped bytes.
const std::vector<Record> kSmallTrace = {
    {FE, 1000, "main"},
    {TAV_TRACE_TYPE_CSTRING, 1000, "main", "input", std::string("a\"b\\c\n\0", 7)},
    {FE, 1002, "parse", "", "", 8},
    {TAV_TRACE_TYPE_UINT32, 1003, "parse", "lines", littleEndian(12, 4), 8},
    {FE, 1004, "helper"},
    {FX, 1004, "helper"},
    {FX, 1010, "parse", "", "", 8},
    {TAV_TRACE_TYPE_DATA, 1011, "main", "bytes",
     "\x01\x02"
     "AB"},
    {FX, 1012, "main"},
};

struct Written {
  std::string json;
  uint32_t error = 0;  // the id of the exception raised, or 0
};

Written writeJson(const std::string& bytes) {
  tav::test::TestTraceEnvironment environment;
  TavClTraceFormatter formatter(environment);
  formatter.getFilter().setDetail(TAV_TRACE_DETAIL_HIGH);
  std::istringstream input(bytes);
  std::ostringstream output;
  Written written;
  try {
    TavClTraceJsonWriter(formatter).write(input, output);
  } catch (const TavClExceptionFatal& failure) {
    written.error = failure.getId();
  }
  written.json = output.str();
  return written;
}

// What is wrong with a document as a timeline, or "": every event has a phase B, E or i, a
// time later than the event before, and process and thread ids; per thread, every E closes the
// latest open B (of its name, unless namesPair is off: viewers ignore the names, and damaged
// traces need not pair them), and nothing is left open.
std::string timelineProblem(const std::string& json, bool namesPair = true) {
  JsonValue document;
  std::string error;
  if (!JsonParser::parse(json, &document, &error)) return "not JSON: " + error;
  const JsonValue* list = document.find("traceEvents");
  if (list == nullptr || list->kind != JsonValue::kArray) return "no traceEvents array";
  std::map<std::string, std::vector<std::string>> open;
  double lastTime = -1;
  for (const JsonValue& event : list->items) {
    const JsonValue *phase = event.find("ph"), *time = event.find("ts"), *name = event.find("name");
    if (phase == nullptr || time == nullptr || event.find("pid") == nullptr ||
        event.find("tid") == nullptr || time->number() <= lastTime)
      return "bad fields or time in " + phase->text;
    lastTime = time->number();
    std::vector<std::string>& stack = open[event.find("pid")->text + "/" + event.find("tid")->text];
    if (phase->text == "B") {
      stack.push_back(name->text);
    } else if (phase->text == "E") {
      if (stack.empty()) return "end without begin";
      if (namesPair && name != nullptr && name->text != stack.back()) return "end of " + name->text;
      stack.pop_back();
    } else if (phase->text != "i") {
      return "unknown phase " + phase->text;
    }
  }
  for (const auto& thread : open) {
    if (!thread.second.empty()) return "functions left open";
  }
  return "";
}

TEST(TraceJson, TracesGiveTheirGoldenTimelines) {
  const std::pair<std::string, const char*> rows[] = {
      {bytesOf(kSmallTrace), "small_trace.json"}, {readTestData("demo.trc"), "demo_chrome.json"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.second);
    const Written written = writeJson(row.first);
    EXPECT_EQ(written.error, 0u);
    EXPECT_EQ(timelineProblem(written.json), "");
    EXPECT_EQ(written.json, readTestData(row.second));
  }
}

// A damaged file raises the formatter's failure after a document that is still valid JSON;
// random damage to the demo trace gives valid JSON every time.
TEST(TraceJson, DamagedFilesGiveValidJsonAndTheFormattersFailures) {
  const std::string small = bytesOf(kSmallTrace);
  const std::pair<std::string, uint32_t> rows[] = {
      {small.substr(0, small.size() - 1), TRACEFORMAT_UNEXPECTED_EOF},
      {bytesOf({{TAV_TRACE_TYPE_NO_DATA, 1, "f", "m", "xy"}}), TRACEFORMAT_FILE_CORRUPTED},
  };
  for (const auto& row : rows) {
    const Written written = writeJson(row.first);
    EXPECT_EQ(written.error, row.second);
    EXPECT_TRUE(JsonParser::parse(written.json, nullptr)) << written.json;
  }
  const std::string demo = readTestData("demo.trc");
  uint32_t seed = 99;
  for (int round = 0; round < 200; ++round) {
    std::string bytes = demo.substr(0, static_cast<size_t>(round * 53) % (demo.size() + 1));
    for (int flip = 0; flip < round % 9 && !bytes.empty(); ++flip) {
      seed = seed * 1103515245u + 12345u;
      bytes[seed % bytes.size()] = static_cast<char>(seed >> 16);
    }
    SCOPED_TRACE(round);
    const Written written = writeJson(bytes);
    EXPECT_TRUE(written.error == 0 || written.error == TRACEFORMAT_UNEXPECTED_EOF ||
                written.error == TRACEFORMAT_FILE_CORRUPTED);
    EXPECT_TRUE(written.error != 0 ? JsonParser::parse(written.json, nullptr)
                                   : timelineProblem(written.json, false).empty());
  }
}

}  // namespace
