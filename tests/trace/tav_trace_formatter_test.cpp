// The trace formatter: the directives, the display of every data type, the filter and the
// display switches, and what happens to damaged files. Records are written byte by byte with
// fixed time stamps and ids, so that the expected texts are the same on every host; the tables
// and the demo program's trace are under tests/data/trace.

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "tav_error.h"
#include "tav_message.h"
#include "tav_test_allocator.h"
#include "tav_trace_entry.h"
#include "tav_trace_formatter.h"
#include "tav_trace_test_support.h"

namespace {

using tav::test::littleEndian;
using tav::test::readTable;
using tav::test::scratchFileName;
using tav::test::TestTraceEnvironment;

struct Record {
  TavEnTraceDataType type = TAV_TRACE_TYPE_NO_DATA;
  std::string origin = "fn";
  std::string message = "msg";
  std::string data;
  TavEnTraceDetail detail = TAV_TRACE_DETAIL_LOW;
  uint8_t componentId = 1;
  uint32_t processId = 42;
  uint32_t threadId = 7;
  // The size field when it is to differ from the data actually written.
  int64_t claimedSize = -1;
};

std::string bytesOf(const std::vector<Record>& records) {
  std::string bytes;
  for (const Record& record : records) {
    const uint64_t size =
        record.claimedSize >= 0 ? static_cast<uint64_t>(record.claimedSize) : record.data.size();
    bytes += static_cast<char>(record.type | record.detail << 6);
    bytes += static_cast<char>(record.componentId);
    bytes += static_cast<char>(record.message.size());
    bytes += static_cast<char>(record.origin.size());
    bytes += littleEndian(1000, 4) + littleEndian(record.processId, 4) +
             littleEndian(record.threadId, 4) + littleEndian(size, 4);
    bytes += record.message + record.origin + record.data;
  }
  return bytes;
}

Record record(TavEnTraceDataType type, const std::string& origin, const std::string& data = "") {
  Record result;
  result.type = type;
  result.origin = origin;
  result.data = data;
  return result;
}

using Configure = std::function<void(TavClTraceFormatter&)>;

struct Formatting {
  explicit Formatting(const char* format, const Configure& configure = {}) {
    formatter.setFormatString(format);
    if (configure) configure(formatter);
  }
  std::string run(const std::string& bytes) {
    std::istringstream input(bytes);
    formatter.format(input, output);
    return output.str();
  }

  TestTraceEnvironment environment;
  TavClTraceFormatter formatter{environment};
  std::ostringstream output;
};

std::string formatBytes(const std::string& bytes, const char* format,
                        const Configure& configure = {}) {
  return Formatting(format, configure).run(bytes);
}

// Display switches and filter settings such as "nesting,indent=..,detail=MED"; - for none.
Configure switchesOf(const std::string& switches) {
  return [switches](TavClTraceFormatter& f) {
    std::istringstream list(switches == "-" ? "" : switches);
    for (std::string item; std::getline(list, item, ',');) {
      const size_t equals = item.find('=');
      const std::string name = item.substr(0, equals);
      const char* value = equals == std::string::npos ? "" : item.c_str() + equals + 1;
      const std::string known =
          " indent nesting noheaders noorigins hex bin detail process thread components ";
      EXPECT_NE(known.find(" " + name + " "), std::string::npos) << "unknown switch " << item;
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
  };
}

// Runs formatting that must fail with id, reported at the position line.
void expectFailure(const std::function<void()>& format, uint32_t id, uint32_t line) {
  try {
    format();
    ADD_FAILURE() << "no exception";
  } catch (const TavClExceptionFatal& failure) {
    EXPECT_EQ(failure.getId(), id);
    EXPECT_EQ(failure.getLine(), line);
    EXPECT_EQ(std::string(failure.getModule()), "tav_trace_format:" + std::to_string(line));
    EXPECT_EQ(failure.getSeverity(), TAV_SEVERITY_FATAL);
  }
}

TEST(TraceFormatter, Directives) {
  Record data = record(TAV_TRACE_TYPE_UINT32, "fn", littleEndian(305419896, 4));
  data.detail = TAV_TRACE_DETAIL_MED;
  data.componentId = 5;
  for (const auto& row : readTable("formatter_directives.txt")) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(formatBytes(bytesOf({data}), row.fields.at(0).c_str(),
                          [](TavClTraceFormatter& f) { f.setDisplayIndentation("> "); }),
              row.fields.at(1) + "\n");
  }
}

TEST(TraceFormatter, DataDisplayByType) {
  for (const auto& row : readTable("formatter_data.txt")) {
    SCOPED_TRACE(row.where);
    const auto type = static_cast<TavEnTraceDataType>(std::stoi(row.fields.at(0)));
    EXPECT_STREQ(TavClTraceFormatter::getTypeAsShortCString(type), row.fields.at(1).c_str());
    EXPECT_EQ(formatBytes(bytesOf({record(type, "fn", row.fields.at(3))}), "%d",
                          switchesOf(row.fields.at(2))),
              row.fields.at(4) + "\n");
  }
  EXPECT_STREQ(TavClTraceFormatter::getTypeAsLongCString(21), "long double");
  EXPECT_STREQ(TavClTraceFormatter::getTypeAsShortCString(22), "");
  EXPECT_STREQ(TavClTraceFormatter::getTypeAsLongCString(0), "");
  const std::string longText(1000, 'x');
  EXPECT_EQ(
      formatBytes(bytesOf({record(TAV_TRACE_TYPE_CSTRING, "fn", longText + '\0' + "tail")}), "%d"),
      longText + "\n");
}

// The demo program's trace, formatted as the demo prints it.
TEST(TraceFormatter, DemoTraceGolden) {
  const std::string bytes = tav::test::readTestData("demo.trc");
  EXPECT_EQ(formatBytes(bytes, TavClTraceEnvironment::kDefaultFormat),
            tav::test::readTestData("demo_default.txt"));
  EXPECT_EQ(formatBytes(bytes, "%x %f %m %d",
                        [](TavClTraceFormatter& f) {
                          f.setDisplayIndentation("|  ");
                          f.enableNesting(true);
                        }),
            tav::test::readTestData("demo_nested.txt"));
}

// Small traces shown with the filter and the display switches.
TEST(TraceFormatter, FilterAndDisplaySwitches) {
  std::vector<Record> trace;
  for (const auto& row : readTable("formatter_display.txt")) {
    SCOPED_TRACE(row.where);
    const std::vector<std::string>& field = row.fields;
    if (field.at(0) == "trace") {
      trace.clear();
    } else if (field.at(0) == "record") {
      trace.push_back(record(static_cast<TavEnTraceDataType>(std::stoi(field.at(1))), field.at(6),
                             field.at(8)));
      trace.back().detail = static_cast<TavEnTraceDetail>(std::stoi(field.at(2)));
      trace.back().componentId = static_cast<uint8_t>(std::stoi(field.at(3)));
      trace.back().processId = static_cast<uint32_t>(std::stoul(field.at(4)));
      trace.back().threadId = static_cast<uint32_t>(std::stoul(field.at(5)));
      trace.back().message = field.at(7);
    } else {
      ASSERT_EQ(field.at(0), "show");
      EXPECT_EQ(formatBytes(bytesOf(trace), field.at(1).c_str(), switchesOf(field.at(2))),
                field.at(3));
    }
  }
}

TEST(TraceFormatter, FilterGivenToTheConstructorIsUsed) {
  TestTraceEnvironment environment;
  TavClTraceFilter filter;  // level LOW
  TavClTraceFormatter formatter(environment, &filter);
  formatter.setFormatString("%l");
  Record high;
  high.detail = TAV_TRACE_DETAIL_HIGH;
  std::istringstream input(bytesOf({Record(), high, Record()}));
  std::ostringstream output;
  formatter.format(input, output);
  EXPECT_EQ(output.str(), "LOW\nLOW\n");
}

TEST(TraceFormatter, DamagedFiles) {
  const std::string good = bytesOf({record(TAV_TRACE_TYPE_INT32, "fn", "abcd")});
  for (const auto& row : readTable("formatter_damaged.txt")) {
    SCOPED_TRACE(row.where);
    Record damaged = record(static_cast<TavEnTraceDataType>(std::stoi(row.fields.at(0))), "fn",
                            row.fields.at(1));
    if (row.fields.at(2) != "-") damaged.claimedSize = std::stoll(row.fields.at(2));
    const std::string& format = row.fields.at(3);
    Formatting formatting(format.c_str());
    expectFailure(
        [&] { formatting.run(good + bytesOf({damaged})); },
        row.fields.at(4) == "eof" ? TRACEFORMAT_UNEXPECTED_EOF : TRACEFORMAT_FILE_CORRUPTED,
        static_cast<uint32_t>(std::stoul(row.fields.at(5))));
    // The record before the damaged one is complete in the output.
    const std::string before = format == "%d" ? "1684234849\n" : "fn\n";
    EXPECT_EQ(formatting.output.str().substr(0, before.size()), before);
  }
}

TEST(TraceFormatter, EmptyAndCutHeadersEndNormally) {
  EXPECT_EQ(formatBytes("", "%f"), "");
  const std::string whole = bytesOf({Record()});
  for (size_t cut = 1; cut < whole.size(); ++cut) {
    SCOPED_TRACE(cut);
    EXPECT_EQ(formatBytes(whole + whole.substr(0, cut), "%f"), "fn\n");
  }
}

// Size fields never make the formatter allocate: a record claiming 4 GiB is read until the
// file ends, through the formatter's own buffers.
TEST(TraceFormatter, FormattingAllocatesNothing) {
  Record huge = record(TAV_TRACE_TYPE_DATA, "fn", std::string(100, 'a'));
  huge.claimedSize = UINT32_MAX;
  const std::string bytes = bytesOf({record(TAV_TRACE_TYPE_DATA, "fn", std::string(100, 'a')),
                                     record(TAV_TRACE_TYPE_CSTRING, "fn", "text"), huge});
  tav::test::installCountingAllocator();
  TestTraceEnvironment environment;
  auto* formatter = new TavClTraceFormatter(environment);
  const size_t before = tav::test::allocationRequests();
  std::istringstream input(bytes);
  std::ostringstream output;
  EXPECT_THROW(formatter->format(input, output), TavClExceptionFatal);
  EXPECT_EQ(tav::test::allocationRequests(), before);
  delete formatter;
}

TEST(TraceFormatter, FixedTextsFromAnAttachedCatalog) {
  std::vector<const char*> table(
      tavMsgCatGetBuiltInStringTable(),
      tavMsgCatGetBuiltInStringTable() + tavMsgCatGetBuiltInStringTableSize());
  table[189] = "Byte";
  table[190] = " (gekuerzt)";
  table[191] = "<null>";
  table[192] = "Tiefe ";
  TavClMessageCatalog catalog;
  catalog.useStringTable(table.data(), static_cast<unsigned long>(table.size()));
  const std::string bytes =
      bytesOf({record(TAV_TRACE_TYPE_DATA_CLIPPED, "fn"), record(TAV_TRACE_TYPE_DATA_NULL, "fn"),
               record(TAV_TRACE_TYPE_FUNCTION_ENTRY, "f", littleEndian(4, 4))});
  EXPECT_EQ(
      formatBytes(bytes, "%d", [&](TavClTraceFormatter& f) { f.attachTavMessageCatalog(catalog); }),
      "0 Byte (gekuerzt)\n<null>\nTiefe 4\n");
}

TEST(TraceFormatter, AttachingACatalogReportsOutOfMemory) {
  TavClMessageCatalog catalog;
  catalog.useStringTable(tavMsgCatGetBuiltInStringTable(), tavMsgCatGetBuiltInStringTableSize());
  TestTraceEnvironment environment;
  tav::test::forEachAllocationFailure([&] {
    TavClTraceFormatter formatter(environment);
    formatter.attachTavMessageCatalog(catalog);
    formatter.attachTavMessageCatalog(catalog);
  });
}

// Formatting the environment's trace file: records the library wrote, enough of them that
// reading goes through several buffer fills.
TEST(TraceFormatterFile, FormatsRecordsWrittenByTheLibrary) {
  TestTraceEnvironment environment(true);
  environment.fileName = scratchFileName("formatter");
  const int32_t value = -5;
  const TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_HIGH, 3, TAV_TRACE_TYPE_INT32,
                              "Session::restart", "counter", &value, sizeof(value));
  std::string bytes;
  std::string expected;
  for (int i = 0; i < 2000; ++i) {
    bytes += tav::test::recordBytes(entry);
    expected += "Session::restart counter HIGH 3 -5\n";
  }
  std::ofstream(environment.fileName, std::ios::binary) << bytes;
  TavClTraceFormatter formatter(environment);
  formatter.setFormatString("%f %m %l %c %d");
  std::ostringstream output;
  formatter.format(output);
  EXPECT_EQ(output.str(), expected);
  std::filesystem::remove(environment.fileName);
}

TEST(TraceFormatterFile, MissingOrCutFiles) {
  const std::string cut = bytesOf({record(TAV_TRACE_TYPE_DATA, "fn", std::string(64, 'z'))});
  const struct {
    std::string name;
    const char* contents;  // nullptr: the file is not written
    uint32_t id;
    uint32_t line;
  } cases[] = {
      {scratchFileName("formatter_missing"), nullptr, TRACEFORMAT_COULD_NOT_OPEN, 837},
      {std::filesystem::temp_directory_path().string(), nullptr, TRACEFORMAT_COULD_NOT_OPEN, 837},
      {scratchFileName("formatter_cut"), "cut inside a data block", TRACEFORMAT_UNEXPECTED_EOF,
       644},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    if (c.contents) std::ofstream(c.name, std::ios::binary) << cut.substr(0, cut.size() - 10);
    TestTraceEnvironment environment;
    environment.fileName = c.name;
    TavClTraceFormatter formatter(environment);
    std::ostringstream output;
    expectFailure([&] { formatter.format(output); }, c.id, c.line);
    if (c.contents) std::filesystem::remove(c.name);
  }
}

TEST(TraceFormatterEnvironment, DefaultFormatComesFromTheEnvironment) {
  tav::test::ScopedTraceVariables variables("TAVFMTTEST");
  variables.set("_TRACE_FORMAT", "[%f]");
  TavClTraceEnvironment environment("tavfmttest", nullptr, true);
  EXPECT_STREQ(TavClTraceFormatter(environment).getFormatString(), "[%f]");
  TestTraceEnvironment plain;
  EXPECT_STREQ(TavClTraceFormatter(plain).getFormatString(), TavClTraceEnvironment::kDefaultFormat);
}

}  // namespace
