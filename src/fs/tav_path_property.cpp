// tav_path_property.cpp - path styles, the server part and the absolute/normalised tests.

#include <cstring>

#include "tav_filename.h"
#include "tav_fs_os.h"
#include "tav_path_text.h"

using tav::path::isAsciiLetter;

TavEnPathStyle TavClPathProperty::getNativeStyle() { return tav::os::nativePathStyle(); }

// A drive or a backslash means backslash style even when slashes are present too, since
// Windows accepts both; a separator-free name is taken as a name of the running platform.
TavEnPathStyle TavClPathProperty::getStyle(const char* text) const {
  if (text == nullptr) return getNativeStyle();
  if (isAsciiLetter(text[0]) && text[1] == ':') return TAV_PATH_STYLE_BACKSLASH;
  if (std::strchr(text, '\\') != nullptr) return TAV_PATH_STYLE_BACKSLASH;
  if (std::strchr(text, '/') != nullptr) return TAV_PATH_STYLE_SLASH;
  return getNativeStyle();
}

char TavClPathProperty::getPathSep(const char* text) const {
  return tav::path::separatorOf(getStyle(text));
}

void TavClPathProperty::init(char* text) {
  textStart = text;
  determinePath();
  determineStyle();
}

// A server part without a path after it is still a backslash-style name.
void TavClPathProperty::determineStyle() {
  style = hasServer() && *pathStart == '\0' ? TAV_PATH_STYLE_BACKSLASH : getStyle(pathStart);
}

void TavClPathProperty::determinePath() {
  pathStart = textStart;
  if (textStart[0] != '\\' || textStart[1] != '\\' || textStart[2] == '\0') return;
  // The server name takes at least the third character: the backslash that ends it is searched
  // from the fourth, and the share name runs up to the next one.
  char* afterServer = std::strchr(textStart + 3, '\\');
  if (afterServer == nullptr) return;
  char* afterShare = std::strchr(afterServer + 1, '\\');
  pathStart = afterShare != nullptr ? afterShare : textStart + std::strlen(textStart);
}

void TavClPathProperty::rebaseFrom(const TavClPathProperty& other, char* buffer) {
  textStart = buffer;
  pathStart = buffer + (other.pathStart - other.textStart);
  style = other.style;
}

bool TavClPathProperty::hasDrive() const { return pathStart[0] != '\0' && pathStart[1] == ':'; }

bool TavClPathProperty::isAbsolute() const {
  if (hasServer()) return true;
  if (style == TAV_PATH_STYLE_SLASH) return pathStart[0] == '/';
  return hasDrive() && pathStart[2] == '\\';
}

bool TavClPathProperty::isNormalized() const {
  const char foreign = getNativeStyle() == TAV_PATH_STYLE_SLASH ? '\\' : '/';
  return std::strchr(pathStart, foreign) == nullptr;
}

void TavClPathProperty::normalizePath(char* text) { normalizePath(text, getNativeStyle()); }

void TavClPathProperty::normalizePath(char* text, TavEnPathStyle toStyle) {
  if (text == nullptr) return;
  const char wanted = tav::path::separatorOf(toStyle);
  const char foreign = wanted == '/' ? '\\' : '/';
  for (char* c = std::strchr(text, foreign); c != nullptr; c = std::strchr(c + 1, foreign)) {
    *c = wanted;
  }
}
