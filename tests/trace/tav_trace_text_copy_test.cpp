// The record path's own text length and copies, against strnlen and memcpy: at every alignment of
// the text, every length around the 16-byte blocks, texts that end just before a 4 KiB boundary,
// and limits below, at and above the length; the bounded copy writes at most 16 bytes past what
// it gives.

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "../../src/trace/tav_trace_text_copy.h"

namespace {

constexpr size_t kPage = 4096;

// Checks both text functions on the text at text, whose terminator is at length.
void expectLikeTheCLibrary(const char* text, size_t length) {
  for (size_t limit : {size_t{0}, size_t{1}, length - (length > 0), length, length + 1,
                       size_t{16}, size_t{255}}) {
    SCOPED_TRACE(testing::Message() << "length " << length << ", limit " << limit);
    const size_t expected = strnlen(text, limit);
    ASSERT_EQ(tav::trace::boundedTextLength(text, limit), expected);
    std::vector<uint8_t> copy(limit + 2 * tav::trace::kBoundedTextOvershoot + 1, 0xEE);
    ASSERT_EQ(tav::trace::copyBoundedText(copy.data(), text, limit), expected);
    ASSERT_EQ(std::memcmp(copy.data(), text, expected), 0);
    for (size_t i = expected + tav::trace::kBoundedTextOvershoot; i < copy.size(); ++i) {
      ASSERT_EQ(copy[i], 0xEE) << "written at " << i;
    }
  }
}

TEST(TraceTextCopy, TextsMeasureAndCopyLikeTheCLibrary) {
  // Two pages and a margin, so that texts can end on either side of a page boundary.
  std::vector<char> memory(3 * kPage, 'x');
  const uintptr_t start = reinterpret_cast<uintptr_t>(memory.data());
  char* boundary = memory.data() + (kPage - start % kPage) + kPage;
  for (size_t offset = 0; offset < 32; ++offset) {
    for (size_t length = 0; length < 80; ++length) {
      std::fill(memory.begin(), memory.end(), 'x');
      char* text = memory.data() + offset;
      text[length] = '\0';
      expectLikeTheCLibrary(text, length);
      // The same text ending 1 to 32 bytes before a page boundary.
      std::fill(memory.begin(), memory.end(), 'x');
      text = boundary - 1 - offset - length;
      text[length] = '\0';
      expectLikeTheCLibrary(text, length);
    }
  }
}

TEST(TraceTextCopy, ShortCopiesWriteExactlyTheBytesAsked) {
  std::vector<char> source(320);
  for (size_t i = 0; i < source.size(); ++i) source[i] = static_cast<char>(i * 7 + 1);
  for (size_t count = 0; count <= 300; ++count) {
    std::vector<uint8_t> target(count + 32, 0xEE);
    tav::trace::copyShortBytes(target.data() + 16, source.data() + 3, count);
    ASSERT_EQ(std::memcmp(target.data() + 16, source.data() + 3, count), 0) << count;
    for (size_t i = 0; i < 16; ++i) {
      ASSERT_EQ(target[i], 0xEE) << "before, count " << count;
      ASSERT_EQ(target[16 + count + i], 0xEE) << "after, count " << count;
    }
  }
}

}  // namespace
