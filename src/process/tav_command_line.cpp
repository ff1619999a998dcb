// tav_command_line.cpp - quoting a Windows command line and the batch-file rule.

#include "tav_command_line.h"

#include <cstring>

namespace tav::process {

void appendQuotedArgument(std::string& line, const char* argument) {
  if (!line.empty()) line += ' ';
  if (*argument != '\0' && std::strpbrk(argument, " \t\n\v\"") == nullptr) {
    line += argument;
    return;
  }
  line += '"';
  size_t backslashes = 0;
  for (const char* c = argument; *c != '\0'; ++c) {
    if (*c == '\\') {
      ++backslashes;
      continue;
    }
    // Backslashes count as escapes only before a double quote: double them there, and escape
    // the quote itself; elsewhere they are ordinary characters.
    const size_t written = *c == '"' ? 2 * backslashes + 1 : backslashes;
    line.append(written, '\\');
    line += *c;
    backslashes = 0;
  }
  // Before the closing quote the trailing backslashes are doubled, so that it stays a quote.
  line.append(2 * backslashes, '\\');
  line += '"';
}

bool isBatchFileName(const char* programName) {
  const size_t length = std::strlen(programName);
  if (length < 4) return false;
  const char* extension = programName + length - 4;
  auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  char folded[4];
  for (int i = 0; i < 4; ++i) folded[i] = lower(extension[i]);
  return std::memcmp(folded, ".bat", 4) == 0 || std::memcmp(folded, ".cmd", 4) == 0;
}

bool isUnsafeBatchArgument(const char* argument) {
  return std::strpbrk(argument, "\"%!^&|<>()\r\n") != nullptr;
}

}  // namespace tav::process
