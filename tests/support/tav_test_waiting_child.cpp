// tav_test_waiting_child.cpp - a child of the test program that only waits to be ended.

#include <chrono>
#include <cstdlib>
#include <thread>

#include "tav_test_self_child.h"

namespace tav::test {
namespace {

constexpr char kWaitVariable[] = "TAV_TEST_CHILD_WAIT";

// Runs before main() in the child and never returns there.
const bool waitsForever = [] {
  if (std::getenv(kWaitVariable) == nullptr) return false;
  for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
}();

}  // namespace

uint32_t startWaitingChild() { return startSelfChild(kWaitVariable, "1"); }

}  // namespace tav::test
