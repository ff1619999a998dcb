/* tav_codepage_c_program.c - the code page C interface used from C: compiled as C, so the
 * header must be. */

#include <string.h>

#include "tav_codepage_c.h"

/* Converts UTF-8 text into EBCDIC 37 (ebcdic receives the bytes) and back, and returns the
 * length of the round trip when it gives back the text, else -1. */
long tavCodepageCRoundTrip(const char* text, char* ebcdic, size_t ebcdicSize) {
  TavStConverter* there = tavConverterOpen(1208, 37);
  TavStConverter* back = tavConverterOpen(37, 1208);
  char again[64];
  const char* cursor = text;
  const char* ebcdicCursor = ebcdic;
  size_t ebcdicLength = 0;
  size_t length = 0;
  long result = -1;
  if (there != NULL && back != NULL) {
    ebcdicLength = tavConverterConvert(there, ebcdic, ebcdicSize, &cursor, strlen(text));
    length = tavConverterConvert(back, again, sizeof again, &ebcdicCursor, ebcdicLength);
    if (tavConverterGetError(there, NULL) == 0 && tavConverterGetError(back, NULL) == 0 &&
        length == strlen(text) && memcmp(again, text, length) == 0) {
      result = (long)length;
    }
  }
  tavConverterClose(there);
  tavConverterClose(back);
  return result;
}
