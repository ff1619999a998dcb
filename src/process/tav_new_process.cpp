// tav_new_process.cpp - the launchers: collecting a command line and starting the program.
//
// The arguments are kept twice: as the Windows command-line text, quoted by the rule in
// tav_command_line.h, and as a list, which POSIX hands to the child unchanged. Each platform
// uses the form that its system takes.

#include <cstdio>
#include <string>
#include <vector>

#include "tav_command_line.h"
#include "tav_exefile.h"
#include "tav_newprocess.h"
#include "tav_process_os.h"

struct TavClNewProcessABase::Arguments : TavClMemoryManagedObject {
  std::string commandLine;
  std::vector<std::string> list;
};

TavClNewProcessABase::TavClNewProcessABase(const TavClExeFile& program) : arguments(new Arguments) {
  addArgument(program.getName());
}

TavClNewProcessABase::~TavClNewProcessABase() { delete arguments; }

void TavClNewProcessABase::addArgument(const char* argument) {
  if (argument == nullptr) return;
  tav::process::appendQuotedArgument(arguments->commandLine, argument);
  arguments->list.emplace_back(argument);
  ++argumentCount;
}

void TavClNewProcessABase::addArgument(long number) {
  char text[24];
  std::snprintf(text, sizeof text, "%ld", number);
  addArgument(text);
}

void TavClNewProcessABase::addArgument(unsigned long number) {
  char text[24];
  std::snprintf(text, sizeof text, "%lu", number);
  addArgument(text);
}

const char* TavClNewProcessABase::getCommandLine() const { return arguments->commandLine.c_str(); }

void TavClNewProcessABase::prepareLaunch() {
  error = {PROCESS_COULD_NOT_LAUNCH, TAV_CLASS_UNKNOWN_PROCESS};
}

bool TavClNewProcessABase::start(bool waitForEnd) {
  prepareLaunch();
  std::vector<const char*> argv;
  argv.reserve(arguments->list.size() + 1);
  for (const std::string& argument : arguments->list) argv.push_back(argument.c_str());
  argv.push_back(nullptr);
  const tav::os::ProcessStart request{argv.data(), arguments->commandLine.c_str(), newConsole,
                                      waitForEnd};
  uint32_t value = 0;
  const tav::os::OsStatus status = tav::os::startProcess(request, &value);
  if (!status.ok()) {
    result = static_cast<uint32_t>(status.code);
    return false;
  }
  result = value;
  error = {NO_ERROR, TAV_CLASS_UNKNOWN};
  return true;
}

bool TavClNewSyncProcess::launch() { return start(true); }

bool TavClNewAsyncProcess::launch() { return start(false); }
