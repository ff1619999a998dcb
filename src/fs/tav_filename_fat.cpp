// tav_filename_fat.cpp - whether a name fits the FAT file system's 8.3 rule.

#include <cstring>

#include "tav_filename.h"
#include "tav_path_text.h"

namespace {

// Characters FAT refuses in a name; letters, digits, blanks and other punctuation are accepted.
// A dot is refused too: before the extension it would start a second one.
bool isRefusedCharacter(char c) { return std::strchr("<>:;.\"|/*", c) != nullptr; }

constexpr size_t kMaxComponentLength = 8;
constexpr size_t kMaxExtensionLength = 4;  // the dot and three characters

}  // namespace

bool TavClFilenameABase::isStyleFAT_8_3() const {
  if (style == TAV_PATH_STYLE_SLASH) return false;
  if (std::strlen(extensionStart) > kMaxExtensionLength) return false;
  if (getBaseNameLength() > kMaxComponentLength) return false;

  const char* scan = text;
  if (hasDrive()) {
    if (!tav::path::isAsciiLetter(pathStart[0])) return false;
    scan = pathStart + 2;
  }
  size_t componentLength = 0;
  for (; scan < extensionStart; ++scan) {
    if (*scan == '\\') {
      componentLength = 0;
      continue;
    }
    if (isRefusedCharacter(*scan) || ++componentLength > kMaxComponentLength) return false;
  }
  return true;
}
