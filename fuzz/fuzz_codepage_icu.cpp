// Fuzzes the two ICU routines and the opening of ICU converters by CCSID: any input, any output
// size, and the output followed by a guard region that must stay unchanged. Also any CCSID to
// tavGetICUConverter: it opens a converter or reports an error, never both, never neither.
//
// Input layout: byte 0 picks the CCSID from the list below (bit 7 set: the converter is from
// UCS-2 into it, else from it into UCS-2), bytes 1 and 2 are the output size (little-endian),
// byte 3 is the offset of the buffers from an aligned address (bit 0 input, bit 1 output),
// bytes 4 and 5 are a CCSID for tavGetICUConverter, the rest is the text.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <vector>

#include "fuzz_converters.h"
#include "tav_codepage.h"

namespace {

// Single-byte EBCDIC and ASCII, double-byte EBCDIC and ASCII, and the ones opened by name.
const uint32_t kCCSIDs[] = {37, 500, 850, 1252, 930, 1386, 33722, 942, 943, 1392, 65502};
constexpr size_t kCCSIDCount = sizeof kCCSIDs / sizeof kCCSIDs[0];
using tav_fuzz::converterFor;
using tav_fuzz::fail;
using tav_fuzz::kFill;
using tav_fuzz::kGuard;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 6) return 0;
  const uint32_t ccsid = kCCSIDs[(data[0] & 0x7F) % kCCSIDCount];
  const bool fromUnicode = (data[0] & 0x80) != 0;
  const size_t outSize = data[1] | (static_cast<size_t>(data[2]) << 8);
  const size_t inOffset = data[3] & 1;
  const size_t outOffset = (data[3] >> 1) & 1;
  const unsigned int anyCCSID = data[4] | (static_cast<unsigned int>(data[5]) << 8);
  const size_t inSize = size - 6;

  _TavStError error{NO_ERROR, TAV_CLASS_UNKNOWN};
  void* opened = tavGetICUConverter(anyCCSID, error);
  if ((opened == nullptr) == (error.id == NO_ERROR))
    fail("open result and error disagree", anyCCSID, 0, 0);
  tavDeleteICUConverter(opened);

  // The input sits at the end of its block, so that a read past it leaves the block.
  std::unique_ptr<char[]> inputBlock(new char[inOffset + inSize + 1]);
  char* input = inputBlock.get() + inOffset;
  if (inSize != 0) std::memcpy(input, data + 6, inSize);
  std::vector<unsigned char> outputBlock(outOffset + outSize + kGuard, kFill);
  char* output = reinterpret_cast<char*>(outputBlock.data()) + outOffset;

  TavClConverterABase* converter = converterFor(ccsid, fromUnicode);
  const char* cursor = input;
  const size_t written = converter->convertBytes(output, outSize, &cursor, inSize);
  if (written > outSize) fail("more bytes written than the output holds", ccsid, inSize, outSize);
  if (cursor < input || cursor > input + inSize) {
    fail("input pointer moved outside the input", ccsid, inSize, outSize);
  }
  for (size_t i = outOffset + outSize; i < outputBlock.size(); ++i) {
    if (outputBlock[i] != kFill) fail("guard region changed", ccsid, inSize, outSize);
  }
  if (outOffset == 1 && outputBlock[0] != kFill)
    fail("wrote before the output", ccsid, inSize, outSize);
  return 0;
}
