// tav_codeset_names.h - the CCSID of a POSIX codeset name ("UTF-8", "ISO-8859-15", ...).
//
// A pure rule, so it is tested on every platform; the POSIX code page seam uses it for the
// codeset of the environment's locale.

#ifndef TAV_CODESET_NAMES_H
#define TAV_CODESET_NAMES_H

#include <cstdint>

#include "tav_export.h"

namespace tav::codepage {

// The CCSID of the codeset, ignoring case, '-' and '_' ("utf8" is "UTF-8"); 0 for a name the
// library does not know and for null.
TAV_INTERNAL_API uint32_t ccsidForCodesetName(const char* name);

}  // namespace tav::codepage

#endif  // TAV_CODESET_NAMES_H
