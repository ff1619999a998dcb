// What the two UTF fuzz targets share: reading an input, calling a conversion on buffers of
// exactly the given sizes, and the checks that hold for every conversion.
//
// Input layout: bytes 0 and 1 are the output size (little-endian), taken modulo four times the
// text's size plus 9 so that sizes near the needed ones come often; the rest is the text.
//
// The text is copied into a heap block of exactly its size, so that AddressSanitizer sees a read
// past it; the output is followed by a guard region that must not change. Every call must keep
// written <= output size and consumed <= input size, and a conversion into a smaller output must
// give the start of the conversion into a large one.
#ifndef TAV_FUZZ_CODEPAGE_TRANSCODE_H
#define TAV_FUZZ_CODEPAGE_TRANSCODE_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "../src/codepage/tav_utf_transcode.h"

namespace tav_fuzz {

using Transcoder = tav::codepage::TranscodeResult (*)(const char*, std::size_t, char*, std::size_t);

constexpr std::size_t kMaxTranscodeInput = 4096;
constexpr std::size_t kGuardSize = 64;
constexpr unsigned char kGuardByte = 0x5A;

struct Conversion {
  std::string out;
  std::size_t consumed;
  tav::codepage::TranscodeStatus status;
};

[[noreturn]] inline void fail(const char* what, std::size_t inSize, std::size_t outSize) {
  std::fprintf(stderr, "%s (input %zu bytes, output size %zu)\n", what, inSize, outSize);
  std::abort();
}

inline Conversion convertGuarded(Transcoder transcode, const std::string& text,
                                 std::size_t outSize) {
  std::vector<char> in(text.begin(), text.end());
  std::vector<char> out(outSize + kGuardSize, static_cast<char>(kGuardByte));
  const auto result = transcode(in.data(), in.size(), out.data(), outSize);
  if (result.written > outSize) fail("wrote more than the output size", in.size(), outSize);
  if (result.consumed > in.size()) fail("consumed more than the input", in.size(), outSize);
  for (std::size_t i = outSize; i < out.size(); ++i) {
    if (static_cast<unsigned char>(out[i]) != kGuardByte) {
      fail("changed a byte behind the output", in.size(), outSize);
    }
  }
  return {std::string(out.data(), result.written), result.consumed, result.status};
}

// Converts the text once into the output size from the input and once into room enough, and
// checks that the first is the start of the second. Returns the ample conversion.
inline Conversion checkConversion(Transcoder transcode, const std::uint8_t* data,
                                  std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data) + 2, size - 2);
  const std::size_t outSize = (data[0] | std::size_t{data[1]} << 8) % (4 * text.size() + 9);
  const Conversion small = convertGuarded(transcode, text, outSize);
  const Conversion ample = convertGuarded(transcode, text, 4 * text.size() + 8);
  if (ample.status == tav::codepage::TranscodeStatus::tooBig) {
    fail("room enough and still too big", text.size(), outSize);
  }
  if (ample.out.compare(0, small.out.size(), small.out) != 0) {
    fail("a smaller output is not the start of a large one", text.size(), outSize);
  }
  if (small.status != tav::codepage::TranscodeStatus::tooBig &&
      (small.out != ample.out || small.consumed != ample.consumed)) {
    fail("stopped early without saying the output was full", text.size(), outSize);
  }
  return ample;
}

}  // namespace tav_fuzz

#endif  // TAV_FUZZ_CODEPAGE_TRANSCODE_H
