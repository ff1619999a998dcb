// Fuzzes UTF-8 to UCS-2 with random text and random output sizes (fuzz_codepage_transcode.h has
// the input layout and the checks every conversion passes). Beyond those: the output is whole
// units; with room enough a conversion either takes all the input or leaves a cut sequence of
// one to three bytes; and the units form whole surrogate pairs only, since ill-formed input
// becomes U+FFFD and never an unpaired surrogate.

#include "fuzz_codepage_transcode.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2 || size > tav_fuzz::kMaxTranscodeInput) return 0;
  const std::size_t inSize = size - 2;
  const auto ample = tav_fuzz::checkConversion(tav::codepage::utf8ToUcs2, data, size);
  if (ample.out.size() % 2 != 0) tav_fuzz::fail("wrote half a unit", inSize, 0);
  const std::size_t left = inSize - ample.consumed;
  const bool cut = ample.status == tav::codepage::TranscodeStatus::incomplete;
  if (cut ? left == 0 || left > 3 : left != 0) {
    tav_fuzz::fail("left input behind that is no cut sequence", inSize, 0);
  }
  std::vector<std::uint16_t> units(ample.out.size() / 2);
  if (!units.empty()) std::memcpy(units.data(), ample.out.data(), ample.out.size());
  for (std::size_t i = 0; i < units.size(); ++i) {
    const bool high = (units[i] & 0xFC00) == 0xD800;
    const bool low = (units[i] & 0xFC00) == 0xDC00;
    if (low || (high && (i + 1 == units.size() || (units[i + 1] & 0xFC00) != 0xDC00))) {
      tav_fuzz::fail("wrote an unpaired surrogate", inSize, 0);
    }
    if (high) ++i;
  }
  return 0;
}
