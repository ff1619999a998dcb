// tav_relative_path.cpp - relative-path test and expansion on a given path style.
//
// The result is built in a scratch buffer large enough for the current directory and the whole
// text, so a component that ".." later removes again never runs out of room; only the final
// result must fit the caller's 260 characters.

#include "tav_relative_path.h"

#include <cstring>

#include "tav_path_text.h"

namespace {

constexpr size_t kMax = TAV_PATH_MAX_LENGTH;

// Where the path part of a text begins, after a "\\\\server\\share" part (backslash style only).
size_t serverPartLength(const char* text, size_t length, TavEnPathStyle style) {
  if (style != TAV_PATH_STYLE_BACKSLASH || length < 3 || text[0] != '\\' || text[1] != '\\') {
    return 0;
  }
  const void* afterServer = std::memchr(text + 3, '\\', length - 3);
  if (afterServer == nullptr) return 0;
  const char* shareStart = static_cast<const char*>(afterServer) + 1;
  const void* afterShare = std::memchr(shareStart, '\\', length - (shareStart - text));
  return afterShare != nullptr ? static_cast<size_t>(static_cast<const char*>(afterShare) - text)
                               : length;
}

bool hasDriveAt(const char* pathPart, size_t remaining) {
  return remaining >= 2 && pathPart[1] == ':';
}

struct Shape {
  size_t serverLength;  // the server part, 0 when there is none
  bool drive;           // a drive starts the path part
  bool absolute;
};

Shape shapeOf(const char* text, size_t length, TavEnPathStyle style) {
  Shape shape{serverPartLength(text, length, style), false, false};
  if (style == TAV_PATH_STYLE_SLASH) {
    shape.absolute = length != 0 && text[0] == '/';
    return shape;
  }
  const char* pathPart = text + shape.serverLength;
  const size_t remaining = length - shape.serverLength;
  shape.drive = hasDriveAt(pathPart, remaining);
  shape.absolute =
      shape.serverLength != 0 || (shape.drive && remaining >= 3 && pathPart[2] == '\\');
  return shape;
}

bool fail(char* text) {
  text[0] = '\0';
  return false;
}

}  // namespace

namespace tav::path {

bool isRelativePathIn(const char* text, TavEnPathStyle style) {
  if (text == nullptr) return false;
  const size_t length = boundedLength(text, kMax);
  if (!shapeOf(text, length, style).absolute) return true;
  const char separator = separatorOf(style);
  for (size_t i = 0; i + 1 < length; ++i) {
    if (text[i] == '.' && text[i + 1] == separator) return true;
  }
  return false;
}

bool expandRelativePathIn(char* text, TavEnPathStyle style, const char* currentDirectory) {
  if (text == nullptr) return false;
  const char separator = separatorOf(style);
  const size_t length = boundedLength(text, kMax);
  const Shape shape = shapeOf(text, length, style);

  // The result holds at most the current directory (260), and for each component of the text a
  // separator and the component: never more than the text's own 260 characters.
  char result[2 * kMax + 2];
  size_t used = 0;
  size_t floor = 0;  // the result is never cut below this: a server part stays
  size_t restStart = 0;
  size_t keptDrive = 0;  // characters of text kept in front of the result
  if (!shape.absolute) {
    used = boundedLength(currentDirectory, kMax);
    if (used != 0) std::memcpy(result, currentDirectory, used);
    if (used != 0 && result[used - 1] == separator) --used;
    floor = serverPartLength(result, used, style);
  } else if (shape.serverLength != 0 || !shape.drive) {
    used = shape.serverLength;
    std::memcpy(result, text, used);
    floor = used;
    restStart = used < length ? used + 1 : length;
  } else {
    keptDrive = 2;
    restStart = 3;
  }

  // Each component ends at a separator; what follows the last separator is dropped.
  size_t componentStart = restStart;
  for (size_t i = restStart; i < length; ++i) {
    if (text[i] != separator) continue;
    const size_t componentLength = i - componentStart;
    const char* component = text + componentStart;
    componentStart = i + 1;
    if (componentLength == 0) continue;
    if (component[componentLength - 1] != '.') {
      result[used++] = separator;
      std::memcpy(result + used, component, componentLength);
      used += componentLength;
    } else if (componentLength >= 2 && component[componentLength - 2] == '.') {
      size_t cut = used;
      while (cut > floor && result[cut - 1] != separator) --cut;
      if (cut <= floor) return fail(text);
      used = cut - 1;
    }
  }

  if (keptDrive + used + 1 > kMax) return fail(text);
  std::memcpy(text + keptDrive, result, used);
  text[keptDrive + used] = separator;
  text[keptDrive + used + 1] = '\0';
  return true;
}

unsigned int countSubDirectories(const char* pathPart, char separator) {
  unsigned int separators = 0;
  for (const char* c = pathPart; c != nullptr && *c != '\0'; ++c) {
    if (*c == separator) ++separators;
  }
  return separators == 0 ? 0 : separators - 1;
}

}  // namespace tav::path
