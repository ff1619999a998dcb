// How the fuzz targets read one input: a flag byte, then the pattern, a NUL, then the text.
//
//   byte 0          bit 0 is the target's case flag; the other bits are ignored, so the
//                   readable seeds start with '0' or '1'
//   bytes 1..       the pattern, up to the first NUL (or the end of the input)
//   after that NUL  the text, up to the next NUL (or the end of the input)
//
// Both strings are copied into heap blocks of exactly their length plus the terminator, so that
// a read past either terminator lands outside the block, where AddressSanitizer sees it.
#ifndef TAV_FUZZ_INPUT_H
#define TAV_FUZZ_INPUT_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

namespace tav_fuzz {

struct Input {
  bool flag = false;
  std::size_t patternLength = 0;
  std::size_t textLength = 0;
  std::unique_ptr<char[]> pattern;
  std::unique_ptr<char[]> text;
};

inline std::unique_ptr<char[]> CopyString(const std::uint8_t* begin, std::size_t length) {
  std::unique_ptr<char[]> copy(new char[length + 1]);
  if (length != 0) std::memcpy(copy.get(), begin, length);
  copy[length] = '\0';
  return copy;
}

// Returns false for an empty input, which carries no flag byte.
inline bool SplitInput(const std::uint8_t* data, std::size_t size, Input* input) {
  if (size == 0) return false;
  input->flag = (data[0] & 1) != 0;
  const std::uint8_t* cursor = data + 1;
  const std::uint8_t* end = data + size;

  const auto* patternEnd = static_cast<const std::uint8_t*>(std::memchr(cursor, 0, end - cursor));
  if (patternEnd == nullptr) patternEnd = end;
  input->patternLength = static_cast<std::size_t>(patternEnd - cursor);
  input->pattern = CopyString(cursor, input->patternLength);

  cursor = patternEnd == end ? end : patternEnd + 1;
  const auto* textEnd = static_cast<const std::uint8_t*>(std::memchr(cursor, 0, end - cursor));
  if (textEnd == nullptr) textEnd = end;
  input->textLength = static_cast<std::size_t>(textEnd - cursor);
  input->text = CopyString(cursor, input->textLength);
  return true;
}

// Splits [begin, end) at NUL bytes into at most maxFields strings, each in a block of exactly its
// length plus the terminator; the last field runs to the end. Always at least one field.
inline std::vector<std::unique_ptr<char[]>> SplitFields(const std::uint8_t* begin,
                                                        const std::uint8_t* end,
                                                        std::size_t maxFields) {
  std::vector<std::unique_ptr<char[]>> fields;
  const std::uint8_t* cursor = begin;
  while (fields.size() < maxFields) {
    const auto* fieldEnd = static_cast<const std::uint8_t*>(std::memchr(cursor, 0, end - cursor));
    if (fieldEnd == nullptr) fieldEnd = end;
    fields.push_back(CopyString(cursor, static_cast<std::size_t>(fieldEnd - cursor)));
    if (fieldEnd == end) break;
    cursor = fieldEnd + 1;
  }
  return fields;
}

// Writes a string as a C literal, so that a failing case can be pasted into a test.
inline void PrintQuoted(const char* label, const char* value) {
  std::fprintf(stderr, "%s \"", label);
  for (const unsigned char* c = reinterpret_cast<const unsigned char*>(value); *c != 0; ++c) {
    if (*c == '"' || *c == '\\') {
      std::fprintf(stderr, "\\%c", *c);
    } else if (*c >= 0x20 && *c < 0x7f) {
      std::fputc(*c, stderr);
    } else {
      // Octal rather than hex: a hex escape would swallow a following hex digit.
      std::fprintf(stderr, "\\%03o", *c);
    }
  }
  std::fprintf(stderr, "\"\n");
}

}  // namespace tav_fuzz

#endif  // TAV_FUZZ_INPUT_H
