// tav_utf_transcode.h - UTF-8 to UCS-2 and UCS-2 to UTF-8, the arithmetic conversions.
//
// Both work on byte buffers with explicit sizes, never read past inSize nor write past outSize
// (any sizes, 0, 1 and odd ones included), and report how far they got, so that the converter
// routines built on them can advance the caller's input pointer and set their error. UCS-2 is
// in host byte order, two bytes per unit; characters above U+FFFF travel as surrogate pairs.
//
// UTF-8 to UCS-2 decodes only well-formed UTF-8. A lead byte that counted its trailing bytes
// without checking them would let overlong forms, encoded surrogates, values above U+10FFFF,
// 5- and 6-byte forms and stray continuation bytes decode to characters that the bytes do not
// name, so that one text passes a check made on another. Instead every ill-formed sequence
// becomes one U+FFFD per maximal ill-formed subpart (the longest start of a well-formed
// sequence found there, or else one byte), as the Unicode standard recommends and ICU does.
// Well-formed input converts unchanged. A well-formed start of a sequence cut by the end of the
// input is not converted: the result is `incomplete` and `consumed` stops before it, so that the
// caller can hand it in again with the rest of its bytes.
//
// UCS-2 to UTF-8 writes a high surrogate followed by a low one as one 4-byte character. A
// surrogate without its partner, and the non-characters U+FDD0 to U+FDEF, U+FFFE and U+FFFF,
// are each written as U+FFFF (EF BF BF), deliberately. An odd input size converts the whole
// units and reports `incomplete`, unless the output fills first.
//
// Both stop when the output cannot hold the whole next character: the result is `tooBig` and
// `consumed` stops behind the last character converted.

#ifndef TAV_UTF_TRANSCODE_H
#define TAV_UTF_TRANSCODE_H

#include <cstddef>
#include <cstdint>

#include "tav_export.h"

namespace tav::codepage {

enum class TranscodeStatus : uint8_t { ok, incomplete, tooBig };

struct TranscodeResult {
  size_t written;   // output bytes written
  size_t consumed;  // input bytes consumed (the caller advances its pointer by this)
  TranscodeStatus status;
};

// UTF-8 to UCS-2 in host byte order (2 bytes per unit in out). Ill-formed sequences become
// U+FFFD, one per maximal ill-formed subpart; a well-formed start cut by the end of the input
// gives `incomplete` with `consumed` before it; a full output gives `tooBig` with `consumed`
// behind the last converted character.
TAV_INTERNAL_API TranscodeResult utf8ToUcs2(const char* in, size_t inSize, char* out,
                                            size_t outSize);

// UCS-2 in host byte order to UTF-8. Unpaired surrogates and the non-characters become
// EF BF BF; an odd input size reports `incomplete` unless the output fills first, which
// reports `tooBig`.
TAV_INTERNAL_API TranscodeResult ucs2ToUtf8(const char* in, size_t inSize, char* out,
                                            size_t outSize);

}  // namespace tav::codepage

#endif  // TAV_UTF_TRANSCODE_H
