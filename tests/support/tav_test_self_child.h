// tav_test_self_child.h - this test program started again as a child with a role to play.
//
// The child gets one variable in its environment; a test file that gives children roles reads it
// while the program starts (before any test runs), plays the role and ends the process. Other
// variables of the parent reach the child as they are.

#ifndef TAV_TEST_SELF_CHILD_H
#define TAV_TEST_SELF_CHILD_H

#include <cstdint>

namespace tav::test {

// Starts this program again with variable set to value; returns the child's id, 0 on failure.
uint32_t startSelfChild(const char* variable, const char* value);
// Ends a child at once, as SIGKILL or TerminateProcess do, and waits until it is gone.
bool killChild(uint32_t processId);
// Waits up to timeoutMilliseconds for a child to end by itself; *exitCode is its exit code.
bool waitForChildExit(uint32_t processId, uint32_t timeoutMilliseconds, int* exitCode);
// Starts this program again as a child that does nothing until it is ended from outside.
uint32_t startWaitingChild();
// The id of this process as the operating system reports it.
uint32_t nativeProcessId();

}  // namespace tav::test

#endif  // TAV_TEST_SELF_CHILD_H
