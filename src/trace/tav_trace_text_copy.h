// tav_trace_text_copy.h - the texts of a trace call, measured and copied without a library call.
//
// Every trace record measures its message and origin and copies them. The texts are short, and
// through the C library that costs four calls, each through the dynamic linker's table, which on
// the record's path cost more than the work. On x86-64 (and any processor with SSE2) the length
// is found sixteen bytes per step from aligned blocks; elsewhere the C library does the work,
// chosen when compiling.

#ifndef TAV_TRACE_TEXT_COPY_H
#define TAV_TRACE_TEXT_COPY_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tav::trace {

#if defined(__SSE2__)
// The length of text, at most limit. Reads whole aligned 16-byte blocks: a block that holds a byte
// of the text lies in the same page as that byte, so reading all of it cannot fault, but it may
// read bytes after the terminator that belong to something else. The sanitizers are told not to
// count those reads, which decide nothing: only bytes up to the terminator are looked at.
__attribute__((no_sanitize("address", "thread"))) inline size_t boundedTextLength(const char* text,
                                                                                   size_t limit) {
  const uintptr_t address = reinterpret_cast<uintptr_t>(text);
  const size_t before = address & 15;
  const auto* block = reinterpret_cast<const __m128i*>(address - before);
  const __m128i zero = _mm_setzero_si128();
  // The first block, without the bytes before the text.
  unsigned nulls =
      static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(_mm_load_si128(block), zero))) >>
      before;
  size_t length = 0;
  size_t inBlock = 16 - before;
  while (nulls == 0) {
    length += inBlock;
    if (length >= limit) return limit;
    ++block;
    nulls = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(_mm_load_si128(block), zero)));
    inBlock = 16;
  }
  length += static_cast<size_t>(__builtin_ctz(nulls));
  return length < limit ? length : limit;
}

// Copies count bytes from from to to, reading and writing only those: short runs such as texts
// without a call, longer ones in 16-byte moves.
inline void copyShortBytes(uint8_t* to, const char* from, size_t count) {
  // Two overlapping moves of a power of two cover every count between it and twice it.
  if (count >= 16) {
    for (size_t done = 0; done + 16 < count; done += 16) {
      _mm_storeu_si128(reinterpret_cast<__m128i*>(to + done),
                       _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + done)));
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + count - 16),
                     _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + count - 16)));
  } else if (count >= 8) {
    uint64_t head;
    uint64_t tail;
    std::memcpy(&head, from, 8);
    std::memcpy(&tail, from + count - 8, 8);
    std::memcpy(to, &head, 8);
    std::memcpy(to + count - 8, &tail, 8);
  } else if (count >= 4) {
    uint32_t head;
    uint32_t tail;
    std::memcpy(&head, from, 4);
    std::memcpy(&tail, from + count - 4, 4);
    std::memcpy(to, &head, 4);
    std::memcpy(to + count - 4, &tail, 4);
  } else {
    for (size_t i = 0; i < count; ++i) to[i] = static_cast<uint8_t>(from[i]);
  }
}
#else
inline size_t boundedTextLength(const char* text, size_t limit) { return strnlen(text, limit); }

inline void copyShortBytes(uint8_t* to, const char* from, size_t count) {
  std::memcpy(to, from, count);
}
#endif

}  // namespace tav::trace

#endif  // TAV_TRACE_TEXT_COPY_H
