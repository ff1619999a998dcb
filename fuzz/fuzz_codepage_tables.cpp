// Fuzzes the built-in table routines: any table CCSID, any input, any output size, the output
// followed by a guard region that must stay unchanged and the input at the very end of its
// block. A conversion into a smaller output must give the start of the conversion into a large
// one, and stop with CPCONVERTER_TOO_BIG when it is shorter.
//
// Input layout: byte 0 picks the CCSID from the list below (bit 7 set: from UCS-2 into one of
// the two reverse tables, else from the code page into UCS-2), bytes 1 and 2 are the output
// size (little-endian), the rest is the text.

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

const uint32_t kTableCCSIDs[] = {37,   273,  277,  278,  280,   284,  285,  297,  500,  871,  1140,
                                 1141, 1142, 1143, 1144, 1145,  1146, 1147, 1148, 1149, 1047, 870,
                                 1153, 1025, 1026, 875,  437,   850,  852,  855,  857,  858,  860,
                                 861,  863,  865,  866,  869,   1250, 1251, 1252, 1253, 1254, 1255,
                                 1256, 1257, 1258, 819,  923,   930,  933,  935,  937,  939,  950,
                                 1386, 1390, 1392, 1399, 33722, 5026, 5035, 936,  954,  18030};
constexpr size_t kTableCount = sizeof kTableCCSIDs / sizeof kTableCCSIDs[0];
const uint32_t kReverseCCSIDs[] = {500, 850};
using tav_fuzz::converterFor;
using tav_fuzz::fail;
using tav_fuzz::kFill;
using tav_fuzz::kGuard;

struct Result {
  std::vector<unsigned char> written;
  size_t consumed;
  uint32_t error;
};

Result convert(const TavClConverterABase& converter, uint32_t ccsid, const char* input,
               size_t inSize, size_t outSize) {
  std::vector<unsigned char> block(outSize + kGuard, kFill);
  const char* cursor = input;
  size_t written =
      converter.convertBytes(reinterpret_cast<char*>(block.data()), outSize, &cursor, inSize);
  if (written > outSize) fail("more bytes written than the output holds", ccsid, inSize, outSize);
  if (cursor < input || cursor > input + inSize) {
    fail("input pointer moved outside the input", ccsid, inSize, outSize);
  }
  for (size_t i = outSize; i < block.size(); ++i) {
    if (block[i] != kFill) fail("guard region changed", ccsid, inSize, outSize);
  }
  block.resize(written);
  return {block, static_cast<size_t>(cursor - input), converter.getError().id};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  const bool fromUnicode = (data[0] & 0x80) != 0;
  const uint32_t ccsid =
      fromUnicode ? kReverseCCSIDs[data[0] & 1] : kTableCCSIDs[(data[0] & 0x7F) % kTableCount];
  const size_t outSize = data[1] | (static_cast<size_t>(data[2]) << 8);
  const size_t inSize = size - 3;

  // The input sits at the end of its block, so that a read past it leaves the block.
  std::unique_ptr<char[]> input(new char[inSize == 0 ? 1 : inSize]);
  if (inSize != 0) std::memcpy(input.get(), data + 3, inSize);

  const TavClConverterABase& converter = *converterFor(ccsid, fromUnicode);
  if (!converter.isSupported() || converter.requiresExternalICUData()) {
    fail("a table CCSID is not served by its table", ccsid, inSize, outSize);
  }
  Result part = convert(converter, ccsid, input.get(), inSize, outSize);
  Result whole = convert(converter, ccsid, input.get(), inSize, inSize * 4 + 8);
  if (whole.error == CPCONVERTER_TOO_BIG) fail("a large output is too small", ccsid, inSize, 0);
  if (!fromUnicode && whole.written.size() % 2 != 0) fail("half a unit", ccsid, inSize, 0);
  if (part.written.size() > whole.written.size() ||
      !std::equal(part.written.begin(), part.written.end(), whole.written.begin())) {
    fail("a smaller output is not the start of a large one", ccsid, inSize, outSize);
  }
  if (part.written.size() < whole.written.size() && part.error != CPCONVERTER_TOO_BIG) {
    fail("a shortened result without CPCONVERTER_TOO_BIG", ccsid, inSize, outSize);
  }
  if (part.consumed > whole.consumed) fail("consumed more with less room", ccsid, inSize, outSize);
  return 0;
}
