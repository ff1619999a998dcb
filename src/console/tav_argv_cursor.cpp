// tav_argv_cursor.cpp - walking the arguments of a process and finding switches by name.

#include <cstring>

#include "tav_argv.h"

TavClArgvCursor::TavClArgvCursor(int argc, const char* const* argv)
    : argumentCount(argv != nullptr ? argc : 0), index(1), argumentVector(argv) {}

TavClArgvCursor::~TavClArgvCursor() = default;

bool TavClArgvCursor::isValid() const { return index >= 1 && index < argumentCount; }

bool TavClArgvCursor::setToFirst() {
  index = 1;
  return argumentCount > 1;
}

bool TavClArgvCursor::setToNext() {
  ++index;
  return isValid();
}

bool TavClArgvCursor::setToLast() {
  index = argumentCount - 1;
  return isValid();
}

bool TavClArgvCursor::setToPrevious() {
  --index;
  return isValid();
}

const char* TavClArgvCursor::getAsCString() const { return argumentVector[index]; }

const char* TavClArgvCursor::getArgv0() const {
  return argumentCount > 0 ? argumentVector[0] : nullptr;
}

bool TavClArgvCursor::isSwitch() const {
  return isValid() && TavClUsageCursor::isSwitchIndicator(getAsCString());
}

bool TavClArgvCursor::matches(const char* name) const {
  if (name == nullptr || !isSwitch()) return false;
  if (TavClUsageCursor::isSwitchIndicator(name)) ++name;
  return std::strcmp(getAsCString() + 1, name) == 0;
}

bool TavClArgvCursor::positionTo(const char* name) {
  for (bool more = setToFirst(); more; more = setToNext()) {
    if (matches(name)) return true;
  }
  return false;
}
