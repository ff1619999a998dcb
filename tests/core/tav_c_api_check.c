/* Compiled as C: the C parts of the public headers must stay valid C. */
#include <string.h>

#include "tav_error.h"
#include "tav_memmgr.h"
#include "tav_utils.h"

int tavCApiCheck(void) {
  char text[TAV_INT32_TEXT_SIZE];
  _TavStError error = {NO_ERROR, TAV_CLASS_UNKNOWN};
  char* block = (char*)tavCalloc(4, 4);
  int ok = block[15] == 0;
  tavFree(block);
  ok = ok && tavItoa(-12, text) == 3 && strcmp(text, "-12") == 0;
  ok = ok && tavMatchesWildcardPattern("*.c", "check.c", true);
  ok = ok && tavErrorGetIdAsMessageId(error.id) == 47;
  return ok;
}
