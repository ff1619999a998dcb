// tav_relative_path_reference.h - the relative-path expansion written the plain way, with
// std::string, one component at a time, to check the library's in-place version against.
// The fuzz target compares the library with it on arbitrary texts.

#ifndef TAV_RELATIVE_PATH_REFERENCE_H
#define TAV_RELATIVE_PATH_REFERENCE_H

#include <string>

#include "tav_filename.h"

namespace tav_reference {

// The length of a "\\\\server\\share" part in backslash style; 0 when there is none.
inline size_t serverLength(const std::string& text, bool backslashStyle) {
  if (!backslashStyle || text.size() < 3 || text.compare(0, 2, "\\\\") != 0) return 0;
  const size_t afterServer = text.find('\\', 3);
  if (afterServer == std::string::npos) return 0;
  const size_t afterShare = text.find('\\', afterServer + 1);
  return afterShare == std::string::npos ? text.size() : afterShare;
}

// False with "" on failure; otherwise the expanded text.
inline bool expandRelativePath(const std::string& input, TavEnPathStyle style,
                               const std::string& currentDirectory, std::string* out) {
  const bool backslash = style == TAV_PATH_STYLE_BACKSLASH;
  const char separator = backslash ? '\\' : '/';
  const std::string text = input.substr(0, TAV_PATH_MAX_LENGTH);
  const size_t server = serverLength(text, backslash);
  const bool drive = backslash && server == 0 && text.size() >= 2 && text[1] == ':';
  const bool absolute = backslash ? server != 0 || (drive && text.size() >= 3 && text[2] == '\\')
                                  : !text.empty() && text[0] == '/';
  std::string kept;  // in front of the result, untouched: the drive
  std::string result;
  std::string rest = text;
  size_t floor = 0;
  if (!absolute) {
    result = currentDirectory.substr(0, TAV_PATH_MAX_LENGTH);
    if (!result.empty() && result.back() == separator) result.pop_back();
    floor = serverLength(result, backslash);
  } else if (!drive) {
    result = text.substr(0, server);
    floor = server;
    rest = server < text.size() ? text.substr(server + 1) : "";
  } else {
    kept = text.substr(0, 2);
    rest = text.substr(3);
  }

  // Every component that a separator ends; what follows the last separator is no directory.
  for (size_t start = 0, end = rest.find(separator); end != std::string::npos;
       start = end + 1, end = rest.find(separator, start)) {
    const std::string component = rest.substr(start, end - start);
    if (component.empty()) continue;
    if (component.back() != '.') {
      result += separator + component;
    } else if (component.size() >= 2 && component[component.size() - 2] == '.') {
      const size_t last = result.rfind(separator);
      if (last == std::string::npos || last < floor) {
        out->clear();
        return false;
      }
      result.resize(last);
    }
  }
  *out = kept + result + separator;
  if (out->size() <= TAV_PATH_MAX_LENGTH) return true;
  out->clear();
  return false;
}

}  // namespace tav_reference

#endif  // TAV_RELATIVE_PATH_REFERENCE_H
