// tav_utils_system.cpp - sleeping, the time stamp, the platform family and the library level.

#include "tav_system_os.h"
#include "tav_utils.h"

// Sleeping converts each unit to the next smaller one in 32-bit arithmetic; the products wrap
// for very large counts, and callers have been told so.
void tavSleepHours(uint32_t hours) { tavSleepMinutes(hours * 60u); }
void tavSleepMinutes(uint32_t minutes) { tavSleepSeconds(minutes * 60u); }
void tavSleepSeconds(uint32_t seconds) { tavSleepMilliSeconds(seconds * 1000u); }
void tavSleepMilliSeconds(uint32_t milliseconds) { tav::os::sleepMilliseconds(milliseconds); }

uint32_t tavGetTimeStamp(void) { return tav::os::tickCountMilliseconds(); }

uint32_t tavGetOperatingSystemId(void) { return tav::os::operatingSystemId(); }

const char* tavLibraryGetLevel(void) { return "TAVLibR5-29"; }
const char* tavLibraryGetTod(void) { return "May 13 2010"; }

bool tavLibraryIsShipCode(void) {
#ifdef NDEBUG
  return true;
#else
  return false;
#endif
}
