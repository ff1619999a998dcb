// tav_codepage_demo.cpp - converts a line of text from UTF-8 into EBCDIC 37 and back, and
// prints the bytes of each step.
//
// Both directions go through UCS-2: UTF-8 is decoded by the library's own routine, and the
// EBCDIC side is ICU's converter for CCSID 37.

#include <cstdio>
#include <cstring>

#include "tav_codepage.h"

namespace {

void printBytes(const char* label, const char* bytes, size_t size) {
  std::printf("%-18s", label);
  for (size_t i = 0; i < size; ++i) std::printf(" %02X", static_cast<unsigned char>(bytes[i]));
  std::printf("  (%zu bytes)\n", size);
}

}  // namespace

int main() {
  const char* line =
      "Gr\xC3\xBC\xC3\x9F"
      "e aus TAV: caf\xC3\xA9, 1+1=2!";
  TavClCodePage2CodePageConverter toEbcdic(TAV_CCSID_UTF8, TAV_CCSID_EBCDIC_37);
  TavClCodePage2UTF8Converter back(TAV_CCSID_EBCDIC_37);
  if (!toEbcdic.isSupported() || !back.isSupported()) {
    std::printf("EBCDIC 37 needs ICU, which this system does not have.\n");
    return 1;
  }

  std::printf("text: %s\n", line);
  printBytes("UTF-8:", line, std::strlen(line));

  char ebcdic[128];
  size_t ebcdicSize = toEbcdic.convertBytes(ebcdic, sizeof ebcdic, line, std::strlen(line));
  printBytes("EBCDIC 37:", ebcdic, ebcdicSize);

  char utf8[128];
  size_t utf8Size = back.convertBytes(utf8, sizeof utf8, ebcdic, ebcdicSize);
  printBytes("UTF-8 again:", utf8, utf8Size);

  bool same = utf8Size == std::strlen(line) && std::memcmp(utf8, line, utf8Size) == 0;
  std::printf("round trip: %s\n", same ? "the same text" : "DIFFERENT");
  return same ? 0 : 1;
}
