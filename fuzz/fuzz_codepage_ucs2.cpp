// Fuzzes UCS-2 to UTF-8 with random units, odd sizes and random output sizes
// (fuzz_codepage_transcode.h has the input layout and the checks every conversion passes).
// Beyond those: with room enough all whole units are consumed and an odd size, and only that,
// reports incomplete; and the output is well-formed UTF-8, which shows in decoding it and
// encoding the result again giving the same bytes (an ill-formed byte would come back as
// U+FFFD).

#include "fuzz_codepage_transcode.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2 || size > tav_fuzz::kMaxTranscodeInput) return 0;
  const std::size_t inSize = size - 2;
  const auto ample = tav_fuzz::checkConversion(tav::codepage::ucs2ToUtf8, data, size);
  const bool odd = inSize % 2 != 0;
  if (ample.consumed != inSize - (odd ? 1 : 0) ||
      (ample.status == tav::codepage::TranscodeStatus::incomplete) != odd) {
    tav_fuzz::fail("did not take every whole unit, or misreported the odd size", inSize, 0);
  }
  const auto units =
      tav_fuzz::convertGuarded(tav::codepage::utf8ToUcs2, ample.out, 2 * ample.out.size());
  const auto again =
      tav_fuzz::convertGuarded(tav::codepage::ucs2ToUtf8, units.out, 2 * units.out.size());
  if (units.status != tav::codepage::TranscodeStatus::ok || again.out != ample.out) {
    tav_fuzz::fail("wrote ill-formed UTF-8", inSize, 0);
  }
  return 0;
}
