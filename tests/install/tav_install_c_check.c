/* tav_install_c_check.c - the installed public headers as a strict C99 program sees them.
 *
 * The install check compiles this file as C99 without extensions and with pedantic errors:
 * every public header with a C part must stay valid there, whatever the library itself is
 * built with. */
#include "tav_dump.h"
#include "tav_error.h"
#include "tav_exefile.h"
#include "tav_file.h"
#include "tav_filename.h"
#include "tav_memmgr.h"
#include "tav_message.h"
#include "tav_trace.h"
#include "tav_trace_entry.h"
#include "tav_utils.h"

int tavInstallCCheck(void) {
  _TavStError error = {NO_ERROR, TAV_CLASS_UNKNOWN};
  char text[TAV_INT32_TEXT_SIZE];
  return tavErrorGetIdAsMessageId(error.id) == 47 && tavItoa(-7, text) == 2 && text[0] == '-';
}
