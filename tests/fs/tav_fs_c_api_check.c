/* Compiled as C: the C part of tav_filename.h must stay valid C. */
#include <string.h>

#include "tav_filename.h"

int tavFsCApiCheck(void) {
  const char* directory = tavGetTmpDirectory();
  TavEnPathStyle style = TAV_PATH_STYLE_SLASH;
  char buffer[TAV_PATH_BUFFER_SIZE];
  buffer[TAV_PATH_MAX_LENGTH] = '\0';
  return directory != NULL && strlen(directory) > 0 && style == 1 && buffer[260] == '\0';
}
