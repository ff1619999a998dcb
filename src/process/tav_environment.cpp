// tav_environment.cpp - environment variables: reading, the on/off rule, setting and appending.

#include "tav_environment.h"

#include <cctype>
#include <cstring>
#include <initializer_list>
#include <memory>

#include "tav_memmgr.h"
#include "tav_process_os.h"

namespace {

bool equalsIgnoringCase(const char* left, const char* right) {
  for (; *left != '\0' && *right != '\0'; ++left, ++right) {
    if (std::toupper(static_cast<unsigned char>(*left)) !=
        std::toupper(static_cast<unsigned char>(*right))) {
      return false;
    }
  }
  return *left == *right;
}

}  // namespace

TavClEnvironmentVariableABase::TavClEnvironmentVariableABase(const char* name) { initName(name); }

TavClEnvironmentVariableABase::TavClEnvironmentVariableABase(
    const TavClEnvironmentVariableABase& other) {
  initName(other.name);
}

TavClEnvironmentVariableABase& TavClEnvironmentVariableABase::operator=(
    const TavClEnvironmentVariableABase& other) {
  initName(other.name);
  return *this;
}

TavClEnvironmentVariableABase::~TavClEnvironmentVariableABase() {
  if (name != inlineName) tavFree(const_cast<char*>(name));
}

void TavClEnvironmentVariableABase::initName(const char* newName) {
  if (newName == nullptr) newName = "";
  const size_t length = std::strlen(newName);
  // The new name is copied before the old one goes: it may be the old one.
  char* copy = inlineName;
  if (length > kInlineNameLength) copy = static_cast<char*>(tavMalloc(length + 1));
  std::memmove(copy, newName, length + 1);
  if (name != inlineName && name != copy) tavFree(const_cast<char*>(name));
  name = copy;
}

const char* TavClEnvironmentVariableABase::getValue() const {
  return tav::os::getEnvironment(name);
}

bool TavClEnvironmentVariableABase::hasValue() const { return getValue() != nullptr; }

bool TavClEnvironmentVariableABase::hasValueEnabled() const {
  const char* value = getValue();
  if (value == nullptr) return false;
  for (const char* enabled : {"ON", "YES", "TRUE", "1"}) {
    if (equalsIgnoringCase(value, enabled)) return true;
  }
  return false;
}

TavClEnvironmentVariable::TavClEnvironmentVariable(const char* name, const char* value)
    : TavClEnvironmentVariableABase(name) {
  setNewValue(value);
}

TavClEnvironmentVariable::~TavClEnvironmentVariable() { tavFree(assignment); }

void TavClEnvironmentVariable::buildAssignment(const char* value) {
  const size_t nameLength = std::strlen(name);
  const size_t valueLength = value != nullptr ? std::strlen(value) : 0;
  const size_t needed = nameLength + (value != nullptr ? 1 + valueLength : 0) + 1;
  if (needed > assignmentCapacity) {
    char* larger = static_cast<char*>(tavMalloc(needed));
    tavFree(assignment);
    assignment = larger;
    assignmentCapacity = needed;
  }
  std::memcpy(assignment, name, nameLength);
  size_t length = nameLength;
  if (value != nullptr) {
    assignment[length++] = '=';
    std::memcpy(assignment + length, value, valueLength);
    length += valueLength;
  }
  assignment[length] = '\0';
}

bool TavClEnvironmentVariable::setNewValue(const char* value) {
  buildAssignment(value);
  return tav::os::putEnvironment(assignment).ok();
}

bool TavClEnvironmentVariable::appendValue(const char* text) {
  const char* current = getValue();
  const size_t currentLength = current != nullptr ? std::strlen(current) : 0;
  const size_t textLength = text != nullptr ? std::strlen(text) : 0;
  // The current value belongs to the environment and may move when it changes: copy it first.
  // setNewValue may throw on allocation, so the copy is owned by a guard.
  std::unique_ptr<char, decltype(&tavFree)> joined(
      static_cast<char*>(tavMalloc(currentLength + textLength + 1)), &tavFree);
  if (currentLength != 0) std::memcpy(joined.get(), current, currentLength);
  if (textLength != 0) std::memcpy(joined.get() + currentLength, text, textLength);
  joined.get()[currentLength + textLength] = '\0';
  return setNewValue(joined.get());
}

void TavClEnvironmentVariable::resetValue() {
  buildAssignment(nullptr);
  tav::os::putEnvironment(assignment);
}

TavClEnvironmentVariableQueryOnly::TavClEnvironmentVariableQueryOnly()
    : TavClEnvironmentVariableABase("?") {}

TavClEnvironmentVariableQueryOnly::TavClEnvironmentVariableQueryOnly(const char* name)
    : TavClEnvironmentVariableABase(name) {}

TavClEnvironmentVariableQueryOnly::TavClEnvironmentVariableQueryOnly(
    const TavClEnvironmentVariableABase& other)
    : TavClEnvironmentVariableABase(other.getName()) {}
