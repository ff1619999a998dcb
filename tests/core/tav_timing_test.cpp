// The stopwatch: intervals, totals, and a stopwatch without the counter.

#include <gtest/gtest.h>

#include "tav_timing.h"
#include "tav_utils.h"

namespace {

// Elapsed is the latest interval and the total adds them up; without the counter every time
// is zero, even while the stopwatch runs.
TEST(Timing, IntervalsAddUpAndWithoutTheCounterEveryTimeIsZero) {
  TavClTiming watch, off(false);
  ASSERT_GT(watch.getFrequency(), 0u);
  EXPECT_EQ(off.getFrequency(), 0u);
  for (TavClTiming* each : {&watch, &off}) each->start();
  tavSleepMilliSeconds(30);
  watch.stop();
  EXPECT_EQ(off.getElapsedSeconds(), 0.0);
  off.stop();
  const double first = watch.getElapsedSeconds();
  EXPECT_GE(first, 0.020);
  watch.start();
  tavSleepMilliSeconds(10);
  watch.stop();
  EXPECT_EQ(watch.getIntervalCount(), 2u);
  EXPECT_DOUBLE_EQ(watch.getTotalSeconds(), first + watch.getElapsedSeconds());
  EXPECT_EQ(off.getTotalSeconds(), 0.0);
  watch.reset();
  EXPECT_EQ(watch.getTotalSeconds(), 0.0);
  EXPECT_GT(watch.wallClockTime(), 0.0);
  EXPECT_EQ(off.wallClockTime(), 0.0);
}

}  // namespace
