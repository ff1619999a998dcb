/* Compiled as C: the C part of tav_message.h must stay valid C. */
#include <string.h>

#include "tav_message.h"

int tavMsgCApiCheck(void) {
  TavClMessageCatalogProxy* handle = tavMsgCatOpenOrUseStringTable(
      "no-such-catalog", tavMsgCatGetBuiltInStringTable(), tavMsgCatGetBuiltInStringTableSize());
  int ok = strcmp(tavMsgCatGetVar(handle, 2, "a", "b", (const char*)0),
                  "Percent:% Arg1:a Arg2:b Arg3:??? Arg4:??? Arg5:??? Arg6:??? Arg7:??? "
                  "Arg8:??? Arg9:??? Arg10:???") == 0;
  ok = ok && tavMsgCatIsValid(handle, 1) && !tavMsgCatIsValid(handle, 221);
  tavMsgCatClose(handle);
  return ok;
}
