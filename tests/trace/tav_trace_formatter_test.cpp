// The trace formatter: the directives, the display of every data type, the filter and the
// display switches, and what happens to damaged files. Records are written byte by byte with
// fixed time stamps and ids, so that the expected texts are the same on every host.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
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

#include "tav_trace_demo_golden.inc"

using tav::test::scratchFileName;
using tav::test::TestTraceEnvironment;

std::string littleEndian(uint64_t value, unsigned width) {
  std::string bytes;
  for (unsigned i = 0; i < width; ++i) bytes += static_cast<char>(value >> (8 * i));
  return bytes;
}

struct Record {
  TavEnTraceDataType type = TAV_TRACE_TYPE_NO_DATA;
  std::string origin = "fn";
  std::string message = "msg";
  std::string data;
  TavEnTraceDetail detail = TAV_TRACE_DETAIL_LOW;
  uint8_t componentId = 1;
  uint32_t processId = 42;
  uint32_t threadId = 7;
  uint32_t timeStamp = 1000;
  bool compressed = false;
  // The size field when it is to differ from the data actually written.
  int64_t claimedSize = -1;
};

std::string bytesOf(const Record& record) {
  std::string message = record.message;
  std::string origin = record.origin;
  if (record.compressed) {
    uint8_t buffer[300];
    message.assign(reinterpret_cast<char*>(buffer),
                   TavClTraceEntry::compressCString(buffer, record.message.c_str(), 255));
    origin.assign(reinterpret_cast<char*>(buffer),
                  TavClTraceEntry::compressCString(buffer, record.origin.c_str(), 255));
  }
  const uint64_t size =
      record.claimedSize >= 0 ? static_cast<uint64_t>(record.claimedSize) : record.data.size();
  std::string bytes;
  bytes += static_cast<char>(record.type | (record.compressed ? 0x20 : 0) | record.detail << 6);
  bytes += static_cast<char>(record.componentId);
  bytes += static_cast<char>(message.size());
  bytes += static_cast<char>(origin.size());
  bytes += littleEndian(record.timeStamp, 4) + littleEndian(record.processId, 4) +
           littleEndian(record.threadId, 4) + littleEndian(size, 4);
  return bytes + message + origin + record.data;
}

std::string bytesOf(const std::vector<Record>& records) {
  std::string bytes;
  for (const Record& record : records) bytes += bytesOf(record);
  return bytes;
}

Record functionRecord(TavEnTraceDataType type, const std::string& origin, uint32_t level) {
  Record record;
  record.type = type;
  record.origin = origin;
  record.message = "";
  record.data = littleEndian(level, 4);
  return record;
}

Record dataRecord(TavEnTraceDataType type, const std::string& data) {
  Record record;
  record.type = type;
  record.data = data;
  return record;
}

using Configure = std::function<void(TavClTraceFormatter&)>;

std::string formatBytes(const std::string& bytes, const char* format,
                        const Configure& configure = {}) {
  TestTraceEnvironment environment;
  TavClTraceFormatter formatter(environment);
  formatter.setFormatString(format);
  if (configure) configure(formatter);
  std::istringstream input(bytes);
  std::ostringstream output;
  formatter.format(input, output);
  return output.str();
}

// Formats and expects a failure; returns what was written before it.
std::string expectFailure(const std::string& bytes, const char* format, uint32_t id,
                          uint32_t line) {
  TestTraceEnvironment environment;
  TavClTraceFormatter formatter(environment);
  formatter.setFormatString(format);
  std::istringstream input(bytes);
  std::ostringstream output;
  try {
    formatter.format(input, output);
    ADD_FAILURE() << "no exception";
  } catch (const TavClExceptionFatal& failure) {
    EXPECT_EQ(failure.getId(), id);
    EXPECT_EQ(failure.getLine(), line);
    EXPECT_EQ(std::string(failure.getModule()), "tav_trace_format:" + std::to_string(line));
    EXPECT_EQ(failure.getSeverity(), TAV_SEVERITY_FATAL);
  }
  return output.str();
}

TEST(TraceFormatter, Directives) {
  Record record = dataRecord(TAV_TRACE_TYPE_UINT32, littleEndian(305419896, 4));
  record.detail = TAV_TRACE_DETAIL_MED;
  record.componentId = 5;
  const std::string bytes = bytesOf(record);
  const struct {
    const char* format;
    const char* expected;
  } cases[] = {
      {"%%", "%"},
      {"%f", "fn"},
      {"%m", "msg"},
      {"%p", "42"},
      {"%s", "1000"},
      {"%t", "7"},
      {"%c", "5"},
      {"%l", "MED"},
      {"%x", "w32"},
      {"%X", "unsigned integer (32 bits)"},
      {"%d", "305419896"},
      {"a%nb", "a\n> b"},
      {"a\\nb", "a\n> b"},
      {"a\\tb", "a\tb"},
      {"a\\\\b", "a\\b"},
      {"\\q", "q"},      // any other character after a backslash stands alone
      {"%q", "%q"},      // an unknown directive is copied
      {"end%", "end%"},  // a lone sign at the end is copied
      {"end\\", "end\\"},
      {"[%d|%d]", "[305419896|]"},  // the data block is shown once
      {"", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.format);
    EXPECT_EQ(
        formatBytes(bytes, c.format, [](TavClTraceFormatter& f) { f.setDisplayIndentation("> "); }),
        std::string(c.expected) + "\n");
  }
}

TEST(TraceFormatter, DetailNamesAndTypeNames) {
  const char* details[] = {"OFF", "LOW", "MED", "HIGH"};
  for (unsigned detail = 0; detail < 4; ++detail) {
    Record record;
    record.detail = static_cast<TavEnTraceDetail>(detail);
    EXPECT_EQ(formatBytes(bytesOf(record), "%l"), std::string(details[detail]) + "\n");
  }
  EXPECT_STREQ(TavClTraceFormatter::getTypeAsShortCString(8), "cpsz");
  EXPECT_STREQ(TavClTraceFormatter::getTypeAsLongCString(21), "long double");
  EXPECT_STREQ(TavClTraceFormatter::getTypeAsShortCString(22), "");
  EXPECT_STREQ(TavClTraceFormatter::getTypeAsLongCString(0), "");
}

TEST(TraceFormatter, DataDisplayByType) {
  const float single = 1.5f;
  const double twice = -0.1;
  const double infinite = 1e308 * 10;
  // 2.5 in the 80-bit extended format: mantissa 0xA000000000000000, exponent 16384.
  const std::string extended =
      littleEndian(0xA000000000000000u, 8) + littleEndian(16384, 2) + std::string(6, '\0');
  const struct {
    TavEnTraceDataType type;
    std::string data;
    bool hex;
    bool bin;
    const char* expected;
  } cases[] = {
      {TAV_TRACE_TYPE_FUNCTION_ENTRY, littleEndian(3, 4), false, false, "Nesting level: 3"},
      {TAV_TRACE_TYPE_FUNCTION_EXIT, littleEndian(2, 4), false, false, "Nesting level: 2"},
      {TAV_TRACE_TYPE_NO_DATA, "", false, false, ""},
      {TAV_TRACE_TYPE_DATA_NULL, "", false, false, "*** Illegal NULL pointer ***"},
      {TAV_TRACE_TYPE_POINTER, littleEndian(0x7ffdeadbeef0u, 8), false, false,
       "0x00007ffdeadbeef0"},
      {TAV_TRACE_TYPE_CSTRING, std::string("hello\0junk", 10), false, false, "hello"},
      {TAV_TRACE_TYPE_CSTRING, "no zero", false, false, "no zero"},
      {TAV_TRACE_TYPE_BOOL, "\x02", false, false, "TRUE"},
      {TAV_TRACE_TYPE_BOOL, std::string(1, '\0'), false, false, "FALSE"},
      {TAV_TRACE_TYPE_INT8, "A", false, false, "0x41/65/'A'"},
      {TAV_TRACE_TYPE_INT8, "\xff", false, false, "0xff/-1"},
      {TAV_TRACE_TYPE_UINT8, "\xff", false, true, "0xff/255/0b11111111"},
      {TAV_TRACE_TYPE_UINT8, "\n", true, false, "0x0a/10"},
      {TAV_TRACE_TYPE_INT16, littleEndian(0x8000, 2), false, false, "-32768"},
      {TAV_TRACE_TYPE_UINT16, littleEndian(0x8000, 2), true, false, "32768/0x8000"},
      {TAV_TRACE_TYPE_INT32, littleEndian(static_cast<uint32_t>(-42), 4), true, true,
       "-42/0xffffffd6/0b11111111111111111111111111010110"},
      {TAV_TRACE_TYPE_UINT32, littleEndian(4000000000u, 4), false, false, "4000000000"},
      {TAV_TRACE_TYPE_INT64, littleEndian(0x8000000000000000u, 8), false, false,
       "-9223372036854775808"},
      {TAV_TRACE_TYPE_UINT64, littleEndian(UINT64_MAX, 8), true, false,
       "18446744073709551615/0xffffffffffffffff"},
      {TAV_TRACE_TYPE_INT32, littleEndian(0x0102, 2), false, false, "258"},  // short: zeros
      {TAV_TRACE_TYPE_FLOAT, std::string(reinterpret_cast<const char*>(&single), 4), false, false,
       "1.5"},
      {TAV_TRACE_TYPE_DOUBLE, std::string(reinterpret_cast<const char*>(&twice), 8), true, false,
       "-0.1"},
      {TAV_TRACE_TYPE_DOUBLE, std::string(reinterpret_cast<const char*>(&infinite), 8), false,
       false, "inf"},
      {TAV_TRACE_TYPE_LONG_DOUBLE, extended, false, false, "2.5"},
      {TAV_TRACE_TYPE_LONG_DOUBLE, std::string(reinterpret_cast<const char*>(&twice), 8), false,
       false, "-0.1"},
      {TAV_TRACE_TYPE_DATA, "AB", false, false,
       "2 Bytes\n00000000: 41 42 __ __ __ __ __ __  __ __ __ __ __ __ __ __ | AB______________"},
      {TAV_TRACE_TYPE_DATA_CLIPPED, "", false, false, "0 Bytes *** Clipped ***"},
      {TAV_TRACE_TYPE_UNICODE, std::string("a\0b\0", 4), false, false,
       "4 Bytes\n00000000: 61 00 62 00 __ __ __ __  __ __ __ __ __ __ __ __ | a.b.____________"},
      {static_cast<TavEnTraceDataType>(25), "\x01", false, false,
       "1 Bytes\n00000000: 01 __ __ __ __ __ __ __  __ __ __ __ __ __ __ __ | ._______________"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << "type " << c.type << ": " << c.expected);
    const std::string text =
        formatBytes(bytesOf(dataRecord(c.type, c.data)), "%d", [&](TavClTraceFormatter& f) {
          f.enableHexData(c.hex);
          f.enableBinData(c.bin);
        });
    EXPECT_EQ(text, std::string(c.expected) + "\n");
  }
}

TEST(TraceFormatter, HexDumpRowsFollowTheIndentation) {
  std::string data;
  for (int i = 0; i < 20; ++i) data += static_cast<char>('a' + i);
  const std::string text =
      formatBytes(bytesOf(dataRecord(TAV_TRACE_TYPE_DATA, data)), "%m: %d",
                  [](TavClTraceFormatter& f) { f.setDisplayIndentation("  "); });
  EXPECT_EQ(text,
            "msg: 20 Bytes\n"
            "  00000000: 61 62 63 64 65 66 67 68  69 6a 6b 6c 6d 6e 6f 70 | abcdefghijklmnop\n"
            "  00000010: 71 72 73 74 __ __ __ __  __ __ __ __ __ __ __ __ | qrst____________\n");
}

TEST(TraceFormatter, LongCStringIsShownWhole) {
  const std::string text(1000, 'x');
  EXPECT_EQ(formatBytes(bytesOf(dataRecord(TAV_TRACE_TYPE_CSTRING, text + '\0' + "tail")), "%d"),
            text + "\n");
}

// The golden text of a small trace in the default format: a function with typed data.
TEST(TraceFormatter, DefaultFormatGolden) {
  Record text = dataRecord(TAV_TRACE_TYPE_CSTRING, std::string("small\0", 6));
  text.origin = "processBatch";
  text.message = "batch name";
  text.compressed = true;
  Record count = dataRecord(TAV_TRACE_TYPE_UINT32, littleEndian(5, 4));
  count.origin = "processBatch";
  count.message = "value count";
  count.detail = TAV_TRACE_DETAIL_MED;
  count.timeStamp = 1002;
  Record exit = functionRecord(TAV_TRACE_TYPE_FUNCTION_EXIT, "processBatch", 0);
  exit.timeStamp = 1003;
  const std::string bytes = bytesOf(
      {functionRecord(TAV_TRACE_TYPE_FUNCTION_ENTRY, "processBatch", 1), text, count, exit});
  EXPECT_EQ(formatBytes(bytes, TavClTraceEnvironment::kDefaultFormat),
            "processBatch\n"
            "   P: 42, T: 1000, D: LOW, C: 1\n"
            "   Data:  (FE: Nesting level: 1\n"
            ")\n"
            "processBatch\n"
            "   P: 42, T: 1000, D: LOW, C: 1\n"
            "   Data: batch name (cpsz: small\n"
            ")\n"
            "processBatch\n"
            "   P: 42, T: 1002, D: MED, C: 1\n"
            "   Data: value count (w32: 5\n"
            ")\n"
            "processBatch\n"
            "   P: 42, T: 1003, D: LOW, C: 1\n"
            "   Data:  (FX: Nesting level: 0\n"
            ")\n");
}

// The demo program's trace, formatted as the demo prints it.
TEST(TraceFormatter, DemoTraceGolden) {
  const std::string bytes(kDemoTrace, sizeof(kDemoTrace) - 1);
  EXPECT_EQ(formatBytes(bytes, TavClTraceEnvironment::kDefaultFormat), kDemoTraceDefaultText);
  EXPECT_EQ(formatBytes(bytes, "%x %f %m %d",
                        [](TavClTraceFormatter& f) {
                          f.setDisplayIndentation("|  ");
                          f.enableNesting(true);
                        }),
            kDemoTraceNestedText);
}

TEST(TraceFormatter, Filters) {
  std::vector<Record> records;
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
    Record record = dataRecord(TAV_TRACE_TYPE_INT32, "1234");  // the data must be passed over
    record.origin = row.origin;
    record.detail = row.detail;
    record.componentId = row.componentId;
    record.processId = row.processId;
    record.threadId = row.threadId;
    records.push_back(record);
  }
  const std::string bytes = bytesOf(records);
  const struct {
    const char* name;
    Configure setup;
    const char* expected;
  } cases[] = {
      {"none", [](TavClTraceFormatter&) {}, "a\nb\nc\nd\n"},
      {"detail MED", [](TavClTraceFormatter& f) { f.getFilter().setDetail("MED"); }, "a\nb\nd\n"},
      {"detail OFF", [](TavClTraceFormatter& f) { f.getFilter().setDetail("OFF"); }, ""},
      {"components 2.3",
       [](TavClTraceFormatter& f) {
         f.getFilter().disableAllComponentIds();
         f.getFilter().enableComponentIds("2.3");
       },
       "b\nc\nd\n"},  // id 0 always passes
      {"process 20", [](TavClTraceFormatter& f) { f.getFilter().setProcessId("20"); }, "c\nd\n"},
      {"thread 200", [](TavClTraceFormatter& f) { f.getFilter().setThreadId("200"); }, "b\nd\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(formatBytes(bytes, "%f", c.setup), c.expected);
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

TEST(TraceFormatter, FunctionHeadersOffAndRepeatedOrigins) {
  Record inFoo = dataRecord(TAV_TRACE_TYPE_BOOL, "\x01");
  inFoo.origin = "foo";
  Record inBar = inFoo;
  inBar.origin = "bar";
  const std::string bytes =
      bytesOf({functionRecord(TAV_TRACE_TYPE_FUNCTION_ENTRY, "foo", 1), inFoo, inFoo, inBar, inBar,
               functionRecord(TAV_TRACE_TYPE_FUNCTION_EXIT, "foo", 0),
               functionRecord(TAV_TRACE_TYPE_FUNCTION_ENTRY, "foo", 1)});
  EXPECT_EQ(formatBytes(bytes, "%x %f"), "FE foo\nb foo\nb foo\nb bar\nb bar\nFX foo\nFE foo\n");
  EXPECT_EQ(
      formatBytes(bytes, "%x %f", [](TavClTraceFormatter& f) { f.enableFunctionHeaders(false); }),
      "b foo\nb foo\nb bar\nb bar\n");
  // A function entry always shows its origin; other records only when it changes.
  EXPECT_EQ(
      formatBytes(bytes, "%x %f", [](TavClTraceFormatter& f) { f.enableRepeatedOrigins(false); }),
      "FE foo\nb \nb \nb bar\nb \nFX foo\nFE foo\n");
}

TEST(TraceFormatter, NestingIndentsByLevel) {
  Record inA = dataRecord(TAV_TRACE_TYPE_NO_DATA, "");
  inA.origin = "a";
  Record inB = inA;
  inB.origin = "b";
  const std::string bytes = bytesOf({functionRecord(TAV_TRACE_TYPE_FUNCTION_ENTRY, "a", 1), inA,
                                     functionRecord(TAV_TRACE_TYPE_FUNCTION_ENTRY, "b", 2), inB,
                                     functionRecord(TAV_TRACE_TYPE_FUNCTION_EXIT, "b", 1),
                                     functionRecord(TAV_TRACE_TYPE_FUNCTION_EXIT, "a", 0)});
  const Configure nested = [](TavClTraceFormatter& f) {
    f.enableNesting(true);
    f.setDisplayIndentation("..");
  };
  EXPECT_EQ(formatBytes(bytes, "%x %f", nested), "FE a\n..ND a\n..FE b\n....ND b\n..FX b\nFX a\n");
  // Further lines of a record go one level deeper than its first.
  EXPECT_EQ(formatBytes(bytesOf({functionRecord(TAV_TRACE_TYPE_FUNCTION_ENTRY, "a", 1), inA}),
                        "%f%n%x", nested),
            "a\n..FE\n..a\n....ND\n");
  // The level comes from the function records even when they are not shown.
  EXPECT_EQ(formatBytes(bytes, "%f",
                        [&](TavClTraceFormatter& f) {
                          nested(f);
                          f.enableFunctionHeaders(false);
                        }),
            "..a\n....b\n");
  // Without nesting the indentation only follows line breaks.
  EXPECT_EQ(formatBytes(bytesOf({functionRecord(TAV_TRACE_TYPE_FUNCTION_ENTRY, "a", 1), inA}),
                        "%f%n%x", [](TavClTraceFormatter& f) { f.setDisplayIndentation(".."); }),
            "a\n..FE\na\n..ND\n");
}

TEST(TraceFormatter, NestingDepthIsBounded) {
  const std::string bytes =
      bytesOf({functionRecord(TAV_TRACE_TYPE_FUNCTION_EXIT, "deep", UINT32_MAX)});
  const std::string text = formatBytes(bytes, "%f", [](TavClTraceFormatter& f) {
    f.enableNesting(true);
    f.setDisplayIndentation(".");
  });
  EXPECT_EQ(text, std::string(TavClTraceFormatter::kMaxNestingDepth, '.') + "deep\n");
}

TEST(TraceFormatter, DataIsConsumedOnceWhateverTheFormat) {
  Record first = dataRecord(TAV_TRACE_TYPE_CSTRING, std::string(300, 'x'));
  Record second = dataRecord(TAV_TRACE_TYPE_DATA, std::string(40, 'y'));
  second.origin = "second";
  Record third = dataRecord(TAV_TRACE_TYPE_INT16, "\x01\x00");
  third.origin = "third";
  const std::string bytes = bytesOf({first, second, third});
  for (const char* format : {"%f", "%f %d", "%d%d %f", "%f%n"}) {
    SCOPED_TRACE(format);
    const std::string text = formatBytes(bytes, format);
    EXPECT_NE(text.find("second"), std::string::npos);
    EXPECT_NE(text.find("third"), std::string::npos);
  }
}

TEST(TraceFormatter, CompressedTextsAreExpanded) {
  Record record;
  record.compressed = true;
  record.origin = "Session::restart";
  record.message = "value 42 of the counter";
  EXPECT_EQ(formatBytes(bytesOf(record), "%f: %m"), "Session::restart: value 42 of the counter\n");
}

TEST(TraceFormatter, DamagedFiles) {
  const std::string good = bytesOf(dataRecord(TAV_TRACE_TYPE_INT32, "abcd"));
  auto claiming = [](TavEnTraceDataType type, const std::string& data, int64_t size) {
    Record record = dataRecord(type, data);
    record.claimedSize = size;
    return bytesOf(record);
  };
  const struct {
    const char* name;
    std::string bytes;
    const char* format;
    uint32_t id;
    uint32_t line;
  } cases[] = {
      {"no data with 2 bytes", bytesOf(dataRecord(TAV_TRACE_TYPE_NO_DATA, "ab")), "%d",
       TRACEFORMAT_FILE_CORRUPTED, 433},
      {"entry with 3 bytes", bytesOf(dataRecord(TAV_TRACE_TYPE_FUNCTION_ENTRY, "abc")), "%d",
       TRACEFORMAT_FILE_CORRUPTED, 398},
      {"exit with 5 bytes", bytesOf(dataRecord(TAV_TRACE_TYPE_FUNCTION_EXIT, "abcde")), "%d",
       TRACEFORMAT_FILE_CORRUPTED, 416},
      {"address with 4 bytes", bytesOf(dataRecord(TAV_TRACE_TYPE_POINTER, "abcd")), "%d",
       TRACEFORMAT_FILE_CORRUPTED, 364},
      {"integer with 128 bytes", bytesOf(dataRecord(TAV_TRACE_TYPE_INT32, std::string(128, 'a'))),
       "%d", TRACEFORMAT_FILE_CORRUPTED, 377},
      {"bool with 4 GiB", claiming(TAV_TRACE_TYPE_BOOL, "", UINT32_MAX), "%d",
       TRACEFORMAT_FILE_CORRUPTED, 377},
      {"integer cut", claiming(TAV_TRACE_TYPE_INT32, "ab", 4), "%d", TRACEFORMAT_UNEXPECTED_EOF,
       644},
      {"data cut", claiming(TAV_TRACE_TYPE_DATA, std::string(20, 'a'), 40), "%d",
       TRACEFORMAT_UNEXPECTED_EOF, 644},
      {"data of 4 GiB", claiming(TAV_TRACE_TYPE_DATA, "abc", UINT32_MAX), "%d",
       TRACEFORMAT_UNEXPECTED_EOF, 644},
      {"C string of 4 GiB", claiming(TAV_TRACE_TYPE_CSTRING, "abc", UINT32_MAX), "%d",
       TRACEFORMAT_UNEXPECTED_EOF, 644},
      {"address cut", claiming(TAV_TRACE_TYPE_POINTER, "abc", 8), "%d", TRACEFORMAT_UNEXPECTED_EOF,
       644},
      {"data cut, not shown", claiming(TAV_TRACE_TYPE_DATA, "abc", UINT32_MAX), "%f",
       TRACEFORMAT_UNEXPECTED_EOF, 186},
      {"entry cut, not shown", claiming(TAV_TRACE_TYPE_FUNCTION_ENTRY, "ab", 4), "%f",
       TRACEFORMAT_UNEXPECTED_EOF, 186},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    // The record before the damaged one is complete in the output.
    const std::string before = std::string(c.format) == "%d" ? "1684234849\n" : "fn\n";
    EXPECT_EQ(expectFailure(good + c.bytes, c.format, c.id, c.line).substr(0, before.size()),
              before);
  }
}

TEST(TraceFormatter, EmptyAndCutHeadersEndNormally) {
  EXPECT_EQ(formatBytes("", "%f"), "");
  const std::string record = bytesOf(Record());
  for (size_t cut = 1; cut < record.size(); ++cut) {
    SCOPED_TRACE(cut);
    EXPECT_EQ(formatBytes(record + record.substr(0, cut), "%f"), "fn\n");
  }
}

// Size fields never make the formatter allocate: a record claiming 4 GiB is read until the
// file ends, through the formatter's own buffers.
TEST(TraceFormatter, FormattingAllocatesNothing) {
  Record huge = dataRecord(TAV_TRACE_TYPE_DATA, std::string(100, 'a'));
  huge.claimedSize = UINT32_MAX;
  const std::string bytes = bytesOf({dataRecord(TAV_TRACE_TYPE_DATA, std::string(100, 'a')),
                                     dataRecord(TAV_TRACE_TYPE_CSTRING, "text"), huge});
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
  const std::string bytes = bytesOf({dataRecord(TAV_TRACE_TYPE_DATA_CLIPPED, ""),
                                     dataRecord(TAV_TRACE_TYPE_DATA_NULL, ""),
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

class TraceFormatterFile : public testing::Test {
 protected:
  void write(const std::string& bytes) {
    std::ofstream file(environment.fileName, std::ios::binary);
    file << bytes;
  }
  void TearDown() override { std::remove(environment.fileName.c_str()); }

  TestTraceEnvironment environment;
};

TEST_F(TraceFormatterFile, FormatsRecordsWrittenByTheLibrary) {
  environment.fileName = scratchFileName("formatter");
  environment.compress = true;
  const int32_t value = -5;
  const TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_HIGH, 3, TAV_TRACE_TYPE_INT32,
                              "Session::restart", "counter", &value, sizeof(value));
  // Many records, so that reading goes through several buffer fills.
  std::string bytes;
  for (int i = 0; i < 2000; ++i) bytes += tav::test::recordBytes(entry);
  write(bytes);
  TavClTraceFormatter formatter(environment);
  formatter.setFormatString("%f %m %l %c %d");
  std::ostringstream output;
  formatter.format(output);
  std::string expected;
  for (int i = 0; i < 2000; ++i) expected += "Session::restart counter HIGH 3 -5\n";
  EXPECT_EQ(output.str(), expected);
}

TEST_F(TraceFormatterFile, FileCutInsideADataBlock) {
  environment.fileName = scratchFileName("formatter_cut");
  const std::string bytes = bytesOf(dataRecord(TAV_TRACE_TYPE_DATA, std::string(64, 'z')));
  write(bytes.substr(0, bytes.size() - 10));
  TavClTraceFormatter formatter(environment);
  std::ostringstream output;
  try {
    formatter.format(output);
    ADD_FAILURE() << "no exception";
  } catch (const TavClExceptionFatal& failure) {
    EXPECT_EQ(failure.getId(), static_cast<uint32_t>(TRACEFORMAT_UNEXPECTED_EOF));
  }
}

TEST_F(TraceFormatterFile, MissingFileOrDirectoryCannotBeOpened) {
  for (const std::string& name :
       {scratchFileName("formatter_missing"), std::filesystem::temp_directory_path().string()}) {
    SCOPED_TRACE(name);
    environment.fileName = name;
    TavClTraceFormatter formatter(environment);
    std::ostringstream output;
    try {
      formatter.format(output);
      ADD_FAILURE() << "no exception";
    } catch (const TavClExceptionFatal& failure) {
      EXPECT_EQ(failure.getId(), static_cast<uint32_t>(TRACEFORMAT_COULD_NOT_OPEN));
      EXPECT_STREQ(failure.getModule(), "tav_trace_format:837");
      EXPECT_EQ(failure.getLine(), 837u);
    }
  }
  environment.fileName.clear();
}

TEST(TraceFormatterEnvironment, DefaultFormatComesFromTheEnvironment) {
  tav::test::ScopedTraceVariables variables("TAVFMTTEST");
  variables.set("_TRACE_FORMAT", "[%f]");
  TavClTraceEnvironment environment("tavfmttest", nullptr, true);
  TavClTraceFormatter formatter(environment);
  EXPECT_STREQ(formatter.getFormatString(), "[%f]");
  TestTraceEnvironment plain;
  EXPECT_STREQ(TavClTraceFormatter(plain).getFormatString(), TavClTraceEnvironment::kDefaultFormat);
}

}  // namespace
