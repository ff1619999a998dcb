// tav_test_child.h - a child process for tests that need one to end or to observe.

#ifndef TAV_TEST_CHILD_H
#define TAV_TEST_CHILD_H

#include <cstdint>

namespace tav::test {

// Starts a process that does nothing until it is ended from outside; returns its id.
uint32_t startWaitingChild();
// Waits up to timeoutMilliseconds for a child from startWaitingChild to end, and reaps it.
bool waitForChildEnd(uint32_t processId, uint32_t timeoutMilliseconds);
// The id of this process as the operating system reports it.
uint32_t nativeProcessId();

}  // namespace tav::test

#endif  // TAV_TEST_CHILD_H
