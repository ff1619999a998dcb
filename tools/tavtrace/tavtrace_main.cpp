// tavtrace - the trace controller: shows the trace settings and status of a program that
// traces, and formats its trace file. All of it lives in TavClTraceController.

#include "tav_console.h"
#include "tav_trace_controller.h"

int main(int argc, char** argv) {
  TavClConsoleUI console(argc, argv);
  const int code = TavClTraceController(console).run();
  if (code != 0) console.processExit(static_cast<unsigned long>(code));
  return 0;
}
