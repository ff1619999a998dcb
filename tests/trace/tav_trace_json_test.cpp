// The trace-event JSON writer: golden output of a small trace and of the demo trace, every
// document parsed by a strict parser and its begin and end events checked for nesting per
// thread, unbalanced traces, time stamps, string escaping, the filter, and damaged files.

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
using tav::test::TestTraceEnvironment;

struct Record {
  TavEnTraceDataType type;
  uint32_t ticks;
  std::string origin;
  std::string message = "";
  std::string data = "";
  uint32_t threadId = 7;
  uint32_t processId = 42;
  TavEnTraceDetail detail = TAV_TRACE_DETAIL_LOW;
  uint8_t componentId = 1;
};

// Function records carry their nesting level; the other records the data given.
std::string bytesOf(const std::vector<Record>& records) {
  std::string bytes;
  std::map<uint32_t, uint32_t> levels;
  for (const Record& record : records) {
    std::string data = record.data;
    if (record.type == TAV_TRACE_TYPE_FUNCTION_ENTRY)
      data = littleEndian(++levels[record.threadId], 4);
    if (record.type == TAV_TRACE_TYPE_FUNCTION_EXIT)
      data = littleEndian(--levels[record.threadId], 4);
    bytes += static_cast<char>(record.type | record.detail << 6);
    bytes += static_cast<char>(record.componentId);
    bytes += static_cast<char>(record.message.size());
    bytes += static_cast<char>(record.origin.size());
    bytes += littleEndian(record.ticks, 4) + littleEndian(record.processId, 4) +
             littleEndian(record.threadId, 4) + littleEndian(data.size(), 4);
    bytes += record.message + record.origin + data;
  }
  return bytes;
}

constexpr auto FE = TAV_TRACE_TYPE_FUNCTION_ENTRY;
constexpr auto FX = TAV_TRACE_TYPE_FUNCTION_EXIT;

// Two threads, nested calls, a C string, a 32-bit number and untyped bytes.
const std::vector<Record> kSmallTrace = {
    {FE, 1000, "main"},
    {TAV_TRACE_TYPE_CSTRING, 1000, "main", "input", std::string("a\"b\\c\n", 6) + '\0'},
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

Written writeJson(const std::string& bytes, void (*configure)(TavClTraceFormatter&) = nullptr) {
  TestTraceEnvironment environment;
  TavClTraceFormatter formatter(environment);
  formatter.getFilter().setDetail(TAV_TRACE_DETAIL_HIGH);
  if (configure != nullptr) configure(formatter);
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

// What is wrong with a document as a timeline, or "": the events must be an array of objects
// with a phase B, E or i, a number time that grows from event to event, and process and thread
// ids; per thread, every E closes the latest open B (of the same name when it has one), and
// nothing is open at the end. Viewers match an end to the latest begin whatever its name, so
// damaged traces, whose names need not pair up, are checked without the names.
std::string timelineProblem(const std::string& json, JsonValue* parsed = nullptr,
                            bool namesPair = true) {
  JsonValue document;
  std::string error;
  if (!JsonParser::parse(json, &document, &error)) return "not JSON: " + error;
  const JsonValue* events = document.find("traceEvents");
  if (document.kind != JsonValue::kObject || events == nullptr || events->kind != JsonValue::kArray)
    return "no traceEvents array";
  std::map<std::pair<double, double>, std::vector<std::string>> open;
  double lastTime = -1;
  for (size_t i = 0; i < events->items.size(); ++i) {
    const JsonValue& event = events->items[i];
    const std::string where = "event " + std::to_string(i) + ": ";
    const JsonValue* phase = event.find("ph");
    const JsonValue* time = event.find("ts");
    const JsonValue* pid = event.find("pid");
    const JsonValue* tid = event.find("tid");
    const JsonValue* name = event.find("name");
    if (phase == nullptr || time == nullptr || pid == nullptr || tid == nullptr ||
        time->kind != JsonValue::kNumber || pid->kind != JsonValue::kNumber ||
        tid->kind != JsonValue::kNumber)
      return where + "fields missing";
    if (time->number <= lastTime) return where + "time does not grow";
    lastTime = time->number;
    std::vector<std::string>& stack = open[{pid->number, tid->number}];
    if (phase->text == "B") {
      if (name == nullptr) return where + "begin without a name";
      stack.push_back(name->text);
    } else if (phase->text == "E") {
      if (stack.empty()) return where + "end without begin";
      if (namesPair && name != nullptr && name->text != stack.back())
        return where + "end of another function";
      stack.pop_back();
    } else if (phase->text != "i") {
      return where + "unknown phase " + phase->text;
    }
  }
  for (const auto& thread : open) {
    if (!thread.second.empty()) return "functions left open";
  }
  if (parsed != nullptr) *parsed = document;
  return "";
}

TEST(TraceJson, SmallTraceGivesTheGoldenTimeline) {
  const Written written = writeJson(bytesOf(kSmallTrace));
  EXPECT_EQ(written.error, 0u);
  EXPECT_EQ(timelineProblem(written.json), "");
  EXPECT_EQ(written.json, readTestData("small_trace.json"));
}

TEST(TraceJson, DemoTraceGivesTheGoldenTimeline) {
  const Written written = writeJson(readTestData("demo.trc"));
  EXPECT_EQ(written.error, 0u);
  EXPECT_EQ(timelineProblem(written.json), "");
  EXPECT_EQ(written.json, readTestData("demo_chrome.json"));
}

TEST(TraceJson, EventsCarryTheRecordsFields) {
  JsonValue document;
  ASSERT_EQ(timelineProblem(writeJson(bytesOf(kSmallTrace)).json, &document), "");
  const std::vector<JsonValue>& events = document.find("traceEvents")->items;
  ASSERT_EQ(events.size(), kSmallTrace.size());
  const JsonValue& text = events[1];
  EXPECT_EQ(text.find("name")->text, "input");
  EXPECT_EQ(text.find("ph")->text, "i");
  EXPECT_EQ(text.find("ts")->text, "1000000.001");
  EXPECT_EQ(text.find("pid")->number, 42);
  EXPECT_EQ(text.find("tid")->number, 7);
  const JsonValue& args = *text.find("args");
  EXPECT_EQ(args.find("origin")->text, "main");
  EXPECT_EQ(args.find("type")->text, "cpsz");
  EXPECT_EQ(args.find("data")->text, "a\"b\\c\n");
  EXPECT_EQ(args.find("detail")->text, "LOW");
  EXPECT_EQ(events[3].find("args")->find("data")->text, "12");
  EXPECT_EQ(events[2].find("args")->find("level")->number, 1);
  EXPECT_EQ(events[2].find("tid")->number, 8);
}

// A trace cut out of a longer run: it starts inside functions and ends inside others.
TEST(TraceJson, UnbalancedTracesStillNestOnEveryThread) {
  const std::vector<std::vector<Record>> traces = {
      {{FX, 5, "lost"}, {FX, 6, "older"}, {FE, 7, "f"}, {FX, 8, "f"}},
      {{FE, 5, "a"}, {FE, 6, "b", "", "", 9}, {FE, 7, "c"}},
      {{FX, 5, "x", "", "", 3}, {FE, 6, "y", "", "", 4}, {FX, 7, "y", "", "", 3}},
      {{FX, 5, "x"}},
      {},
  };
  for (size_t i = 0; i < traces.size(); ++i) {
    SCOPED_TRACE(i);
    const Written written = writeJson(bytesOf(traces[i]));
    EXPECT_EQ(written.error, 0u);
    EXPECT_EQ(timelineProblem(written.json), "") << written.json;
  }
  // The exit without entry stays visible, as an instant event.
  JsonValue document;
  timelineProblem(writeJson(bytesOf(traces[3])).json, &document);
  ASSERT_EQ(document.find("traceEvents")->items.size(), 1u);
  EXPECT_EQ(document.find("traceEvents")->items[0].find("ph")->text, "i");
  EXPECT_EQ(document.find("traceEvents")->items[0].find("args")->find("type")->text, "FX");
}

TEST(TraceJson, TimeIsTicksInMicrosecondsAlwaysGrowing) {
  struct Row {
    std::vector<uint32_t> ticks;
    std::vector<std::string> times;
  };
  const std::vector<Row> rows = {
      {{3, 4, 10}, {"3000.000", "4000.000", "10000.000"}},
      {{3, 3, 3}, {"3000.000", "3000.001", "3000.002"}},
      {{4294967295u, 0, 2}, {"4294967295000.000", "4294967296000.000", "4294967298000.000"}},
      {{10, 9, 12}, {"10000.000", "10000.001", "12000.000"}},
  };
  for (const Row& row : rows) {
    std::vector<Record> records;
    for (uint32_t ticks : row.ticks) records.push_back({TAV_TRACE_TYPE_NO_DATA, ticks, "f", "m"});
    JsonValue document;
    ASSERT_EQ(timelineProblem(writeJson(bytesOf(records)).json, &document), "");
    const std::vector<JsonValue>& events = document.find("traceEvents")->items;
    for (size_t i = 0; i < row.times.size(); ++i) {
      SCOPED_TRACE(row.times[i]);
      EXPECT_EQ(events[i].find("ts")->text, row.times[i]);
    }
  }
}

TEST(TraceJson, StringsAreEscapedIntoValidJson) {
  struct Row {
    std::string bytes;
    std::string json;
  };
  const std::vector<Row> rows = {
      {"plain", "\"plain\""},
      {"\"q\" \\b/", "\"\\\"q\\\" \\\\b/\""},
      {"\n\r\t\b\f", "\"\\n\\r\\t\\b\\f\""},
      {std::string("\x00\x01\x1f\x7f", 4), "\"\\u0000\\u0001\\u001f\x7f\""},
      {"\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80", "\"\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80\""},
      {"\xe4", "\"\\u00e4\""},                                   // a Latin-1 byte
      {"\x80", "\"\\u0080\""},                                   // a lone continuation byte
      {"\xc0\x80", "\"\\u00c0\\u0080\""},                        // an overlong zero
      {"\xe0\x80\xaf", "\"\\u00e0\\u0080\\u00af\""},             // an overlong slash
      {"\xed\xa0\x80", "\"\\u00ed\\u00a0\\u0080\""},             // a surrogate
      {"\xf4\x90\x80\x80", "\"\\u00f4\\u0090\\u0080\\u0080\""},  // beyond U+10FFFF
      {"\xf0\x9f\x98", "\"\\u00f0\\u009f\\u0098\""},             // cut at the end
      {"\xc3"
       "A",
       "\"\\u00c3A\""},
      {"\xff\xfe", "\"\\u00ff\\u00fe\""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.bytes));
    std::string json;
    TavClTraceJsonWriter::appendString(json, row.bytes.data(), row.bytes.size());
    EXPECT_EQ(json, row.json);
    EXPECT_TRUE(JsonParser::parse(json, nullptr));
  }
}

TEST(TraceJson, TheFormattersFilterAndSwitchesApply) {
  const std::string bytes = bytesOf(kSmallTrace);
  struct Row {
    void (*configure)(TavClTraceFormatter&);
    size_t events;
    const char* data;  // of the number record, when it is shown
  };
  const std::vector<Row> rows = {
      {[](TavClTraceFormatter& f) { f.enableFunctionHeaders(false); }, 3, "12"},
      {[](TavClTraceFormatter& f) { f.getFilter().setThreadId("8"); }, 3, "12"},
      {[](TavClTraceFormatter& f) { f.getFilter().setProcessId("41"); }, 0, nullptr},
      {[](TavClTraceFormatter& f) { f.getFilter().disableAllComponentIds(); }, 0, nullptr},
      {[](TavClTraceFormatter& f) { f.enableHexData(true); }, 9, "12/0x0000000c"},
      {[](TavClTraceFormatter& f) {
         f.enableNesting(true);
         f.setFormatString("%m");
       },
       9, "12"},
  };
  for (size_t i = 0; i < rows.size(); ++i) {
    SCOPED_TRACE(i);
    JsonValue document;
    ASSERT_EQ(timelineProblem(writeJson(bytes, rows[i].configure).json, &document), "");
    const std::vector<JsonValue>& events = document.find("traceEvents")->items;
    EXPECT_EQ(events.size(), rows[i].events);
    for (const JsonValue& event : events) {
      if (event.find("name")->text == "lines") {
        EXPECT_EQ(event.find("args")->find("data")->text, rows[i].data);
      }
    }
  }
}

// A damaged file raises the formatter's failure, after a document that is still valid JSON.
TEST(TraceJson, DamagedFilesFailAfterValidJson) {
  const std::string bytes = bytesOf(kSmallTrace);
  std::string wrongSize = bytesOf({{TAV_TRACE_TYPE_NO_DATA, 1, "f", "m", "xy"}});
  const std::vector<std::pair<std::string, uint32_t>> rows = {
      {bytes.substr(0, bytes.size() - 1), TRACEFORMAT_UNEXPECTED_EOF},
      {wrongSize, TRACEFORMAT_FILE_CORRUPTED},
      {bytesOf({{FE, 1, "f", "", ""}}).substr(0, 23) + std::string(30, 'x'), 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.second);
    const Written written = writeJson(row.first);
    EXPECT_EQ(written.error, row.second);
    std::string error;
    EXPECT_TRUE(JsonParser::parse(written.json, nullptr, &error)) << error << written.json;
  }
}

TEST(TraceJson, TheEnvironmentsFileIsReadOrReportedMissing) {
  TestTraceEnvironment environment;
  environment.fileName = std::string(TAV_TRACE_TEST_DATA) + "/demo.trc";
  TavClTraceFormatter formatter(environment);
  formatter.getFilter().setDetail(TAV_TRACE_DETAIL_HIGH);
  std::ostringstream output;
  TavClTraceJsonWriter(formatter).write(output);
  EXPECT_EQ(output.str(), readTestData("demo_chrome.json"));
  environment.fileName = tav::test::scratchFileName("json_missing");
  try {
    TavClTraceJsonWriter(formatter).write(output);
    ADD_FAILURE() << "a missing file was read";
  } catch (const TavClExceptionFatal& failure) {
    EXPECT_EQ(failure.getId(), static_cast<uint32_t>(TRACEFORMAT_COULD_NOT_OPEN));
  }
}

// Random damage to the demo trace: valid JSON every time, and a failure only of the file.
TEST(TraceJson, AnyBytesGiveValidJson) {
  const std::string demo = readTestData("demo.trc");
  uint32_t seed = 99;
  for (int round = 0; round < 200; ++round) {
    std::string bytes = demo.substr(0, static_cast<size_t>(round * 53) % (demo.size() + 1));
    for (int flip = 0; flip < round % 9; ++flip) {
      seed = seed * 1103515245u + 12345u;
      if (!bytes.empty()) bytes[seed % bytes.size()] = static_cast<char>(seed >> 16);
    }
    SCOPED_TRACE(round);
    const Written written = writeJson(bytes);
    EXPECT_TRUE(written.error == 0 || written.error == TRACEFORMAT_UNEXPECTED_EOF ||
                written.error == TRACEFORMAT_FILE_CORRUPTED);
    if (written.error == 0) {
      EXPECT_EQ(timelineProblem(written.json, nullptr, false), "");
    } else {
      EXPECT_TRUE(JsonParser::parse(written.json, nullptr));
    }
  }
}

// The parser the checks rely on refuses what is not JSON.
TEST(TraceJson, TheStrictParserRefusesWhatIsNotJson) {
  const std::vector<std::pair<std::string, bool>> rows = {
      {"{\"a\":[1,-2.5e3,true,false,null,\"\\u00e4\\ud83d\\ude00\"]}", true},
      {" [] ", true},
      {"[1,]", false},
      {"{\"a\":1,}", false},
      {"[01]", false},
      {"[1.]", false},
      {"[+1]", false},
      {"[\"a\nb\"]", false},
      {"[\"\\x41\"]", false},
      {"[\"\\ud800\"]", false},
      {"[\"\\udc00\"]", false},
      {"[\"\xc0\x80\"]", false},
      {"[\"\xed\xa0\x80\"]", false},
      {"[] []", false},
      {"{'a':1}", false},
      {"[tru]", false},
      {"", false},
      {std::string(300, '['), false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.first);
    EXPECT_EQ(JsonParser::parse(row.first, nullptr), row.second);
  }
}

}  // namespace
