// tav_ini_test_support.h - helpers shared by the configuration file tests.
//
// A model is compared as one text: each section as [name] followed by its live options as
// name=value{comment}, so a whole expected model fits in one table field.

#ifndef TAV_INI_TEST_SUPPORT_H
#define TAV_INI_TEST_SUPPORT_H

#include <gtest/gtest.h>

#include <string>

#include "tav_filename.h"
#include "tav_ini.h"
#include "tav_test_escapes.h"

namespace tav::test {

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

// A model over a file name that tests never create. The errors a load reports collect in
// `errors` as "id@line", comma-separated; the load goes on after an error while goOn is set.
struct MemoryModel {
  TavClIniFile file{TavClFilename("tav-ini-test-unused.ini")};
  std::string errors;
  bool goOn = true;
  MemoryModel() { file.setErrorHandler(&record, this); }
  bool load(const std::string& text, bool appendDuplicates = true, bool continuation = true,
            char delimiter = '\n') {
    return file.loadFromBuffer(text.data(), text.size(), delimiter, appendDuplicates, continuation);
  }
  static bool record(const _TavStError& error, unsigned int line, void* self) {
    auto* model = static_cast<MemoryModel*>(self);
    EXPECT_EQ(error.errorClass, TAV_CLASS_USER_DATA_ERROR);
    model->errors +=
        (model->errors.empty() ? "" : ",") + std::to_string(error.id) + "@" + std::to_string(line);
    return model->goOn;
  }
};

}  // namespace tav::test

#endif  // TAV_INI_TEST_SUPPORT_H
