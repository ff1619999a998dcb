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

using tav::test::littleEndian;
using tav::test::readRecords;
using tav::test::recordBytes;
using tav::test::RecordRead;
using tav::test::TestTraceEnvironment;

TEST(TraceRecord, PlainAndCompressedLayout) {
  const struct {
    bool compress;
    TavEnTraceDetail detail;
    uint16_t componentId;
    TavEnTraceDataType type;
    const char* origin;
    const char* message;
    std::string data;
    std::string start;  // type and flags, component, message and origin lengths
    std::string texts;
  } cases[] = {
      // The record keeps the low eight bits of the component.
      {false, TAV_TRACE_DETAIL_HIGH, 0x1234, TAV_TRACE_TYPE_UINT32, "fn", "hi", "\x01\x02\x03\x04",
       "\xD0\x34\x02\x02", "hifn"},
      // Type 3, compressed bit, detail 1; message "ab" in two bytes; empty origin.
      {true, TAV_TRACE_DETAIL_LOW, 7, TAV_TRACE_TYPE_NO_DATA, "", "ab", "",
       std::string("\x63\x07\x02\x00", 4), "\x96\x6F"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.compress ? "compressed" : "plain");
    TestTraceEnvironment environment(c.compress);
    const uint32_t before = tavGetTimeStamp();
    const TavClTraceEntry entry(environment, c.detail, c.componentId, c.type, c.origin, c.message,
                                c.data.data(), c.data.size());
    const uint32_t stamp = entry.getTimeStamp();
    EXPECT_LE(stamp - before, tavGetTimeStamp() - before);
    EXPECT_EQ(recordBytes(entry), c.start + littleEndian(stamp, 4) +
                                      littleEndian(environment.getProcessId(), 4) +
                                      littleEndian(TavClThreadProperty().getId(), 4) +
                                      littleEndian(c.data.size(), 4) + c.texts + c.data);
    EXPECT_EQ(entry.getHeaderSize(), 20 + c.texts.size());
  }
}

TEST(TraceRecord, ReadsFilesWrittenOnEitherPlatform) {
  // Two records as any platform writes them: one plain, one compressed ("ab" and "1").
  const std::string file =
      std::string("\x4E\x2A\x03\x02", 4) + littleEndian(0x04030201, 4) +
      littleEndian(0x08070605, 4) + littleEndian(0x0C0B0A09, 4) + littleEndian(2, 4) + "msgfn" +
      "\x7F\x80" + std::string("\xEC\xFF\x02\x02", 4) + littleEndian(1, 4) + littleEndian(2, 4) +
      littleEndian(3, 4) + littleEndian(0, 4) + "\x96\x6F\xFC\xC7";
  TestTraceEnvironment environment;
  bool endsOnRecord = false;
  const auto records = readRecords(environment, file, &endsOnRecord);
  EXPECT_TRUE(endsOnRecord);
  EXPECT_EQ(records,
            (std::vector<RecordRead>{
                {TAV_TRACE_TYPE_UINT16, TAV_TRACE_DETAIL_LOW, 42, 0x04030201, 0x08070605,
                 0x0C0B0A09, "msg", "fn", "\x7F\x80"},
                {TAV_TRACE_TYPE_UINT8, TAV_TRACE_DETAIL_HIGH, 255, 1, 2, 3, "ab", "1", ""}}));
  // Four stored bytes for three characters.
  EXPECT_FLOAT_EQ(environment.getCompressionRate(), 4.0f / 3.0f);
}

TEST(TraceRecord, EveryDataTypeRoundTrips) {
  const std::string sample = "\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A\x0B\x0C\x0D\x0E\x0F\x10";
  for (const bool compress : {false, true}) {
    SCOPED_TRACE(compress ? "compressed" : "plain");
    TestTraceEnvironment environment(compress);
    std::string file;
    std::vector<RecordRead> expected;
    for (int type = TAV_TRACE_TYPE_UNUSED; type <= TAV_TRACE_TYPE_LONG_DOUBLE; ++type) {
      const std::string data =
          type == TAV_TRACE_TYPE_NO_DATA ? "" : sample.substr(0, 1 + type % 16);
      const TavClTraceEntry entry(environment, static_cast<TavEnTraceDetail>(type % 4),
                                  static_cast<uint16_t>(type * 10),
                                  static_cast<TavEnTraceDataType>(type), "Origin::function()",
                                  "message 1 of type", data.data(), data.size());
      file += recordBytes(entry);
      expected.push_back(
          {static_cast<TavEnTraceDataType>(type), static_cast<TavEnTraceDetail>(type % 4),
           static_cast<uint16_t>(type * 10), entry.getTimeStamp(), environment.getProcessId(),
           TavClThreadProperty().getId(), "message 1 of type", "Origin::function()", data});
    }
    bool endsOnRecord = false;
    EXPECT_EQ(readRecords(environment, file, &endsOnRecord), expected);
    EXPECT_TRUE(endsOnRecord);
  }
}

TEST(TraceRecord, NullAndOversizedDataOverrideTheType) {
  constexpr uint64_t kCapacity = 100;
  const struct {
    const char* name;
    bool nullData;
    uint64_t size;
    TavEnTraceDataType expectedType;
    uint64_t expectedSize;
  } rules[] = {
      {"null pointer", true, 100, TAV_TRACE_TYPE_DATA_NULL, 0},
      {"null pointer, no size", true, 0, TAV_TRACE_TYPE_DATA_NULL, 0},
      {"fits exactly", false, kCapacity, TAV_TRACE_TYPE_INT32, kCapacity},
      {"one byte too many", false, kCapacity + 1, TAV_TRACE_TYPE_DATA_CLIPPED, kCapacity},
      {"beyond 32 bits", false, uint64_t{1} << 33, TAV_TRACE_TYPE_DATA_CLIPPED, kCapacity},
  };
  TestTraceEnvironment environment(false, kCapacity);
  const std::string data(kCapacity, 'd');
  for (const auto& rule : rules) {
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
  EXPECT_EQ(TavClTraceEntry(plain, TAV_TRACE_DETAIL_LOW, 0, TAV_TRACE_TYPE_NO_DATA,
                            longText.c_str(), longText.c_str(), "", 0)
                .getHeaderSize(),
            20u + 255 + 255);
  const TavClTraceEntry empty(plain, TAV_TRACE_DETAIL_LOW, 0, TAV_TRACE_TYPE_NO_DATA, nullptr, "",
                              "", 0);
  EXPECT_EQ(recordBytes(empty).size(), 20u);

  // A compressed message of 256 bytes keeps a length byte of 0, and is read as empty with the
  // origin still right; of a longer origin the 339 letters up to the mark of 2032 bits are kept.
  TestTraceEnvironment compressed(true);
  const std::string overshooting = std::string(338, 'x') + "9";
  const TavClTraceEntry lost(compressed, TAV_TRACE_DETAIL_LOW, 0, TAV_TRACE_TYPE_NO_DATA, "fn",
                             overshooting.c_str(), "", 0);
  EXPECT_EQ(lost.getHeader()[2], 0);
  const TavClTraceEntry cut(compressed, TAV_TRACE_DETAIL_LOW, 0, TAV_TRACE_TYPE_NO_DATA,
                            std::string(400, 'L').c_str(), "", "", 0);
  bool endsOnRecord = false;
  const auto records = readRecords(compressed, recordBytes(lost) + recordBytes(cut), &endsOnRecord);
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].message, "");
  EXPECT_EQ(records[0].origin, "fn");
  EXPECT_EQ(records[1].origin, std::string(339, 'L'));
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
    EXPECT_EQ(whole, cut / firstBytes.size());
    if (cut % firstBytes.size() < first.getHeaderSize()) {
      EXPECT_STREQ(entry.getMessage(), "");
      EXPECT_EQ(entry.getType(), TAV_TRACE_TYPE_UNUSED);
      EXPECT_EQ(entry.getSizeOfDumpData(), 0u);
    }
  }
}

}  // namespace
