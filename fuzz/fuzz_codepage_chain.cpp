// Fuzzes the converters between two code pages (TavClCodePage2CodePageConverter), whichever
// routines their two stages chose: any input, any output size, and the output followed by a
// guard region that must stay unchanged. The converters are kept from input to input, so that
// their buffer grows and is reused as it is in a program.
//
// Input layout: byte 0 picks the source CCSID and byte 1 the target CCSID from the list below,
// bytes 2 and 3 are the output size (little-endian, 0 to 65535), the rest is the text, copied
// into a block of exactly its size so that a read past it lands outside the block.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include "tav_codepage.h"

namespace {

// The arithmetic routines in both directions, a shared CCSID, ICU single- and double-byte code
// pages, and a CCSID nothing can convert.
const uint32_t kCCSIDs[] = {1208, 13488, 65500, 65501, 1200, 819, 37, 1392, 943, 930, 12345};
constexpr size_t kCCSIDCount = sizeof kCCSIDs / sizeof kCCSIDs[0];
constexpr size_t kGuard = 64;
constexpr unsigned char kFill = 0xA5;

TavClCodePage2CodePageConverter& converterFor(uint32_t source, uint32_t target) {
  static std::map<std::pair<uint32_t, uint32_t>, std::unique_ptr<TavClCodePage2CodePageConverter>>
      converters;
  auto& slot = converters[{source, target}];
  if (!slot) {
    slot = std::make_unique<TavClCodePage2CodePageConverter>(
        TavClCCSID(static_cast<TavEnCCSID>(source)), TavClCCSID(static_cast<TavEnCCSID>(target)));
  }
  return *slot;
}

[[noreturn]] void fail(const char* what, uint32_t source, uint32_t target, size_t inSize,
                       size_t outSize) {
  std::fprintf(stderr, "%s: %u to %u, %zu input bytes, output size %zu\n", what, source, target,
               inSize, outSize);
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 4) return 0;
  const uint32_t source = kCCSIDs[data[0] % kCCSIDCount];
  const uint32_t target = kCCSIDs[data[1] % kCCSIDCount];
  const size_t outSize = data[2] | (static_cast<size_t>(data[3]) << 8);
  const size_t inSize = size - 4;
  std::unique_ptr<char[]> input(new char[inSize == 0 ? 1 : inSize]);
  if (inSize != 0) std::memcpy(input.get(), data + 4, inSize);
  std::vector<unsigned char> output(outSize + kGuard, kFill);

  TavClCodePage2CodePageConverter& converter = converterFor(source, target);
  const char* cursor = input.get();
  const size_t written =
      converter.convertBytes(reinterpret_cast<char*>(output.data()), outSize, &cursor, inSize);
  if (written > outSize)
    fail("more bytes written than the output holds", source, target, inSize, outSize);
  if (cursor < input.get() || cursor > input.get() + inSize) {
    fail("input pointer moved outside the input", source, target, inSize, outSize);
  }
  for (size_t i = outSize; i < output.size(); ++i) {
    if (output[i] != kFill) fail("guard region changed", source, target, inSize, outSize);
  }
  if (source != target && !converter.isSupported() && written != 0) {
    fail("an unsupported converter converted", source, target, inSize, outSize);
  }
  return 0;
}
