// tav_usage_cursor.cpp - tokenising a usage string.
//
// Locating a token examines one character at a time from the position and stops on the first
// character of a token; skipping a token steps over its characters. Both only ever move forward
// and neither passes the terminating NUL, so a walk over the tokens reads every character at
// most a bounded number of times.

#include "tav_argv.h"

namespace {

// Letters and digits of the ASCII set, whatever the C locale says about other bytes.
bool isWordCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// The characters that end a token for the literal comparisons.
bool endsToken(char c) {
  switch (c) {
    case '\0':
    case '[':
    case ']':
    case '<':
    case '>':
    case '(':
    case ')':
    case '{':
    case '}':
    case '-':
    case '|':
    case ' ': return true;
    default: return false;
  }
}

// True when text starts with all of expected and the token in text ends right after it.
bool equalsToken(const char* token, const char* expected) {
  while (*expected != '\0') {
    if (*token != *expected) return false;
    ++token;
    ++expected;
  }
  return endsToken(*token);
}

}  // namespace

TavClUsageCursor::TavClUsageCursor(const char* usage)
    : start(usage != nullptr ? usage : ""),
      position(start),
      bracketDepth(0),
      parenthesisDepth(0),
      tagged(false),
      insideAngleBrackets(false) {}

TavClUsageCursor::~TavClUsageCursor() = default;

bool TavClUsageCursor::isSwitchIndicator(const char* text) {
  return text != nullptr && text[0] == '-' && !isDigit(text[1]);
}

bool TavClUsageCursor::isToBeDisplayed(char c) { return c != '"' && c != '(' && c != ')'; }

bool TavClUsageCursor::isValid() const { return *position != '\0'; }

bool TavClUsageCursor::setToFirst() {
  position = start;
  return locateToken();
}

bool TavClUsageCursor::setToNext() {
  if (!isValid()) return false;
  skipToken();
  return locateToken();
}

bool TavClUsageCursor::isSwitch() const { return isSwitchIndicator(position); }

bool TavClUsageCursor::isArgEllipsis() const { return *position == '.'; }

bool TavClUsageCursor::matches(const char* text) const {
  return text != nullptr && isValid() && equalsToken(position, text);
}

bool TavClUsageCursor::matchesSwitch(const char* arg) const {
  if (arg == nullptr || !isValid()) return false;
  if (isSwitchIndicator(arg)) ++arg;
  return equalsToken(position + 1, arg);
}

bool TavClUsageCursor::reqArg() const {
  if (parenthesisDepth == 0 || !isValid()) return false;
  TavClUsageCursor next(*this);
  return next.setToNext() && !next.isSwitch() && next.parenthesisDepth == parenthesisDepth;
}

bool TavClUsageCursor::reqArgEllipsis() const {
  if (parenthesisDepth == 0 || !isValid()) return false;
  TavClUsageCursor next(*this);
  while (next.setToNext()) {
    if (next.parenthesisDepth != parenthesisDepth || next.isSwitch()) return false;
    if (next.isArgEllipsis()) return true;
  }
  return false;
}

bool TavClUsageCursor::locateToken() {
  // A bare word is a token only when a blank stands between it and where this scan began or the
  // token before it.
  bool blankSeen = false;
  for (;;) {
    const char c = *position;
    switch (c) {
      case '\0': return false;
      case '\n': tagged = false; break;
      case ' ': blankSeen = true; break;
      case '!': tagged = true; break;
      case '"': {
        // Quoted text is shown but never parsed; without its partner nothing after the quote is.
        const char* close = position + 1;
        while (*close != '\0' && *close != '"') ++close;
        if (*close == '\0') {
          position = close;
          return false;
        }
        position = close;
        break;
      }
      case '(': ++parenthesisDepth; break;
      case ')': --parenthesisDepth; break;
      case '[': ++bracketDepth; break;
      case ']': --bracketDepth; break;
      case '-':
      case '/': return true;
      case '<': insideAngleBrackets = true; return true;
      case '>': insideAngleBrackets = false; break;
      case '.':
        if (position[1] == '.') {
          // An ellipsis: the token starts at its last dot.
          while (position[1] == '.') ++position;
          return true;
        }
        // A single dot hides the character after it, unless that is the end of the text.
        if (position[1] != '\0') ++position;
        break;
      default:
        if (isWordCharacter(c) && blankSeen) return true;
        if (isWordCharacter(c)) blankSeen = false;
        break;
    }
    ++position;
  }
}

void TavClUsageCursor::skipToken() {
  // Every token starts with a character the loop below would not step over ('-', '/', '<') or
  // with one it does (a letter, a digit, a dot), so stepping over the first three unconditionally
  // makes every skip move forward: a '/' or a '-' before a digit would otherwise stay the
  // current token for ever.
  if (*position == '-' || *position == '/' || *position == '<') ++position;
  while (isWordCharacter(*position) || *position == '.' ||
         (insideAngleBrackets && *position == ' ')) {
    ++position;
  }
}
