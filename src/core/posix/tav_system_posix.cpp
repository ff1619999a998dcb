// tav_system_posix.cpp - the core runtime's operating-system calls on POSIX.
//
// Only code valid on every POSIX system belongs here.

#include <ctype.h>
#include <dlfcn.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <initializer_list>

#include "../tav_system_os.h"

namespace tav::os {

namespace {

using ClockReader = int (*)(clockid_t, timespec*);

// The kernel's own clock function where the kernel maps one into the process (Linux's vDSO), else
// the C library's. The C library reaches the same function through a jump table and a wrapper,
// which cost a trace record as much again as reading the clock.
ClockReader kernelClockReader() {
  void* kernelFunctions = dlopen("linux-vdso.so.1", RTLD_LAZY | RTLD_LOCAL | RTLD_NOLOAD);
  if (kernelFunctions != nullptr) {
    for (const char* name : {"__vdso_clock_gettime", "__kernel_clock_gettime"}) {
      if (void* function = dlsym(kernelFunctions, name)) {
        return reinterpret_cast<ClockReader>(function);
      }
    }
  }
  return &clock_gettime;
}

}  // namespace

// The coarse clock costs a few nanoseconds where the precise one costs tens, and every trace
// record reads it. Its steps of a few milliseconds are finer than those of the Windows tick
// count it stands in for.
uint32_t tickCountMilliseconds() {
  static const ClockReader readClock = kernelClockReader();
  timespec now{};
  if (readClock(CLOCK_MONOTONIC_COARSE, &now) != 0) clock_gettime(CLOCK_MONOTONIC, &now);
  const uint64_t milliseconds =
      static_cast<uint64_t>(now.tv_sec) * 1000u + static_cast<uint64_t>(now.tv_nsec) / 1000000u;
  return static_cast<uint32_t>(milliseconds);
}

// The monotonic clock in nanoseconds serves as the counter, at a fixed frequency of 10^9.
bool readPerformanceCounter(uint64_t* counts) {
  timespec now{};
  if (clock_gettime(CLOCK_MONOTONIC, &now) != 0) return false;
  *counts = static_cast<uint64_t>(now.tv_sec) * 1000000000u + static_cast<uint64_t>(now.tv_nsec);
  return true;
}

uint64_t performanceCounterFrequency() { return 1000000000u; }

void sleepMilliseconds(uint32_t milliseconds) {
  timespec remaining{static_cast<time_t>(milliseconds / 1000u),
                     static_cast<long>(milliseconds % 1000u) * 1000000L};
  while (nanosleep(&remaining, &remaining) == -1 && errno == EINTR) {
  }
}

#if defined(__GLIBC__)
// The table toupper itself reads (indices -128 to 255 around the pointer).
const int32_t* upperCaseTable() { return *__ctype_toupper_loc(); }
#else
const int32_t* upperCaseTable() { return nullptr; }
#endif

// Function addresses are unique across the process, the shared library included.
bool isRuntimeMalloc(void* (*allocator)(size_t)) { return allocator == &::malloc; }

// There is no platform family to report outside Windows.
uint32_t operatingSystemId() { return 0; }

// There is no pop-up on POSIX: the report on standard error is the whole report.
void showAssertionPopup(const char* /*report*/) {}

}  // namespace tav::os
