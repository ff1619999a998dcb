// tav_ini_cursor.cpp - cursors over the sections of a configuration model and their options.
//
// Cursors hold plain pointers into the model; deleted entries are visited with empty names.

#include <stdlib.h>

#include "tav_ini.h"
#include "tav_ini_names.h"

TavClIniFileSectionCursor::TavClIniFileSectionCursor(const TavClIniFile& iniFile)
    : file(&iniFile), current(iniFile.firstSection) {}

TavClIniFileSectionCursor::~TavClIniFileSectionCursor() = default;

bool TavClIniFileSectionCursor::setToFirst() {
  current = file->firstSection;
  return current != nullptr;
}

bool TavClIniFileSectionCursor::setToNext() {
  if (current != nullptr) current = current->getNext();
  return current != nullptr;
}

bool TavClIniFileSectionCursor::setTo(const char* name) {
  if (matches(name)) return true;
  for (bool more = setToFirst(); more; more = setToNext()) {
    if (matches(name)) return true;
  }
  return false;
}

bool TavClIniFileSectionCursor::matches(const char* name) const {
  return current != nullptr && tavIniNamesEqual(current->getName(), name);
}

const char* TavClIniFileSectionCursor::getSection() const {
  return current != nullptr ? current->getName() : nullptr;
}

TavClIniFileOptionCursor::TavClIniFileOptionCursor(const TavClIniFile& iniFile)
    : TavClIniFileOptionCursor(iniFile, iniFile.currentSection) {}

TavClIniFileOptionCursor::TavClIniFileOptionCursor(const TavClIniFileSectionCursor& sectionCursor)
    : TavClIniFileOptionCursor(*sectionCursor.file, sectionCursor.current) {}

TavClIniFileOptionCursor::TavClIniFileOptionCursor(const TavClIniFile& iniFile,
                                                   const TavClIniFileSection* ownSection)
    : file(&iniFile),
      section(ownSection),
      current(ownSection != nullptr ? ownSection->getFirstOption() : nullptr) {}

TavClIniFileOptionCursor::~TavClIniFileOptionCursor() = default;

bool TavClIniFileOptionCursor::setToFirst() {
  current = section != nullptr ? section->getFirstOption() : nullptr;
  return current != nullptr;
}

bool TavClIniFileOptionCursor::setToNext() {
  if (current != nullptr) current = current->getNext();
  return current != nullptr;
}

bool TavClIniFileOptionCursor::setTo(const char* name) {
  if (matches(name)) return true;
  for (bool more = setToFirst(); more; more = setToNext()) {
    if (matches(name)) return true;
  }
  return false;
}

bool TavClIniFileOptionCursor::matches(const char* name) const {
  return current != nullptr && tavIniNamesEqual(current->getName(), name);
}

const char* TavClIniFileOptionCursor::getOption() const {
  return current != nullptr ? current->getName() : nullptr;
}

const char* TavClIniFileOptionCursor::getValue() const {
  return current != nullptr ? current->getValue() : nullptr;
}

const char* TavClIniFileOptionCursor::getComment() const {
  return current != nullptr ? current->getComment() : nullptr;
}

const char* TavClIniFileOptionCursor::getValue(char& value) const {
  if (current != nullptr) value = TavClIniFile::toCharValue(current->getValue());
  return getValue();
}

const char* TavClIniFileOptionCursor::getValue(int& value) const {
  if (current != nullptr) value = static_cast<int>(strtol(current->getValue(), nullptr, 10));
  return getValue();
}

const char* TavClIniFileOptionCursor::getValue(unsigned int& value) const {
  if (current != nullptr)
    value = static_cast<unsigned int>(strtoul(current->getValue(), nullptr, 10));
  return getValue();
}

const char* TavClIniFileOptionCursor::getValue(long& value) const {
  if (current != nullptr) value = strtol(current->getValue(), nullptr, 10);
  return getValue();
}

const char* TavClIniFileOptionCursor::getValue(unsigned long& value) const {
  if (current != nullptr) value = strtoul(current->getValue(), nullptr, 10);
  return getValue();
}

const char* TavClIniFileOptionCursor::getValueBool(bool& value) const {
  if (current != nullptr) value = file->isTrueValue(current->getValue());
  return getValue();
}
