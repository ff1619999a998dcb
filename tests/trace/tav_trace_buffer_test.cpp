// The trace ring buffer: its control block, wrapping at the end with hand-outs of at most two
// pieces, flushing, running without a callback, and taking over memory that already holds a
// ring. Every hand-out is recorded, so a test can check that the pieces put together are
// exactly the records written.

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tav_trace_buffer.h"
#include "tav_trace_test_support.h"

namespace {

using tav::test::recordBytes;
using tav::test::TestTraceEnvironment;

struct HandOut {
  std::string first;
  std::string second;
  const uint8_t* secondAddress;
};

struct HandOutLog {
  std::vector<HandOut> handOuts;

  static void record(const _TavStTraceHandOut* handOut) {
    auto* log = static_cast<HandOutLog*>(handOut->context);
    log->handOuts.push_back(
        {std::string(reinterpret_cast<const char*>(handOut->firstPiece), handOut->firstLength),
         handOut->secondLength == 0
             ? std::string()
             : std::string(reinterpret_cast<const char*>(handOut->secondPiece),
                           handOut->secondLength),
         handOut->secondPiece});
  }

  std::string all() const {
    std::string bytes;
    for (const HandOut& handOut : handOuts) bytes += handOut.first + handOut.second;
    return bytes;
  }
};

// A ring of the given capacity in memory of its own, plain records, and the log of hand-outs.
class Ring {
 public:
  explicit Ring(uint64_t capacity, bool withCallback = true)
      : environment(false, capacity),
        memory((TavClTraceBufferManager::kControlBlockSize + capacity + 7) / 8),
        manager(environment, memory.data(), TavClTraceBufferManager::kControlBlockSize + capacity) {
    if (withCallback) installCallback();
  }

  void installCallback() { manager.setOverflowCallback(&HandOutLog::record, &log); }

  // Writes a record of size bytes, 20 of header, then message and data split evenly (data
  // beyond the capacity is clipped); gives its bytes.
  std::string write(size_t size, char fill = 'r') {
    const size_t textAndData = size - TavClTraceEntry::kHeaderSize;
    const std::string message(textAndData / 2, fill);
    const std::string data(textAndData - message.size(), static_cast<char>(fill + 1));
    const TavClTraceEntry entry(environment, TAV_TRACE_DETAIL_LOW, 1, TAV_TRACE_TYPE_DATA, "",
                                message.c_str(), data.data(), data.size());
    manager.write(entry);
    written += recordBytes(entry);
    return recordBytes(entry);
  }

  // The lengths of each hand-out's two pieces ("100+0 0+30"); a second piece, where there is
  // one, must come from the start of the ring.
  std::string handOutLengths() const {
    std::string lengths;
    for (const HandOut& handOut : log.handOuts) {
      lengths += (lengths.empty() ? "" : " ") + std::to_string(handOut.first.size()) + "+" +
                 std::to_string(handOut.second.size());
      EXPECT_TRUE(handOut.second.empty() || handOut.secondAddress == control().first);
    }
    return lengths;
  }

  const _TavStTraceBufferControl& control() const { return *manager.getControlBlock(); }
  uint64_t writeOffset() const { return control().writePosition - control().first; }

  TestTraceEnvironment environment;
  std::vector<uint64_t> memory;  // 8-byte units keep the control block aligned
  TavClTraceBufferManager manager;
  HandOutLog log;
  std::string written;
};

TEST(TraceBuffer, ControlBlockAtTheStartOfTheMemory) {
  Ring ring(100);
  const auto* bytes = reinterpret_cast<const uint8_t*>(ring.memory.data());
  EXPECT_EQ(std::memcmp(bytes, "TAVT", 4), 0);
  uint64_t capacity = 0;
  const uint8_t* addresses[4] = {};
  std::memcpy(&capacity, bytes + 8, 8);
  std::memcpy(addresses, bytes + 16, sizeof(addresses));
  EXPECT_EQ(capacity, 100u);
  EXPECT_EQ(addresses[0], bytes + 48);       // first data byte
  EXPECT_EQ(addresses[1], bytes + 48 + 99);  // last data byte
  EXPECT_EQ(addresses[2], bytes + 48);       // hand-out mark
  EXPECT_EQ(addresses[3], bytes + 48);       // write position
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
    EXPECT_EQ(ring.log.all(), ring.written);
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
  HandOutLog log;
  second.setOverflowCallback(&HandOutLog::record, &log);
  const TavClTraceEntry entry(ring.environment, TAV_TRACE_DETAIL_LOW, 0, TAV_TRACE_TYPE_NO_DATA, "",
                              "later", "", 0);
  second.write(entry);
  second.flush();
  EXPECT_EQ(log.all(), earlier + recordBytes(entry));

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
    ASSERT_EQ(ring.log.all(), ring.written);
    ring.handOutLengths();  // checks where each second piece starts
  }
}

}  // namespace
