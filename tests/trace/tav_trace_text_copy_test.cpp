// The record path's own text length and copy, against strnlen and memcpy: at every alignment of
// the text, every length around the 16-byte blocks, and limits below, at and above the length.

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "../../src/trace/tav_trace_text_copy.h"

namespace {

TEST(TraceTextCopy, LengthsMatchStrnlenAtEveryAlignment) {
  std::vector<char> memory(512, 'x');
  for (size_t offset = 0; offset < 32; ++offset) {
    for (size_t length = 0; length < 80; ++length) {
      char* text = memory.data() + offset;
      std::memset(memory.data(), 'x', memory.size());
      text[length] = '\0';
      for (size_t limit : {size_t{0}, size_t{1}, length - (length > 0), length, length + 1,
                           size_t{16}, size_t{255}}) {
        ASSERT_EQ(tav::trace::boundedTextLength(text, limit), strnlen(text, limit))
            << "offset " << offset << ", length " << length << ", limit " << limit;
      }
    }
  }
}

TEST(TraceTextCopy, CopiesExactlyTheBytesAsked) {
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
