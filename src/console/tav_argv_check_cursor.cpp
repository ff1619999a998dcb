// tav_argv_check_cursor.cpp - classifying the current argument against the usage string.
//
// Every question walks the usage tokens afresh from the start, so it sees exact depths and tags;
// with short command lines a walk per question costs nothing worth caching.

#include "tav_argv.h"

namespace {

// Moves usage to the first switch token that names the switch arg; false when none does.
bool findSwitchToken(TavClUsageCursor& usage, const char* arg) {
  for (bool more = usage.setToFirst(); more; more = usage.setToNext()) {
    if (usage.isSwitch() && usage.matchesSwitch(arg)) return true;
  }
  return false;
}

}  // namespace

TavClArgvCheckCursor::TavClArgvCheckCursor(int argc, const char* const* argv, const char* usage)
    : TavClArgvCursor(argc, argv), usageText(usage != nullptr ? usage : "") {}

TavClArgvCheckCursor::~TavClArgvCheckCursor() = default;

bool TavClArgvCheckCursor::isLegal() const {
  if (!isValid()) return false;
  TavClUsageCursor usage(usageText);
  if (isSwitch()) return findSwitchToken(usage, getAsCString());
  if (isBound()) return true;
  // Any positional token outside parentheses admits free arguments, whatever its text.
  for (bool more = usage.setToFirst(); more; more = usage.setToNext()) {
    if (!usage.isSwitch() && usage.getParenthesisDepth() == 0) return true;
  }
  return false;
}

bool TavClArgvCheckCursor::reqArg() const {
  if (!isSwitch()) return false;
  TavClUsageCursor usage(usageText);
  return findSwitchToken(usage, getAsCString()) && usage.reqArg();
}

bool TavClArgvCheckCursor::isBound() const {
  if (!isValid() || isSwitch()) return false;
  TavClArgvCheckCursor previous(*this);
  return previous.setToPrevious() && previous.reqArg();
}

bool TavClArgvCheckCursor::hasArg() const {
  if (!isSwitch()) return false;
  TavClArgvCursor next(*this);
  return next.setToNext() && !next.isSwitch();
}

bool TavClArgvCheckCursor::isFree() const { return isValid() && !isSwitch() && !isBound(); }

bool TavClArgvCheckCursor::isTagged() const {
  if (!isValid()) return false;
  TavClUsageCursor usage(usageText);
  for (bool more = usage.setToFirst(); more; more = usage.setToNext()) {
    if (usage.isOnTaggedLine() && usage.matches(getAsCString())) return true;
  }
  return false;
}
