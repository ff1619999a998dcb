// tav_newprocess.h - starting other programs, waiting for them or letting them run on.
//
// A launcher is made from a located program (TavClExeFile), collects the arguments one by one
// and starts the program: TavClNewSyncProcess waits for it and keeps its exit code,
// TavClNewAsyncProcess lets it run and keeps its process id, which TavClProcess::kill can end.
// Nothing throws and nothing is reported: a failed start returns false, sets the error to
// PROCESS_COULD_NOT_LAUNCH with class UNKNOWN_PROCESS, and leaves the system's code (errno on
// POSIX, GetLastError on Windows) as the result.
//
// Every argument reaches the program exactly as given, on both platforms:
// - The launcher keeps the command-line text that Windows hands to a program. An argument is
//   written as it is when it holds no blank, tab, line break or double quote and is not empty
//   (a, C:\dir\); any other is enclosed in double quotes, a double quote inside written as \"
//   and the backslashes before a double quote or the closing quote doubled (b c gives "b c",
//   C:\my dir\ gives "C:\my dir\\", x" "--force gives "x\" \"--force"). The child's standard
//   splitting of the text thus gives back every argument, empty ones and tabs included.
// - On POSIX the text is kept but not used: the program starts with posix_spawn from the list
//   of arguments itself, with no shell between, and its cost does not grow with the memory the
//   calling process holds.
// - A batch file (".bat", ".cmd") on Windows runs in the command interpreter, which reads the
//   command line again by rules of its own that no quoting can satisfy. A launch of one whose
//   arguments (after the program name) hold one of " % ! ^ & | < > ( ) or a line break is
//   refused: false, PROCESS_COULD_NOT_LAUNCH, and TAV_NEWPROCESS_UNSAFE_BATCH_ARGUMENT
//   (ERROR_BAD_ARGUMENTS, 160) as the result.
//
// Nothing of the calling process is inherited beyond its standard input, output and error: on
// Windows no handle at all; on POSIX every descriptor above 2 is closed in the child, also
// those the caller opened without close-on-exec. The child gets the caller's environment and
// working directory.
//
// On POSIX:
// - a child ended by a signal reports 128 plus the signal number as its exit code;
// - an asynchronous child starts through an intermediate process that ends at once, so that
//   when the program ends it leaves no zombie behind, without any signal handler of the
//   library; the id returned is the program's own. The intermediate process is made with
//   fork, so unlike a synchronous launch an asynchronous one costs more in a caller that holds
//   much memory (fork copies its page tables);
// - there are no consoles, so the new-console flag has no effect.

#ifndef TAV_NEWPROCESS_H
#define TAV_NEWPROCESS_H

#include <stdint.h>

#include "tav_error.h"
#include "tav_export.h"
#include "tav_memmgr.h"

class TavClExeFile;

// The result of a launch refused because a batch file's arguments are unsafe.
#define TAV_NEWPROCESS_UNSAFE_BATCH_ARGUMENT 160

class TAV_API TavClNewProcessABase : public TavClMemoryManagedObject {
 public:
  virtual ~TavClNewProcessABase();
  TavClNewProcessABase(const TavClNewProcessABase&) = delete;
  TavClNewProcessABase& operator=(const TavClNewProcessABase&) = delete;

  // Starts the program with the arguments collected so far; true when it started (and, for a
  // synchronous launch, ended). May be called again: the same command line is used.
  virtual bool launch() = 0;

  // Appends one argument; a null pointer adds nothing.
  void addArgument(const char* argument);
  // Appends the decimal text of a number.
  void addArgument(long number);
  void addArgument(unsigned long number);
  void addArgument(int number) { addArgument(static_cast<long>(number)); }
  void addArgument(unsigned int number) { addArgument(static_cast<unsigned long>(number)); }

  // After launch: the exit code (synchronous), the process id (asynchronous), or the system's
  // code of a failed start.
  uint32_t getResult() const { return result; }
  // NO_ERROR after a successful launch; PROCESS_COULD_NOT_LAUNCH after a failed one.
  const _TavStError& getError() const { return error; }
  // The command line as Windows receives it: the program's name, then the arguments.
  const char* getCommandLine() const;
  // The items of the command line, the program's name included.
  int32_t getArgumentCount() const { return argumentCount; }

  // On Windows the child gets a console of its own.
  void setNewConsole(bool on) { newConsole = on; }
  bool hasNewConsole() const { return newConsole; }

 protected:
  // Starts the command line with the program's name as the file holds it (the full name when
  // it was found by a search).
  explicit TavClNewProcessABase(const TavClExeFile& program);

  // Presets the error of a failed start; every launch calls it first.
  void prepareLaunch();
  // prepareLaunch, then the start; waits for the end when waitForEnd.
  bool start(bool waitForEnd);

 private:
  struct Arguments;

  _TavStError error{NO_ERROR, TAV_CLASS_UNKNOWN};
  bool newConsole = false;
  int32_t argumentCount = 0;
  uint32_t result = 0;
  Arguments* arguments;  // the command-line text and the list of arguments beside it
};

class TAV_API TavClNewSyncProcess : public TavClNewProcessABase {
 public:
  explicit TavClNewSyncProcess(const TavClExeFile& program) : TavClNewProcessABase(program) {}
  // Starts the program and waits until it ends; the result is its exit code.
  bool launch() override;
};

class TAV_API TavClNewAsyncProcess : public TavClNewProcessABase {
 public:
  explicit TavClNewAsyncProcess(const TavClExeFile& program) : TavClNewProcessABase(program) {}
  // Starts the program and returns at once; the result is its process id.
  bool launch() override;
};

#endif  // TAV_NEWPROCESS_H
