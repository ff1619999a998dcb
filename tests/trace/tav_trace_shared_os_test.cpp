// The shared ring's file mapping and lock: the names derived from a resource key, what two
// mappings of one file see of each other, the ways opening fails, and a lock whose holder was
// killed passing to the next taker.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>

#include "../../src/trace/tav_trace_shared_os.h"
#include "tav_test_self_child.h"
#include "tav_trace_test_support.h"

namespace {

using tav::trace::SharedRingMapping;
using Status = SharedRingMapping::Status;

constexpr char kRoleVariable[] = "TAV_TRACE_TEST_LOCK_HOLDER";

// A lock name for a test's file: locks are named after keys, which hold no path separators.
std::string lockNameFor(const std::string& path) {
  const size_t separator = path.find_last_of("/\\");
  return tav::trace::sharedRingLockName(path.substr(separator + 1).c_str());
}

// The child's role: takes the lock of the mapping at the path in the variable, says so in the
// ring's first byte and waits to be killed.
const bool holdsLockAsChild = [] {
  const char* path = std::getenv(kRoleVariable);
  if (path == nullptr) return false;
  SharedRingMapping mapping;
  if (mapping.attach(path, lockNameFor(path).c_str()) != Status::kOk) {
    std::_Exit(3);
  }
  mapping.lock();
  mapping.getRingMemory()[0] = 1;
  for (;;) std::this_thread::sleep_for(std::chrono::seconds(1));
}();

TEST(SharedRingNames, FileAndLockFollowTheResourceKey) {
  for (const auto& row : tav::test::readTable("shared_ring_names.txt", 4)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(tav::trace::sharedRingFileName(row.text(0), row.text(1)), row.str(2));
    EXPECT_EQ(tav::trace::sharedRingLockName(row.text(1)), row.str(3));
  }
}

TEST(SharedRingMapping, TwoMappingsOfOneFileShareTheirBytes) {
  const std::string path = tav::test::scratchFileName("shared-two.shm");
  {
    SharedRingMapping writer;
    ASSERT_EQ(writer.create(path.c_str(), lockNameFor(path).c_str(), 4096), Status::kOk);
    ASSERT_EQ(writer.getRingSize(), 4096u);
    SharedRingMapping reader;
    ASSERT_EQ(reader.attach(path.c_str(), lockNameFor(path).c_str()), Status::kOk);
    EXPECT_EQ(reader.getRingSize(), 4096u);
    std::memcpy(writer.getRingMemory() + 4000, "shared", 6);
    EXPECT_EQ(std::memcmp(reader.getRingMemory() + 4000, "shared", 6), 0);

    // Asking for more grows the file and keeps its bytes; asking for less leaves it as it is.
    SharedRingMapping larger;
    ASSERT_EQ(larger.create(path.c_str(), lockNameFor(path).c_str(), 8192), Status::kOk);
    EXPECT_EQ(larger.getRingSize(), 8192u);
    EXPECT_EQ(std::memcmp(larger.getRingMemory() + 4000, "shared", 6), 0);
    SharedRingMapping smaller;
    ASSERT_EQ(smaller.create(path.c_str(), lockNameFor(path).c_str(), 100), Status::kOk);
    EXPECT_EQ(smaller.getRingSize(), 8192u);
  }
  // The file outlives its mappings until it is removed.
  EXPECT_EQ(SharedRingMapping().attach(path.c_str(), lockNameFor(path).c_str()), Status::kOk);
  EXPECT_TRUE(SharedRingMapping::removeFile(path.c_str()));
}

TEST(SharedRingMapping, OpeningFailsWithAReason) {
  const std::string missing = tav::test::scratchFileName("shared-missing.shm");
  SharedRingMapping mapping;
  EXPECT_EQ(mapping.attach(missing.c_str(), lockNameFor(missing).c_str()), Status::kMissing);
  EXPECT_EQ(mapping.getRingMemory(), nullptr);

  // A file no larger than the lock area holds no ring to attach to.
  const std::string tiny = tav::test::scratchFileName("shared-tiny.shm");
  std::ofstream(tiny, std::ios::binary) << std::string(SharedRingMapping::kLockAreaSize, '\0');
  EXPECT_EQ(mapping.attach(tiny.c_str(), lockNameFor(tiny).c_str()), Status::kTooSmall);
  EXPECT_TRUE(SharedRingMapping::removeFile(tiny.c_str()));

  const std::string nowhere = missing + ".d/ring.shm";
  EXPECT_EQ(mapping.create(nowhere.c_str(), lockNameFor(nowhere).c_str(), 4096), Status::kFailed);
  EXPECT_NE(mapping.getErrorNumber(), 0u);
  EXPECT_EQ(mapping.attach(nowhere.c_str(), lockNameFor(nowhere).c_str()), Status::kMissing);
}

TEST(SharedRingMapping, ALockWhoseHolderWasKilledPassesOn) {
  const std::string path = tav::test::scratchFileName("shared-lock.shm");
  SharedRingMapping mapping;
  ASSERT_EQ(mapping.create(path.c_str(), lockNameFor(path).c_str(), 4096), Status::kOk);
  const uint32_t child = tav::test::startSelfChild(kRoleVariable, path.c_str());
  ASSERT_NE(child, 0u);
  // The child's lock is taken once it has marked the ring.
  volatile uint8_t* mark = mapping.getRingMemory();
  for (int waited = 0; *mark == 0 && waited < 20000; waited += 5) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  ASSERT_EQ(*mark, 1) << "the child never took the lock";
  ASSERT_TRUE(tav::test::killChild(child));
  mapping.lock();
  EXPECT_TRUE(mapping.wasRecovered());
  mapping.unlock();
  mapping.lock();
  EXPECT_FALSE(mapping.wasRecovered());
  mapping.unlock();
  (void)holdsLockAsChild;
}

}  // namespace
