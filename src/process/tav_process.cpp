// tav_process.cpp - process and thread identities, and ending a process.

#include "tav_process.h"

#include "tav_process_os.h"

TavClProcessProperty::TavClProcessProperty() : processId(tav::os::currentProcessId()) {}

TavClProcessProperty::TavClProcessProperty(unsigned int processId) : processId(processId) {}

TavClProcess::TavClProcess() : error{NO_ERROR, TAV_CLASS_UNKNOWN} {}

TavClProcess::TavClProcess(unsigned int processId)
    : TavClProcessProperty(processId), error{NO_ERROR, TAV_CLASS_UNKNOWN} {}

bool TavClProcess::kill() {
  error = {PROCESS_COULD_NOT_KILL, TAV_CLASS_INVALID_DATA};
  // A process out of reach counts as ended: there is nothing left for the caller to end.
  const tav::os::OsStatus status = tav::os::killProcess(processId);
  if (!status.ok() && !status.is(tav::os::OsFailure::notFound)) return false;
  error = {NO_ERROR, TAV_CLASS_UNKNOWN};
  return true;
}

TavClThreadProperty::TavClThreadProperty() : threadId(tav::os::currentThreadId()) {}

TavClThreadProperty::TavClThreadProperty(unsigned int threadId) : threadId(threadId) {}
