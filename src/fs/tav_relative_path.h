// tav_relative_path.h - the relative-path rules on a given path style.
//
// The rules of tav_file.h without the host: the style and the current working directory are
// arguments, so the backslash rules (drives, server parts) are exercised on every platform.

#ifndef TAV_RELATIVE_PATH_H
#define TAV_RELATIVE_PATH_H

#include "tav_export.h"
#include "tav_filename.h"

namespace tav::path {

// Not absolute in style, or holding '.' followed by the style's separator.
TAV_INTERNAL_API bool isRelativePathIn(const char* text, TavEnPathStyle style);

// Expands text (a buffer of TAV_PATH_BUFFER_SIZE characters; at most 260 are read) in place,
// starting a relative text from currentDirectory (with or without its final separator). False,
// with the text emptied, when ".." climbs above the root or the result would not fit.
TAV_INTERNAL_API bool expandRelativePathIn(char* text, TavEnPathStyle style,
                                           const char* currentDirectory);

// The separators in pathPart minus one: the directories below the root of a location.
TAV_INTERNAL_API unsigned int countSubDirectories(const char* pathPart, char separator);

}  // namespace tav::path

#endif  // TAV_RELATIVE_PATH_H
