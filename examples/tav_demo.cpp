// tav_demo - a tour of the library's core services, printing what each call did.
//
// Run it without arguments. It sets and reads an environment switch, converts numbers, matches
// file names against wildcard patterns, looks up a Windows error name, and shows how an
// allocation failure reaches the caller as an exception with its error coordinates.

#include <cstdio>
#include <cstdlib>

#include "tav_environment.h"
#include "tav_error.h"
#include "tav_memmgr.h"
#include "tav_process.h"
#include "tav_utils.h"

namespace {

void showEnvironmentSwitch() {
  TavClEnvironmentVariable verbose("TAV_DEMO_VERBOSE", "Yes");
  std::printf("environment: %s -> enabled=%s\n", verbose.getAssignment(),
              verbose.hasValueEnabled() ? "true" : "false");
  verbose.setNewValue("2");
  std::printf("environment: %s -> enabled=%s\n", verbose.getAssignment(),
              verbose.hasValueEnabled() ? "true" : "false");
  verbose.resetValue();
}

void showNumbers() {
  char text[TAV_INT64_TEXT_SIZE];
  tavItoa(-2147483647 - 1, text);
  std::printf("numbers: tavItoa(INT32_MIN) = %s\n", text);
  tavW64toa(18446744073709551615ull, text);
  std::printf("numbers: tavW64toa(UINT64_MAX) = %s\n", text);
}

void showMatching() {
  const char* names[] = {"report.TXT", "notes.txt.bak", "data_07.csv", "data_7.csv"};
  const char* patterns[] = {"*.txt", "data_??.csv"};
  for (const char* pattern : patterns) {
    for (const char* name : names) {
      if (tavMatchesWildcardPattern(pattern, name, false)) {
        std::printf("matching: %-12s matches %s\n", pattern, name);
      }
    }
  }
  const char* found = tavStrFind("Level TAVLibR5-29", "libr", true);
  std::printf("matching: tavStrFind(..., \"libr\", ignoreCase) -> \"%s\"\n", found ? found : "");
}

void* refuseLargeBlocks(size_t size) { return size > 1024 ? nullptr : std::malloc(size); }

void showAllocationFailure() {
  tavSetNewMemoryManager(refuseLargeBlocks, nullptr, std::free);
  try {
    tavFree(tavMalloc(16));
    std::printf("memory: 16 bytes from the application's allocator\n");
    tavMalloc(1 << 20);
  } catch (const TavClException& failure) {
    std::printf(
        "memory: 1 MiB refused -> exception id %u (message %lu), class %d (message %lu), "
        "severity %d, action %d, at %s\n",
        failure.getId(), tavErrorGetIdAsMessageId(failure.getId()), failure.getErrorClass(),
        tavErrorGetClassAsMessageId(failure.getErrorClass()), failure.getSeverity(),
        failure.getAction(), failure.getModule());
  }
  tavSetNewMemoryManager(std::malloc, nullptr, std::free);
}

}  // namespace

int main() {
  std::printf("library: %s built %s, operating system id %u\n", tavLibraryGetLevel(),
              tavLibraryGetTod(), tavGetOperatingSystemId());
  std::printf("process: id %u, thread %u\n", TavClProcessProperty().getId(),
              TavClThreadProperty().getId());
  showEnvironmentSwitch();
  showNumbers();
  showMatching();
  std::printf("errors: Windows error 2 is %s, 5 is %s\n", tavWinGetErrorAsString(2),
              tavWinGetErrorAsString(5));
  showAllocationFailure();
  return 0;
}
