// tav_process_os.h - the operating-system calls of the process and environment classes.
//
// Implemented once per platform in posix/ and win32/; the generic files call only these.

#ifndef TAV_PROCESS_OS_H
#define TAV_PROCESS_OS_H

#include <cstdint>

#include "../core/tav_os_status.h"

namespace tav::os {

uint32_t currentProcessId();
uint32_t currentThreadId();

// Has atEnd(value) run when the calling thread ends; a later call from the same thread replaces
// the value. atEnd is the same function in every call of the process (the first one is kept).
// False when the system keeps no more values per thread.
bool callAtThreadEnd(void (*atEnd)(void* value), void* value);

// Tells the process to end: success when told; notFound when it cannot be reached (there is no
// such process, or it is not ours to end); any other failure when it was reached but ending it
// failed.
OsStatus killProcess(uint32_t processId);

// What a launcher hands over to start a program.
struct ProcessStart {
  // The program (as the first item) and its arguments, ending with a null pointer.
  const char* const* arguments;
  // The same as one Windows command line, quoted.
  const char* commandLine;
  bool newConsole;  // Windows: a console of the child's own
  bool wait;        // wait for the end and give the exit code, else give the process id
};

// Starts a program; nothing above standard error is inherited. On success *result is the exit
// code (128 + the signal number for a child ended by a signal) or the process id of the
// program. A failure carries the system's code, or TAV_NEWPROCESS_UNSAFE_BATCH_ARGUMENT for a
// refused batch file.
OsStatus startProcess(const ProcessStart& start, uint32_t* result);

// The value of a variable, or null.
const char* getEnvironment(const char* name);
// Hands an assignment to the environment: "NAME=value" sets NAME, the bare "NAME" removes it.
// The text is copied; the caller's buffer may change afterwards.
OsStatus putEnvironment(const char* assignment);

}  // namespace tav::os

#endif  // TAV_PROCESS_OS_H
