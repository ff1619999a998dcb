// tav_icu_os.h - the few ICU converter calls the library makes, in its own types.
//
// posix/ calls the ICU linked with the library. win32/ loads the system's icu.dll once, on
// first use, and finds its entry points (which carry no version suffix there); where the DLL is
// absent, or lacks one of them, every open fails with ICU's U_UNSUPPORTED_ERROR and the
// converters that would need ICU stay unsupported.
//
// Status codes are ICU's UErrorCode values: 0 success, negative warnings, positive errors.

#ifndef TAV_ICU_OS_H
#define TAV_ICU_OS_H

#include <cstdint>

#include "tav_export.h"

namespace tav::os {

using IcuConverter = void*;

inline constexpr int32_t kIcuUnsupportedError = 16;     // U_UNSUPPORTED_ERROR
inline constexpr int32_t kIcuBufferOverflowError = 15;  // U_BUFFER_OVERFLOW_ERROR

// Whether ICU can be used at all in this process.
TAV_INTERNAL_API bool icuIsAvailable();

// Open a converter by ICU's name for it, or by CCSID; null with *status set on failure.
IcuConverter icuOpenByName(const char* name, int32_t* status);
IcuConverter icuOpenByCCSID(int32_t ccsid, int32_t* status);
// Lets the converter use fallback mappings (a near character where no exact one exists).
void icuSetFallback(IcuConverter converter, bool useFallback);
void icuClose(IcuConverter converter);

// One conversion step: converts from *source up to sourceLimit into *target up to targetLimit,
// advancing both pointers; flush says the input ends at sourceLimit. *status must be 0 before.
void icuToUnicode(IcuConverter converter, char16_t** target, const char16_t* targetLimit,
                  const char** source, const char* sourceLimit, bool flush, int32_t* status);
void icuFromUnicode(IcuConverter converter, char** target, const char* targetLimit,
                    const char16_t** source, const char16_t* sourceLimit, bool flush,
                    int32_t* status);

}  // namespace tav::os

#endif  // TAV_ICU_OS_H
