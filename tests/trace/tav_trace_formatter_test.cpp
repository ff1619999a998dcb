// The trace formatter: the directives, the display of every data type, the filter and the
// display switches, damaged files, and the environment's own trace file. Records are written
// byte by byte with fixed time stamps and ids, so that the expected texts are the same on every
// host; the tables are under tests/data/trace.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tav_error.h"
#include "tav_trace_entry.h"
#include "tav_trace_formatter.h"
#include "tav_trace_test_support.h"

namespace {

using tav::test::bytesOf;
using tav::test::littleEndian;
using tav::test::readTable;
using tav::test::TestTraceEnvironment;
using Record = tav::test::HandRecord;

// What the formatter writes from bytes (or, without them, from the environment's file), and
// then, if it fails, "!<id> <module> <line>".
std::string formatted(TavClTraceFormatter& formatter, const std::string* bytes = nullptr) {
  std::ostringstream output;
  std::istringstream input(bytes ? *bytes : "");
  try {
    bytes ? formatter.format(input, output) : formatter.format(output);
  } catch (const TavClExceptionFatal& failure) {
    output << "!" << failure.getId() << " " << failure.getModule() << " " << failure.getLine();
  }
  return output.str();
}

std::string failure(uint32_t id, int line) {
  return "!" + std::to_string(id) + " tav_trace_format:" + std::to_string(line) + " " +
         std::to_string(line);
}

// Formats bytes with display switches and filter settings such as "nesting,indent=..,detail=MED"
// (- for none).
std::string formatBytes(const std::string& bytes, const char* format,
                        const std::string& switches = "-") {
  TestTraceEnvironment environment;
  TavClTraceFormatter f(environment);
  f.setFormatString(format);
  std::istringstream list(switches == "-" ? "" : switches);
  for (std::string item; std::getline(list, item, ',');) {
    const size_t equals = item.find('=');
    const std::string name = item.substr(0, equals);
    const char* value = equals == std::string::npos ? "" : item.c_str() + equals + 1;
    if (name == "indent") f.setDisplayIndentation(value);
    if (name == "nesting") f.enableNesting(true);
    if (name == "noheaders") f.enableFunctionHeaders(false);
    if (name == "noorigins") f.enableRepeatedOrigins(false);
    if (name == "hex") f.enableHexData(true);
    if (name == "bin") f.enableBinData(true);
    if (name == "detail") f.getFilter().setDetail(value);
    if (name == "process") f.getFilter().setProcessId(value);
    if (name == "thread") f.getFilter().setThreadId(value);
    if (name == "components") {
      f.getFilter().disableAllComponentIds();
      f.getFilter().enableComponentIds(value);
    }
  }
  return formatted(f, &bytes);
}

TEST(TraceFormatter, Directives) {
  const Record data{TAV_TRACE_TYPE_UINT32, "fn", littleEndian(305419896, 4), "msg", 1000, 7,
                    TAV_TRACE_DETAIL_MED,  5};
  for (const auto& row : readTable("formatter_directives.txt", 2)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(formatBytes(bytesOf({data}), row.fields.at(0).c_str(), "indent=> "),
              row.fields.at(1) + "\n");
  }
}

TEST(TraceFormatter, DataDisplayByType) {
  for (const auto& row : readTable("formatter_data.txt", 5)) {
    SCOPED_TRACE(row.where);
    const auto type = static_cast<TavEnTraceDataType>(std::stoi(row.fields.at(0)));
    EXPECT_STREQ(TavClTraceFormatter::getTypeAsShortCString(type), row.fields.at(1).c_str());
    EXPECT_EQ(formatBytes(bytesOf({{type, "fn", row.fields.at(3)}}), "%d", row.fields.at(2)),
              row.fields.at(4) + "\n");
  }
  EXPECT_STREQ(TavClTraceFormatter::getTypeAsLongCString(21), "long double");
  EXPECT_STREQ(TavClTraceFormatter::getTypeAsLongCString(0), "");
  const std::string longText(1000, 'x');
  EXPECT_EQ(formatBytes(bytesOf({{TAV_TRACE_TYPE_CSTRING, "fn", longText + '\0' + "tail"}}), "%d"),
            longText + "\n");
}

// Small traces shown with the filter and the display switches.
TEST(TraceFormatter, FilterAndDisplaySwitches) {
  std::vector<Record> trace;
  for (const auto& row : readTable("formatter_display.txt", 4)) {
    SCOPED_TRACE(row.where);
    const std::vector<std::string>& field = row.fields;
    if (field[0] == "trace") trace.clear();
    if (field[0] != "show") {
      int type = 0, detail = 0, componentId = 0;
      Record record;
      std::istringstream(field[1]) >> type >> detail >> componentId >> record.processId >>
          record.threadId >> record.origin;
      record.type = static_cast<TavEnTraceDataType>(type);
      record.detail = static_cast<TavEnTraceDetail>(detail);
      record.componentId = static_cast<uint8_t>(componentId);
      record.message = field[2];
      record.data = field[3];
      trace.push_back(record);
    } else {
      EXPECT_EQ(formatBytes(bytesOf(trace), field[1].c_str(), field[2]), field[3]);
    }
  }
}

// A damaged record stops formatting with a failure, after the text of the good one before it.
TEST(TraceFormatter, DamagedFiles) {
  const std::string good = bytesOf({{TAV_TRACE_TYPE_INT32, "fn", "abcd"}});
  for (const auto& row : readTable("formatter_damaged.txt", 6)) {
    SCOPED_TRACE(row.where);
    Record damaged{static_cast<TavEnTraceDataType>(std::stoi(row.fields.at(0))), "fn",
                   row.fields.at(1)};
    if (row.fields.at(2) != "-") damaged.claimedSize = std::stoll(row.fields.at(2));
    const std::string& format = row.fields.at(3);
    const std::string output = formatBytes(good + bytesOf({damaged}), format.c_str());
    const std::string before = format == "%d" ? "1684234849\n" : "fn\n";
    EXPECT_EQ(output.substr(0, before.size()), before);
    EXPECT_EQ(
        output.substr(output.rfind('!')),
        failure(row.fields.at(4) == "eof" ? TRACEFORMAT_UNEXPECTED_EOF : TRACEFORMAT_FILE_CORRUPTED,
                std::stoi(row.fields.at(5))));
  }
  EXPECT_EQ(formatBytes("", "%f"), "");
  const std::string whole = bytesOf({Record()});
  for (size_t cut = 1; cut < whole.size(); ++cut) {
    SCOPED_TRACE(testing::Message() << "header cut at " << cut);  // ends normally
    EXPECT_EQ(formatBytes(whole + whole.substr(0, cut), "%f"), "fn\n");
  }
}

// The environment's trace file: records the library wrote, enough of them that reading goes
// through several buffer fills. (The trace controller's tests show it cut short or unreadable.)
TEST(TraceFormatterFile, FormatsRecordsWrittenByTheLibrary) {
  TestTraceEnvironment environment(true);
  environment.fileName = tav::test::scratchFileName("formatter");
  const int32_t value = -5;
  const std::string record = tav::test::recordBytes(
      TavClTraceEntry(environment, TAV_TRACE_DETAIL_HIGH, 3, TAV_TRACE_TYPE_INT32,
                      "Session::restart", "counter", &value, sizeof(value)));
  std::string bytes, expected;
  for (int i = 0; i < 2000; ++i) {
    bytes += record;
    expected += "Session::restart counter HIGH 3 -5\n";
  }
  std::ofstream(environment.fileName, std::ios::binary) << bytes;
  TavClTraceFormatter formatter(environment);
  formatter.setFormatString("%f %m %l %c %d");
  EXPECT_TRUE(formatted(formatter) == expected);  // too long to print
  std::filesystem::remove(environment.fileName);
}

}  // namespace
