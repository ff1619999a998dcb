// tav_console_output.cpp - the console output facility: header lines, indented message lines,
// the beep, the console texts, and the end of the process.

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tav_console.h"
#include "tav_message.h"

void TavClConsoleUI::getText(unsigned long offset, char* out, size_t outSize) const {
  const TavClMessage message(*catalog, baseMessageId + offset);
  std::snprintf(out, outSize, "%s", message.getText());
}

void TavClConsoleUI::writeHeaderLine(FILE* stream, unsigned long offset) const {
  if (stream == nullptr) return;
  char text[TAV_MSG_MAX_LENGTH + 1];
  getText(offset, text, sizeof text);
  std::fprintf(stream, "\n*** %s ***\n", text);
  std::fflush(stream);
}

void TavClConsoleUI::writeMessageLine(FILE* stream, const char* text, const char* argument) const {
  if (stream == nullptr) return;
  writeIndentation(stream);
  if (argument != nullptr) {
    std::fprintf(stream, "%s: %s\n", text, argument);
  } else {
    std::fprintf(stream, "%s\n", text);
  }
  std::fflush(stream);
}

void TavClConsoleUI::writeIndentation(FILE* stream) const {
  if (stream == nullptr) return;
  std::fprintf(stream, "%*s", static_cast<int>(kIndentation), "");
}

void TavClConsoleUI::beep() const {
  FILE* out = params->getConsoleOutput();
  if (out == nullptr) return;
  std::fputc('\a', out);
  std::fflush(out);
}

void TavClConsoleUI::processExit(unsigned long code) const {
  if (code != 0) beep();
  std::fflush(params->getStandardOutput());
  std::fflush(params->getStandardError());
  std::exit(static_cast<int>(code));
}
