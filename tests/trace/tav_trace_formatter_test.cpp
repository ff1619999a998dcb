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

Record functionRecord(TavEnTraceDataType type, const std::string& origin, uint32_t level) {
  Record function = record(type, origin, littleEndian(level, 4));
  function.message = "";
  return function;
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

TEST(TraceFormatter, DetailNamesAndTypeNames) {
  const char* details[] = {"OFF", "LOW", "MED", "HIGH"};
  for (unsigned detail = 0; detail < 4; ++detail) {
    Record plain;
    plain.detail = static_cast<TavEnTraceDetail>(detail);
    EXPECT_EQ(formatBytes(bytesOf({plain}), "%l"), std::string(details[detail]) + "\n");
  }
  EXPECT_STREQ(TavClTraceFormatter::getTypeAsLongCString(21), "long double");
  EXPECT_STREQ(TavClTraceFormatter::getTypeAsShortCString(22), "");
  EXPECT_STREQ(TavClTraceFormatter::getTypeAsLongCString(0), "");
}

TEST(TraceFormatter, DataDisplayByType) {
  for (const auto& row : readTable("formatter_data.txt")) {
    SCOPED_TRACE(row.where);
    const auto type = static_cast<TavEnTraceDataType>(std::stoi(row.fields.at(0)));
    EXPECT_STREQ(TavClTraceFormatter::getTypeAsShortCString(type), row.fields.at(1).c_str());
    const std::string& switches = row.fields.at(2);
    const std::string text = formatBytes(bytesOf({record(type, "fn", row.fields.at(3))}), "%d",
                                         [&](TavClTraceFormatter& f) {
                                           f.enableHexData(switches == "hex" || switches == "both");
                                           f.enableBinData(switches == "bin" || switches == "both");
                                         });
    EXPECT_EQ(text, row.fields.at(4) + "\n");
  }
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

// The filter, function headers, repeated origins and nesting, each on a small trace.
TEST(TraceFormatter, FilterAndDisplaySwitches) {
  std::vector<Record> mixed;
  const struct {
    const char* origin;
    TavEnTraceDetail detail;
    uint8_t componentId;
    uint32_t processId;
    uint32_t threadId;
  } rows[] = {{"a", TAV_TRACE_DETAIL_LOW, 1, 10, 100},
              {"b", TAV_TRACE_DETAIL_MED, 2, 10, 200},
              {"c", TAV_TRACE_DETAIL_HIGH, 3, 20, 100},
              {"d", TAV_TRACE_DETAIL_LOW, 0, 20, 200}};
  for (const auto& row : rows) {
    mixed.push_back(record(TAV_TRACE_TYPE_INT32, row.origin, "1234"));  // passed over when hidden
    mixed.back().detail = row.detail;
    mixed.back().componentId = row.componentId;
    mixed.back().processId = row.processId;
    mixed.back().threadId = row.threadId;
  }
  const Record inFoo = record(TAV_TRACE_TYPE_BOOL, "foo", "\x01");
  const Record inBar = record(TAV_TRACE_TYPE_BOOL, "bar", "\x01");
  const std::vector<Record> repeated = {functionRecord(TAV_TRACE_TYPE_FUNCTION_ENTRY, "foo", 1),
                                        inFoo,
                                        inFoo,
                                        inBar,
                                        inBar,
                                        functionRecord(TAV_TRACE_TYPE_FUNCTION_EXIT, "foo", 0),
                                        functionRecord(TAV_TRACE_TYPE_FUNCTION_ENTRY, "foo", 1)};
  const std::vector<Record> nested = {functionRecord(TAV_TRACE_TYPE_FUNCTION_ENTRY, "a", 1),
                                      record(TAV_TRACE_TYPE_NO_DATA, "a"),
                                      functionRecord(TAV_TRACE_TYPE_FUNCTION_ENTRY, "b", 2),
                                      record(TAV_TRACE_TYPE_NO_DATA, "b"),
                                      functionRecord(TAV_TRACE_TYPE_FUNCTION_EXIT, "b", 1),
                                      functionRecord(TAV_TRACE_TYPE_FUNCTION_EXIT, "a", 0)};
  const std::vector<Record> entered(nested.begin(), nested.begin() + 2);
  const Configure nesting = [](TavClTraceFormatter& f) {
    f.enableNesting(true);
    f.setDisplayIndentation("..");
  };
  const struct {
    const char* name;
    std::vector<Record> records;
    const char* format;
    Configure setup;
    const char* expected;
  } cases[] = {
      {"no filter", mixed, "%f", {}, "a\nb\nc\nd\n"},
      {"detail MED", mixed, "%f", [](auto& f) { f.getFilter().setDetail("MED"); }, "a\nb\nd\n"},
      {"detail OFF", mixed, "%f", [](auto& f) { f.getFilter().setDetail("OFF"); }, ""},
      {"components 2.3 (0 always passes)", mixed, "%f",
       [](auto& f) {
         f.getFilter().disableAllComponentIds();
         f.getFilter().enableComponentIds("2.3");
       },
       "b\nc\nd\n"},
      {"process 20", mixed, "%f", [](auto& f) { f.getFilter().setProcessId("20"); }, "c\nd\n"},
      {"thread 200", mixed, "%f", [](auto& f) { f.getFilter().setThreadId("200"); }, "b\nd\n"},
      {"function headers",
       repeated,
       "%x %f",
       {},
       "FE foo\nb foo\nb foo\nb bar\nb bar\nFX foo\nFE foo\n"},
      {"function headers off", repeated, "%x %f", [](auto& f) { f.enableFunctionHeaders(false); },
       "b foo\nb foo\nb bar\nb bar\n"},
      // A function entry always shows its origin; other records only when it changes.
      {"repeated origins off", repeated, "%x %f", [](auto& f) { f.enableRepeatedOrigins(false); },
       "FE foo\nb \nb \nb bar\nb \nFX foo\nFE foo\n"},
      {"nesting", nested, "%x %f", nesting, "FE a\n..ND a\n..FE b\n....ND b\n..FX b\nFX a\n"},
      // Further lines of a record go one level deeper than its first.
      {"nesting, two lines", entered, "%f%n%x", nesting, "a\n..FE\n..a\n....ND\n"},
      // The level comes from the function records even when they are not shown.
      {"nesting without headers", nested, "%f",
       [&](auto& f) {
         nesting(f);
         f.enableFunctionHeaders(false);
       },
       "..a\n....b\n"},
      // Without nesting the indentation only follows line breaks.
      {"indentation only", entered, "%f%n%x", [](auto& f) { f.setDisplayIndentation(".."); },
       "a\n..FE\na\n..ND\n"},
      {"nesting depth is bounded",
       {functionRecord(TAV_TRACE_TYPE_FUNCTION_EXIT, "deep", UINT32_MAX)},
       "%f",
       [](auto& f) {
         f.enableNesting(true);
         f.setDisplayIndentation(".");
       },
       nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string expected =
        c.expected ? c.expected
                   : std::string(TavClTraceFormatter::kMaxNestingDepth, '.') + "deep\n";
    EXPECT_EQ(formatBytes(bytesOf(c.records), c.format, c.setup), expected);
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

TEST(TraceFormatter, DataIsConsumedOnceWhateverTheFormat) {
  const std::string bytes = bytesOf({record(TAV_TRACE_TYPE_CSTRING, "first", std::string(300, 'x')),
                                     record(TAV_TRACE_TYPE_DATA, "second", std::string(40, 'y')),
                                     record(TAV_TRACE_TYPE_INT16, "third", "\x01\x00")});
  for (const char* format : {"%f", "%f %d", "%d%d %f", "%f%n"}) {
    SCOPED_TRACE(format);
    const std::string text = formatBytes(bytes, format);
    EXPECT_NE(text.find("second"), std::string::npos);
    EXPECT_NE(text.find("third"), std::string::npos);
  }
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
               functionRecord(TAV_TRACE_TYPE_FUNCTION_ENTRY, "f", 4)});
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
