// A small linear congruential generator for the code page benchmarks, so that their inputs are
// the same in every run and on every platform.
#ifndef TAV_BENCH_CODEPAGE_DICE_H
#define TAV_BENCH_CODEPAGE_DICE_H

#include <cstdint>

namespace tav::bench {

class Dice {
 public:
  explicit Dice(uint64_t seed) : state_(seed) {}
  uint32_t below(uint32_t bound) {
    state_ = state_ * 6364136223846793005u + 1442695040888963407u;
    return static_cast<uint32_t>(state_ >> 33) % bound;
  }

 private:
  uint64_t state_;
};

}  // namespace tav::bench

#endif  // TAV_BENCH_CODEPAGE_DICE_H
