// The stopwatch: intervals, totals, and a stopwatch without the counter.

#include <gtest/gtest.h>

#include "tav_timing.h"
#include "tav_utils.h"

namespace {

TEST(Timing, IntervalsAddUpElapsedIsTheLatestAndTheWallClockAdvances) {
  TavClTiming watch;
  ASSERT_GT(watch.getFrequency(), 0u);
  watch.start();
  tavSleepMilliSeconds(30);
  watch.stop();
  const double first = watch.getElapsedSeconds();
  EXPECT_GE(first, 0.020);

  watch.start();
  tavSleepMilliSeconds(10);
  watch.stop();
  EXPECT_EQ(watch.getIntervalCount(), 2u);
  EXPECT_DOUBLE_EQ(watch.getTotalSeconds(), first + watch.getElapsedSeconds());

  watch.reset();
  EXPECT_EQ(watch.getTotalSeconds(), 0.0);
  EXPECT_GT(watch.wallClockTime(), 0.0);

}

TEST(Timing, WithoutTheCounterEveryTimeIsZero) {
  TavClTiming watch(false);
  EXPECT_EQ(watch.getFrequency(), 0u);
  EXPECT_EQ(watch.wallClockTime(), 0.0);
  watch.start();
  tavSleepMilliSeconds(2);
  EXPECT_EQ(watch.getElapsedSeconds(), 0.0);  // while running
  watch.stop();
  EXPECT_EQ(watch.getTotalSeconds(), 0.0);
}

}  // namespace
