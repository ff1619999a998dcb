// tav_random.cpp - the IBAA random number generator with Park-Miller seeding.
//
// All arithmetic is unsigned 32-bit and wraps. The seeding steps deliberately leave out the
// correction that the minimal standard generator applies to negative intermediate results: the
// sequences of every existing seed depend on that.

#include "tav_random.h"

#include "tav_system_os.h"

TavClRandomNumberGenerator::TavClRandomNumberGenerator() { init(tav::os::tickCountMilliseconds()); }

TavClRandomNumberGenerator::TavClRandomNumberGenerator(uint32_t seed) { init(seed); }

void TavClRandomNumberGenerator::init(uint32_t seed) {
  uint32_t x = seed | 1u;
  for (uint32_t& word : memory) {
    const uint32_t q = x / 127773u;
    x = 16807u * (x - 127773u * q) - 2836u * q;
    word = x;
  }
  generate();
  remaining = kWords;
}

// One IBAA step over the whole state: a barrel-shifted accumulator, an indirect lookup for the
// new memory word and a second one for the result.
void TavClRandomNumberGenerator::generate() const {
  uint32_t a = accumulatorA;
  uint32_t b = accumulatorB;
  for (uint32_t i = 0; i < kWords; ++i) {
    const uint32_t x = memory[i];
    a = ((a << 19) ^ (a >> 13)) + memory[(i + kWords / 2) % kWords];
    const uint32_t y = memory[x % kWords] + a + b;
    memory[i] = y;
    b = memory[(y >> 8) % kWords] + x;
    results[i] = b;
  }
  accumulatorA = a;
  accumulatorB = b;
}

uint32_t TavClRandomNumberGenerator::getRandomNumber() const {
  if (remaining == 0) {
    generate();
    remaining = kWords;
  }
  return results[--remaining];
}

uint32_t TavClRandomNumberGenerator::getRandomNumber(uint32_t limit) const {
  const double fraction = getRandomNumber() / 4294967295.0;
  return static_cast<uint32_t>(limit * fraction);
}
