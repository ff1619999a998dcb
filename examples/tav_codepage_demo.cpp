// tav_codepage_demo.cpp - converts a line of EBCDIC 37 into UTF-8 and back, prints the bytes of
// each step and which routine each converter chose.
//
// Both directions go through UCS-2. EBCDIC 37 into UCS-2 is one of the library's built-in
// tables, so that direction needs no ICU; UCS-2 into EBCDIC 37 has no built-in table and is
// ICU's converter, so the way back is shown only where ICU is present.

#include <cstdio>
#include <cstring>

#include "tav_codepage.h"

namespace {

void printBytes(const char* label, const char* bytes, size_t size) {
  std::printf("%-18s", label);
  for (size_t i = 0; i < size; ++i) std::printf(" %02X", static_cast<unsigned char>(bytes[i]));
  std::printf("  (%zu bytes)\n", size);
}

// How a converter's (first) stage converts, in words.
const char* routineOf(const TavClConverterABase& converter) {
  TavClConverterABase::TavPfuConverterAlgorithm routine = converter.getAlgorithm();
  if (routine == tavConvertByTablesSBCS_EBCDICtoUCS2) return "the built-in single-byte table";
  if (converter.requiresExternalICUData()) return "ICU";
  return converter.isSupported() ? "a built-in routine" : "nothing (unsupported)";
}

}  // namespace

int main() {
  // "Grüße aus TAV: café, 1+1=2!" in EBCDIC 37.
  const char ebcdic[] =
      "\xC7\x99\xDC\x59\x85\x40\x81\xA4\xA2\x40\xE3\xC1\xE5\x7A\x40\x83\x81\x86\x51\x6B\x40\xF1"
      "\x4E\xF1\x7E\xF2\x5A";
  const size_t ebcdicSize = sizeof ebcdic - 1;
  TavClCodePage2UTF8Converter toUtf8(TAV_CCSID_EBCDIC_37);
  TavClUnicode2CodePageConverter toEbcdic(TAV_CCSID_EBCDIC_37);
  std::printf("EBCDIC 37 -> UCS-2 through %s\n", routineOf(toUtf8));
  std::printf("UCS-2 -> EBCDIC 37 through %s\n", routineOf(toEbcdic));
  printBytes("EBCDIC 37:", ebcdic, ebcdicSize);

  char utf8[128];
  size_t utf8Size = toUtf8.convertBytes(utf8, sizeof utf8, ebcdic, ebcdicSize);
  printBytes("UTF-8:", utf8, utf8Size);
  std::printf("text: %.*s\n", static_cast<int>(utf8Size), utf8);
  if (toUtf8.getError().id != NO_ERROR || utf8Size == 0) return 1;

  if (!toEbcdic.isSupported()) {
    std::printf("the way back into EBCDIC 37 needs ICU, which this system does not have.\n");
    return 0;
  }
  TavClCodePage2CodePageConverter back(TAV_CCSID_UTF8, TAV_CCSID_EBCDIC_37);
  char again[128];
  size_t againSize = back.convertBytes(again, sizeof again, utf8, utf8Size);
  printBytes("EBCDIC 37 again:", again, againSize);
  bool same = againSize == ebcdicSize && std::memcmp(again, ebcdic, againSize) == 0;
  std::printf("round trip: %s\n", same ? "the same bytes" : "DIFFERENT");
  return same ? 0 : 1;
}
