// tav_ini_names.h - case-blind name comparison and hashing for configuration sections/options.
//
// Names are single-byte text compared ASCII-wise ignoring letter case, independent of the locale.

#ifndef TAV_INI_NAMES_H
#define TAV_INI_NAMES_H

#include <stddef.h>

inline char tavIniFoldCase(char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

inline bool tavIniNamesEqual(const char* a, const char* b) {
  for (; tavIniFoldCase(*a) == tavIniFoldCase(*b); ++a, ++b) {
    if (*a == '\0') return true;
  }
  return false;
}

inline size_t tavIniNameHash(const char* name) {
  size_t hash = 14695981039346656037ull & static_cast<size_t>(-1);
  for (; *name != '\0'; ++name)
    hash = (hash ^ static_cast<unsigned char>(tavIniFoldCase(*name))) * 1099511628211ull;
  return hash;
}

#endif  // TAV_INI_NAMES_H
