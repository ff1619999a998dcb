// tav_system_os.h - the operating-system calls of the core runtime.
//
// Implemented once per platform in posix/ and win32/; the generic core files call only these.

#ifndef TAV_SYSTEM_OS_H
#define TAV_SYSTEM_OS_H

#include <cstddef>
#include <cstdint>

namespace tav::os {

// Milliseconds since an unspecified start, cut to 32 bits; wraps after about 49.7 days.
uint32_t tickCountMilliseconds();

// The high-resolution counter: a reading in counts, false when the counter cannot be read.
bool readPerformanceCounter(uint64_t* counts);
// Counts per second of that counter; 0 when the platform has none.
uint64_t performanceCounterFrequency();

// Sleeps at least the given number of milliseconds, also when signals interrupt the sleep.
void sleepMilliseconds(uint32_t milliseconds);

// 512 for the NT family, 513 for the 95 family, 514 for Win32s, 0 for any other platform.
uint32_t operatingSystemId();

// Whether allocator is the C runtime's malloc itself, however the calling module reached it
// (directly, or through its own import stub).
bool isRuntimeMalloc(void* (*allocator)(size_t));

// The upper-case mapping of the calling thread's current C locale as a table indexed by an
// unsigned char value, where the C library keeps one that stays valid until the locale changes;
// null where it does not, and then toupper answers.
const int32_t* upperCaseTable();

// Shows the assertion report in a blocking message box where the platform has one.
void showAssertionPopup(const char* report);

}  // namespace tav::os

#endif  // TAV_SYSTEM_OS_H
