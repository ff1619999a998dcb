// Trace records: the byte layout (checked against bytes written out by hand, so that the test
// means the same on every host), the clipping and null-data rules, reading streams that end
// early, and the 6-bit text compression.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
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

// Null data and data beyond the capacity change the type; plain texts keep at most 255 bytes.
TEST(TraceRecord, DataAndTextsAreCutToTheirStoredLimits) {
  TestTraceEnvironment environment(false, 100);
  const std::string data(100, 'd');
  const struct {
    const char* data;
    uint64_t size;
    TavEnTraceDataType expectedType;
    uint64_t expectedSize;
  } rules[] = {{nullptr, 100, TAV_TRACE_TYPE_DATA_NULL, 0},
               {data.c_str(), 100, TAV_TRACE_TYPE_INT32, 100},
               {data.c_str(), 101, TAV_TRACE_TYPE_DATA_CLIPPED, 100},
               {data.c_str(), uint64_t{1} << 33, TAV_TRACE_TYPE_DATA_CLIPPED, 100}};
  for (const auto& rule : rules) {
    SCOPED_TRACE(testing::Message() << "size " << rule.size << (rule.data ? "" : ", null data"));
    const TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_MED, 1, TAV_TRACE_TYPE_INT32, "o",
                                "m", rule.data, rule.size);
    EXPECT_EQ(entry.getType(), rule.expectedType);
    EXPECT_EQ(entry.getSizeOfDumpData(), rule.expectedSize);
  }
  const std::string longText(300, 'L');
  EXPECT_EQ(TavClTraceEntry(environment, TAV_TRACE_DETAIL_LOW, 0, TAV_TRACE_TYPE_NO_DATA,
                            longText.c_str(), longText.c_str(), "", 0)
                .getHeaderSize(),
            20u + 255 + 255);
}

// Reading gives the whole records before a cut, and a read that fails leaves no part of the
// record it began.
TEST(TraceRecordRead, AStreamCutAnywhereGivesTheWholeRecordsBeforeIt) {
  TestTraceEnvironment environment(true);
  const std::string one =
      recordBytes(TavClTraceEntry(environment, TAV_TRACE_DETAIL_LOW, 1, TAV_TRACE_TYPE_CSTRING,
                                  "origin", "message", "data", 4));
  for (size_t cut = 0; cut <= 2 * one.size(); ++cut) {
    SCOPED_TRACE(testing::Message() << "cut at " << cut);
    bool endsOnRecord = false;
    const auto records = readRecords(environment, (one + one).substr(0, cut), &endsOnRecord);
    EXPECT_EQ(records.size(), cut / one.size());
    EXPECT_EQ(endsOnRecord, cut % one.size() == 0);
  }
  std::istringstream input(one + one.substr(0, 30));  // the second one cut inside its origin
  TavClTraceFileEntry entry(environment);
  ASSERT_TRUE(entry.read(input) && input.ignore(4));
  EXPECT_FALSE(entry.read(input));
  EXPECT_STREQ(entry.getMessage(), "");
  EXPECT_EQ(entry.getType(), TAV_TRACE_TYPE_UNUSED);
  EXPECT_EQ(entry.getSizeOfDumpData(), 0u);
  // Six stored bytes for the seven characters of the message, five for the six of the origin.
  EXPECT_FLOAT_EQ(environment.getCompressionRate(), 11.0f / 13.0f);
}

std::string compress(const std::string& text, size_t capacity = 255) {
  std::vector<uint8_t> stored(capacity + 1, 0xAA);
  const size_t length = TavClTraceEntry::compressCString(stored.data(), text.c_str(), capacity);
  return std::string(stored.begin(), stored.begin() + static_cast<long>(length));
}

// Expands from a heap block of exactly the stored length, so that a read past it is caught by
// AddressSanitizer.
std::string expand(const std::string& stored) {
  std::unique_ptr<uint8_t[]> source(new uint8_t[stored.size() + 1]);
  std::memcpy(source.get(), stored.data(), stored.size());
  std::vector<char> text(stored.size() * 8 / 6 + 1);
  const size_t length =
      TavClTraceEntry::deCompressCString(text.data(), source.get(), stored.size());
  EXPECT_EQ(text[length], '\0');
  return std::string(text.data(), length);
}

// Known texts, whole and cut by the capacity. Random texts are left to the compression's fuzz
// target, which compares with a reference written from the rules.
TEST(TraceCompression, TextsAreStoredAndExpandedAsKnown) {
  for (const auto& row : tav::test::readTable("compression_known.txt", 4)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(compress(row.str(0), static_cast<size_t>(row.number(1))), row.str(2));
    EXPECT_EQ(expand(row.str(2)), row.str(3));
  }
}

}  // namespace
