// Trace records: the byte layout (checked against bytes written out by hand, so that the test
// means the same on every host), round trips of every data type, the clipping and null-data
// rules, and reading streams that end early.

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "tav_process.h"
#include "tav_trace_entry.h"
#include "tav_trace_test_support.h"
#include "tav_utils.h"

namespace {

using tav::test::readRecords;
using tav::test::recordBytes;
using tav::test::TestTraceEnvironment;

std::string littleEndian32(uint32_t value) {
  return {static_cast<char>(value), static_cast<char>(value >> 8), static_cast<char>(value >> 16),
          static_cast<char>(value >> 24)};
}

TEST(TraceRecord, UncompressedLayout) {
  TestTraceEnvironment environment(false);
  const char data[] = {1, 2, 3, 4};
  const uint32_t before = tavGetTimeStamp();
  const TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_HIGH, 0x1234, TAV_TRACE_TYPE_UINT32,
                              "fn", "hi", data, sizeof(data));
  const uint32_t stamp = entry.getTimeStamp();
  EXPECT_LE(stamp - before, tavGetTimeStamp() - before);

  const std::string expected = std::string("\xD0\x34\x02\x02") + littleEndian32(stamp) +
                               littleEndian32(environment.getProcessId()) +
                               littleEndian32(TavClThreadProperty().getId()) + littleEndian32(4) +
                               "hifn" + std::string(data, sizeof(data));
  EXPECT_EQ(recordBytes(entry), expected);
  EXPECT_EQ(entry.getHeaderSize(), 24u);
  EXPECT_EQ(entry.getDetail(), TAV_TRACE_DETAIL_HIGH);
  EXPECT_EQ(entry.getType(), TAV_TRACE_TYPE_UINT32);
  EXPECT_EQ(entry.getComponentId(), 0x34);  // the record keeps the low eight bits
}

TEST(TraceRecord, CompressedLayout) {
  TestTraceEnvironment environment(true);
  const char unused = 0;
  const TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_LOW, 7, TAV_TRACE_TYPE_NO_DATA, "",
                              "ab", &unused, 0);
  const std::string bytes = recordBytes(entry);
  ASSERT_EQ(bytes.size(), 22u);
  // Type 3, compressed bit, detail 1; message "ab" in two bytes; empty origin; no data.
  EXPECT_EQ(bytes.substr(0, 4), std::string("\x63\x07\x02\x00", 4));
  EXPECT_EQ(bytes.substr(16), littleEndian32(0) + "\x96\x6F");
}

TEST(TraceRecord, ReadsFilesWrittenOnEitherPlatform) {
  // Two records as any platform writes them: one plain, one compressed ("ab" and "1").
  const std::string file =
      std::string("\x4E\x2A\x03\x02", 4) + littleEndian32(0x04030201) + littleEndian32(0x08070605) +
      littleEndian32(0x0C0B0A09) + littleEndian32(2) + "msgfn" + "\x7F\x80" +
      std::string("\xEC\xFF\x02\x02", 4) + littleEndian32(1) + littleEndian32(2) +
      littleEndian32(3) + littleEndian32(0) + "\x96\x6F\xFC\xC7";
  TestTraceEnvironment environment;
  bool endsOnRecord = false;
  const auto records = readRecords(environment, file, &endsOnRecord);
  EXPECT_TRUE(endsOnRecord);
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].type, TAV_TRACE_TYPE_UINT16);
  EXPECT_EQ(records[0].detail, TAV_TRACE_DETAIL_LOW);
  EXPECT_EQ(records[0].componentId, 42);
  EXPECT_EQ(records[0].timeStamp, 0x04030201u);
  EXPECT_EQ(records[0].processId, 0x08070605u);
  EXPECT_EQ(records[0].threadId, 0x0C0B0A09u);
  EXPECT_EQ(records[0].message, "msg");
  EXPECT_EQ(records[0].origin, "fn");
  EXPECT_EQ(records[0].data, "\x7F\x80");
  EXPECT_EQ(records[1].type, TAV_TRACE_TYPE_UINT8);
  EXPECT_EQ(records[1].detail, TAV_TRACE_DETAIL_HIGH);
  EXPECT_EQ(records[1].componentId, 255);
  EXPECT_EQ(records[1].message, "ab");
  EXPECT_EQ(records[1].origin, "1");
  // Four stored bytes for three characters.
  EXPECT_FLOAT_EQ(environment.getCompressionRate(), 4.0f / 3.0f);
}

TEST(TraceRecord, EveryDataTypeRoundTrips) {
  const std::string sample = "\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A\x0B\x0C\x0D\x0E\x0F\x10";
  for (const bool compress : {false, true}) {
    TestTraceEnvironment environment(compress);
    std::string file;
    std::vector<std::string> data;
    for (int type = TAV_TRACE_TYPE_UNUSED; type <= TAV_TRACE_TYPE_LONG_DOUBLE; ++type) {
      data.push_back(type == TAV_TRACE_TYPE_NO_DATA ? "" : sample.substr(0, 1 + type % 16));
      const TavClTraceEntry entry(environment, static_cast<TavEnTraceDetail>(type % 4),
                                  static_cast<uint16_t>(type * 10),
                                  static_cast<TavEnTraceDataType>(type), "Origin::function()",
                                  "message 1 of type", data.back().data(), data.back().size());
      file += recordBytes(entry);
    }
    bool endsOnRecord = false;
    const auto records = readRecords(environment, file, &endsOnRecord);
    EXPECT_TRUE(endsOnRecord);
    ASSERT_EQ(records.size(), data.size());
    for (size_t type = 0; type < records.size(); ++type) {
      SCOPED_TRACE(testing::Message() << "type " << type << (compress ? " compressed" : ""));
      EXPECT_EQ(records[type].type, static_cast<TavEnTraceDataType>(type));
      EXPECT_EQ(records[type].detail, static_cast<TavEnTraceDetail>(type % 4));
      EXPECT_EQ(records[type].componentId, type * 10);
      EXPECT_EQ(records[type].processId, environment.getProcessId());
      EXPECT_EQ(records[type].threadId, TavClThreadProperty().getId());
      EXPECT_EQ(records[type].message, "message 1 of type");
      EXPECT_EQ(records[type].origin, "Origin::function()");
      EXPECT_EQ(records[type].data, data[type]);
    }
  }
}

struct DataRule {
  const char* name;
  bool nullData;
  uint64_t size;
  TavEnTraceDataType expectedType;
  uint64_t expectedSize;
};

TEST(TraceRecord, NullAndOversizedDataOverrideTheType) {
  constexpr uint64_t kCapacity = 100;
  const DataRule rules[] = {
      {"null pointer", true, 100, TAV_TRACE_TYPE_DATA_NULL, 0},
      {"null pointer, no size", true, 0, TAV_TRACE_TYPE_DATA_NULL, 0},
      {"fits exactly", false, kCapacity, TAV_TRACE_TYPE_INT32, kCapacity},
      {"one byte too many", false, kCapacity + 1, TAV_TRACE_TYPE_DATA_CLIPPED, kCapacity},
      {"beyond 32 bits", false, uint64_t{1} << 33, TAV_TRACE_TYPE_DATA_CLIPPED, kCapacity},
  };
  TestTraceEnvironment environment(false, kCapacity);
  const std::string data(kCapacity, 'd');
  for (const DataRule& rule : rules) {
    SCOPED_TRACE(rule.name);
    const TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_MED, 1, TAV_TRACE_TYPE_INT32, "o",
                                "m", rule.nullData ? nullptr : data.data(), rule.size);
    EXPECT_EQ(entry.getType(), rule.expectedType);
    EXPECT_EQ(entry.getSizeOfDumpData(), rule.expectedSize);
    EXPECT_EQ(entry.getDetail(), TAV_TRACE_DETAIL_MED);
  }
}

TEST(TraceRecord, TextsAreCutToTheirStoredLimit) {
  TestTraceEnvironment plain(false);
  const std::string longText(300, 'L');
  const TavClTraceEntry cut(plain, TAV_TRACE_DETAIL_LOW, 0, TAV_TRACE_TYPE_NO_DATA,
                            longText.c_str(), longText.c_str(), "", 0);
  EXPECT_EQ(cut.getHeaderSize(), 20u + 255 + 255);

  const TavClTraceEntry empty(plain, TAV_TRACE_DETAIL_LOW, 0, TAV_TRACE_TYPE_NO_DATA, nullptr, "",
                              "", 0);
  EXPECT_EQ(empty.getHeaderSize(), 20u);
  EXPECT_EQ(recordBytes(empty).size(), 20u);

  // A compressed message of 256 bytes keeps a length byte of 0; the origin is still read right.
  TestTraceEnvironment compressed(true);
  const std::string overshooting = std::string(338, 'x') + "9";
  const TavClTraceEntry lost(compressed, TAV_TRACE_DETAIL_LOW, 0, TAV_TRACE_TYPE_NO_DATA, "fn",
                             overshooting.c_str(), "", 0);
  EXPECT_EQ(lost.getHeader()[2], 0);
  bool endsOnRecord = false;
  const auto records = readRecords(compressed, recordBytes(lost), &endsOnRecord);
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].message, "");
  EXPECT_EQ(records[0].origin, "fn");

  // 339 letters pass the mark of 2032 bits; the rest of a longer text is cut.
  const std::string longerText(400, 'L');
  const TavClTraceEntry longCompressed(compressed, TAV_TRACE_DETAIL_LOW, 0, TAV_TRACE_TYPE_NO_DATA,
                                       longerText.c_str(), "", "", 0);
  const auto longRecords = readRecords(compressed, recordBytes(longCompressed), &endsOnRecord);
  ASSERT_EQ(longRecords.size(), 1u);
  EXPECT_EQ(longRecords[0].origin, std::string(339, 'L'));
}

TEST(TraceRecordRead, AStreamCutAnywhereGivesTheWholeRecordsBeforeIt) {
  TestTraceEnvironment environment(true);
  const TavClTraceEntry first(environment, TAV_TRACE_DETAIL_LOW, 1, TAV_TRACE_TYPE_CSTRING,
                              "origin", "message", "data", 4);
  const std::string firstBytes = recordBytes(first);
  const std::string file = firstBytes + firstBytes;
  for (size_t cut = 0; cut <= file.size(); ++cut) {
    SCOPED_TRACE(testing::Message() << "cut at " << cut);
    std::istringstream input(file.substr(0, cut));
    TavClTraceFileEntry entry(environment);
    size_t whole = 0;
    while (entry.read(input)) {
      const auto size = static_cast<std::streamsize>(entry.getSizeOfDumpData());
      if (input.ignore(size).gcount() != size) break;
      EXPECT_STREQ(entry.getMessage(), "message");
      ++whole;
    }
    // read gives true as long as header and texts were there; the data is the caller's.
    const size_t headerSize = first.getHeaderSize();
    const size_t expected = cut / firstBytes.size();
    EXPECT_EQ(whole, expected);
    if (cut % firstBytes.size() < headerSize) {
      EXPECT_STREQ(entry.getMessage(), "");
      EXPECT_EQ(entry.getType(), TAV_TRACE_TYPE_UNUSED);
      EXPECT_EQ(entry.getSizeOfDumpData(), 0u);
    }
  }
}

}  // namespace
