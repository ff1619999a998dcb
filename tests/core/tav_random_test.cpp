// The random number generator: exact sequences for given seeds, the seed's lowest bit, and
// scaling to a limit.
//
// The expected figures come from tools/ibaa_reference.py, a transcription of the seeding,
// generation and drawing rules written independently of the library's code.

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "tav_random.h"

namespace {

std::vector<uint32_t> draw(const TavClRandomNumberGenerator& generator, size_t count) {
  std::vector<uint32_t> numbers(count);
  for (uint32_t& number : numbers) number = generator.getRandomNumber();
  return numbers;
}

TEST(RandomNumbers, SequenceOfASeedIsFixedAndItsLowestBitIgnored) {
  const TavClRandomNumberGenerator generator(1234);
  const std::vector<uint32_t> numbers = draw(generator, 520);
  EXPECT_EQ(std::vector<uint32_t>(numbers.begin(), numbers.begin() + 4),
            (std::vector<uint32_t>{1105088681u, 661031433u, 3591982925u, 2982775329u}));
  // Draws 254 to 258 cross from the first generation step to the second.
  EXPECT_EQ(std::vector<uint32_t>(numbers.begin() + 254, numbers.begin() + 259),
            (std::vector<uint32_t>{2575589952u, 990274224u, 916327609u, 773836143u, 537770692u}));
  // The seed's lowest bit is ignored.
  const std::vector<uint32_t> expected{161722770u, 545520400u, 2260119848u, 4154477846u};
  EXPECT_EQ(draw(TavClRandomNumberGenerator(0), 4), expected);
  EXPECT_EQ(draw(TavClRandomNumberGenerator(1), 4), expected);
  EXPECT_EQ(draw(TavClRandomNumberGenerator(1234), 300),
            draw(TavClRandomNumberGenerator(1235), 300));
}

TEST(RandomNumbers, ScaledDrawsStayWithinTheLimit) {
  const TavClRandomNumberGenerator generator(1234);
  std::vector<uint32_t> scaled;
  for (int i = 0; i < 6; ++i) scaled.push_back(generator.getRandomNumber(1000));
  EXPECT_EQ(scaled, (std::vector<uint32_t>{257, 153, 836, 694, 705, 137}));

  const TavClRandomNumberGenerator wide(99);
  for (int i = 0; i < 2000; ++i) {
    EXPECT_EQ(wide.getRandomNumber(0), 0u);
    ASSERT_LE(wide.getRandomNumber(7), 7u);
  }
}

}  // namespace
