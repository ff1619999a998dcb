// tav_ascii_runs.h - converting runs of ASCII between UTF-8 and UCS-2 many characters at a time.
//
// Most text is mostly ASCII, and an ASCII character is the same number in both forms: one byte
// in UTF-8, one unit in UCS-2. These two helpers take the run of ASCII at the start of their
// input as far as both buffers allow and leave everything else to the character-at-a-time code.
// On x86-64 (and any processor with SSE2) they work 16 characters per step; elsewhere they are
// plain loops, chosen when compiling.
//
// The SSE2 steps store whole 16-character blocks. When a block holds a non-ASCII character, the
// units or bytes behind the run are written too, always inside the output size; the caller
// overwrites them with the characters that come next or leaves them behind what it reports as
// written.

#ifndef TAV_ASCII_RUNS_H
#define TAV_ASCII_RUNS_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tav::codepage {

// Widens the ASCII bytes at the start of in (inSize bytes) into UCS-2 units in host order at
// out (outSize bytes). Returns the count of bytes converted; it wrote twice as many.
inline size_t widenAsciiRun(const uint8_t* in, size_t inSize, uint8_t* out, size_t outSize) {
  size_t done = 0;
#if defined(__SSE2__)
  const __m128i zero = _mm_setzero_si128();
  while (inSize - done >= 16 && outSize - 2 * done >= 32) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + done));
    auto* units = reinterpret_cast<__m128i*>(out + 2 * done);
    _mm_storeu_si128(units, _mm_unpacklo_epi8(bytes, zero));
    _mm_storeu_si128(units + 1, _mm_unpackhi_epi8(bytes, zero));
    const int nonAscii = _mm_movemask_epi8(bytes);
    if (nonAscii != 0) return done + static_cast<size_t>(__builtin_ctz(nonAscii));
    done += 16;
  }
#endif
  for (; done < inSize && outSize - 2 * done >= 2 && in[done] < 0x80; ++done) {
    const uint16_t unit = in[done];
    std::memcpy(out + 2 * done, &unit, 2);
  }
  return done;
}

// Narrows the ASCII units at the start of in (units of UCS-2 in host order) into bytes at out
// (outSize bytes). Returns the count of units converted; it wrote as many bytes.
inline size_t narrowAsciiRun(const uint8_t* in, size_t units, uint8_t* out, size_t outSize) {
  size_t done = 0;
#if defined(__SSE2__)
  const __m128i highBits = _mm_set1_epi16(static_cast<short>(0xFF80));
  const __m128i zero = _mm_setzero_si128();
  while (units - done >= 16 && outSize - done >= 16) {
    const auto* from = reinterpret_cast<const __m128i*>(in + 2 * done);
    const __m128i low = _mm_loadu_si128(from);
    const __m128i high = _mm_loadu_si128(from + 1);
    // Units below 0x80 pack to themselves; the others saturate, but only bytes that the ASCII
    // run covers count.
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + done), _mm_packus_epi16(low, high));
    const __m128i asciiLow = _mm_cmpeq_epi16(_mm_and_si128(low, highBits), zero);
    const __m128i asciiHigh = _mm_cmpeq_epi16(_mm_and_si128(high, highBits), zero);
    const int ascii = _mm_movemask_epi8(_mm_packs_epi16(asciiLow, asciiHigh));
    if (ascii != 0xFFFF) return done + static_cast<size_t>(__builtin_ctz(~ascii));
    done += 16;
  }
#endif
  for (; done < units && done < outSize; ++done) {
    uint16_t unit;
    std::memcpy(&unit, in + 2 * done, 2);
    if (unit >= 0x80) break;
    out[done] = static_cast<uint8_t>(unit);
  }
  return done;
}

}  // namespace tav::codepage

#endif  // TAV_ASCII_RUNS_H
