/* tav_ini_c_program.c - the C interface used from C: compiled as C, so the header must be. */

#include <string.h>

#include "tav_ini_c.h"

/* Loads text, raises the port by one, saves to fileName and reports the new port; -1 when any
 * step fails. */
long tavIniCRaisePort(const char* fileName, const char* text) {
  TavStIniFile* file = tavIniFileCreate(fileName);
  long port = 0;
  char digits[24];
  int length = 0;
  if (file == NULL) return -1;
  if (!tavIniFileLoadFromBuffer(file, text, strlen(text)) ||
      !tavIniFileGetInteger(file, "server", "port", &port)) {
    tavIniFileDestroy(file);
    return -1;
  }
  ++port;
  /* Decimal digits of a small positive number, most significant first. */
  {
    char reversed[24];
    long rest = port;
    do {
      reversed[length++] = (char)('0' + rest % 10);
      rest /= 10;
    } while (rest != 0 && length < 20);
    for (int i = 0; i < length; ++i) digits[i] = reversed[length - 1 - i];
    digits[length] = '\0';
  }
  if (!tavIniFileSetText(file, "server", "port", digits) || !tavIniFileSave(file)) port = -1;
  tavIniFileDestroy(file);
  return port;
}
