// tav_console_args.cpp - the argument queries in their three key forms, and the fatal reports
// that end the process when a switch or its value is missing or malformed.
//
// Every query searches from the first argument, so the first of repeated switches wins.

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tav_console.h"
#include "tav_message.h"

namespace {

constexpr unsigned long kExitArgMissing = 202;
constexpr unsigned long kExitExpectingValue = 203;
constexpr unsigned long kExitValueTypeMismatch = 204;

// "-c" for the letter key.
struct LetterName {
  explicit LetterName(char letter) : text{'-', letter, '\0'} {}
  char text[3];
};

bool isDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

// The name as the reports show it: always with its leading '-'.
void TavClConsoleUI::writeSwitchName(const char* name, char* out, size_t outSize) const {
  const size_t prefix = name[0] == '-' ? 0 : 1;
  std::snprintf(out, outSize, "%s%s", prefix != 0 ? "-" : "", name);
}

void TavClConsoleUI::privateFatal(unsigned long code, unsigned long offset,
                                  const char* argument) const {
  char text[TAV_MSG_MAX_LENGTH + 1];
  getText(offset, text, sizeof text);
  FILE* error = params->getStandardError();
  writeHeaderLine(error, TAV_CONSOLE_TEXT_FATAL_HEADER);
  writeMessageLine(error, text, argument);
  processExit(code);
}

void TavClConsoleUI::fatalMissingArg(const char* key) const {
  char name[TavClConsoleUIParams::kProcessNameSize];
  writeSwitchName(key, name, sizeof name);
  if (!params->hasUsage()) privateFatal(kExitArgMissing, TAV_CONSOLE_TEXT_MISSING_SWITCH, name);
  char text[TAV_MSG_MAX_LENGTH + 1];
  FILE* error = params->getStandardError();
  writeHeaderLine(error, TAV_CONSOLE_TEXT_FATAL_HEADER);
  getText(TAV_CONSOLE_TEXT_MISSING_SWITCH, text, sizeof text);
  writeMessageLine(error, text, name);
  getText(TAV_CONSOLE_TEXT_HELP_HINT, text, sizeof text);
  writeMessageLine(error, text, nullptr);
  displayUsage(true);
  std::abort();  // not reached: the usage display with the exit flag ends the process
}

// The value after the switch key, if the switch is present; a switch without a value gives
// false with value null.
bool TavClConsoleUI::findValue(const char* key, const char*& value) const {
  TavClArgvCursor argument(*this);
  if (!argument.positionTo(key)) return false;
  value = nullptr;
  if (argument.setToNext() && !argument.isSwitch()) value = argument.getAsCString();
  return true;
}

bool TavClConsoleUI::findNumber(const char* key, long& value) const {
  const char* text = nullptr;
  if (!findValue(key, text)) return false;
  char name[TavClConsoleUIParams::kProcessNameSize];
  writeSwitchName(key, name, sizeof name);
  if (text == nullptr) privateFatal(kExitExpectingValue, TAV_CONSOLE_TEXT_NO_NUMERIC_VALUE, name);
  if (*text == '\'') ++text;
  if (!isDigit(*text) && *text != '-') {
    privateFatal(kExitValueTypeMismatch, TAV_CONSOLE_TEXT_NON_NUMERIC_VALUE, name);
  }
  value = std::strtol(text, nullptr, 10);
  return true;
}

bool TavClConsoleUI::hasArgSwitch(const char* key) const {
  TavClArgvCursor argument(*this);
  return argument.positionTo(key);
}

bool TavClConsoleUI::hasArgString(const char* key, const char*& value) const {
  const char* found = nullptr;
  if (!findValue(key, found)) return false;
  if (found == nullptr) {
    char name[TavClConsoleUIParams::kProcessNameSize];
    writeSwitchName(key, name, sizeof name);
    privateFatal(kExitExpectingValue, TAV_CONSOLE_TEXT_NO_VALUE, name);
  }
  value = found;
  return true;
}

bool TavClConsoleUI::hasArgNumval(const char* key, long& value) const {
  return findNumber(key, value);
}

bool TavClConsoleUI::hasArgNumval(const char* key, int& value) const {
  long number = 0;
  if (!findNumber(key, number)) return false;
  value = static_cast<int>(number);
  return true;
}

bool TavClConsoleUI::hasArgNumval(const char* key, short& value) const {
  long number = 0;
  if (!findNumber(key, number)) return false;
  value = static_cast<short>(number);
  return true;
}

void TavClConsoleUI::reqArgSwitch(const char* key) const {
  if (!hasArgSwitch(key)) fatalMissingArg(key);
}

void TavClConsoleUI::reqArgString(const char* key, const char*& value) const {
  if (!hasArgString(key, value)) fatalMissingArg(key);
}

void TavClConsoleUI::reqArgNumval(const char* key, short& value) const {
  if (!hasArgNumval(key, value)) fatalMissingArg(key);
}

void TavClConsoleUI::reqArgNumval(const char* key, int& value) const {
  if (!hasArgNumval(key, value)) fatalMissingArg(key);
}

void TavClConsoleUI::reqArgNumval(const char* key, long& value) const {
  if (!hasArgNumval(key, value)) fatalMissingArg(key);
}

// The letter and message-id keys become names and take the name forms above.

bool TavClConsoleUI::hasArgSwitch(char key) const { return hasArgSwitch(LetterName(key).text); }
bool TavClConsoleUI::hasArgSwitch(unsigned long keyId) const {
  return hasArgSwitch(TavClMessage(*catalog, keyId).getText());
}
bool TavClConsoleUI::hasArgString(char key, const char*& value) const {
  return hasArgString(LetterName(key).text, value);
}
bool TavClConsoleUI::hasArgString(unsigned long keyId, const char*& value) const {
  return hasArgString(TavClMessage(*catalog, keyId).getText(), value);
}
bool TavClConsoleUI::hasArgNumval(char key, short& value) const {
  return hasArgNumval(LetterName(key).text, value);
}
bool TavClConsoleUI::hasArgNumval(unsigned long keyId, short& value) const {
  return hasArgNumval(TavClMessage(*catalog, keyId).getText(), value);
}
void TavClConsoleUI::reqArgNumval(char key, short& value) const {
  reqArgNumval(LetterName(key).text, value);
}
void TavClConsoleUI::reqArgNumval(unsigned long keyId, short& value) const {
  reqArgNumval(TavClMessage(*catalog, keyId).getText(), value);
}
bool TavClConsoleUI::hasArgNumval(char key, int& value) const {
  return hasArgNumval(LetterName(key).text, value);
}
bool TavClConsoleUI::hasArgNumval(unsigned long keyId, int& value) const {
  return hasArgNumval(TavClMessage(*catalog, keyId).getText(), value);
}
void TavClConsoleUI::reqArgNumval(char key, int& value) const {
  reqArgNumval(LetterName(key).text, value);
}
void TavClConsoleUI::reqArgNumval(unsigned long keyId, int& value) const {
  reqArgNumval(TavClMessage(*catalog, keyId).getText(), value);
}
bool TavClConsoleUI::hasArgNumval(char key, long& value) const {
  return hasArgNumval(LetterName(key).text, value);
}
bool TavClConsoleUI::hasArgNumval(unsigned long keyId, long& value) const {
  return hasArgNumval(TavClMessage(*catalog, keyId).getText(), value);
}
void TavClConsoleUI::reqArgNumval(char key, long& value) const {
  reqArgNumval(LetterName(key).text, value);
}
void TavClConsoleUI::reqArgNumval(unsigned long keyId, long& value) const {
  reqArgNumval(TavClMessage(*catalog, keyId).getText(), value);
}
void TavClConsoleUI::reqArgSwitch(char key) const { reqArgSwitch(LetterName(key).text); }
void TavClConsoleUI::reqArgSwitch(unsigned long keyId) const {
  reqArgSwitch(TavClMessage(*catalog, keyId).getText());
}
void TavClConsoleUI::reqArgString(char key, const char*& value) const {
  reqArgString(LetterName(key).text, value);
}
void TavClConsoleUI::reqArgString(unsigned long keyId, const char*& value) const {
  reqArgString(TavClMessage(*catalog, keyId).getText(), value);
}
