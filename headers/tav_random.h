// tav_random.h - a fast random number generator that is not fit for cryptography.
//
// The generator is IBAA with 256 words of state, seeded by the Park-Miller minimal standard
// steps. The same seed gives the same sequence on every platform; seeds that differ only in
// the lowest bit give the same sequence too, since seeding sets that bit. Each generation step
// makes 256 results, which are handed out from the last to the first.
//
// A generator is not synchronised: share one between threads only under the caller's lock.

#ifndef TAV_RANDOM_H
#define TAV_RANDOM_H

#include <stdint.h>

#include "tav_export.h"

class TAV_API TavClRandomNumberGenerator {
 public:
  // Seeded with the millisecond tick count, so generators made in the same millisecond agree.
  TavClRandomNumberGenerator();
  explicit TavClRandomNumberGenerator(uint32_t seed);

  // The next 32-bit result. Drawing changes the generator, although the call is const.
  uint32_t getRandomNumber() const;
  // The next result scaled to 0 ... limit: limit x (result / 4294967295.0), truncated. limit
  // itself comes only from the result 4294967295; getRandomNumber(0) is always 0.
  uint32_t getRandomNumber(uint32_t limit) const;

 private:
  static constexpr unsigned kWords = 256;

  void init(uint32_t seed);
  void generate() const;

  mutable uint32_t memory[kWords];
  mutable uint32_t results[kWords];
  mutable uint32_t accumulatorA = 0;
  mutable uint32_t accumulatorB = 0;
  mutable uint32_t remaining = 0;  // results not yet handed out
};

#endif  // TAV_RANDOM_H
