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

// The most bytes copyBoundedText writes past the length it gives.
constexpr size_t kBoundedTextOvershoot = 16;

// Copies text to to, up to its terminator or limit characters, and gives the length copied, at
// most limit. Reads and writes 16 bytes per step, so it writes up to kBoundedTextOvershoot bytes
// past the length, which the caller's room must allow and which it overwrites or ignores. A
// step never reads across a 4 KiB boundary, and so never into a page the text does not reach
// (pages are never smaller): within a page, the bytes after the terminator are only copied, not
// looked at, and the sanitizers are told not to count those reads.
__attribute__((no_sanitize("address", "thread"))) inline size_t copyBoundedText(uint8_t* to,
                                                                                  const char* text,
                                                                                  size_t limit) {
  constexpr uintptr_t kPage = 4096;
  const __m128i zero = _mm_setzero_si128();
  size_t done = 0;
  while (done < limit) {
    const char* from = text + done;
    if ((reinterpret_cast<uintptr_t>(from) & (kPage - 1)) > kPage - 16) {
      // The next 16 bytes would reach into the next page: byte by byte up to it.
      size_t step = kPage - (reinterpret_cast<uintptr_t>(from) & (kPage - 1));
      for (; step != 0 && done < limit; --step, ++done) {
        to[done] = static_cast<uint8_t>(text[done]);
        if (text[done] == '\0') return done;
      }
      continue;
    }
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + done), block);
    const unsigned nulls = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(block, zero)));
    if (nulls != 0) {
      done += static_cast<size_t>(__builtin_ctz(nulls));
      return done < limit ? done : limit;
    }
    done += 16;
  }
  return limit;
}

// Copies count bytes, at least one Word and at most two, as the first and the last Word.
template <typename Word>
inline void copyHeadAndTail(uint8_t* to, const char* from, size_t count) {
  Word head;
  Word tail;
  std::memcpy(&head, from, sizeof(Word));
  std::memcpy(&tail, from + count - sizeof(Word), sizeof(Word));
  std::memcpy(to, &head, sizeof(Word));
  std::memcpy(to + count - sizeof(Word), &tail, sizeof(Word));
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
    copyHeadAndTail<uint64_t>(to, from, count);
  } else if (count >= 4) {
    copyHeadAndTail<uint32_t>(to, from, count);
  } else {
    for (size_t i = 0; i < count; ++i) to[i] = static_cast<uint8_t>(from[i]);
  }
}
#else
constexpr size_t kBoundedTextOvershoot = 0;

inline size_t boundedTextLength(const char* text, size_t limit) { return strnlen(text, limit); }

inline size_t copyBoundedText(uint8_t* to, const char* text, size_t limit) {
  const size_t length = strnlen(text, limit);
  std::memcpy(to, text, length);
  return length;
}

inline void copyShortBytes(uint8_t* to, const char* from, size_t count) {
  std::memcpy(to, from, count);
}
#endif

}  // namespace tav::trace

#endif  // TAV_TRACE_TEXT_COPY_H
