/* tav_utils.h - small C functions: numbers to text, 16-bit byte order, sleeping, the time
 * stamp, the platform and library level, and string search, count, copy and wildcard matching.
 *
 * The conversion functions write into a caller's buffer without a size argument; the buffer
 * must hold TAV_INT32_TEXT_SIZE or TAV_INT64_TEXT_SIZE bytes (the longest text and its NUL).
 */
#ifndef TAV_UTILS_H
#define TAV_UTILS_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#include "tav_export.h"

#define TAV_INT32_TEXT_SIZE 12 /* "-2147483648" */
#define TAV_INT64_TEXT_SIZE 21 /* "-9223372036854775808", "18446744073709551615" */

TAV_EXTERN_C_BEGIN

/* Decimal text, "-" first for negative values; the result is the length without the NUL. */
TAV_API int tavItoa(int32_t value, char* buffer);
TAV_API int tavLtoa(int32_t value, char* buffer);
TAV_API int tavULtoa(uint32_t value, char* buffer);
TAV_API int tavI64toa(int64_t value, char* buffer);
TAV_API int tavW64toa(uint64_t value, char* buffer);

/* Swap the two bytes of every 16-bit unit in place. An odd length leaves the last byte alone.
 * Both supported platforms are little-endian, so the host/little pairs do nothing. */
TAV_API void tavEndianConvertW16LittleToBig(void* buffer, size_t length);
TAV_API void tavEndianConvertW16BigToLittle(void* buffer, size_t length);
TAV_API void tavEndianConvertW16HostToBig(void* buffer, size_t length);
TAV_API void tavEndianConvertW16BigToHost(void* buffer, size_t length);
TAV_API void tavEndianConvertW16HostToLittle(void* buffer, size_t length);
TAV_API void tavEndianConvertW16LittleToHost(void* buffer, size_t length);

/* Sleeps. Each unit is converted to the next smaller one in 32-bit arithmetic, so very large
 * counts wrap: tavSleepHours(1193) and above sleep less than asked. */
TAV_API void tavSleepHours(uint32_t hours);
TAV_API void tavSleepMinutes(uint32_t minutes);
TAV_API void tavSleepSeconds(uint32_t seconds);
TAV_API void tavSleepMilliSeconds(uint32_t milliseconds);

/* Milliseconds since system start (Windows) or since an unspecified monotonic start (POSIX),
 * 32-bit and wrapping. */
TAV_API uint32_t tavGetTimeStamp(void);

/* 512 on the Windows NT family; 0 on POSIX and any other platform. */
TAV_API uint32_t tavGetOperatingSystemId(void);

TAV_API const char* tavLibraryGetLevel(void); /* "TAVLibR5-29" */
TAV_API const char* tavLibraryGetTod(void);   /* "May 13 2010" */
TAV_API bool tavLibraryIsShipCode(void);      /* true in a release build of the library */

/* The first occurrence of pattern in text, or null. Case-insensitive search walks text and
 * pattern together and restarts the pattern at the character after a mismatch without
 * comparing that character again with the pattern's start: "ab" is not found in "aab".
 * An empty pattern is found at the start of the text. */
TAV_API const char* tavStrFind(const char* text, const char* pattern, bool ignoreCase);

/* The number of occurrences of character in text. */
TAV_API size_t tavStrCount(const char* text, char character);

/* Copies source into destination up to, not including, the delimiter or the end of source,
 * terminates destination and returns the number of characters copied. destination must hold
 * strlen(source) + 1 bytes. */
TAV_API size_t tavStrCopyUntil(char* destination, const char* source, char delimiter);

/* Whether the whole text matches the pattern: "?" matches one character, "*" any run of
 * characters, every other character itself (ignoring letter case unless caseSensitive). Runs in
 * time proportional to pattern length times text length, whatever the input. */
TAV_API bool tavMatchesWildcardPattern(const char* pattern, const char* text, bool caseSensitive);

TAV_EXTERN_C_END

#endif /* TAV_UTILS_H */
