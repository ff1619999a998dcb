// The trace file writer: hand-outs appended to the file, the verbose report lines, and what
// happens when the file cannot be opened or a write fails part way. Whatever fails, the file
// must hold only whole records, so that a reader never misparses it.

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "tav_report_capture.h"
#include "tav_trace_buffer.h"
#include "tav_trace_test_support.h"

namespace {

using tav::test::readFileBytes;
using tav::test::readRecords;
using tav::test::recordBytes;
using tav::test::scratchFileName;
using tav::test::TestTraceEnvironment;

// Lets a test decide how many bytes each write may put into the file before it fails.
class FailingFileWriter : public TavClTraceFileWriter {
 public:
  using TavClTraceFileWriter::TavClTraceFileWriter;

  // Given a write's length, the bytes it may write; fewer than the length make it fail.
  std::function<uint64_t(uint64_t)> allowance;
  bool failed = false;

 protected:
  uint64_t writeToFile(int file, const uint8_t* bytes, uint64_t length, int* errorNumber) override {
    const uint64_t allowed = allowance ? allowance(length) : length;
    if (allowed >= length)
      return TavClTraceFileWriter::writeToFile(file, bytes, length, errorNumber);
    failed = true;
    const uint64_t written =
        allowed == 0 ? 0 : TavClTraceFileWriter::writeToFile(file, bytes, allowed, errorNumber);
    *errorNumber = ENOSPC;
    return written;
  }
};

std::string missingDirectoryFile() {
  return (std::filesystem::path(scratchFileName("missing")).replace_extension("") / "trace.trc")
      .string();
}

// A ring whose hand-outs go to a trace file through the writer. Hand-outs pass through the
// test first, which may make the file impossible to open and notes which hand-outs failed, as
// spans of the stream of all bytes written.
class FileRing {
 public:
  explicit FileRing(uint64_t capacity)
      : environment(false, capacity),
        memory((TavClTraceBufferManager::kControlBlockSize + capacity + 7) / 8),
        manager(environment, memory.data(), TavClTraceBufferManager::kControlBlockSize + capacity),
        writer(environment),
        goodName(scratchFileName("writer")),
        badName(missingDirectoryFile()) {
    environment.fileName = goodName;
    manager.setOverflowCallback(&FileRing::handOut, this);
  }
  ~FileRing() { std::filesystem::remove(goodName); }

  std::string write(uint32_t number, size_t dataLength) {
    const std::string message = "record " + std::to_string(number);
    const std::string data(dataLength, static_cast<char>('A' + number % 26));
    const TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_LOW, 1, TAV_TRACE_TYPE_DATA, "fn",
                                message.c_str(), data.data(), data.size());
    manager.write(entry);
    const std::string bytes = recordBytes(entry);
    spans.push_back({written.size(), written.size() + bytes.size()});
    written += bytes;
    return bytes;
  }

  // The records that no failed hand-out touched: the ones the file must hold.
  std::vector<size_t> survivors() const {
    std::vector<size_t> kept;
    for (size_t record = 0; record < spans.size(); ++record) {
      bool touched = false;
      for (const Span& failure : failedHandOuts) {
        touched =
            touched || (spans[record].begin < failure.end && failure.begin < spans[record].end);
      }
      if (!touched) kept.push_back(record);
    }
    return kept;
  }

  struct Span {
    uint64_t begin;
    uint64_t end;
  };

  TestTraceEnvironment environment;
  std::vector<uint64_t> memory;
  TavClTraceBufferManager manager;
  FailingFileWriter writer;
  std::string goodName;
  std::string badName;
  std::function<bool()> openFails;
  std::string written;
  std::vector<Span> spans;
  std::vector<Span> failedHandOuts;
  uint64_t handedOut = 0;

 private:
  static void handOut(const _TavStTraceHandOut* handOut) {
    auto* ring = static_cast<FileRing*>(handOut->context);
    const bool cannotOpen = ring->openFails && ring->openFails();
    ring->environment.fileName = cannotOpen ? ring->badName : ring->goodName;
    ring->writer.failed = false;
    ring->writer.append(handOut->firstPiece, handOut->firstLength, handOut->secondPiece,
                        handOut->secondLength);
    const uint64_t begin = ring->handedOut;
    ring->handedOut += handOut->firstLength + handOut->secondLength;
    if (cannotOpen || ring->writer.failed) ring->failedHandOuts.push_back({begin, ring->handedOut});
  }
};

TEST(TraceFileWriter, AppendsEachHandOutAndReportsIt) {
  TestTraceEnvironment environment(false, 100);
  environment.fileName = scratchFileName("append");
  environment.verbose = true;
  { std::ofstream(environment.fileName, std::ios::binary) << "earlier"; }
  std::vector<uint64_t> memory(19);
  TavClTraceBufferManager manager(environment, memory.data(), 148);
  TavClTraceFileWriter writer(environment);
  manager.setOverflowCallback(&TavClTraceFileWriter::appendHandOut, &writer);

  std::string written;
  tav::test::ReportCapture reports;
  for (int number = 0; number < 4; ++number) {
    const TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_LOW, 1, TAV_TRACE_TYPE_DATA, "fn",
                                "message", "data bytes", 10);  // 39 bytes
    manager.write(entry);
    written += recordBytes(entry);
  }
  manager.flush();
  const std::string report = reports.take();

  EXPECT_EQ(readFileBytes(environment.fileName), "earlier" + written);
  const std::string& name = environment.fileName;
  EXPECT_EQ(report, "[TAV: TRACE: writing file: " + name + "]\n" +
                        "[TAV: TRACE: file exists with size: 7]\n" +
                        "[TAV: TRACE: bytes written: 100 file status: 0]\n" +
                        "[TAV: TRACE: writing file: " + name + "]\n" +
                        "[TAV: TRACE: file exists with size: 107]\n" +
                        "[TAV: TRACE: bytes written: 56 file status: 0]\n");
  std::filesystem::remove(environment.fileName);
}

TEST(TraceFileWriter, AFileThatCannotBeOpenedIsReportedAndTracingGoesOn) {
  FileRing ring(100);
  ring.environment.verbose = true;
  ring.openFails = [] { return true; };
  ring.write(0, 10);
  tav::test::ReportCapture reports;
  ring.manager.flush();
  const std::string report = reports.take();
  EXPECT_EQ(report, "[TAV: TRACE: could not open: " + ring.badName +
                        " (errno: " + std::to_string(ENOENT) + ")]\n");
  EXPECT_FALSE(std::filesystem::exists(ring.badName));

  ring.openFails = nullptr;
  ring.environment.verbose = false;
  ring.write(1, 10);
  ring.manager.flush();
  bool endsOnRecord = false;
  const auto records = readRecords(ring.environment, readFileBytes(ring.goodName), &endsOnRecord);
  ASSERT_EQ(records.size(), 1u);
  EXPECT_EQ(records[0].message, "record 1");
}

TEST(TraceFileWriter, AFailedWriteIsReportedAndLeavesOnlyWholeRecords) {
  FileRing ring(100);
  ring.environment.verbose = true;
  for (uint32_t number = 0; number < 4; ++number) ring.write(number, 0);  // 30 bytes each
  // The first hand-out held records 0 to 2 and the first 10 bytes of record 3. The second is
  // made to fail after 25 bytes: it held the rest of 3, records 4 and 5 and the start of 6.
  ring.writer.allowance = [](uint64_t) { return 25; };
  ring.write(4, 0);
  ring.write(5, 0);
  tav::test::ReportCapture reports;
  ring.write(6, 0);
  const std::string report = reports.take();
  ring.writer.allowance = nullptr;

  const std::string& name = ring.goodName;
  EXPECT_EQ(report, "[TAV: TRACE: writing file: " + name + "]\n" +
                        "[TAV: TRACE: file exists with size: 100]\n" +
                        "[TAV: TRACE: could not write: " + name +
                        " (errno: " + std::to_string(ENOSPC) + ")]\n" +
                        "[TAV: TRACE: file cut back to size: 90]\n" +
                        "[TAV: TRACE: bytes written: 25 file status: 0]\n");
  EXPECT_EQ(readFileBytes(name), ring.written.substr(0, 90));

  // The rest of record 6 is not written after the cut; record 7 is.
  ring.environment.verbose = false;
  ring.write(7, 0);
  ring.manager.flush();
  bool endsOnRecord = false;
  const auto records = readRecords(ring.environment, readFileBytes(name), &endsOnRecord);
  EXPECT_TRUE(endsOnRecord);
  std::vector<std::string> messages;
  for (const auto& record : records) messages.push_back(record.message);
  EXPECT_EQ(messages, (std::vector<std::string>{"record 0", "record 1", "record 2", "record 7"}));
}

TEST(TraceFileWriter, RandomFailuresNeverLeaveAPartOfARecord) {
  std::mt19937 random(23);
  size_t lostRecords = 0;
  for (int round = 0; round < 40; ++round) {
    const uint64_t capacity = 60 + random() % 400;
    SCOPED_TRACE(testing::Message() << "round " << round << ", capacity " << capacity);
    FileRing ring(capacity);
    ring.writer.allowance = [&random](uint64_t length) {
      return random() % 6 == 0 ? random() % length : length;
    };
    ring.openFails = [&random] { return random() % 8 == 0; };
    for (uint32_t number = 0; number < 200; ++number) {
      ring.write(number, random() % 2 == 0 ? random() % 12 : random() % (capacity + 10));
      if (random() % 15 == 0) ring.manager.flush();
    }
    ring.openFails = nullptr;
    ring.writer.allowance = nullptr;
    ring.manager.flush();

    bool endsOnRecord = false;
    const auto records = readRecords(ring.environment, readFileBytes(ring.goodName), &endsOnRecord);
    EXPECT_TRUE(endsOnRecord);
    const std::vector<size_t> expected = ring.survivors();
    lostRecords += ring.spans.size() - expected.size();
    ASSERT_EQ(records.size(), expected.size());
    for (size_t index = 0; index < records.size(); ++index) {
      ASSERT_EQ(records[index].message, "record " + std::to_string(expected[index]));
      const auto& span = ring.spans[expected[index]];
      ASSERT_EQ(records[index].data, ring.written.substr(span.end - records[index].data.size(),
                                                         records[index].data.size()));
    }
  }
  EXPECT_GT(lostRecords, 0u) << "no failure was injected";
}

TEST(TraceFileWriter, WithoutVerboseNothingIsPrinted) {
  FileRing ring(100);
  ring.writer.allowance = [](uint64_t) { return 0; };
  tav::test::ReportCapture reports;
  ring.write(0, 4);
  ring.manager.flush();
  ring.openFails = [] { return true; };
  ring.write(1, 4);
  ring.manager.flush();
  EXPECT_EQ(reports.take(), "");
}

}  // namespace
