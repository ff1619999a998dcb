// tav_path_text.h - character rules shared by the file-name classes.
//
// Texts are copied with an explicit limit and compared with the case rule of a path style.
// Nothing here depends on the host: both styles' rules hold on every platform.

#ifndef TAV_PATH_TEXT_H
#define TAV_PATH_TEXT_H

#include <cstddef>
#include <cstring>

#include "tav_filename.h"

namespace tav::path {

inline bool isAsciiLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

inline char separatorOf(TavEnPathStyle style) { return style == TAV_PATH_STYLE_SLASH ? '/' : '\\'; }

// Backslash style is the Windows one, where '/' separates too; in slash style a backslash is an
// ordinary character.
inline bool isSeparatorIn(char c, TavEnPathStyle style) {
  return c == '/' || (c == '\\' && style == TAV_PATH_STYLE_BACKSLASH);
}

// The length of text, at most maxLength; a null text is empty.
inline size_t boundedLength(const char* text, size_t maxLength) {
  if (text == nullptr) return 0;
  const void* end = std::memchr(text, '\0', maxLength);
  return end != nullptr ? static_cast<size_t>(static_cast<const char*>(end) - text) : maxLength;
}

// Appends as much of source as fits into a buffer of TAV_PATH_BUFFER_SIZE holding used
// characters; returns the new length. The buffer is not terminated.
inline size_t appendCut(char* buffer, size_t used, const char* source) {
  const size_t count = boundedLength(source, TAV_PATH_MAX_LENGTH - used);
  if (count != 0) std::memcpy(buffer + used, source, count);  // a null source has nothing
  return used + count;
}

inline char upperAscii(char c) {
  return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
}

// Whether the first count characters of left and right agree. Stops at the first difference,
// so a shorter right text is never read past its terminator.
inline bool equalPrefix(const char* left, const char* right, size_t count, bool ignoreCase) {
  for (size_t i = 0; i < count; ++i) {
    const char l = left[i];
    const char r = right[i];
    if (l == r) {
      if (l == '\0') return true;
      continue;
    }
    if (!ignoreCase || upperAscii(l) != upperAscii(r)) return false;
  }
  return true;
}

inline bool ignoresCase(TavEnPathStyle style) { return style == TAV_PATH_STYLE_BACKSLASH; }

}  // namespace tav::path

#endif  // TAV_PATH_TEXT_H
