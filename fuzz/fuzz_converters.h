// What the code page fuzz targets share: one converter per CCSID and direction, made on first
// use and kept for the run, and the report of a broken invariant.
#ifndef TAV_FUZZ_CONVERTERS_H
#define TAV_FUZZ_CONVERTERS_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>

#include "tav_codepage.h"

namespace tav_fuzz {

// Output buffers are followed by this many guard bytes of this value, which must not change.
constexpr std::size_t kGuard = 64;
constexpr unsigned char kFill = 0x5A;

inline TavClConverterABase* converterFor(std::uint32_t ccsid, bool fromUnicode) {
  static std::map<std::uint32_t, std::unique_ptr<TavClConverterABase>> converters;
  auto& slot = converters[ccsid | (fromUnicode ? 0x80000000u : 0)];
  if (!slot) {
    TavClCCSID code(static_cast<TavEnCCSID>(ccsid));
    if (fromUnicode) {
      slot = std::make_unique<TavClUnicode2CodePageConverter>(code);
    } else {
      slot = std::make_unique<TavClCodePage2UnicodeConverter>(code);
    }
  }
  return slot.get();
}

[[noreturn]] inline void fail(const char* what, std::uint32_t ccsid, std::size_t inSize,
                              std::size_t outSize) {
  std::fprintf(stderr, "%s: CCSID %u, %zu input bytes, output size %zu\n", what, ccsid, inSize,
               outSize);
  std::abort();
}

}  // namespace tav_fuzz

#endif  // TAV_FUZZ_CONVERTERS_H
