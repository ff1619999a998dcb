// tav_process.h - the identities of processes and threads.

#ifndef TAV_PROCESS_H
#define TAV_PROCESS_H

#include <stdint.h>

#include "tav_error.h"
#include "tav_export.h"

class TAV_API TavClProcessProperty {
 public:
  TavClProcessProperty();  // the calling process
  explicit TavClProcessProperty(unsigned int processId);

  uint32_t getId() const { return processId; }

 protected:
  uint32_t processId;
};

class TAV_API TavClProcess : public TavClProcessProperty {
 public:
  TavClProcess();
  explicit TavClProcess(unsigned int processId);

  // Ends the process at once. A process that cannot be reached (already ended, or not this
  // user's) counts as ended: the result is true and the error is cleared. False only when the
  // process was reached but refused to end; the error then reads PROCESS_COULD_NOT_KILL with
  // class INVALID_DATA.
  bool kill();
  // The error of the last failed operation; id NO_ERROR after a success.
  const _TavStError& getError() const { return error; }

 private:
  _TavStError error;
};

class TAV_API TavClThreadProperty {
 public:
  TavClThreadProperty();  // the calling thread
  explicit TavClThreadProperty(unsigned int threadId);

  uint32_t getId() const { return threadId; }

 private:
  uint32_t threadId;
};

#endif  // TAV_PROCESS_H
