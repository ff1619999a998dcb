// Process and thread identities, and ending a process.

#include <gtest/gtest.h>

#include <thread>

#include "tav_process.h"
#include "tav_test_self_child.h"

namespace {

TEST(ProcessProperty, DefaultIsTheCallingProcessAndEachThreadHasItsOwnId) {
  EXPECT_EQ(TavClProcessProperty().getId(), tav::test::nativeProcessId());
  // Each thread has its own stable id.
  const uint32_t mainThread = TavClThreadProperty().getId();
  EXPECT_EQ(TavClThreadProperty().getId(), mainThread);
  uint32_t otherThread = 0;
  std::thread([&otherThread] { otherThread = TavClThreadProperty().getId(); }).join();
  EXPECT_NE(otherThread, mainThread);
}

TEST(ProcessKill, EndsARunningProcessAndCountsAGoneOrInvalidOneAsEnded) {
  const uint32_t child = tav::test::startWaitingChild();
  ASSERT_NE(child, 0u) << "could not start a child process";
  TavClProcess process(child);
  EXPECT_TRUE(process.kill());
  EXPECT_EQ(process.getError().id, NO_ERROR);
  int exitCode = 0;
  EXPECT_TRUE(tav::test::waitForChildExit(child, 10000, &exitCode)) << "the child still runs";

  // The child has ended and been reaped: its id names no process any more.
  TavClProcess gone(child);
  EXPECT_TRUE(gone.kill());
  EXPECT_EQ(gone.getError().id, NO_ERROR);

  // Ids that name no single process are never signalled. On POSIX, 0 and ids above INT_MAX would
  // address whole process groups: this process's among them. Surviving this test is the check.
  for (unsigned int id : {0u, 0x80000000u, 0xFFFFFFFFu}) {
    TavClProcess invalid(id);
    EXPECT_TRUE(invalid.kill()) << id;
  }
}

}  // namespace
