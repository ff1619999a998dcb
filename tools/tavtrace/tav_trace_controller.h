// tav_trace_controller.h - the trace controller tool "tavtrace": the trace of another program,
// named by its trace key, shown as its settings and status, formatted as text or as a timeline.
//
// The tool's command line is checked by the console object against the usage string of message
// 151 (with the "-init", "-dump" and "-reset" actions tagged, and so hidden, at its end) and
// explained by the help text of message 152. The console ends the process itself for command-line
// faults (201 to 204). Everything else is decided here and returned as the exit code, so that a
// test can run the whole tool in its own process:
//
//   0  success
//   1  the file named by -file does not exist                "Specified trace file not found"
//   2  the instance holds other than letters, digits, '_', '-' or '@', is empty, or is longer
//      than 64 characters
//                                                            "Invalid instance"
//   3  without -file, the key's trace file does not exist    "Trace file could not be
//                                                            identified; specified key may be
//                                                            invalid"
//   4  -init could not create the trace file, or -reset could not remove it
//                                                            "Could not initialize trace"
//   5  the trace file cannot be read                         "Could not open trace file for
//                                                            read access"
//   6  the trace file ends inside a record                   "Trace file corrupted:
//                                                            unexpected end-of-file"
//   7  a record's data does not fit its type                 "Trace file corrupted: invalid
//                                                            data found"
//   8  -dump found the key's shared ring, but its memory is not a ring (a corrupt or foreign
//      mapping), or the system refused to map it      "Shared trace buffer refused"
//   204  a filter or format value the tool cannot use (an empty -format, a -fpid or -ftid that
//        is not a 32-bit number, a -fdetail that is no level, a -fcompids with other characters
//        than digits and ".*-+,")                            "Invalid value specified"
//
// Actions, in this order: "-reset" removes the trace file, "-init" creates it empty, "-dump"
// first saves what the key's shared ring (see _TRACE_SHARED) holds and no earlier dump or
// hand-out has saved, appending it to the trace file, and then shows the file's bytes in
// hexadecimal, "-display" formats it (as text, or with "-format chrome" as
// trace-event JSON for a timeline viewer). The status display comes when no action is given,
// and first of all with "-verbose".

#ifndef TAV_TRACE_CONTROLLER_H
#define TAV_TRACE_CONTROLLER_H

#include <cstddef>
#include <cstdio>
#include <string>

class TavClConsoleUI;
class TavClTraceEnvironment;
class TavClTraceFormatter;

class TavClTraceController {
 public:
  enum TavEnExitCode : int {
    kExitOk = 0,
    kExitFileNotFound = 1,
    kExitInvalidInstance = 2,
    kExitUnknownKey = 3,
    kExitCouldNotInitialize = 4,
    kExitCouldNotOpen = 5,
    kExitUnexpectedEof = 6,
    kExitFileCorrupted = 7,
    kExitSharedRingRefused = 8,
    kExitInvalidValue = 204
  };

  // The message ids of the tool's texts.
  static constexpr unsigned long kTitleMessage = 150;
  static constexpr unsigned long kUsageMessage = 151;
  static constexpr unsigned long kHelpMessage = 152;

  // The tool writes to the console's standard output and error streams.
  explicit TavClTraceController(TavClConsoleUI& console);

  // Checks the command line (the console ends the process on a fault), runs the actions and
  // returns the exit code. The trace instance lives until the process ends.
  int run();

  // The usage string the command line is checked against: message 151 and the hidden actions.
  static void buildUsage(const TavClConsoleUI& console, char* out, size_t outSize);

 private:
  int runActions();
  const char* findInvalidValue() const;
  int locateTraceFile(bool mustExist);
  int removeTraceFile();
  int createTraceFile();
  int saveSharedRing();
  int dumpTraceFile();
  int formatTraceFile();
  void configureFormatter(TavClTraceFormatter& formatter) const;
  void displayStatus();
  int fail(int code, unsigned long messageId, const char* argument = nullptr) const;
  const char* text(unsigned long messageId, char* out, size_t outSize) const;

  TavClConsoleUI& console;
  FILE* output;
  FILE* error;
  const char* key = nullptr;
  const char* instance = nullptr;
  const char* fileOption = nullptr;
  std::string traceFile;
  TavClTraceEnvironment* environment = nullptr;
};

#endif  // TAV_TRACE_CONTROLLER_H
