/* tav_ini_c_program.c - the C interface used from C: compiled as C, so the header must be. */

#include <stdio.h>
#include <string.h>

#include "tav_ini_c.h"

/* Loads text, raises the port by one, saves to fileName and reports the new port; -1 when any
 * step fails. */
long tavIniCRaisePort(const char* fileName, const char* text) {
  TavStIniFile* file = tavIniFileCreate(fileName);
  long port = -1;
  char digits[24];
  if (file == NULL) return -1;
  if (tavIniFileLoadFromBuffer(file, text, strlen(text)) &&
      tavIniFileGetInteger(file, "server", "port", &port)) {
    snprintf(digits, sizeof digits, "%ld", ++port);
    if (!tavIniFileSetText(file, "server", "port", digits) || !tavIniFileSave(file)) port = -1;
  }
  tavIniFileDestroy(file);
  return port;
}
