// tav_trace_shared_os.cpp - the names of a shared ring's file and lock, and the two ways of
// opening it; the system calls are in posix/ and win32/.

#include "tav_trace_shared_os.h"

namespace tav::trace {
namespace {

constexpr char kNamePrefix[] = "tavring-";
constexpr char kFileSuffix[] = ".shm";

// The resource key's ":" separators are the one character of its alphabet that a file name on
// Windows cannot hold.
std::string nameFromKey(const char* resourceKey) {
  std::string name = kNamePrefix;
  for (const char* c = resourceKey != nullptr ? resourceKey : ""; *c != '\0'; ++c) {
    name += *c == ':' ? '.' : *c;
  }
  return name;
}

}  // namespace

SharedRingMapping::Status SharedRingMapping::create(const char* path, const char* lockName,
                                                    uint64_t ringSize) {
  return open(path, lockName, ringSize, true);
}

SharedRingMapping::Status SharedRingMapping::attach(const char* path, const char* lockName) {
  return open(path, lockName, 0, false);
}

std::string sharedRingFileName(const char* directory, const char* resourceKey) {
  std::string name = directory != nullptr ? directory : "";
  if (!name.empty() && name.back() != '/' && name.back() != '\\') name += '/';
  return name + nameFromKey(resourceKey) + kFileSuffix;
}

std::string sharedRingLockName(const char* resourceKey) { return nameFromKey(resourceKey); }

}  // namespace tav::trace
