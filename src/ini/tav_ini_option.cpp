// tav_ini_option.cpp - option and section records of the configuration model.
//
// An option keeps name, value and comment one behind the other in one fixed store; every
// constructor and change cuts its texts so that they stay inside that store.

#include <ctype.h>
#include <string.h>

#include "tav_ini.h"

namespace {

size_t boundedLength(const char* text, size_t maximum) {
  size_t length = 0;
  while (length < maximum && text[length] != '\0') ++length;
  return length;
}

}  // namespace

TavClIniFileOption::TavClIniFileOption(const char* line) {
  char* name = text;
  const char* s = line;
  // Blanks are dropped wherever they stand in the name.
  for (; *s != '=' && *s != '\0'; ++s) {
    if (isspace(static_cast<unsigned char>(*s)) == 0 && name < text + kMaxValueLength) *name++ = *s;
  }
  *name = '\0';
  value = name + 1;
  comment = value;
  processValue(*s == '=' ? s + 1 : s, value);
}

TavClIniFileOption::TavClIniFileOption(const char* name, const char* newValue) {
  memset(text, 0, sizeof text);
  const size_t nameLength = boundedLength(name, kMaxValueLength);
  memcpy(text, name, nameLength);
  value = text + nameLength + 1;
  const size_t room = kMaxValueLength > nameLength + 1 ? kMaxValueLength - (nameLength + 1) : 0;
  memcpy(value, newValue, boundedLength(newValue, room));
  comment = value + strlen(value);
}

TavClIniFileOption::~TavClIniFileOption() {
  // Unlink the successors one by one, so that a long list does not recurse deeply.
  TavClIniFileOption* option = next;
  while (option != nullptr) {
    TavClIniFileOption* following = option->next;
    option->next = nullptr;
    delete option;
    option = following;
  }
}

void TavClIniFileOption::appendOptionValue(const char* line) {
  processValue(line, value + strlen(value));
}

void TavClIniFileOption::setNewValue(const char* newValue) {
  char* const areaEnd = text + kMaxValueLength;
  const size_t room = value < areaEnd ? static_cast<size_t>(areaEnd - value) : 0;
  const size_t length = boundedLength(newValue, room);
  memcpy(value, newValue, length);
  value[length] = '\0';
}

void TavClIniFileOption::markDeleted() {
  text[0] = '\0';
  value = text;
  comment = text;
}

TavClIniFileSection::TavClIniFileSection(const char* begin, const char* end) {
  size_t length = static_cast<size_t>(end - begin);
  if (length > kMaxNameLength) length = kMaxNameLength;
  memcpy(name, begin, length);
  name[length] = '\0';
}

TavClIniFileSection::TavClIniFileSection(const char* newName)
    : TavClIniFileSection(newName, newName + boundedLength(newName, kMaxNameLength)) {}

TavClIniFileSection::~TavClIniFileSection() {
  delete firstOption;
  TavClIniFileSection* section = next;
  while (section != nullptr) {
    TavClIniFileSection* following = section->next;
    section->next = nullptr;
    delete section;
    section = following;
  }
}

void TavClIniFileSection::setFirstOption(TavClIniFileOption* option) {
  firstOption = option;
  lastOption = option;
  while (lastOption != nullptr && lastOption->getNext() != nullptr)
    lastOption = lastOption->getNext();
}

void TavClIniFileSection::appendOption(TavClIniFileOption* option) {
  if (lastOption == nullptr) {
    firstOption = option;
  } else {
    lastOption->appendOption(option);
  }
  lastOption = option;
}

void TavClIniFileSection::deleteContents() {
  delete firstOption;
  firstOption = nullptr;
  lastOption = nullptr;
  name[0] = '\0';
}
