// tav_ini_file.cpp - look-ups and changes of the configuration model.
//
// Names of sections and options compare ignoring letter case; the first match in list order
// wins. Deleted entries keep their records with empty names, so cursors stay usable.

#include <ctype.h>
#include <stdlib.h>
#include <string.h>

#include "tav_ini.h"
#include "tav_ini_names.h"
#include "tav_utils.h"

TavClIniFile::TavClIniFile(const TavClFilenameABase& name) : TavClFile(name, ".INI") {}

TavClIniFile::~TavClIniFile() { delete firstSection; }

void TavClIniFile::setErrorHandler(ErrorHandler handler, void* userData) {
  errorHandler = handler;
  errorHandlerUserData = userData;
}

TavClIniFileSection* TavClIniFile::findSection(const char* name) const {
  for (TavClIniFileSection* s = firstSection; s != nullptr; s = s->getNext()) {
    if (tavIniNamesEqual(s->getName(), name)) return s;
  }
  return nullptr;
}

TavClIniFileOption* TavClIniFile::findOption(const TavClIniFileSection* section,
                                             const char* name) const {
  if (section == nullptr) return nullptr;
  for (TavClIniFileOption* o = section->getFirstOption(); o != nullptr; o = o->getNext()) {
    if (!o->isDeleted() && tavIniNamesEqual(o->getName(), name)) return o;
  }
  return nullptr;
}

bool TavClIniFile::getSection(const char* name) const {
  currentSection = findSection(name);
  return currentSection != nullptr;
}

bool TavClIniFile::isTrueValue(const char* value) const {
  return tavStrFind(getStringAllTrueTokens(), value, true) != nullptr;
}

char TavClIniFile::toCharValue(const char* value) {
  if (*value != '\'') return *value;
  const char* p = value;
  return tavIniFileGetQuotedCharacter(p);
}

namespace {

template <typename T>
bool lookUp(const TavClIniFileOption* option, T& value, const char** comment,
            T (*convert)(const char*)) {
  if (option == nullptr) return false;
  value = convert(option->getValue());
  if (comment != nullptr) *comment = option->getComment();
  return true;
}

const char* asText(const char* v) { return v; }
int asInt(const char* v) { return static_cast<int>(strtol(v, nullptr, 10)); }
long asLong(const char* v) { return strtol(v, nullptr, 10); }
unsigned int asUInt(const char* v) { return static_cast<unsigned int>(strtoul(v, nullptr, 10)); }
unsigned long asULong(const char* v) { return strtoul(v, nullptr, 10); }

}  // namespace

#define TAV_INI_GET_OPTION(T, convert)                                                   \
  bool TavClIniFile::getOption(const char* name, T& value) const {                       \
    return lookUp<T>(findOption(currentSection, name), value, nullptr, convert);         \
  }                                                                                      \
  bool TavClIniFile::getOption(const char* name, T& value, const char*& comment) const { \
    return lookUp<T>(findOption(currentSection, name), value, &comment, convert);        \
  }
TAV_INI_GET_OPTION(const char*, asText)
TAV_INI_GET_OPTION(int, asInt)
TAV_INI_GET_OPTION(long, asLong)
TAV_INI_GET_OPTION(unsigned int, asUInt)
TAV_INI_GET_OPTION(unsigned long, asULong)
TAV_INI_GET_OPTION(char, toCharValue)
#undef TAV_INI_GET_OPTION

bool TavClIniFile::getOptionBool(const char* name, bool& value) const {
  const TavClIniFileOption* option = findOption(currentSection, name);
  if (option == nullptr) return false;
  value = isTrueValue(option->getValue());
  return true;
}

bool TavClIniFile::getOptionBool(const char* name, bool& value, const char*& comment) const {
  const TavClIniFileOption* option = findOption(currentSection, name);
  if (option == nullptr) return false;
  value = isTrueValue(option->getValue());
  comment = option->getComment();
  return true;
}

bool TavClIniFile::addSection(const char* name) {
  addSection(new TavClIniFileSection(name));
  return true;
}

void TavClIniFile::addSection(TavClIniFileSection* section) {
  if (lastSection == nullptr) {
    firstSection = section;
  } else {
    lastSection->appendSection(section);
  }
  lastSection = section;
  currentSection = section;
}

void TavClIniFile::addOption(TavClIniFileOption* option) { currentSection->appendOption(option); }

TavClIniFileSection* TavClIniFile::getExistingSection(const char* begin, const char* end) const {
  TavClIniFileSection probe(begin, end);
  return findSection(probe.getName());
}

namespace {

bool addTo(TavClIniFileSection* section, const char* option, const char* value,
           TavClIniFileOption* existing) {
  if (section == nullptr || existing != nullptr) return false;
  section->appendOption(new TavClIniFileOption(option, value));
  return true;
}

bool setIn(TavClIniFileOption* option, const char* value) {
  if (option == nullptr || option->isDeleted()) return false;
  option->setNewValue(value);
  return true;
}

bool deleteIn(TavClIniFileOption* option) {
  if (option == nullptr) return false;
  option->markDeleted();
  return true;
}

}  // namespace

bool TavClIniFile::addOption(const char* section, const char* option, const char* value) {
  TavClIniFileSection* s = findSection(section);
  return addTo(s, option, value, findOption(s, option));
}

bool TavClIniFile::addOption(const TavClIniFileSectionCursor& section, const char* option,
                             const char* value) {
  return addTo(section.current, option, value, findOption(section.current, option));
}

bool TavClIniFile::setNewValue(const char* section, const char* option, const char* value) {
  return setIn(findOption(findSection(section), option), value);
}

bool TavClIniFile::setNewValue(const TavClIniFileSectionCursor& section, const char* option,
                               const char* value) {
  return setIn(findOption(section.current, option), value);
}

bool TavClIniFile::setNewValue(const TavClIniFileOptionCursor& option, const char* value) {
  return setIn(option.current, value);
}

bool TavClIniFile::deleteSection(const char* name) {
  TavClIniFileSection* section = findSection(name);
  if (section == nullptr) return false;
  section->deleteContents();
  return true;
}

bool TavClIniFile::deleteSection(const TavClIniFileSectionCursor& section) {
  if (section.current == nullptr) return false;
  section.current->deleteContents();
  return true;
}

bool TavClIniFile::deleteOption(const char* section, const char* option) {
  return deleteIn(findOption(findSection(section), option));
}

bool TavClIniFile::deleteOption(const TavClIniFileSectionCursor& section, const char* option) {
  return deleteIn(findOption(section.current, option));
}

bool TavClIniFile::deleteOption(const TavClIniFileOptionCursor& option) {
  return deleteIn(option.current);
}
