// The trace ring buffer and the file writer behind it: wrapping at the end with hand-outs of at
// most two pieces, flushing, corrupt or too small memory, a lock whose holder died, and files that
// cannot be opened or fill up part way. Every hand-out is recorded, so a test can check that the
// pieces put together are exactly the records written, and that a file, whatever failed, holds only
// the whole records no failure touched.

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <functional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tav_report_capture.h"
#include "tav_trace_buffer.h"
#include "tav_trace_test_support.h"

namespace {

using tav::test::recordBytes;
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
    const uint64_t allowed = allowance ? std::min(allowance(length), length) : length;
    const uint64_t written =
        allowed == 0 ? 0 : TavClTraceFileWriter::writeToFile(file, bytes, allowed, errorNumber);
    if (allowed < length) {
      failed = true;
      *errorNumber = ENOSPC;
    }
    return written;
  }
};

// A ring of the given capacity in memory of its own that logs its hand-outs. Once toFile()
// names a scratch file, every hand-out also goes to the file through a writer whose writes, and
// whose opening of the file, the test may make fail; failed hand-outs are noted as spans of the
// stream of all bytes written.
class Ring {
 public:
  struct Span {
    uint64_t begin;
    uint64_t end;
  };

  explicit Ring(uint64_t capacity, bool withCallback = true)
      : environment(false, capacity),
        memory((TavClTraceBufferManager::kControlBlockSize + capacity + 7) / 8),
        manager(environment, memory.data(), TavClTraceBufferManager::kControlBlockSize + capacity),
        writer(environment) {
    if (withCallback) installCallback();
  }
  ~Ring() { std::remove(fileName.c_str()); }

  void installCallback() { manager.setOverflowCallback(&Ring::handOut, this); }

  // Writes a record of size bytes, 20 of header, then message and data split evenly (data
  // beyond the capacity is clipped).
  void write(size_t size, char fill = 'r') {
    const size_t textAndData = size - TavClTraceEntry::kHeaderSize;
    const std::string message(textAndData / 2, fill);
    const std::string data(textAndData - message.size(), static_cast<char>(fill + 1));
    const TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_LOW, 1, TAV_TRACE_TYPE_DATA, "",
                                message.c_str(), data.data(), data.size());
    manager.write(entry);
    const uint64_t begin = written.size();
    written += recordBytes(entry);
    spans.push_back({begin, written.size()});
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

  // Logs the lengths of the two pieces ("100+0 0+30") and whether they were announced as whole
  // records ("1" or "0"); a second piece, where there is one, must come from the start of the
  // ring.
  static void handOut(const _TavStTraceHandOut* handOut) {
    auto* ring = static_cast<Ring*>(handOut->context);
    const uint64_t begin = ring->handedOut.size();
    const uint64_t secondLength = handOut->secondPiece ? handOut->secondLength : 0;
    ring->handedOut.append(reinterpret_cast<const char*>(handOut->firstPiece), handOut->firstLength)
        .append(reinterpret_cast<const char*>(handOut->secondPiece), secondLength);
    ring->lengths += (ring->lengths.empty() ? "" : " ") + std::to_string(handOut->firstLength) +
                     "+" + std::to_string(secondLength);
    ring->wholeRecords += handOut->wholeRecords != 0 ? '1' : '0';
    EXPECT_TRUE(secondLength == 0 ||
                handOut->secondPiece == reinterpret_cast<const uint8_t*>(&ring->memory[6]));
    if (ring->fileName.empty()) return;
    const bool cannotOpen = ring->openFails && ring->openFails();
    ring->environment.fileName = ring->fileName + (cannotOpen ? "_missing/trace.trc" : "");
    ring->writer.failed = false;
    ring->writer.append(handOut->firstPiece, handOut->firstLength, handOut->secondPiece,
                        handOut->secondLength, handOut->wholeRecords != 0);
    if (cannotOpen || ring->writer.failed) {
      ring->failedHandOuts.push_back({begin, ring->handedOut.size()});
    }
  }

  TestTraceEnvironment environment;
  std::vector<uint64_t> memory;  // 8-byte units keep the control block aligned
  TavClTraceBufferManager manager;
  std::string handedOut, lengths, wholeRecords;
  std::string written;
  std::vector<Span> spans;
  FailingFileWriter writer;
  std::string fileName;
  std::function<bool()> openFails;
  std::vector<Span> failedHandOuts;
};

// After each script, the hand-outs put together are the records written (but those given up
// while there was no callback), and a second piece, where there is one, comes from the start
// of the ring. Only the pieces of a record larger than the ring are not whole records.
TEST(TraceBuffer, HandOutsOfScriptedWritesAndFlushes) {
  for (const auto& row : tav::test::readTable("ring_scripts.txt", 5)) {
    SCOPED_TRACE(row.where + " " + row.str(0));
    Ring ring(100, false);
    std::istringstream script(row.str(1));
    for (std::string step; script >> step;) {
      if (step == "c") ring.installCallback();
      if (step == "f") ring.manager.flush();
      if (step[0] == 'w') ring.write(std::stoul(step.substr(1)));
    }
    EXPECT_EQ(ring.lengths, row.str(2));
    const bool oversized = row.str(1).find("w150") != std::string::npos;
    EXPECT_EQ(ring.wholeRecords, std::string(ring.wholeRecords.size(), oversized ? '0' : '1'));
    EXPECT_EQ(ring.handedOut, ring.written.substr(static_cast<size_t>(row.number(4))));
    const _TavStTraceBufferControl& control = *ring.manager.getControlBlock();
    EXPECT_EQ(control.writePosition - control.firstOffset, static_cast<uint64_t>(row.number(3)));
    EXPECT_EQ(ring.manager.getPendingSize(), 0u);
  }
}

// Each row spoils one field of a valid ring's control block. The check gives its reason, a
// manager that may start empty does so, and one that only attaches leaves the memory alone.
TEST(TraceBuffer, ACorruptControlBlockIsRefusedWithItsReason) {
  for (const auto& row : tav::test::readTable("ring_checks.txt", 4)) {
    SCOPED_TRACE(row.where + " " + row.str(0));
    Ring ring(100, false);
    ring.write(30);
    ring.memory[row.number(1)] = static_cast<uint64_t>(row.number(2));
    const std::vector<uint64_t> spoilt(ring.memory);
    const TavEnTraceRingCheck check = TavClTraceBufferManager::checkRing(ring.memory.data(), 148);
    EXPECT_NE(check, TAV_TRACE_RING_VALID);
    EXPECT_NE(std::string(TavClTraceBufferManager::describeRingCheck(check)).find(row.str(3)),
              std::string::npos);

    TavClTraceBufferManager attached(ring.environment, ring.memory.data(), 148, nullptr,
                                     TAV_TRACE_RING_ATTACH_ONLY);
    EXPECT_EQ(attached.getAttachCheck(), check);
    EXPECT_EQ(attached.getControlBlock(), nullptr);
    attached.write(TavClTraceEntry(ring.environment, TAV_TRACE_DETAIL_LOW, 0,
                                   TAV_TRACE_TYPE_NO_DATA, "", "dropped", "", 0));
    attached.flush();
    EXPECT_EQ(attached.getPendingSize(), 0u);
    EXPECT_EQ(ring.memory, spoilt);

    TavClTraceBufferManager restarted(ring.environment, ring.memory.data(), 148);
    EXPECT_EQ(restarted.getAttachCheck(), check);
    EXPECT_EQ(std::vector<uint64_t>(&ring.memory[1], &ring.memory[6]),
              (std::vector<uint64_t>{100, 48, 147, 48, 48}));
  }
}

TEST(TraceBuffer, MemoryTooSmallOrMisalignedIsHandledSafely) {
  TestTraceEnvironment environment(false, 100);
  const TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_LOW, 0, TAV_TRACE_TYPE_NO_DATA, "",
                              "text", "", 0);
  uint64_t small[7] = {};
  TavClTraceBufferManager none(environment, small, 49);  // one data byte, which must stay free
  EXPECT_EQ(none.getControlBlock(), nullptr);
  EXPECT_EQ(none.getAttachCheck(), TAV_TRACE_RING_TOO_SMALL);
  none.write(entry);
  none.flush();
  EXPECT_EQ(TavClTraceBufferManager::checkRing(small, 49), TAV_TRACE_RING_TOO_SMALL);
  EXPECT_EQ(TavClTraceBufferManager::checkRing(nullptr, 1000), TAV_TRACE_RING_TOO_SMALL);
  TavClTraceBufferManager null(environment, nullptr, 1000);
  null.write(entry);
  TavClTraceBufferManager smallest(environment, small, 50);
  ASSERT_NE(smallest.getControlBlock(), nullptr);
  EXPECT_EQ(smallest.getControlBlock()->capacity, 2u);

  std::vector<uint64_t> memory(32);
  auto* unaligned = reinterpret_cast<uint8_t*>(memory.data()) + 3;
  TavClTraceBufferManager shifted(environment, unaligned, 200);
  ASSERT_NE(shifted.getControlBlock(), nullptr);
  EXPECT_EQ(reinterpret_cast<const uint8_t*>(shifted.getControlBlock()), unaligned + 5);
  EXPECT_EQ(shifted.getControlBlock()->capacity, 200u - 5 - 48);
  EXPECT_EQ(TavClTraceBufferManager::checkRing(unaligned - 3, 203), TAV_TRACE_RING_NO_MAGIC);
}

// A lock handed in by the owner guards every access instead of the key's own, and a holder that
// died is answered by checking the ring before it is used.
class ScriptedLock : public TavClTraceBufferLock {
 public:
  TavEnTraceLockState lock() override {
    ++locks;
    EXPECT_FALSE(held);
    held = true;
    const bool dead = holderDied;
    holderDied = false;
    return dead ? TAV_TRACE_LOCK_ACQUIRED_FROM_DEAD_HOLDER : TAV_TRACE_LOCK_ACQUIRED;
  }
  void unlock() override {
    EXPECT_TRUE(held);
    held = false;
  }
  int locks = 0;
  bool held = false;
  bool holderDied = false;
};

TEST(TraceBuffer, AHandedInLockGuardsTheRingAndADeadHolderIsChecked) {
  TestTraceEnvironment environment(false, 100);
  std::vector<uint64_t> memory(148 / 8 + 1);
  ScriptedLock lock;
  TavClTraceBufferManager manager(environment, memory.data(), 148, &lock);
  const TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_LOW, 0, TAV_TRACE_TYPE_NO_DATA, "",
                              "text", "", 0);
  manager.write(entry);
  manager.flush();
  manager.write(entry);
  EXPECT_EQ(manager.getPendingSize(), entry.getHeaderSize());
  EXPECT_EQ(lock.locks, 5);  // attaching, two writes, the flush and the question
  EXPECT_FALSE(lock.held);

  // A block left whole by the dead holder is kept ...
  lock.holderDied = true;
  EXPECT_EQ(manager.getPendingSize(), entry.getHeaderSize());
  // ... one it left spoilt is started afresh.
  memory[5] = 7;
  lock.holderDied = true;
  EXPECT_EQ(manager.getPendingSize(), 0u);
  EXPECT_EQ(TavClTraceBufferManager::checkRing(memory.data(), 148), TAV_TRACE_RING_VALID);
}

// Random records and flushes, in rings some of them smaller than a record's header and texts,
// which then go round the ring more than once: the hand-outs put together are the records
// written. In every other round, writes and openings of the file fail at random, and the file
// holds just the whole records no failure touched. Without verbose, failures are not reported.
TEST(TraceFileWriter, RandomRecordsReachTheFileWholeWhateverFails) {
  std::mt19937 random(23);
  size_t lostBytes = 0;
  tav::test::ReportCapture reports;
  for (int round = 0; round < 120; ++round) {
    const uint64_t capacity = round % 10 == 0 ? 2 + random() % 30 : 60 + random() % 400;
    SCOPED_TRACE(testing::Message() << "round " << round << ", capacity " << capacity);
    Ring ring(capacity);
    ring.fileName = tav::test::scratchFileName("ring");
    if (round % 2 == 1) {
      ring.writer.allowance = [&random](uint64_t length) {
        return random() % 6 == 0 ? random() % length : length;
      };
      ring.openFails = [&random] { return random() % 8 == 0; };
    }
    for (int record = 0; record < 100; ++record) {
      ring.write(20 + (random() % 2 == 0 ? random() % 22 : random() % (capacity + 40)),
                 static_cast<char>('a' + record % 26));
      if (random() % 10 == 0) ring.manager.flush();
    }
    ring.openFails = nullptr;
    ring.writer.allowance = nullptr;
    ring.manager.flush();
    ASSERT_EQ(ring.handedOut, ring.written);
    ASSERT_EQ(tav::test::readFileBytes(ring.fileName), ring.kept());
    lostBytes += ring.written.size() - ring.kept().size();
  }
  EXPECT_GT(lostBytes, 0u) << "no failure was injected";
  EXPECT_EQ(reports.take(), "");
}

}  // namespace
