// tav_codepage_os.h - the process's code pages and the system's conversion into them.
//
// Implemented once per platform in posix/ and win32/. Windows has an ANSI and an OEM code page
// and converts with WideCharToMultiByte. POSIX has one codeset, that of the environment's locale
// (read without touching the process locale), and converts with iconv.

#ifndef TAV_CODEPAGE_OS_H
#define TAV_CODEPAGE_OS_H

#include <cstddef>
#include <cstdint>

#include "tav_export.h"

namespace tav::os {

// The CCSID of the process's ANSI code page, asked anew on every call; 0 when it has none the
// library knows.
TAV_INTERNAL_API uint32_t processAnsiCodePage();
// The CCSID of the process's console (OEM) code page; on POSIX the same as the ANSI one.
TAV_INTERNAL_API uint32_t processOemCodePage();

// Converts the inSize / 2 UCS-2 units (host byte order) at in into the process code page ccsid
// at out. All or nothing: the bytes written, or 0 when the system cannot convert the units
// (ccsid is not a process code page, a unit has no form there, or out is too small).
TAV_INTERNAL_API size_t convertUcs2ToProcessCodePage(uint32_t ccsid, const char* in, size_t inSize,
                                                     char* out, size_t outSize);

}  // namespace tav::os

#endif  // TAV_CODEPAGE_OS_H
