// tav_console_params.cpp - what a console keeps of its command line: usage and help copies, the
// process name, the tagged-line flags and the streams.

#include <cstring>

#include "tav_console.h"

const char TavClConsoleUIParams::kEmptyUsage[] = "";

namespace {

// A copy of text on the memory manager's heap.
char* copyText(const char* text) {
  const size_t size = std::strlen(text) + 1;
  char* copy = static_cast<char*>(tavMalloc(size));
  std::memcpy(copy, text, size);
  return copy;
}

bool isExeExtension(const char* dot) {
  static const char kExe[] = ".exe";
  for (size_t i = 0; i < sizeof kExe; ++i) {
    const char c = dot[i] >= 'A' && dot[i] <= 'Z' ? static_cast<char>(dot[i] - 'A' + 'a') : dot[i];
    if (c != kExe[i]) return false;
  }
  return true;
}

}  // namespace

TavClConsoleUIParams::TavClConsoleUIParams(const char* argv0)
    : standardOutput(stdout), standardError(stderr) {
  const char* name = argv0 != nullptr ? argv0 : "";
  // Both separators on every platform: a Windows path may reach a POSIX program and back.
  for (const char* c = name; *c != '\0'; ++c) {
    if (*c == '/' || *c == '\\' || (*c == ':' && c == name + 1)) name = c + 1;
  }
  size_t length = std::strlen(name);
  if (length >= 4 && isExeExtension(name + length - 4)) length -= 4;
  if (length >= kProcessNameSize) length = kProcessNameSize - 1;
  std::memcpy(processName, name, length);
  processName[length] = '\0';
  processNameLength = length;
}

TavClConsoleUIParams::~TavClConsoleUIParams() { setUsage(nullptr, nullptr); }

void TavClConsoleUIParams::setUsage(const char* newUsage, const char* newHelp) {
  // Copies first: the new texts may be the old copies themselves.
  char* usageCopy = newUsage != nullptr && *newUsage != '\0' ? copyText(newUsage) : nullptr;
  char* helpCopy = nullptr;
  if (newHelp != nullptr) {
    try {
      helpCopy = copyText(newHelp);
    } catch (...) {
      tavFree(usageCopy);
      throw;
    }
  }
  if (usage != kEmptyUsage) tavFree(const_cast<char*>(usage));
  tavFree(help);
  usage = usageCopy != nullptr ? usageCopy : kEmptyUsage;
  help = helpCopy;
}
