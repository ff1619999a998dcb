// Links against the installed library and calls into it.
#include <cstdio>
#include <cstring>

#include "tav_utils.h"

int main() {
  const bool ok = std::strcmp(tavLibraryGetLevel(), "TAVLibR5-29") == 0 &&
                  tavMatchesWildcardPattern("*.h", "tav_utils.h", true);
  std::puts(ok ? "installed library works" : "installed library misbehaves");
  return ok ? 0 : 1;
}
