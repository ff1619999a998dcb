// tav_ini_test_support.h - helpers shared by the configuration file tests.
//
// A model is compared as one text: each section as [name] followed by its live options as
// name=value{comment}, so a whole expected model fits in one table field.

#ifndef TAV_INI_TEST_SUPPORT_H
#define TAV_INI_TEST_SUPPORT_H

#include <stdlib.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tav_filename.h"
#include "tav_ini.h"

namespace tav::test {

// Decodes \n, \r and \xHH; every other character stands for itself.
inline std::string decodeEscapes(const std::string& text) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 1 < text.size() && text[i + 1] == 'n') {
      out += '\n';
      ++i;
    } else if (text[i] == '\\' && i + 1 < text.size() && text[i + 1] == 'r') {
      out += '\r';
      ++i;
    } else if (text[i] == '\\' && i + 3 < text.size() && text[i + 1] == 'x') {
      out += static_cast<char>(strtol(text.substr(i + 2, 2).c_str(), nullptr, 16));
      i += 3;
    } else {
      out += text[i];
    }
  }
  return out;
}

inline std::string dumpModel(const TavClIniFile& file) {
  std::string out;
  TavClIniFileSectionCursor sections(file);
  for (bool more = sections.setToFirst(); more; more = sections.setToNext()) {
    out += std::string("[") + sections.getSection() + "]";
    TavClIniFileOptionCursor options(sections);
    for (bool next = options.setToFirst(); next; next = options.setToNext()) {
      if (*options.getOption() == '\0') continue;
      out += std::string(options.getOption()) + "=" + options.getValue();
      if (*options.getComment() != '\0') out += std::string("{") + options.getComment() + "}";
    }
  }
  return out;
}

// Collects the errors a load reports as "id@line", comma-separated.
struct ErrorLog {
  std::string text;
  bool goOn = true;
  static bool record(const _TavStError& error, unsigned int line, void* self) {
    auto* log = static_cast<ErrorLog*>(self);
    if (!log->text.empty()) log->text += ",";
    log->text += std::to_string(error.id) + "@" + std::to_string(line);
    EXPECT_EQ(error.errorClass, TAV_CLASS_USER_DATA_ERROR);
    return log->goOn;
  }
};

// A model over a file name that tests never create.
struct MemoryModel {
  TavClFilename name{"tav-ini-test-unused.ini"};
  TavClIniFile file{name};
  ErrorLog log;
  MemoryModel() { file.setErrorHandler(&ErrorLog::record, &log); }
  bool load(const std::string& text, bool appendDuplicates = true, bool continuation = true) {
    return file.loadFromBuffer(text.data(), text.size(), '\n', appendDuplicates, continuation);
  }
};

}  // namespace tav::test

#endif  // TAV_INI_TEST_SUPPORT_H
