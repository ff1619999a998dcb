// Bit arrays: size, single bits, copies, comparison and the stream form.

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "tav_bitarray.h"
#include "tav_test_allocator.h"

namespace {

// An array holds one byte more than its bits need, all clear at first; a bit index selects the
// byte and the bit within it, and nothing past the end.
TEST(BitArray, SizeAndSingleBits) {
  const size_t sizes[][2] = {{0, 1}, {1, 1}, {7, 1}, {8, 2}, {9, 2}, {64, 9}};  // bits, bytes
  for (const auto& size : sizes) {
    SCOPED_TRACE(size[0]);
    TavClBitArray bits(size[0]);
    EXPECT_EQ(bits.getByteCount(), size[1]);
    for (size_t i = 0; i < size[1]; ++i) EXPECT_EQ(bits.getBytes()[i], 0) << "byte " << i;
  }

  TavClBitArray bits(20);
  EXPECT_TRUE(bits.setBit(0) && bits.setBit(9) && bits.setBit(19));
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(bits.getBytes()), 3), "\x01\x02\x08");
  EXPECT_TRUE(bits.clearBit(9));
  EXPECT_TRUE(!bits.isBitSet(9) && bits.isBitSet(19));

  TavClBitArray eight(8);  // two bytes: the spare one must stay out of reach
  EXPECT_FALSE(eight.setBit(8) || eight.setBit(static_cast<size_t>(-1)) || eight.isBitSet(8));
}

TEST(BitArray, EqualityNeedsSameSizeAndBitsAndCopiesAreIndependent) {
  TavClBitArray a(30), b(30), shorter(4), longer(400);
  b.setBit(29);
  EXPECT_TRUE(a != b);
  a.setBit(29);
  EXPECT_TRUE(a == b);
  // Different sizes compare unequal, and neither side is read past its own bytes.
  EXPECT_FALSE(shorter == longer);
  a.setBit(3);
  TavClBitArray copy(a), assigned(1000);
  copy.clearBit(3);
  assigned = a;
  TavClBitArray& alias = assigned;
  assigned = alias;
  EXPECT_TRUE(a.isBitSet(3) && assigned == a && copy != a);
}

// Every allocation of construction, assignment and reading fails in turn.
TEST(BitArray, AllocationFailuresLeakNothingAndLeaveTheTargetWhole) {
  tav::test::installCountingAllocator();  // before the block of the source
  TavClBitArray source(100);
  source.setBit(42);
  tav::test::forEachAllocationFailure([&] {
    TavClBitArray target(5);
    target.setBit(4);
    try {
      target = source;
    } catch (const TavClExceptionFatal&) {
      EXPECT_TRUE(target.getBitCount() == 5 && target.isBitSet(4));
      throw;
    }
    EXPECT_TRUE(target == source);
    std::istringstream stream(std::string(13, '\xff'));
    target.read(stream);
  });
}

TEST(BitArray, StreamFormIsTheRawBytesAndAShortStreamChangesNothing) {
  TavClBitArray bits(16);  // 3 bytes
  bits.setBit(0);
  bits.setBit(15);
  std::ostringstream out;
  ASSERT_TRUE(bits.write(out));
  EXPECT_EQ(out.str(), std::string("\x01\x80\x00", 3));

  std::istringstream shortStream(std::string("\xff\xff", 2));  // one byte short
  const TavClBitArray before(bits);
  EXPECT_FALSE(bits.read(shortStream));
  EXPECT_TRUE(bits == before);
}

}  // namespace
