// tav_timing.cpp - the stopwatch on the high-resolution counter.

#include "tav_timing.h"

#include "tav_system_os.h"

TavClTiming::TavClTiming() { init(true); }

TavClTiming::TavClTiming(bool usePerformanceCounter) { init(usePerformanceCounter); }

void TavClTiming::init(bool usePerformanceCounter) {
  startCount = 0;
  stopCount = 0;
  accumulatedCount = 0;
  intervalCount = 0;
  running = false;
  frequency = usePerformanceCounter ? tav::os::performanceCounterFrequency() : 0;
}

// Without a frequency there is nothing to divide by: such a stopwatch measures nothing rather
// than reporting infinities.
double TavClTiming::toSeconds(uint64_t counts) const {
  if (frequency == 0) return 0.0;
  return static_cast<double>(counts) / static_cast<double>(frequency);
}

uint64_t TavClTiming::readCounter() const {
  uint64_t counts = 0;
  if (frequency == 0 || !tav::os::readPerformanceCounter(&counts)) return 0;
  return counts;
}

double TavClTiming::wallClockTime() const {
  uint64_t counts = 0;
  if (frequency == 0 || !tav::os::readPerformanceCounter(&counts)) return 0.0;
  return toSeconds(counts);
}

void TavClTiming::start() {
  startCount = readCounter();
  stopCount = startCount;
  running = true;
}

void TavClTiming::stop() {
  if (!running) return;
  stopCount = readCounter();
  // A counter that could not be read gives 0; an interval never runs backwards.
  if (stopCount < startCount) stopCount = startCount;
  accumulatedCount += stopCount - startCount;
  ++intervalCount;
  running = false;
}

void TavClTiming::reset() { init(frequency != 0); }

double TavClTiming::getElapsedSeconds() const {
  if (!running) return toSeconds(stopCount - startCount);
  const uint64_t now = readCounter();
  return now > startCount ? toSeconds(now - startCount) : 0.0;
}

double TavClTiming::getTotalSeconds() const {
  const double completed = toSeconds(accumulatedCount);
  return running ? completed + getElapsedSeconds() : completed;
}
