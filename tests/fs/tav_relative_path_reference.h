// tav_relative_path_reference.h - the relative-path expansion written the plain way, with
// std::string and a list of components, to check the library's in-place version against.
// Shared by the unit test and the fuzz target.

#ifndef TAV_RELATIVE_PATH_REFERENCE_H
#define TAV_RELATIVE_PATH_REFERENCE_H

#include <string>
#include <vector>

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
  const std::string pathPart = text.substr(server);
  const bool drive = backslash && pathPart.size() >= 2 && pathPart[1] == ':';
  const bool absolute = backslash
                            ? server != 0 || (drive && pathPart.size() >= 3 && pathPart[2] == '\\')
                            : !text.empty() && text[0] == '/';
  std::string kept;  // in front of the result, untouched: the drive
  std::string result;
  std::string rest;
  size_t floor = 0;
  if (!absolute) {
    result = currentDirectory.substr(0, TAV_PATH_MAX_LENGTH);
    if (!result.empty() && result.back() == separator) result.pop_back();
    floor = serverLength(result, backslash);
    rest = text;
  } else if (server != 0 || !drive) {
    result = text.substr(0, server);
    floor = server;
    rest = server < text.size() ? text.substr(server + 1) : "";
  } else {
    kept = text.substr(0, 2);
    rest = text.substr(3);
  }

  std::vector<std::string> components;
  size_t start = 0;
  for (size_t end = rest.find(separator); end != std::string::npos;
       start = end + 1, end = rest.find(separator, start)) {
    components.push_back(rest.substr(start, end - start));
  }
  for (const std::string& component : components) {
    if (component.empty()) continue;
    if (component.back() != '.') {
      result += separator;
      result += component;
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
  if (out->size() > TAV_PATH_MAX_LENGTH) {
    out->clear();
    return false;
  }
  return true;
}

}  // namespace tav_reference

#endif  // TAV_RELATIVE_PATH_REFERENCE_H
