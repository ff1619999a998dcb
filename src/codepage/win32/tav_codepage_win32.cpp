// tav_codepage_win32.cpp - the process code pages and WideCharToMultiByte.

#include <windows.h>

#include <climits>

#include "../tav_codepage_os.h"

namespace tav::os {

uint32_t processAnsiCodePage() { return GetACP(); }

uint32_t processOemCodePage() { return GetOEMCP(); }

size_t convertUcs2ToProcessCodePage(uint32_t ccsid, const char* in, size_t inSize, char* out,
                                    size_t outSize) {
  size_t units = inSize / 2;
  // With an output size of 0 the call would report the size it needs instead of converting.
  if (ccsid == 0 || units == 0 || outSize == 0 || units > INT_MAX) return 0;
  int outLimit = outSize > INT_MAX ? INT_MAX : static_cast<int>(outSize);
  int written = WideCharToMultiByte(ccsid, 0, reinterpret_cast<LPCWCH>(in), static_cast<int>(units),
                                    out, outLimit, nullptr, nullptr);
  return written > 0 ? static_cast<size_t>(written) : 0;
}

}  // namespace tav::os
