// Links against the installed library and calls into it.
#include <cstdio>
#include <cstring>

#include "tav_message.h"
#include "tav_utils.h"

extern "C" int tavInstallCCheck(void);

int main() {
  const bool ok = std::strcmp(tavLibraryGetLevel(), "TAVLibR5-29") == 0 &&
                  tavMatchesWildcardPattern("*.h", "tav_utils.h", true) && tavInstallCCheck();
  // The library's catalog is installed beside it and found from there.
  TavClMessageCatalogProxy* catalog = tavMsgCatOpen(TAV_MSG_LIBRARY_CATALOG);
  const bool catalogFound = catalog != nullptr;
  tavMsgCatClose(catalog);
  if (!catalogFound) std::puts("the installed message catalog is missing");
  std::puts(ok ? "installed library works" : "installed library misbehaves");
  return ok && catalogFound ? 0 : 1;
}
