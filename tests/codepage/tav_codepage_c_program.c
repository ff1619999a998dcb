/* tav_codepage_c_program.c - the code page C interface compiled as C, so that its header must
 * stay valid C. */

#include "tav_codepage_c.h"

/* Whether the library converts between the two CCSIDs, through a handle opened and closed
 * in C. */
int tavCodepageCIsSupported(uint32_t source, uint32_t target) {
  TavStConverter* converter = tavConverterOpen(source, target);
  int supported = tavConverterIsSupported(converter);
  tavConverterClose(converter);
  return supported;
}
