// tav_command_line.h - the rules for a Windows command line, as plain functions.
//
// On Windows a child receives one text and splits it into arguments itself; these rules write
// the text so that the standard splitting gives back exactly the arguments written, and tell
// when a batch file's arguments must be refused. They depend on nothing of the host, so that
// they are tested on every platform.

#ifndef TAV_COMMAND_LINE_H
#define TAV_COMMAND_LINE_H

#include <string>

#include "tav_export.h"

namespace tav::process {

// Appends argument to line, after one blank unless line is empty. An argument without blanks,
// tabs, line breaks and double quotes, and not empty, is written as it is. Any other is
// enclosed in double quotes; inside them a double quote is written as \" and the backslashes
// before a double quote or before the closing quote are doubled, as the standard splitting
// reads them. So a\b stays a\b, "b c" is written for b c, and "C:\my dir\\" for C:\my dir\.
TAV_INTERNAL_API void appendQuotedArgument(std::string& line, const char* argument);

// The name ends in ".bat" or ".cmd", in any letter case: the system hands it to the command
// interpreter, which reads the command line again by rules of its own.
TAV_INTERNAL_API bool isBatchFileName(const char* programName);

// The argument holds a character that the command interpreter treats specially even inside
// double quotes, or that ends a quoted text for it: " % ! ^ & | < > ( ) or a line break.
// Such an argument cannot be passed to a batch file safely.
TAV_INTERNAL_API bool isUnsafeBatchArgument(const char* argument);

}  // namespace tav::process

#endif  // TAV_COMMAND_LINE_H
