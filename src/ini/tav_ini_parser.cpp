// tav_ini_parser.cpp - reading configuration text into the model.
//
// Lines are read into a fixed buffer one character at a time; a line too long for it is
// reported, skipped up to its delimiter, and reading goes on with the next line. A file is read
// as text: CR LF line ends read as LF on every platform. Merging
// duplicate section headers looks names up in a hash index built for the load, so loading stays
// linear in the size of the input however many sections it holds.

#include <ctype.h>
#include <string.h>

#include <fstream>
#include <istream>
#include <streambuf>

#include "tav_ini.h"
#include "tav_ini_names.h"

// The sections by name (first of each name), open addressing, grown at half load.
class TavClIniFileSectionIndex : public TavClMemoryManagedObject {
 public:
  TavClIniFileSectionIndex() { resize(64); }
  TavClIniFileSectionIndex(const TavClIniFileSectionIndex&) = delete;
  TavClIniFileSectionIndex& operator=(const TavClIniFileSectionIndex&) = delete;
  ~TavClIniFileSectionIndex() { tavFree(slots); }

  TavClIniFileSection* find(const char* name) const {
    for (size_t i = tavIniNameHash(name) & mask;; i = (i + 1) & mask) {
      if (slots[i] == nullptr || tavIniNamesEqual(slots[i]->getName(), name)) return slots[i];
    }
  }
  // Keeps the first section of each name.
  void insert(TavClIniFileSection* section) {
    if (2 * (count + 1) > mask + 1) resize(2 * (mask + 1));
    size_t i = tavIniNameHash(section->getName()) & mask;
    for (; slots[i] != nullptr; i = (i + 1) & mask) {
      if (tavIniNamesEqual(slots[i]->getName(), section->getName())) return;
    }
    slots[i] = section;
    ++count;
  }

 private:
  void resize(size_t capacity) {
    TavClIniFileSection** old = slots;
    const size_t oldCapacity = old == nullptr ? 0 : mask + 1;
    slots = static_cast<TavClIniFileSection**>(tavMalloc(capacity * sizeof *slots));
    memset(slots, 0, capacity * sizeof *slots);
    mask = capacity - 1;
    count = 0;
    for (size_t i = 0; i < oldCapacity; ++i) {
      if (old[i] != nullptr) insert(old[i]);
    }
    tavFree(old);
  }

  TavClIniFileSection** slots = nullptr;
  size_t mask = 0;
  size_t count = 0;
};

namespace {

// An input stream buffer over memory the caller owns.
class MemoryBuffer : public std::streambuf {
 public:
  MemoryBuffer(const char* data, size_t length) {
    char* begin = const_cast<char*>(data);  // only read: the get area is never written
    setg(begin, begin, begin + length);
  }
};

bool isSpace(char c) { return isspace(static_cast<unsigned char>(c)) != 0; }

}  // namespace

bool TavClIniFile::error(unsigned long id) {
  if (errorHandler == nullptr) return true;
  const _TavStError record = {static_cast<uint32_t>(id), TAV_CLASS_USER_DATA_ERROR};
  return errorHandler(record, lineCounter, errorHandlerUserData);
}

bool TavClIniFile::nextLine(std::istream& in, char* buffer, char delimiter) {
  std::streambuf* source = in.rdbuf();
  const int delimiterCode = static_cast<unsigned char>(delimiter);
  for (;;) {
    size_t length = 0;
    bool tooLong = false;
    int c = source->sbumpc();
    if (c == std::char_traits<char>::eof()) return false;
    for (; c != std::char_traits<char>::eof() && c != delimiterCode; c = source->sbumpc()) {
      if (c == '\r' && readingTextFile && source->sgetc() == delimiterCode) continue;
      if (length < kMaxLineLength) {
        buffer[length++] = static_cast<char>(c);
      } else {
        tooLong = true;
      }
    }
    buffer[length] = '\0';
    ++lineCounter;
    if (!tooLong) return true;
    if (!error(INIFILE_LINE_TOO_LONG)) {
      parseStopped = true;
      return false;
    }
  }
}

bool TavClIniFile::skipComment(std::istream& in, char* buffer, char delimiter) {
  while (nextLine(in, buffer, delimiter)) {
    const char* p = buffer;
    while (isSpace(*p)) ++p;
    if (*p != '\0' && *p != ';') return true;
  }
  return false;
}

bool TavClIniFile::load(std::istream& in, char delimiter, bool appendDuplicateSections,
                        bool allowContinuation) {
  char line[kMaxLineLength + 1];
  TavClIniFileOption* continued = nullptr;
  parseStopped = false;
  if (!appendDuplicateSections) {
    sectionIndex = new TavClIniFileSectionIndex;
    for (TavClIniFileSection* s = firstSection; s != nullptr; s = s->getNext())
      sectionIndex->insert(s);
  }
  bool goOn = true;
  while (goOn && skipComment(in, line, delimiter)) {
    const char first = line[0];
    if (first == '[') {
      continued = nullptr;
      const char* close = strchr(line + 1, ']');
      if (close == nullptr) {
        goOn = error(INIFILE_INVAL_SECTION);
        continue;
      }
      TavClIniFileSection* section = new TavClIniFileSection(line + 1, close);
      TavClIniFileSection* existing =
          sectionIndex == nullptr ? nullptr : sectionIndex->find(section->getName());
      if (existing != nullptr) {
        delete section;
        currentSection = existing;
      } else {
        addSection(section);
        if (sectionIndex != nullptr) sectionIndex->insert(section);
      }
    } else if (currentSection == nullptr) {
      // Text before the first header is allowed and dropped.
    } else if (!isSpace(first)) {
      if (strchr(line, '=') == nullptr) {
        goOn = error(INIFILE_INVAL_OPTION);
        continue;
      }
      continued = new TavClIniFileOption(line);
      addOption(continued);
    } else if (!allowContinuation || continued == nullptr) {
      continued = nullptr;
      goOn = error(INIFILE_INVAL_WHITESPACE);
    } else {
      continued->appendOptionValue(line);
    }
  }
  delete sectionIndex;
  sectionIndex = nullptr;
  currentSection = nullptr;
  return goOn && !parseStopped;
}

// The file is read as bytes and a carriage return before a line feed is dropped here, rather
// than by the C runtime's text mode, so that every platform reads the same file the same way
// (the Windows runtime would also end the text at a Ctrl-Z).
bool TavClIniFile::load(bool allowContinuation) {
  std::ifstream in(getName(), std::ios::binary);
  if (!in.is_open()) return false;
  lineCounter = 0;
  readingTextFile = true;
  const bool loaded = load(in, '\n', true, allowContinuation);
  readingTextFile = false;
  return loaded;
}

bool TavClIniFile::loadFromBuffer(const char* buffer, size_t length, char delimiter,
                                  bool appendDuplicateSections, bool allowContinuation) {
  MemoryBuffer memory(buffer, length);
  std::istream in(&memory);
  return load(in, delimiter, appendDuplicateSections, allowContinuation);
}
