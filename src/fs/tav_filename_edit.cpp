// tav_filename_edit.cpp - building a file name from its parts and replacing parts.
//
// Every editor assembles the new text in a scratch buffer first, since its arguments may point
// into this object's own buffer, then finds the parts again; each text is cut at 260
// characters.

#include <cstring>

#include "tav_filename.h"
#include "tav_path_text.h"

using tav::path::appendCut;

namespace {

// Appends '.' unless the extension brings its own, then the extension; nothing for an empty one.
size_t appendExtension(char* buffer, size_t used, const char* extension) {
  if (extension == nullptr || *extension == '\0') return used;
  if (*extension != '.') used = appendCut(buffer, used, ".");
  return appendCut(buffer, used, extension);
}

}  // namespace

void TavClFilenameABase::init(const char* path, const char* name, const char* extension) {
  char scratch[TAV_PATH_BUFFER_SIZE];
  size_t used = appendCut(scratch, 0, path);
  if (used != 0 && used < TAV_PATH_MAX_LENGTH) {
    scratch[used] = '\0';
    const TavEnPathStyle pathStyle = getStyle(scratch);
    if (!tav::path::isSeparatorIn(scratch[used - 1], pathStyle)) {
      scratch[used++] = tav::path::separatorOf(pathStyle);
    }
  }
  used = appendCut(scratch, used, name);
  used = appendExtension(scratch, used, extension);
  scratch[used] = '\0';
  init(scratch, used);
}

void TavClFilenameABase::replaceName(const char* name) {
  char scratch[TAV_PATH_BUFFER_SIZE];
  const auto kept = static_cast<size_t>(baseNameStart - text);
  std::memcpy(scratch, text, kept);
  const size_t used = appendCut(scratch, kept, name);
  scratch[used] = '\0';
  init(scratch, used);
}

void TavClFilenameABase::replaceBaseName(const char* baseName) {
  char scratch[TAV_PATH_BUFFER_SIZE];
  const auto kept = static_cast<size_t>(baseNameStart - text);
  std::memcpy(scratch, text, kept);
  size_t used = appendCut(scratch, kept, baseName);
  used = appendCut(scratch, used, extensionStart);
  scratch[used] = '\0';
  init(scratch, used);
}

void TavClFilenameABase::replaceExtension(const char* extension) {
  char scratch[TAV_PATH_BUFFER_SIZE];
  const auto kept = static_cast<size_t>(extensionStart - text);
  std::memcpy(scratch, text, kept);
  const size_t used = appendExtension(scratch, kept, extension);
  scratch[used] = '\0';
  init(scratch, used);
}

void TavClFilenameABase::replacePath(const char* path) { init(path, baseNameStart, nullptr); }

void TavClFilenameABase::dropPath() { init(baseNameStart); }

void TavClFilenameABase::appendKeepingParts(const char* suffix) {
  length = static_cast<uint32_t>(appendCut(text, length, suffix));
  text[length] = '\0';
}
