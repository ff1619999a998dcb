// tav_argv_free_cursor.cpp - a cursor that steps over switches and their values.

#include "tav_argv.h"

TavClArgvFreeCursor::TavClArgvFreeCursor(int argc, const char* const* argv, const char* usage)
    : TavClArgvCheckCursor(argc, argv, usage) {}

TavClArgvFreeCursor::~TavClArgvFreeCursor() = default;

bool TavClArgvFreeCursor::setToFirst() {
  if (TavClArgvCheckCursor::setToFirst() && !isFree()) setToNext();
  return isValid();
}

bool TavClArgvFreeCursor::setToNext() {
  while (TavClArgvCheckCursor::setToNext() && !isFree()) {
  }
  return isValid();
}

bool TavClArgvFreeCursor::setToLast() {
  if (TavClArgvCheckCursor::setToLast() && !isFree()) setToPrevious();
  return isValid();
}

bool TavClArgvFreeCursor::setToPrevious() {
  while (TavClArgvCheckCursor::setToPrevious() && !isFree()) {
  }
  return isValid();
}
