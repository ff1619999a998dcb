// The trace-event JSON writer: golden output of a small trace and of the demo trace, each
// document parsed by a strict parser and its begin and end events checked for nesting per
// thread; unbalanced and damaged traces still give valid JSON, and strings escape what JSON
// forbids.

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <utility>
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

using Record = tav::test::HandRecord;

// Records of process 42, detail LOW, component 1; function records carry their nesting level.
std::string leveledBytesOf(std::vector<Record> records) {
  std::map<uint32_t, uint32_t> levels;
  for (Record& r : records) {
    if (r.type == FE || r.type == FX)
      r.data = littleEndian(levels[r.threadId] += r.type == FE ? 1 : -1, 4);
  }
  return tav::test::bytesOf(records);
}

// Two threads, nested calls, a C string that needs escapes, a number and untyped bytes.
const std::vector<Record> kSmallTrace = {
    {FE, "main", "", "", 1000},
    {TAV_TRACE_TYPE_CSTRING, "main", std::string("a\"b\\c\n\0", 7), "input", 1000},
    {FE, "parse", "", "", 1002, 8},
    {TAV_TRACE_TYPE_UINT32, "parse", littleEndian(12, 4), "lines", 1003, 8},
    {FE, "helper", "", "", 1004},
    {FX, "helper", "", "", 1004},
    {FX, "parse", "", "", 1010, 8},
    {TAV_TRACE_TYPE_DATA, "main",
     "\x01\x02"
     "AB",
     "bytes", 1011},
    {FX, "main", "", "", 1012},
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
// latest open B of its name (where it has one), and nothing is left open.
std::string timelineProblem(const std::string& json) {
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
      if (name != nullptr && name->text != stack.back()) return "end of " + name->text;
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
      {leveledBytesOf(kSmallTrace), "small_trace.json"},
      {readTestData("demo.trc"), "demo_chrome.json"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.second);
    const Written written = writeJson(row.first);
    EXPECT_EQ(written.error, 0u);
    EXPECT_EQ(timelineProblem(written.json), "");
    EXPECT_EQ(written.json, readTestData(row.second));
  }
  // An exit with no entry before it is left out; functions left open are closed at the end.
  const Written unbalanced = writeJson(leveledBytesOf({{FX, "x"}, {FE, "y"}, {FE, "z"}}));
  EXPECT_EQ(unbalanced.error, 0u);
  EXPECT_EQ(timelineProblem(unbalanced.json), "");
}

// Every byte JSON forbids in a string is escaped, and UTF-8 passes as it is; a byte that begins
// no UTF-8 sequence stands for the character of its code. The strict parser gives it back.
TEST(TraceJson, StringsEscapeEveryByteJsonForbids) {
  for (int byte = 0; byte < 256; ++byte) {
    SCOPED_TRACE(byte);
    const char text[] = {static_cast<char>(byte), 'a'};
    std::string json;
    TavClTraceJsonWriter::appendString(json, text, sizeof text);
    JsonValue value;
    ASSERT_TRUE(JsonParser::parse(json, &value)) << json;
    const std::string character = byte < 0x80
                                      ? std::string(1, text[0])
                                      : std::string{static_cast<char>(0xC0 | byte >> 6),
                                                    static_cast<char>(0x80 | (byte & 0x3F))};
    EXPECT_EQ(value.text, character + 'a');
  }
  std::string json;
  TavClTraceJsonWriter::appendString(json, "\xC3\xA4\xF0\x9F\x98\x80", 6);
  EXPECT_EQ(json, "\"\xC3\xA4\xF0\x9F\x98\x80\"");
}

// A damaged file raises the formatter's failure after a document that is still valid JSON.
// Random damage is left to the formatter's fuzz target, which checks the JSON as strictly.
TEST(TraceJson, DamagedFilesGiveValidJsonAndTheFormattersFailures) {
  const std::string small = leveledBytesOf(kSmallTrace);
  const std::pair<std::string, uint32_t> rows[] = {
      {small.substr(0, small.size() - 1), TRACEFORMAT_UNEXPECTED_EOF},
      {leveledBytesOf({{TAV_TRACE_TYPE_NO_DATA, "f", "xy", "m", 1}}), TRACEFORMAT_FILE_CORRUPTED},
  };
  for (const auto& row : rows) {
    const Written written = writeJson(row.first);
    EXPECT_EQ(written.error, row.second);
    EXPECT_TRUE(JsonParser::parse(written.json, nullptr)) << written.json;
  }
}

}  // namespace
