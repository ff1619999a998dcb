// tav_console_ui.cpp - the console object: initialisation, the built-in switches, the usage and
// help texts and the validation of the arguments against the usage string.

#include <cstring>

#include "tav_console.h"
#include "tav_message.h"

namespace {

// Process-wide choice for consoles created later; see useBuiltInStringTable.
bool gs_fUseBuiltInStringTable = false;

// A console text from the catalog (a switch name, an error line), kept while it is used.
class ConsoleText {
 public:
  ConsoleText(const TavClConsoleUI& console, unsigned long offset) {
    console.getText(offset, text, sizeof text);
  }
  const char* get() const { return text; }

 private:
  char text[TAV_MSG_MAX_LENGTH + 1];
};

}  // namespace

// The cursors over the arguments of a console, defined beside the console they read.
TavClArgvCursor::TavClArgvCursor(const TavClConsoleUI& console)
    : TavClArgvCursor(console.getArgumentCount(), console.getArgumentVector()) {}

TavClArgvCheckCursor::TavClArgvCheckCursor(const TavClConsoleUI& console)
    : TavClArgvCheckCursor(console.getArgumentCount(), console.getArgumentVector(),
                           console.getUsage()) {}

TavClArgvFreeCursor::TavClArgvFreeCursor(const TavClConsoleUI& console)
    : TavClArgvFreeCursor(console.getArgumentCount(), console.getArgumentVector(),
                          console.getUsage()) {}

void TavClConsoleUI::useBuiltInStringTable(bool use) { gs_fUseBuiltInStringTable = use; }

TavClConsoleUI::TavClConsoleUI(int argc, const char* const* argv, const char* title,
                               const char* subtitle, const char* copyright, const char* level)
    : argumentCount(argc), argumentVector(argv) {
  try {
    init(title, subtitle, copyright, level);
  } catch (...) {
    release();
    throw;
  }
}

TavClConsoleUI::TavClConsoleUI(int argc, const char* const* argv, unsigned long titleId,
                               unsigned long subtitleId, const char* copyright, const char* level)
    : argumentCount(argc), argumentVector(argv) {
  try {
    init(titleId, subtitleId, copyright, level);
  } catch (...) {
    release();
    throw;
  }
}

TavClConsoleUI::~TavClConsoleUI() { release(); }

// Also for a constructor that failed half-way: its destructor never runs.
void TavClConsoleUI::release() {
  delete params;
  delete catalog;
  params = nullptr;
  catalog = nullptr;
}

void TavClConsoleUI::prepare() {
  params = new TavClConsoleUIParams(argumentCount > 0 ? argumentVector[0] : "");
  builtInTableUsed = gs_fUseBuiltInStringTable;
  // The table also serves when the library's catalog module cannot be loaded.
  catalog = builtInTableUsed ? new TavClMessageCatalog()
                             : new TavClMessageCatalog(TavClFilename(TAV_MSG_LIBRARY_CATALOG));
  catalog->useStringTable(tavMsgCatGetBuiltInStringTable(), tavMsgCatGetBuiltInStringTableSize());
}

void TavClConsoleUI::init(const char* title, const char* subtitle, const char* copyright,
                          const char* level) {
  prepare();
  handleBuiltInSwitches(title, subtitle, copyright, level);
}

void TavClConsoleUI::init(unsigned long titleId, unsigned long subtitleId, const char* copyright,
                          const char* level) {
  prepare();
  const TavClMessage title(*catalog, titleId);
  const TavClMessage subtitle(*catalog, subtitleId);
  const bool hasTitle = title.isMessageLoaded();
  handleBuiltInSwitches(hasTitle ? title.getText() : nullptr,
                        hasTitle && subtitle.isMessageLoaded() ? subtitle.getText() : nullptr,
                        copyright, level);
}

void TavClConsoleUI::handleBuiltInSwitches(const char* title, const char* subtitle,
                                           const char* copyright, const char* level) {
  hasCopyrightInfo = copyright != nullptr || level != nullptr;
  if (!hasCopyrightInfo) {
    displayTitle(title, subtitle);
    return;
  }
  // Quiet first: it silences the title.
  if (hasArgSwitch(ConsoleText(*this, TAV_CONSOLE_TEXT_QUIET_SWITCH).get())) {
    params->setQuietMode(true);
  }
  displayTitle(title, subtitle);
  if (hasArgSwitch(ConsoleText(*this, TAV_CONSOLE_TEXT_COPYRIGHT_SWITCH).get())) {
    displayCopyright(copyright, level);
  }
}

void TavClConsoleUI::setUsage(const char* usage, const char* help) {
  params->setUsage(usage, help);
}

const char* TavClConsoleUI::getUsage() const { return params->getUsage(); }

const char* TavClConsoleUI::getProcessName() const { return params->getProcessName(); }

void TavClConsoleUI::hideTaggedLines() { params->hideTaggedLines(); }

void TavClConsoleUI::disableTaggedLines() { params->disableTaggedLines(); }

void TavClConsoleUI::handleUsageHelp(const char* usage, const char* help) {
  setUsage(usage, help);
  const ConsoleText helpLetters(*this, TAV_CONSOLE_TEXT_HELP_LETTERS);
  for (const char* letter = helpLetters.get(); *letter != '\0'; ++letter) {
    if (hasArgSwitch(*letter)) {
      displayUsage(false);
      displayHelp(true);
    }
  }
  if (checkArguments() != 0) displayUsage(true);
}

void TavClConsoleUI::handleUsageHelp(unsigned long usageId, unsigned long helpId) {
  const TavClMessage usage(*catalog, usageId);
  const TavClMessage help(*catalog, helpId);
  handleUsageHelp(usage.getText(), help.isMessageLoaded() ? help.getText() : nullptr);
}

void TavClConsoleUI::displayUsageHelp(const char* usage, const char* help, bool exitAfter) {
  setUsage(usage, help);
  displayUsage(false);
  displayHelp(exitAfter);
}

// Reports every fault before the process ends, so one run shows the user all of them.
unsigned long TavClConsoleUI::checkArguments() const {
  if (!params->hasUsage()) return 0;
  const ConsoleText quiet(*this, TAV_CONSOLE_TEXT_QUIET_SWITCH);
  const ConsoleText unknown(*this, TAV_CONSOLE_TEXT_UNKNOWN_ARGUMENT);
  const ConsoleText notAllowed(*this, TAV_CONSOLE_TEXT_ARGUMENT_NOT_ALLOWED);
  const ConsoleText repeated(*this, TAV_CONSOLE_TEXT_REPEATED_ARGUMENT);
  FILE* error = params->getStandardError();
  unsigned long errors = 0;
  TavClArgvCheckCursor argument(*this);
  for (bool valid = argument.setToFirst(); valid; valid = argument.setToNext()) {
    const char* text = argument.getAsCString();
    if (!argument.isLegal() && !argument.matches(quiet.get())) {
      writeMessageLine(error, unknown.get(), text);
      ++errors;
      continue;
    }
    if (params->areTaggedLinesDisabled() && argument.isTagged()) {
      writeMessageLine(error, notAllowed.get(), text);
      ++errors;
    }
    if (argument.isSwitch()) {
      TavClArgvCursor later(argument);
      while (later.setToNext()) {
        if (later.matches(text)) {
          writeMessageLine(error, repeated.get(), text);
          ++errors;
        }
      }
    }
  }
  return errors;
}
