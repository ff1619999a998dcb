// tav_filename_parts.cpp - a file name's buffer, its parts, and comparing parts.

#include <cstring>

#include "tav_filename.h"
#include "tav_fs_os.h"
#include "tav_path_text.h"
#include "tav_utils.h"

using tav::path::ignoresCase;

TavClFilenameABase::TavClFilenameABase() { init(nullptr); }

TavClFilenameABase::TavClFilenameABase(const char* fullName) { init(fullName); }

TavClFilenameABase::TavClFilenameABase(const char* fullName, size_t maxLength) {
  init(fullName, maxLength < TAV_PATH_MAX_LENGTH ? maxLength : TAV_PATH_MAX_LENGTH);
}

TavClFilenameABase::TavClFilenameABase(const char* path, const char* name, const char* extension) {
  init(path, name, extension);
}

TavClFilenameABase::TavClFilenameABase(const TavClFilenameABase& other) : TavClPathProperty() {
  std::memcpy(text, other.text, other.length + 1);
  rebaseParts(other);
}

TavClFilenameABase& TavClFilenameABase::operator=(const TavClFilenameABase& other) {
  if (this == &other) return *this;
  std::memcpy(text, other.text, other.length + 1);
  rebaseParts(other);
  return *this;
}

// Every pointer keeps its distance from the start of the buffer.
void TavClFilenameABase::rebaseParts(const TavClFilenameABase& other) {
  length = other.length;
  rebaseFrom(other, text);
  baseNameStart = text + (other.baseNameStart - other.text);
  extensionStart = text + (other.extensionStart - other.text);
}

// The name may lie in this object's own buffer (a name re-read from a part of itself).
void TavClFilenameABase::init(const char* fullName, size_t maxLength) {
  const size_t count = tav::path::boundedLength(fullName, maxLength);
  if (count != 0) std::memmove(text, fullName, count);
  text[count] = '\0';
  length = static_cast<uint32_t>(count);
  determineParts();
}

// The base name follows the last backslash; only a name without any follows the last slash, so
// that a slash inside a backslash-style name stays part of the name.
//
// The same two searches give the style: a server part implies backslashes, and without one the
// path part is the whole text, so "the path part starts with a drive or holds a backslash" and
// "it holds a slash" are answered by them. This is TavClPathProperty::init with the text read
// twice instead of five times, which is most of the cost of parsing a short name.
void TavClFilenameABase::determineParts() {
  textStart = text;
  determinePath();
  char* lastBackslash = std::strrchr(text, '\\');
  char* lastSlash = lastBackslash == nullptr ? std::strrchr(text, '/') : nullptr;
  if (lastBackslash != nullptr || (tav::path::isAsciiLetter(text[0]) && text[1] == ':')) {
    style = TAV_PATH_STYLE_BACKSLASH;
  } else {
    style = lastSlash != nullptr ? TAV_PATH_STYLE_SLASH : getNativeStyle();
  }
  if (lastBackslash != nullptr) {
    baseNameStart = lastBackslash + 1;
  } else {
    baseNameStart = lastSlash != nullptr ? lastSlash + 1 : pathStart;
  }
  determineExtension();
}

void TavClFilenameABase::determineExtension() {
  char* lastDot = std::strrchr(baseNameStart, '.');
  extensionStart = lastDot != nullptr ? lastDot : text + length;
}

void TavClFilenameABase::extractServer(char* out) const {
  const size_t count = static_cast<size_t>(pathStart - textStart);
  std::memcpy(out, text, count);
  out[count] = '\0';
}

void TavClFilenameABase::extractPath(char* out, bool withSeparator) const {
  size_t count = 0;
  // A base name that does not start the path part follows a separator.
  if (baseNameStart != pathStart) {
    count = static_cast<size_t>(baseNameStart - text) - (withSeparator ? 0 : 1);
  }
  std::memcpy(out, text, count);
  out[count] = '\0';
}

void TavClFilenameABase::extractBaseName(char* out) const {
  const size_t count = getBaseNameLength();
  std::memcpy(out, baseNameStart, count);
  out[count] = '\0';
}

// A base name found inside the server part ("\\\\server\\share") leaves no path part to compare.
bool TavClFilenameABase::matchesPath(const TavClFilenameABase& other) const {
  const size_t count =
      baseNameStart > pathStart ? static_cast<size_t>(baseNameStart - pathStart) : 0;
  return tav::path::equalPrefix(pathStart, other.pathStart, count, ignoresCase(style));
}

bool TavClFilenameABase::matchesBase(const TavClFilenameABase& other) const {
  const size_t count = getBaseNameLength();
  return count == other.getBaseNameLength() &&
         tav::path::equalPrefix(baseNameStart, other.baseNameStart, count, ignoresCase(style));
}

bool TavClFilenameABase::matchesExtension(const char* extension) const {
  if (extension == nullptr) extension = "";
  const char* own = extensionStart;
  if (*extension != '.' && *own == '.') ++own;
  const size_t count = std::strlen(own);
  return std::strlen(extension) == count &&
         tav::path::equalPrefix(own, extension, count, ignoresCase(style));
}

bool TavClFilenameABase::matchesWildcardPattern(const char* pattern) const {
  return tavMatchesWildcardPattern(pattern != nullptr ? pattern : "", baseNameStart,
                                   !ignoresCase(style));
}

bool TavClFilenameABase::isExistent() const { return length != 0 && tav::os::pathExists(text); }
