// The 6-bit text compression of trace records: known encodings, the capacity rule, random
// texts against a code-by-code reference, and the bit routines against a plain bit vector.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tav_trace_entry.h"
#include "tav_trace_test_support.h"

namespace {

std::string compress(const std::string& text, size_t capacity = 255) {
  std::vector<uint8_t> stored(capacity + 1, 0xAA);
  const size_t length = TavClTraceEntry::compressCString(stored.data(), text.c_str(), capacity);
  return std::string(stored.begin(), stored.begin() + static_cast<long>(length));
}

// Expands from a heap block of exactly the stored length, so that a read past it is caught by
// AddressSanitizer.
std::string expand(const std::string& stored) {
  std::unique_ptr<uint8_t[]> source(new uint8_t[stored.size() + 1]);
  std::memcpy(source.get(), stored.data(), stored.size());
  std::vector<char> text(stored.size() * 8 / 6 + 1);
  const size_t length =
      TavClTraceEntry::deCompressCString(text.data(), source.get(), stored.size());
  EXPECT_EQ(text[length], '\0');
  return std::string(text.data(), length);
}

bool inAlphabet(unsigned char character) {
  return character != 0 && std::strchr(TavClTraceEntry::kTraceAlphabet, character) != nullptr;
}

TEST(TraceCompression, KnownEncodings) {
  for (const auto& row : tav::test::readTable("compression_known.txt")) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(compress(row.fields.at(0)), row.fields.at(1));
    EXPECT_EQ(expand(row.fields.at(1)), row.fields.at(0) == "\xFF" ? " " : row.fields.at(0));
  }
}

TEST(TraceCompression, TheLastCharacterMayOvershootTheCapacityByOneByte) {
  // 338 letters take 2028 bits; a digit starting there still goes in whole and ends at bit 2042.
  const std::string overshooting = std::string(338, 'x') + "9";
  const std::string stored = compress(overshooting + "more");
  EXPECT_EQ(stored.size(), 256u);
  EXPECT_EQ(expand(stored), overshooting);
  // 339 letters end at bit 2034, past the mark of 2032: 255 bytes.
  EXPECT_EQ(compress(std::string(400, 'x')).size(), 255u);
  EXPECT_EQ(expand(compress(std::string(400, 'x'))), std::string(339, 'x'));
  // The smallest capacities still write at most capacity + 1 bytes.
  EXPECT_EQ(compress("123", 1).size(), 2u);
  EXPECT_EQ(compress("123", 0).size(), 0u);
}

// Compression code by code with the bit writer, as the stored format is defined: each code at
// the next bit position, and the last byte filled with 1-bits. *kept receives what expansion
// gives back: the characters written before passing the capacity mark, 0xFF as a blank.
std::string referenceCompress(const std::string& text, size_t capacity, std::string* kept) {
  std::vector<uint8_t> stored(capacity + 2, 0);
  uint64_t bits = 0;
  for (const unsigned char character : text) {
    const bool shortCode = inAlphabet(character) || character == 0xFF;
    const auto code =
        static_cast<uint8_t>(character == 0xFF ? 0
                             : shortCode ? std::strchr(TavClTraceEntry::kTraceAlphabet, character) -
                                               TavClTraceEntry::kTraceAlphabet
                                         : 63);
    TavClTraceEntry::compressWriteBits(stored.data(), bits, code, 6);
    bits += 6;
    if (!shortCode) {
      TavClTraceEntry::compressWriteBits(stored.data(), bits, character, 8);
      bits += 8;
    }
    *kept += character == 0xFF ? ' ' : static_cast<char>(character);
    if (bits > (capacity - 1) * 8) break;
  }
  if (bits % 8 != 0) {
    const unsigned fill = 8 - bits % 8;
    TavClTraceEntry::compressWriteBits(stored.data(), bits, static_cast<uint8_t>((1u << fill) - 1),
                                       fill);
  }
  return std::string(stored.begin(), stored.begin() + static_cast<long>((bits + 7) / 8));
}

// Random texts, some mostly of the alphabet as real texts are, others of any bytes, in small
// capacities and the largest: stored as the reference stores them, and expanded back to what
// the capacity keeps.
TEST(TraceCompression, RandomTextsMatchTheReferenceAndRoundTrip) {
  std::mt19937 random(3);
  const std::string common = "Ab(): _,~<> 0x";
  for (int round = 0; round < 6000; ++round) {
    const size_t capacity = round % 4 == 0 ? 1 + random() % 40 : 255;
    std::string text(random() % 420, ' ');
    for (char& character : text) {
      const bool any = round % 3 == 0 || random() % 4 == 0;
      character = any              ? static_cast<char>(1 + random() % 255)
                  : round % 3 == 1 ? common[random() % common.size()]
                                   : TavClTraceEntry::kTraceAlphabet[random() % 63];
    }
    SCOPED_TRACE(testing::Message() << "round " << round << ", capacity " << capacity);
    std::string kept;
    const std::string stored = compress(text, capacity);
    ASSERT_EQ(stored, referenceCompress(text, capacity, &kept));
    ASSERT_LE(stored.size(), capacity + 1);
    ASSERT_EQ(expand(stored), kept);
  }
}

TEST(TraceCompression, ExpansionStopsAtAnEscapeWithoutALiteralBehindIt) {
  // An escape code followed by only six bits is not followed by a literal: the text ends there.
  EXPECT_EQ(expand("\x96\x6F\xC0"), "ab");  // "ab", then 111111 00 ... in the third byte
  EXPECT_EQ(expand(std::string("\xFC\x00", 2)), std::string("\0", 1));  // escape + literal 0
  EXPECT_EQ(expand(std::string()), "");
}

TEST(TraceCompression, BitRoutinesAgreeWithABitVector) {
  std::mt19937 random(5);
  for (int round = 0; round < 200; ++round) {
    std::vector<bool> model;
    std::vector<uint8_t> buffer(64, 0xEE);  // written bytes never depend on earlier contents
    while (model.size() < 400) {
      const unsigned count = 1 + random() % 8;
      const auto value = static_cast<uint8_t>(random());
      TavClTraceEntry::compressWriteBits(buffer.data(), model.size(), value, count);
      for (unsigned bit = count; bit-- > 0;) model.push_back(((value >> bit) & 1) != 0);
    }
    const size_t usedBytes = (model.size() + 7) / 8;
    for (size_t position = 0; position + 8 <= model.size(); position += 1 + random() % 7) {
      const unsigned count = 1 + random() % 8;
      unsigned expected = 0;
      for (unsigned bit = 0; bit < count; ++bit) expected = expected << 1 | model[position + bit];
      ASSERT_EQ(TavClTraceEntry::deCompressReadBits(buffer.data(), position, count), expected)
          << "round " << round << " position " << position << " count " << count;
    }
    // Nothing beyond the byte that holds the last bit was touched.
    for (size_t byte = usedBytes; byte < buffer.size(); ++byte) ASSERT_EQ(buffer[byte], 0xEE);
  }
  uint8_t untouched = 0x5A;
  TavClTraceEntry::compressWriteBits(&untouched, 0, 0xFF, 0);
  TavClTraceEntry::compressWriteBits(&untouched, 0, 0xFF, 9);
  EXPECT_EQ(untouched, 0x5A);
  EXPECT_EQ(TavClTraceEntry::deCompressReadBits(&untouched, 0, 9), 0);
}

}  // namespace
