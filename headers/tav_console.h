// tav_console.h - the console front end of a command-line program: its arguments checked against
// a usage string, the built-in help, copyright and quiet switches, typed argument queries, the
// usage and help displays, and the exit codes.
//
// A program creates one TavClConsoleUI from its argument vector at start and calls
// handleUsageHelp once. Both may end the process: the help switches ("-h", "-H", "-?") and
// arguments the usage string does not allow end with CONUI_USAGE (201) after the usage display;
// "-copyright" ends after the copyright display. The queries afterwards end the process with
// CONUI_ARG_MISSING (202), CONUI_ARG_EXPECTING_VALUE (203) or CONUI_ARG_VALUE_TYPE_MISMATCH
// (204), or with 201 when a required switch is missing and a usage string is set. Every fault
// is reported on the standard error stream first, and a non-zero exit beeps.
//
// The usage string is the text shown as the usage line and the grammar of the arguments (see
// tav_argv.h). In the displays a '!' tags the rest of its line, an '@' in the first column starts
// a new line, and line feeds are indented under the first line; the usage display leaves out
// double quotes and parentheses.
//
// Every text comes from the library's message catalog at the console base id + an offset, so a
// German catalog gives German usage and error lines.

#ifndef TAV_CONSOLE_H
#define TAV_CONSOLE_H

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#include "tav_argv.h"
#include "tav_export.h"
#include "tav_memmgr.h"

class TavClMessageCatalog;

// Offsets of the console texts from the console base message id.
enum TavEnConsoleText : unsigned long {
  TAV_CONSOLE_TEXT_HELP_LETTERS = 8,
  TAV_CONSOLE_TEXT_COPYRIGHT_SWITCH = 9,
  TAV_CONSOLE_TEXT_QUIET_SWITCH = 10,
  TAV_CONSOLE_TEXT_FATAL_HEADER = 13,
  TAV_CONSOLE_TEXT_USAGE_LABEL = 17,
  TAV_CONSOLE_TEXT_HELP_LABEL = 18,
  TAV_CONSOLE_TEXT_HELP_HINT = 21,
  TAV_CONSOLE_TEXT_NO_HELP = 22,
  TAV_CONSOLE_TEXT_UNKNOWN_ARGUMENT = 23,
  TAV_CONSOLE_TEXT_ARGUMENT_NOT_ALLOWED = 24,
  TAV_CONSOLE_TEXT_REPEATED_ARGUMENT = 25,
  TAV_CONSOLE_TEXT_MISSING_SWITCH = 26,
  TAV_CONSOLE_TEXT_NO_VALUE = 27,
  TAV_CONSOLE_TEXT_NO_NUMERIC_VALUE = 28,
  TAV_CONSOLE_TEXT_NON_NUMERIC_VALUE = 29,
  TAV_CONSOLE_TEXT_COPYRIGHT_LABEL = 34,
  TAV_CONSOLE_TEXT_LEVEL_LABEL = 35
};

// What the console keeps of its command line: the usage and help texts (private copies), the
// process name and the tagged-line flags, and the streams it writes to.
class TAV_API TavClConsoleUIParams : public TavClMemoryManagedObject {
 public:
  // The process name is argument 0 without its directory and without an ".exe" extension.
  explicit TavClConsoleUIParams(const char* argv0);
  ~TavClConsoleUIParams();
  TavClConsoleUIParams(const TavClConsoleUIParams&) = delete;
  TavClConsoleUIParams& operator=(const TavClConsoleUIParams&) = delete;

  // Replaces the copies; a null or empty usage restores the empty default (no validation), a
  // null help means no help text.
  void setUsage(const char* usage, const char* help);
  // The usage copy, or the shared empty default.
  const char* getUsage() const { return usage; }
  bool hasUsage() const { return usage != kEmptyUsage; }
  // Null when there is no help text.
  const char* getHelp() const { return help; }

  const char* getProcessName() const { return processName; }
  size_t getProcessNameLength() const { return processNameLength; }

  // Quiet mode replaces the console's output stream by none: its output is dropped.
  void setQuietMode(bool quiet) { quietMode = quiet; }
  bool isQuietMode() const { return quietMode; }

  void hideTaggedLines() { taggedLinesHidden = true; }
  void disableTaggedLines() { taggedLinesHidden = taggedLinesDisabled = true; }
  bool areTaggedLinesHidden() const { return taggedLinesHidden; }
  bool areTaggedLinesDisabled() const { return taggedLinesDisabled; }

  // The standard output and error streams (stdout and stderr unless redirected; a null stream
  // drops what would go there), and the console's output stream: the standard output, or null
  // in quiet mode.
  void redirectStreams(FILE* output, FILE* error) {
    standardOutput = output;
    standardError = error;
  }
  FILE* getStandardOutput() const { return standardOutput; }
  FILE* getStandardError() const { return standardError; }
  FILE* getConsoleOutput() const { return quietMode ? nullptr : standardOutput; }

  static constexpr size_t kProcessNameSize = 261;

 private:
  static const char kEmptyUsage[];

  const char* usage = kEmptyUsage;
  char* help = nullptr;
  char processName[kProcessNameSize];
  size_t processNameLength = 0;
  bool quietMode = false;
  bool taggedLinesHidden = false;
  bool taggedLinesDisabled = false;
  FILE* standardOutput;
  FILE* standardError;
};

class TAV_API TavClConsoleUI {
 public:
  // Title, subtitle and the two copyright texts may each be null. The built-in "-copyright" and
  // "-quiet" switches act only when copyright information is given; "-copyright" then ends the
  // process here.
  TavClConsoleUI(int argc, const char* const* argv, const char* title = nullptr,
                 const char* subtitle = nullptr, const char* copyright = nullptr,
                 const char* level = nullptr);
  // Title and subtitle as message ids of the library's catalog; an id the catalog lacks counts
  // as no text, and without a title there is no subtitle either.
  TavClConsoleUI(int argc, const char* const* argv, unsigned long titleId, unsigned long subtitleId,
                 const char* copyright = nullptr, const char* level = nullptr);
  ~TavClConsoleUI();
  TavClConsoleUI(const TavClConsoleUI&) = delete;
  TavClConsoleUI& operator=(const TavClConsoleUI&) = delete;

  // Consoles created after this call take their texts from the built-in string table rather
  // than from the catalog module of the user's language.
  static void useBuiltInStringTable(bool use);

  // Sets the usage and help texts, handles the help switches and validates the arguments.
  void handleUsageHelp(const char* usage, const char* help = nullptr);
  // The same with the texts taken from the catalog; a help id the catalog lacks means no help.
  void handleUsageHelp(unsigned long usageId, unsigned long helpId);
  // The validation step of handleUsageHelp without its end: an error line on the standard error
  // stream for every fault of the arguments against the current usage string, and their count.
  // With the empty default usage nothing is checked.
  unsigned long checkArguments() const;
  // Sets the texts, shows the usage, then the help; ends with 201 when exitAfter is set.
  void displayUsageHelp(const char* usage, const char* help, bool exitAfter);
  void displayUsage(bool exitAfter) const;
  void displayHelp(bool exitAfter) const;
  // A line feed, the process name, the title and the subtitle on the console's output stream;
  // nothing without a title.
  void displayTitle(const char* title, const char* subtitle) const;

  void hideTaggedLines();
  // Hides tagged lines and rejects arguments that match a token on a tagged line.
  void disableTaggedLines();

  // The switch is present. Keys: a letter ('v' for "-v"), a name with or without its '-', or
  // the message id of the name.
  bool hasArgSwitch(char key) const;
  bool hasArgSwitch(const char* key) const;
  bool hasArgSwitch(unsigned long keyId) const;
  // The switch is present with a value, stored unchanged; present without one ends with 203.
  bool hasArgString(char key, const char*& value) const;
  bool hasArgString(const char* key, const char*& value) const;
  bool hasArgString(unsigned long keyId, const char*& value) const;
  // The switch is present with a decimal value (a leading '\'' is skipped, the leading number
  // read, then cut to the target type); no value ends with 203, a value that starts with
  // neither a digit nor '-' with 204.
  bool hasArgNumval(char key, short& value) const;
  bool hasArgNumval(char key, int& value) const;
  bool hasArgNumval(char key, long& value) const;
  bool hasArgNumval(const char* key, short& value) const;
  bool hasArgNumval(const char* key, int& value) const;
  bool hasArgNumval(const char* key, long& value) const;
  bool hasArgNumval(unsigned long keyId, short& value) const;
  bool hasArgNumval(unsigned long keyId, int& value) const;
  bool hasArgNumval(unsigned long keyId, long& value) const;
  // The same, ending the process when the switch is missing: 202 without a usage string, 201
  // after the usage display with one.
  void reqArgSwitch(char key) const;
  void reqArgSwitch(const char* key) const;
  void reqArgSwitch(unsigned long keyId) const;
  void reqArgString(char key, const char*& value) const;
  void reqArgString(const char* key, const char*& value) const;
  void reqArgString(unsigned long keyId, const char*& value) const;
  void reqArgNumval(char key, short& value) const;
  void reqArgNumval(char key, int& value) const;
  void reqArgNumval(char key, long& value) const;
  void reqArgNumval(const char* key, short& value) const;
  void reqArgNumval(const char* key, int& value) const;
  void reqArgNumval(const char* key, long& value) const;
  void reqArgNumval(unsigned long keyId, short& value) const;
  void reqArgNumval(unsigned long keyId, int& value) const;
  void reqArgNumval(unsigned long keyId, long& value) const;

  int getArgumentCount() const { return argumentCount; }
  const char* const* getArgumentVector() const { return argumentVector; }
  // The current usage text; the shared empty default before any is set.
  const char* getUsage() const;
  const char* getProcessName() const;
  TavClConsoleUIParams& getParams() const { return *params; }
  const TavClMessageCatalog& getCatalog() const { return *catalog; }
  unsigned long getBaseMessageId() const { return baseMessageId; }

  // Beeps before any non-zero code, then ends the process with code.
  [[noreturn]] void processExit(unsigned long code) const;

  // The console output facility. Each writes to the stream given, which may be null (nothing
  // is written); the console's own output goes to getParams().getConsoleOutput().
  // A header line: the console text at offset, framed.
  void writeHeaderLine(FILE* stream, unsigned long offset) const;
  // An indented line: the text, and the argument after it (after a colon, when there is one).
  void writeMessageLine(FILE* stream, const char* text, const char* argument) const;
  // The indentation that starts an indented line.
  void writeIndentation(FILE* stream) const;
  // An audible signal on the console's output stream.
  void beep() const;
  // The console text at base + offset, copied into out (outSize bytes, cut silently).
  void getText(unsigned long offset, char* out, size_t outSize) const;

  static constexpr unsigned int kIndentation = 4;

 private:
  // Creates the parameters and the catalog; release deletes them.
  void prepare();
  void release();
  void init(const char* title, const char* subtitle, const char* copyright, const char* level);
  void init(unsigned long titleId, unsigned long subtitleId, const char* copyright,
            const char* level);
  void handleBuiltInSwitches(const char* title, const char* subtitle, const char* copyright,
                             const char* level);
  void setUsage(const char* usage, const char* help);
  [[noreturn]] void displayCopyright(const char* copyright, const char* level) const;
  void display(FILE* stream, const char* text, unsigned int indentation, bool usage) const;
  [[noreturn]] void privateFatal(unsigned long code, unsigned long offset,
                                 const char* argument) const;
  [[noreturn]] void fatalMissingArg(const char* name) const;
  void writeSwitchName(const char* name, char* out, size_t outSize) const;
  bool findValue(const char* key, const char*& value) const;
  bool findNumber(const char* key, long& value) const;

  int argumentCount;
  const char* const* argumentVector;
  bool hasCopyrightInfo = false;
  bool builtInTableUsed = false;
  unsigned long baseMessageId = 0;
  TavClMessageCatalog* catalog = nullptr;
  TavClConsoleUIParams* params = nullptr;
};

#endif /* TAV_CONSOLE_H */
