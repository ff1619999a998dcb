// tav_message_substitution.h - putting variable texts into a message's "%1" to "%10".
//
// The rule, scanning left to right: "%%" writes "%". "%" followed by anything else reads the
// decimal number after it as the C runtime's atol does (leading blanks and a sign accepted);
// a number from 1 to the count of variables writes that variable, any other number "???". If
// the character after "%" is a digit, the digits are consumed; otherwise scanning resumes at
// that character, so "%1a" writes variable 1 and "a", and "% 2" writes variable 2 and " 2".
// Every other character is copied. The output stops at the limit.

#ifndef TAV_MESSAGE_SUBSTITUTION_H
#define TAV_MESSAGE_SUBSTITUTION_H

#include <cstddef>

#include "tav_export.h"

namespace tav {

// "???", the text of a variable that is missing. Substitution copies this very text faster than
// any other, so callers that fill in missing variables use it rather than a copy of their own.
extern const char kUnknownMessageVariable[];

// Reads the variable number of a placeholder whose "%" lies just before position, as atol
// would, and moves position to where scanning resumes: behind the digits when the number
// starts with one, else at the character after the "%" (so "% 2" leaves " 2" to be copied).
// The number saturates instead of overflowing.
long readPlaceholderNumber(const char*& position);

// Writes at most `limit` characters and a terminator to `out` (which holds limit + 1 bytes) and
// returns the count written. Null entries among the variables read as "???".
TAV_INTERNAL_API size_t substituteMessageVariables(char* out, size_t limit, const char* in,
                                                   const char* const variables[],
                                                   size_t variableCount);

}  // namespace tav

#endif  // TAV_MESSAGE_SUBSTITUTION_H
