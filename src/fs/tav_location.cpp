// tav_location.cpp - directories: a path that ends with a separator.

#include <cstring>

#include "tav_filename.h"
#include "tav_fs_os.h"
#include "tav_path_text.h"

TavClLocation::TavClLocation() {
  text[0] = '\0';
  init(false);
}

TavClLocation::TavClLocation(const char* source, bool normalize) {
  copyText(source, TAV_PATH_MAX_LENGTH);
  init(normalize);
}

TavClLocation::TavClLocation(const char* source, size_t maxLength, bool normalize) {
  copyText(source, maxLength < TAV_PATH_MAX_LENGTH ? maxLength : TAV_PATH_MAX_LENGTH);
  init(normalize);
}

TavClLocation::TavClLocation(const TavClFilenameABase& name, bool normalize) {
  copyText(name.getAsCString(), static_cast<size_t>(name.getName() - name.getAsCString()));
  init(normalize);
}

TavClLocation::TavClLocation(const TavClLocation& other) : TavClPathProperty() {
  std::memcpy(text, other.text, other.length + 1);
  length = other.length;
  rebaseFrom(other, text);
}

TavClLocation& TavClLocation::operator=(const TavClLocation& other) {
  if (this == &other) return *this;
  std::memcpy(text, other.text, other.length + 1);
  length = other.length;
  rebaseFrom(other, text);
  return *this;
}

TavClLocation& TavClLocation::operator=(const char* source) {
  copyText(source, TAV_PATH_MAX_LENGTH);
  init(false);
  return *this;
}

// The source may lie in this object's own buffer (a location assigned a part of itself).
void TavClLocation::copyText(const char* source, size_t maxLength) {
  const size_t count = tav::path::boundedLength(source, maxLength);
  if (count != 0) std::memmove(text, source, count);
  text[count] = '\0';
}

void TavClLocation::init(bool normalize) {
  TavClPathProperty::init(text);
  length = static_cast<uint32_t>(std::strlen(text));
  if (length != 0 && length < TAV_PATH_MAX_LENGTH &&
      !tav::path::isSeparatorIn(text[length - 1], style)) {
    text[length++] = tav::path::separatorOf(style);
    text[length] = '\0';
  }
  if (normalize) {
    normalizePath(pathStart);
    determineStyle();
  }
}

bool TavClLocation::isExistent() const { return length != 0 && tav::os::pathExists(text); }

bool TavClLocation::isRoot() const {
  if (!isAbsolute()) return false;
  if (hasServer()) return std::strlen(pathStart) == 1;
  return hasDrive() ? length == 3 : length == 1;
}
