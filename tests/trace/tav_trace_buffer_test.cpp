// The trace ring buffer and the file writer behind it: the control block, wrapping at the end
// with hand-outs of at most two pieces, flushing, running without a callback, taking over memory
// that already holds a ring, and files that cannot be opened or fill up part way. Every hand-out
// is recorded, so a test can check that the pieces put together are exactly the records written,
// and that a file, whatever failed, holds only the whole records no failure touched.

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tav_report_capture.h"
#include "tav_trace_buffer.h"
#include "tav_trace_test_support.h"

namespace {

using tav::test::readFileBytes;
using tav::test::recordBytes;
using tav::test::TestTraceEnvironment;

struct HandOutLog {
  struct HandOut {
    std::string first;
    std::string second;
    const uint8_t* secondAddress;
  };
  std::vector<HandOut> handOuts;
  std::string all;

  static void record(const _TavStTraceHandOut* handOut) {
    static_cast<HandOutLog*>(handOut->context)->add(*handOut);
  }
  void add(const _TavStTraceHandOut& handOut) {
    const auto* second = reinterpret_cast<const char*>(handOut.secondPiece);
    handOuts.push_back(
        {std::string(reinterpret_cast<const char*>(handOut.firstPiece), handOut.firstLength),
         std::string(second, second ? handOut.secondLength : 0), handOut.secondPiece});
    all += handOuts.back().first + handOuts.back().second;
  }
};

// Lets a test decide how many bytes each write may put into the file before it fails.
class FailingFileWriter : public TavClTraceFileWriter {
 public:
  using TavClTraceFileWriter::TavClTraceFileWriter;
  // Given a write's length, the bytes it may write; fewer than the length make it fail.
  std::function<uint64_t(uint64_t)> allowance;
  bool failed = false;

 protected:
  uint64_t writeToFile(int file, const uint8_t* bytes, uint64_t length, int* errorNumber) override {
    const uint64_t allowed = allowance ? std::min(allowance(length), length) : length;
    const uint64_t written =
        allowed == 0 ? 0 : TavClTraceFileWriter::writeToFile(file, bytes, allowed, errorNumber);
    if (allowed == length) return written;
    failed = true;
    *errorNumber = ENOSPC;
    return written;
  }
};

// A ring of the given capacity in memory of its own and the log of its hand-outs. Once toFile()
// names a scratch file, every hand-out also goes to the file through a writer whose writes, and
// whose opening of the file, the test may make fail; failed hand-outs are noted as spans of the
// stream of all bytes written.
class Ring {
 public:
  explicit Ring(uint64_t capacity, bool withCallback = true)
      : environment(false, capacity),
        memory((TavClTraceBufferManager::kControlBlockSize + capacity + 7) / 8),
        manager(environment, memory.data(), TavClTraceBufferManager::kControlBlockSize + capacity),
        writer(environment) {
    if (withCallback) installCallback();
  }
  ~Ring() {
    std::error_code ignored;
    std::filesystem::remove(fileName, ignored);
  }

  void installCallback() { manager.setOverflowCallback(&Ring::handOut, this); }
  void toFile() {
    fileName = tav::test::scratchFileName("ring");
    missingName = fileName + "_missing/trace.trc";
  }

  // Writes a record of size bytes, 20 of header, then message and data split evenly (data
  // beyond the capacity is clipped); gives its bytes.
  std::string write(size_t size, char fill = 'r') {
    const size_t textAndData = size - TavClTraceEntry::kHeaderSize;
    const std::string message(textAndData / 2, fill);
    const std::string data(textAndData - message.size(), static_cast<char>(fill + 1));
    const TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_LOW, 1, TAV_TRACE_TYPE_DATA, "",
                                message.c_str(), data.data(), data.size());
    manager.write(entry);
    const std::string bytes = recordBytes(entry);
    spans.push_back({written.size(), written.size() + bytes.size()});
    written += bytes;
    return bytes;
  }

  // The lengths of each hand-out's two pieces ("100+0 0+30"); a second piece, where there is
  // one, must come from the start of the ring.
  std::string handOutLengths() const {
    std::string lengths;
    for (const auto& handOut : log.handOuts) {
      lengths += (lengths.empty() ? "" : " ") + std::to_string(handOut.first.size()) + "+" +
                 std::to_string(handOut.second.size());
      EXPECT_TRUE(handOut.second.empty() || handOut.secondAddress == control().first);
    }
    return lengths;
  }

  // The records that no failed hand-out touched: what the file must hold.
  std::string kept() const {
    std::string bytes;
    for (const Span& record : spans) {
      bool touched = false;
      for (const Span& failure : failedHandOuts) {
        touched = touched || (record.begin < failure.end && failure.begin < record.end);
      }
      if (!touched) bytes += written.substr(record.begin, record.end - record.begin);
    }
    return bytes;
  }

  const _TavStTraceBufferControl& control() const { return *manager.getControlBlock(); }
  uint64_t writeOffset() const { return control().writePosition - control().first; }

  struct Span {
    uint64_t begin;
    uint64_t end;
  };
  TestTraceEnvironment environment;
  std::vector<uint64_t> memory;  // 8-byte units keep the control block aligned
  TavClTraceBufferManager manager;
  HandOutLog log;
  std::string written;
  std::vector<Span> spans;
  FailingFileWriter writer;
  std::string fileName;
  std::string missingName;  // in a directory that does not exist
  std::function<bool()> openFails;
  std::vector<Span> failedHandOuts;

 private:
  static void handOut(const _TavStTraceHandOut* handOut) {
    auto* ring = static_cast<Ring*>(handOut->context);
    const uint64_t begin = ring->log.all.size();
    ring->log.add(*handOut);
    if (ring->fileName.empty()) return;
    const bool cannotOpen = ring->openFails && ring->openFails();
    ring->environment.fileName = cannotOpen ? ring->missingName : ring->fileName;
    ring->writer.failed = false;
    ring->writer.append(handOut->firstPiece, handOut->firstLength, handOut->secondPiece,
                        handOut->secondLength);
    if (cannotOpen || ring->writer.failed)
      ring->failedHandOuts.push_back({begin, ring->log.all.size()});
  }
};

TEST(TraceBuffer, ControlBlockAtTheStartOfTheMemory) {
  Ring ring(100);
  const auto* bytes = reinterpret_cast<const char*>(ring.memory.data());
  EXPECT_EQ(std::string(bytes, 4), "TAVT");
  EXPECT_EQ(ring.memory[1], 100u);  // capacity
  // First and last data byte, hand-out mark and write position.
  const auto data = reinterpret_cast<uint64_t>(bytes + 48);
  EXPECT_EQ(std::vector<uint64_t>(&ring.memory[2], &ring.memory[6]),
            (std::vector<uint64_t>{data, data + 99, data, data}));
}

// Scripts run on a ring of 100 bytes: "wN" writes a record of N bytes, "f" flushes and "c"
// installs the callback. After each, the hand-outs put together are the records written, and
// a second piece, where there is one, comes from the start of the ring.
TEST(TraceBuffer, HandOutsOfScriptedWritesAndFlushes) {
  const struct {
    const char* name;
    const char* script;
    const char* handOuts;  // the lengths of each hand-out's two pieces
    uint64_t writeOffset;
  } cases[] = {
      // The hand-out mark then stands one past the end: the next hand-out is an empty piece
      // there and the new record from the start of the ring.
      {"a record fills the ring exactly", "c w60 w40 w30 f", "100+0 0+30", 30},
      {"a record crosses the end inside the header", "c w90 w30 f", "100+0 0+20", 20},
      {"a record crosses the end inside the texts", "c w75 w40 f", "100+0 0+15", 15},
      {"a record crosses the end inside the data", "c w70 w40 f", "100+0 0+10", 10},
      // Mark and write position are both at the start again: the pending bytes are the ring.
      {"filled exactly without a callback", "w50 w50 c f", "100+0", 0},
      {"flushing twice", "c f w30 f f", "30+0", 30},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Ring ring(100, false);
    std::istringstream script(c.script);
    for (std::string step; script >> step;) {
      if (step == "c") ring.installCallback();
      if (step == "f") ring.manager.flush();
      if (step[0] == 'w') ring.write(std::stoul(step.substr(1)));
    }
    EXPECT_EQ(ring.handOutLengths(), c.handOuts);
    EXPECT_EQ(ring.log.all, ring.written);
    EXPECT_EQ(ring.writeOffset(), c.writeOffset);
  }
}

TEST(TraceBuffer, WithoutACallbackTheOldestBytesAreOverwritten) {
  Ring ring(100, false);
  for (char fill : {'a', 'c', 'e', 'g', 'i'}) ring.write(30, fill);
  EXPECT_EQ(ring.control().handOutMark, ring.control().first);
  EXPECT_EQ(ring.writeOffset(), 50u);
  const std::string contents(reinterpret_cast<const char*>(ring.control().first), 100);
  EXPECT_EQ(contents.substr(0, 50), ring.written.substr(100, 50));
  EXPECT_EQ(contents.substr(50), ring.written.substr(50, 50));
  ring.manager.flush();  // still no callback: nothing to hand out to
  EXPECT_TRUE(ring.log.handOuts.empty());
}

TEST(TraceBuffer, MemoryThatHoldsARingIsTakenOverWithItsContents) {
  Ring ring(100, false);
  const std::string earlier = ring.write(30);
  TavClTraceBufferManager second(ring.environment, ring.memory.data(), 148);
  second.setOverflowCallback(&HandOutLog::record, &ring.log);
  const TavClTraceEntry entry(ring.environment, TAV_TRACE_DETAIL_LOW, 0, TAV_TRACE_TYPE_NO_DATA, "",
                              "later", "", 0);
  second.write(entry);
  second.flush();
  EXPECT_EQ(ring.log.all, earlier + recordBytes(entry));

  // A block that does not describe the memory it lies in is not trusted.
  uint64_t wrongCapacity = 1000;
  std::memcpy(reinterpret_cast<uint8_t*>(ring.memory.data()) + 8, &wrongCapacity, 8);
  TavClTraceBufferManager third(ring.environment, ring.memory.data(), 148);
  EXPECT_EQ(third.getControlBlock()->capacity, 100u);
  EXPECT_EQ(third.getControlBlock()->writePosition, third.getControlBlock()->first);
}

TEST(TraceBuffer, MemoryTooSmallOrMisalignedIsHandledSafely) {
  TestTraceEnvironment environment(false, 100);
  const TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_LOW, 0, TAV_TRACE_TYPE_NO_DATA, "",
                              "text", "", 0);
  uint64_t small[6] = {};
  TavClTraceBufferManager none(environment, small, sizeof(small));  // no byte for data
  EXPECT_EQ(none.getControlBlock(), nullptr);
  none.write(entry);
  none.flush();
  TavClTraceBufferManager null(environment, nullptr, 1000);
  null.write(entry);

  std::vector<uint64_t> memory(32);
  auto* unaligned = reinterpret_cast<uint8_t*>(memory.data()) + 3;
  TavClTraceBufferManager shifted(environment, unaligned, 200);
  ASSERT_NE(shifted.getControlBlock(), nullptr);
  EXPECT_EQ(reinterpret_cast<const uint8_t*>(shifted.getControlBlock()), unaligned + 5);
  EXPECT_EQ(shifted.getControlBlock()->capacity, 200u - 5 - 48);
}

TEST(TraceBuffer, RandomRecordsAndFlushesAreHandedOutCompleteAndInOrder) {
  std::mt19937 random(17);
  for (int round = 0; round < 300; ++round) {
    // Some rings are smaller than a record's header and texts, which then go round the ring
    // more than once.
    const uint64_t capacity = round % 10 == 0 ? 1 + random() % 30 : 30 + random() % 300;
    SCOPED_TRACE(testing::Message() << "round " << round << ", capacity " << capacity);
    Ring ring(capacity);
    for (int record = 0; record < 40; ++record) {
      ring.write(20 + random() % (capacity + 80), static_cast<char>('a' + record % 26));
      if (random() % 5 == 0) ring.manager.flush();
    }
    ring.manager.flush();
    ASSERT_EQ(ring.log.all, ring.written);
    ring.handOutLengths();  // checks where each second piece starts
  }
}

TEST(TraceFileWriter, AFileThatCannotBeOpenedIsReportedAndTracingGoesOn) {
  Ring ring(100);
  ring.toFile();
  ring.environment.verbose = true;
  ring.openFails = [] { return true; };
  ring.write(30);
  tav::test::ReportCapture reports;
  ring.manager.flush();
  EXPECT_EQ(reports.take(), "[TAV: TRACE: could not open: " + ring.missingName +
                                " (errno: " + std::to_string(ENOENT) + ")]\n");
  EXPECT_FALSE(std::filesystem::exists(ring.missingName));
  ring.openFails = nullptr;
  ring.environment.verbose = false;
  ring.write(30, 's');
  ring.manager.flush();
  EXPECT_EQ(readFileBytes(ring.fileName), ring.kept());
  EXPECT_EQ(ring.kept(), ring.written.substr(30));
}

// Hand-outs are appended to what the file held before. A failed write is reported and cut
// back to the last whole record.
TEST(TraceFileWriter, AFailedWriteIsReportedAndLeavesOnlyWholeRecords) {
  Ring ring(100);
  ring.toFile();
  ring.environment.verbose = true;
  std::ofstream(ring.fileName, std::ios::binary) << "earlier";
  tav::test::ReportCapture reports;
  for (int record = 0; record < 4; ++record) ring.write(30);
  // The first hand-out held records 0 to 2 and the first 10 bytes of record 3. The second is
  // made to fail after 25 bytes: it held the rest of 3, records 4 and 5 and the start of 6.
  ring.writer.allowance = [](uint64_t) { return 25; };
  for (int record = 4; record < 7; ++record) ring.write(30);
  const std::string writing = "[TAV: TRACE: writing file: " + ring.fileName + "]\n";
  EXPECT_EQ(reports.take(), writing + "[TAV: TRACE: file exists with size: 7]\n" +
                                "[TAV: TRACE: bytes written: 100 file status: 0]\n" + writing +
                                "[TAV: TRACE: file exists with size: 107]\n" +
                                "[TAV: TRACE: could not write: " + ring.fileName +
                                " (errno: " + std::to_string(ENOSPC) + ")]\n" +
                                "[TAV: TRACE: file cut back to size: 97]\n" +
                                "[TAV: TRACE: bytes written: 25 file status: 0]\n");
  EXPECT_EQ(readFileBytes(ring.fileName), "earlier" + ring.written.substr(0, 90));

  // The rest of record 6 is not written after the cut; record 7 is.
  ring.writer.allowance = nullptr;
  ring.environment.verbose = false;
  ring.write(30);
  ring.manager.flush();
  EXPECT_EQ(readFileBytes(ring.fileName), "earlier" + ring.kept());
  EXPECT_EQ(ring.kept(), ring.written.substr(0, 90) + ring.written.substr(210));
}

// Without verbose, failures are not reported at all.
TEST(TraceFileWriter, RandomFailuresNeverLeaveAPartOfARecord) {
  std::mt19937 random(23);
  size_t lostBytes = 0;
  tav::test::ReportCapture reports;
  for (int round = 0; round < 40; ++round) {
    const uint64_t capacity = 60 + random() % 400;
    SCOPED_TRACE(testing::Message() << "round " << round << ", capacity " << capacity);
    Ring ring(capacity);
    ring.toFile();
    ring.writer.allowance = [&random](uint64_t length) {
      return random() % 6 == 0 ? random() % length : length;
    };
    ring.openFails = [&random] { return random() % 8 == 0; };
    for (int record = 0; record < 200; ++record) {
      ring.write(20 + (random() % 2 == 0 ? random() % 22 : random() % (capacity + 20)),
                 static_cast<char>('a' + record % 26));
      if (random() % 15 == 0) ring.manager.flush();
    }
    ring.openFails = nullptr;
    ring.writer.allowance = nullptr;
    ring.manager.flush();
    ASSERT_EQ(readFileBytes(ring.fileName), ring.kept());
    lostBytes += ring.written.size() - ring.kept().size();
  }
  EXPECT_GT(lostBytes, 0u) << "no failure was injected";
  EXPECT_EQ(reports.take(), "");
}

}  // namespace
