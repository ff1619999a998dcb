// tav_ini_c_api.cpp - the C interface to configuration files: an opaque handle over the model.
//
// Every entry point catches the library's exceptions, since none may cross into C code.

#include <cstdlib>

#include "tav_error.h"
#include "tav_filename.h"
#include "tav_ini.h"
#include "tav_ini_c.h"

struct TavStIniFile : public TavClMemoryManagedObject {
  explicit TavStIniFile(const TavClFilename& name) : model(name) {}
  TavClIniFileSave model;
};

namespace {

// Selects the section and finds the option's value; null when either is absent.
const char* findValue(const TavStIniFile* file, const char* section, const char* option) {
  if (file == nullptr || section == nullptr || option == nullptr) return nullptr;
  const char* value = nullptr;
  if (!file->model.getSection(section) || !file->model.getOption(option, value)) return nullptr;
  return value;
}

}  // namespace

extern "C" {

TavStIniFile* tavIniFileCreate(const char* fileName) {
  if (fileName == nullptr) return nullptr;
  try {
    return new TavStIniFile(TavClFilename(fileName));
  } catch (const TavClException&) {
    return nullptr;
  }
}

void tavIniFileDestroy(TavStIniFile* file) { delete file; }

int tavIniFileLoad(TavStIniFile* file) {
  if (file == nullptr) return 0;
  return file->model.load(true) ? 1 : 0;
}

int tavIniFileLoadFromBuffer(TavStIniFile* file, const char* buffer, size_t length) {
  if (file == nullptr || (buffer == nullptr && length != 0)) return 0;
  return file->model.loadFromBuffer(buffer, length, '\n', true, true) ? 1 : 0;
}

const char* tavIniFileGetText(const TavStIniFile* file, const char* section, const char* option) {
  return findValue(file, section, option);
}

int tavIniFileGetInteger(const TavStIniFile* file, const char* section, const char* option,
                         long* value) {
  const char* text = findValue(file, section, option);
  if (text == nullptr || value == nullptr) return 0;
  *value = std::strtol(text, nullptr, 10);
  return 1;
}

int tavIniFileGetBool(const TavStIniFile* file, const char* section, const char* option,
                      int* value) {
  const char* text = findValue(file, section, option);
  if (text == nullptr || value == nullptr) return 0;
  *value = file->model.isTrueValue(text) ? 1 : 0;
  return 1;
}

int tavIniFileSetText(TavStIniFile* file, const char* section, const char* option,
                      const char* value) {
  if (file == nullptr || section == nullptr || option == nullptr || value == nullptr) return 0;
  if (!file->model.getSection(section)) file->model.addSection(section);
  if (file->model.setNewValue(section, option, value)) return 1;
  return file->model.addOption(section, option, value) ? 1 : 0;
}

int tavIniFileSave(TavStIniFile* file) {
  if (file == nullptr) return 0;
  try {
    return file->model.saveAtomic() ? 1 : 0;
  } catch (const TavClException&) {
    return 0;
  }
}

}  // extern "C"
