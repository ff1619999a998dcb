// tav_codepage_posix.cpp - the process code page is the codeset of the environment's locale.
//
// The locale is built from the environment with newlocale and asked with nl_langinfo_l, so
// the process locale (setlocale) stays as the program set it. The conversion into it is iconv
// from UCS-2 in host byte order, all or nothing like the Windows call it stands in for.

#include <iconv.h>
#include <langinfo.h>
#include <locale.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "../tav_codepage_os.h"
#include "../tav_codeset_names.h"

namespace tav::os {

namespace {

// The codeset name of the environment's locale; "ANSI_X3.4-1968" (ASCII) when the environment
// names no locale the system has.
std::string environmentCodeset() {
  locale_t locale = newlocale(LC_ALL_MASK, "", static_cast<locale_t>(0));
  if (locale == static_cast<locale_t>(0)) return "ANSI_X3.4-1968";
  std::string codeset = nl_langinfo_l(CODESET, locale);
  freelocale(locale);
  return codeset;
}

const char* hostUcs2Name() {
  const uint16_t probe = 1;
  unsigned char first = 0;
  std::memcpy(&first, &probe, 1);
  return first == 1 ? "UCS-2LE" : "UCS-2BE";
}

}  // namespace

uint32_t processAnsiCodePage() {
  return codepage::ccsidForCodesetName(environmentCodeset().c_str());
}

uint32_t processOemCodePage() { return processAnsiCodePage(); }

size_t convertUcs2ToProcessCodePage(uint32_t ccsid, const char* in, size_t inSize, char* out,
                                    size_t outSize) {
  std::string codeset = environmentCodeset();
  if (ccsid == 0 || codepage::ccsidForCodesetName(codeset.c_str()) != ccsid) return 0;
  // Characters without a form in the codeset become a replacement, as with the Windows call.
  iconv_t converter = iconv_open((codeset + "//TRANSLIT").c_str(), hostUcs2Name());
  if (converter == reinterpret_cast<iconv_t>(-1)) return 0;
  // iconv's interface takes a non-const input pointer but does not write through it.
  char* source = const_cast<char*>(in);
  size_t sourceLeft = inSize - inSize % 2;
  char* target = out;
  size_t targetLeft = outSize;
  size_t result = iconv(converter, &source, &sourceLeft, &target, &targetLeft);
  if (result != static_cast<size_t>(-1)) {
    result = iconv(converter, nullptr, nullptr, &target, &targetLeft);
  }
  iconv_close(converter);
  if (result == static_cast<size_t>(-1) || sourceLeft != 0) return 0;
  return outSize - targetLeft;
}

}  // namespace tav::os
