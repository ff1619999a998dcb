// tav_process_demo.cpp - finds programs along the search path, runs one and waits for its exit
// code, then starts one in the background and kills it.

#include <cstdio>

#include "tav_exefile.h"
#include "tav_newprocess.h"
#include "tav_process.h"

namespace {

#if defined(_WIN32)
const char* const kShell = "cmd";
const char* const kShellArguments[] = {"/c", "echo", "two words", "say \"hi\"", "&", "exit", "3"};
const char* const kWaiter = "ping";
const char* const kWaiterArguments[] = {"-n", "30", "127.0.0.1"};
#else
// The shell prints each argument it receives between brackets, then ends with code 3.
const char* const kShell = "sh";
const char* const kShellArguments[] = {
    "-c", "printf '  [%s]\\n' \"$@\"; exit 3", "sh", "two words", "say \"hi\"", "C:\\my dir\\"};
const char* const kWaiter = "sleep";
const char* const kWaiterArguments[] = {"30"};
#endif

template <size_t N>
void addAll(TavClNewProcessABase& process, const char* const (&arguments)[N]) {
  for (const char* argument : arguments) process.addArgument(argument);
}

}  // namespace

int main() {
  const TavClExeFile shell(kShell);
  std::printf("%s found along the search path: %s (%s)\n", kShell, shell.getName(),
              shell.isFoundInSystemPath() ? "yes" : "no");

  TavClNewSyncProcess run(shell);
  addAll(run, kShellArguments);
  std::printf("command line: %s\n", run.getCommandLine());
  std::fflush(stdout);
  if (!run.launch()) {
    std::printf("could not start it: system code %u\n", run.getResult());
    return 1;
  }
  std::printf("exit code: %u\n", run.getResult());

  TavClNewAsyncProcess background{TavClExeFile(kWaiter)};
  addAll(background, kWaiterArguments);
  if (!background.launch()) {
    std::printf("could not start %s: system code %u\n", kWaiter, background.getResult());
    return 1;
  }
  std::printf("%s runs in the background as process %u\n", background.getCommandLine(),
              background.getResult());
  TavClProcess running(background.getResult());
  std::printf("killed: %s\n", running.kill() ? "yes" : "no");
  return 0;
}
