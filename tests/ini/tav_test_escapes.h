// tav_test_escapes.h - control characters in the text fields of the ini and console tables.
//
// A table line cannot hold line feeds, tabs, vertical bars or arbitrary bytes as they are, so
// the tables write them as \n, \r, \t and \xHH. The console tests include this header too.

#ifndef TAV_TEST_ESCAPES_H
#define TAV_TEST_ESCAPES_H

#include <cstdlib>
#include <string>

namespace tav::test {

// Decodes \n, \r, \t and \xHH; every other character stands for itself.
inline std::string unescape(const std::string& field) {
  std::string text;
  for (size_t i = 0; i < field.size(); ++i) {
    const char next = field[i] == '\\' && i + 1 < field.size() ? field[i + 1] : '\0';
    if (next == 'x' && i + 3 < field.size()) {
      text += static_cast<char>(std::strtol(field.substr(i + 2, 2).c_str(), nullptr, 16));
      i += 3;
    } else if (next == 'n' || next == 'r' || next == 't') {
      text += next == 'n' ? '\n' : next == 'r' ? '\r' : '\t';
      ++i;
    } else {
      text += field[i];
    }
  }
  return text;
}

}  // namespace tav::test

#endif  // TAV_TEST_ESCAPES_H
