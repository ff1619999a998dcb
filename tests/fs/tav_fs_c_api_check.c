/* Compiled as C: the C part of tav_filename.h must stay valid C. */
#include "tav_filename.h"

int tavFsCApiCheck(void) {
  const TavEnPathStyle style = TAV_PATH_STYLE_SLASH;
  const char buffer[TAV_PATH_BUFFER_SIZE] = "";
  return tavGetTmpDirectory()[0] != '\0' && style == 1 && buffer[TAV_PATH_MAX_LENGTH] == '\0';
}

/* Compiled as C: the C part of tav_exefile.h must stay valid C. */
#include "tav_exefile.h"

void* tavExeFileCApiCheck(void) {
  void* handle = tavDllProcLoaderOpen("tav-no-such-library");
  void* entry = tavDllProcLoaderGetProcedure(handle, "none");
  tavDllProcLoaderClose(handle);
  return entry;
}
