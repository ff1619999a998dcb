// tav_ini_option.cpp - option and section records of the configuration model.
//
// An option keeps name, value and comment one behind the other in one store of at most
// kTextSize characters; every constructor and change cuts its texts so that they stay inside
// it. The rules work on a full-size image of the store on the stack; what they leave is then
// kept in a store just large enough for the three texts, so that a large file does not cost a
// full store per option.

#include <ctype.h>
#include <string.h>

#include "tav_ini.h"

namespace {

size_t boundedLength(const char* text, size_t maximum) {
  size_t length = 0;
  while (length < maximum && text[length] != '\0') ++length;
  return length;
}

// The offset behind the NUL that ends the text at p inside an image of `size` characters.
size_t endOfText(const char* image, const char* p, size_t size) {
  const size_t offset = static_cast<size_t>(p - image);
  const void* nul = memchr(p, '\0', size - offset);
  return nul == nullptr ? size : static_cast<size_t>(static_cast<const char*>(nul) - image) + 1;
}

}  // namespace

void TavClIniFileOption::keepFrom(char* image) {
  size_t used = endOfText(image, image, kTextSize);
  const size_t valueEnd = endOfText(image, value, kTextSize);
  const size_t commentEnd = endOfText(image, comment, kTextSize);
  if (valueEnd > used) used = valueEnd;
  if (commentEnd > used) used = commentEnd;
  char* store = static_cast<char*>(tavMalloc(used));
  memcpy(store, image, used);
  value = store + (value - image);
  comment = store + (comment - image);
  text = store;
}

template <typename Change>
void TavClIniFileOption::change(Change&& apply) {
  char image[kTextSize] = {};
  char* const stored = text;
  const ptrdiff_t valueOffset = value - stored;
  const ptrdiff_t commentOffset = comment - stored;
  size_t used = endOfText(stored, stored, kTextSize);
  const size_t valueEnd = endOfText(stored, value, kTextSize);
  const size_t commentEnd = endOfText(stored, comment, kTextSize);
  if (valueEnd > used) used = valueEnd;
  if (commentEnd > used) used = commentEnd;
  memcpy(image, stored, used);
  text = image;
  value = image + valueOffset;
  comment = image + commentOffset;
  try {
    apply();
    keepFrom(image);
  } catch (...) {
    text = stored;  // out of memory: the option stays as it was
    value = stored + valueOffset;
    comment = stored + commentOffset;
    throw;
  }
  tavFree(stored);
}

TavClIniFileOption::TavClIniFileOption(const char* line) {
  char image[kTextSize];
  text = image;
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
  keepFrom(image);
}

TavClIniFileOption::TavClIniFileOption(const char* name, const char* newValue) {
  char image[kTextSize] = {};
  text = image;
  const size_t nameLength = boundedLength(name, kMaxValueLength);
  memcpy(text, name, nameLength);
  value = text + nameLength + 1;
  const size_t room = kMaxValueLength > nameLength + 1 ? kMaxValueLength - (nameLength + 1) : 0;
  memcpy(value, newValue, boundedLength(newValue, room));
  comment = value + strlen(value);
  keepFrom(image);
}

TavClIniFileOption::~TavClIniFileOption() {
  tavFree(text);
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
  change([&] { processValue(line, value + strlen(value)); });
}

void TavClIniFileOption::setNewValue(const char* newValue) {
  change([&] {
    char* const areaEnd = text + kMaxValueLength;
    const size_t room = value < areaEnd ? static_cast<size_t>(areaEnd - value) : 0;
    const size_t length = boundedLength(newValue, room);
    memcpy(value, newValue, length);
    value[length] = '\0';
  });
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
