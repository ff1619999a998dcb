// tav_timing.h - a stopwatch on the high-resolution counter.
//
// The counter is the performance counter on Windows and the monotonic clock (in nanoseconds)
// on POSIX. A stopwatch may be started and stopped any number of times: the elapsed time is
// that of the latest interval, the total the sum of all of them.

#ifndef TAV_TIMING_H
#define TAV_TIMING_H

#include <stdint.h>

#include "tav_export.h"

class TAV_API TavClTiming {
 public:
  // A stopped stopwatch on the high-resolution counter.
  TavClTiming();
  // Without the counter the stopwatch knows no frequency, and every time it reports is 0.0.
  explicit TavClTiming(bool usePerformanceCounter);

  // The counter's current reading in seconds from an unspecified start; 0.0 when the counter
  // cannot be read or its frequency was not taken.
  double wallClockTime() const;
  // Counts per second; 0 when the counter is not used.
  uint64_t getFrequency() const { return frequency; }

  // Starts a new interval; a running interval is restarted, not counted.
  void start();
  // Ends the running interval and adds it to the total; does nothing when stopped.
  void stop();
  // Stops, and clears the total and the latest interval.
  void reset();
  bool isRunning() const { return running; }

  // The latest interval in seconds: up to now while running, else up to the stop.
  double getElapsedSeconds() const;
  // All completed intervals and the running one, in seconds.
  double getTotalSeconds() const;
  // The number of completed intervals.
  uint64_t getIntervalCount() const { return intervalCount; }

 private:
  void init(bool usePerformanceCounter);
  uint64_t readCounter() const;
  double toSeconds(uint64_t counts) const;

  uint64_t startCount;        // the counter at the latest start
  uint64_t stopCount;         // the counter at the latest stop
  uint64_t accumulatedCount;  // completed intervals, in counts
  uint64_t intervalCount;     // how many intervals completed
  uint64_t frequency;
  bool running;
};

#endif  // TAV_TIMING_H
