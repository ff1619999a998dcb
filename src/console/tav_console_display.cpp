// tav_console_display.cpp - the usage, help, title and copyright displays.
//
// Usage and help texts are written as their author wrapped them: each line feed is followed by
// the indentation, so continuation lines align under the first one.

#include <cstring>

#include "tav_console.h"
#include "tav_message.h"

namespace {

constexpr unsigned long kExitUsage = 201;
// Separator between a label and its text; the widths below count it.
constexpr char kLabelSeparator[] = ": ";

void writeBlanks(FILE* stream, size_t count) {
  for (size_t i = 0; i < count; ++i) std::fputc(' ', stream);
}

}  // namespace

void TavClConsoleUI::display(FILE* stream, const char* text, unsigned int indentation,
                             bool usage) const {
  const bool hideTagged = params->areTaggedLinesHidden();
  unsigned int column = 1;
  for (const char* c = text; *c != '\0'; ++c) {
    if (*c == '!') {
      if (hideTagged) {
        while (c[1] != '\0' && c[1] != '\n') ++c;
        if (c[1] == '\n') ++c;
      }
      continue;
    }
    if (usage && !TavClUsageCursor::isToBeDisplayed(*c)) continue;
    if (*c == '\n' || (*c == '@' && column == 1)) {
      std::fputc('\n', stream);
      writeBlanks(stream, indentation);
      column = 1;
      continue;
    }
    std::fputc(*c, stream);
    ++column;
  }
}

void TavClConsoleUI::displayUsage(bool exitAfter) const {
  FILE* out = params->getStandardOutput();
  if (out != nullptr) {
    char label[TAV_MSG_MAX_LENGTH + 1];
    getText(TAV_CONSOLE_TEXT_USAGE_LABEL, label, sizeof label);
    // "Usage: name " and then the usage text.
    const unsigned int width =
        static_cast<unsigned int>(std::strlen(label) + params->getProcessNameLength() + 3);
    std::fprintf(out, "%s%s%s ", label, kLabelSeparator, params->getProcessName());
    display(out, params->getUsage(), width, true);
    if (hasCopyrightInfo) {
      // The built-in switches, on a line of their own under the usage text.
      std::fputc('\n', out);
      writeBlanks(out, width);
      getText(TAV_CONSOLE_TEXT_HELP_LETTERS, label, sizeof label);
      for (const char* letter = label; *letter != '\0'; ++letter) {
        std::fprintf(out, "%s-%c", letter == label ? "[" : " | ", *letter);
      }
      if (label[0] != '\0') std::fputs("] ", out);
      getText(TAV_CONSOLE_TEXT_COPYRIGHT_SWITCH, label, sizeof label);
      std::fprintf(out, "[-%s] ", label);
      getText(TAV_CONSOLE_TEXT_QUIET_SWITCH, label, sizeof label);
      std::fprintf(out, "[-%s]", label);
    }
    std::fputc('\n', out);
    std::fflush(out);
  }
  if (exitAfter) processExit(kExitUsage);
}

void TavClConsoleUI::displayHelp(bool exitAfter) const {
  FILE* out = params->getStandardOutput();
  if (out != nullptr) {
    char label[TAV_MSG_MAX_LENGTH + 1];
    if (params->getHelp() == nullptr) {
      getText(TAV_CONSOLE_TEXT_NO_HELP, label, sizeof label);
      writeIndentation(out);
      std::fprintf(out, "%s\n", label);
    } else {
      getText(TAV_CONSOLE_TEXT_HELP_LABEL, label, sizeof label);
      std::fprintf(out, "%s%s", label, kLabelSeparator);
      display(out, params->getHelp(), static_cast<unsigned int>(std::strlen(label) + 2), false);
      std::fputc('\n', out);
    }
    std::fflush(out);
  }
  if (exitAfter) processExit(kExitUsage);
}

void TavClConsoleUI::displayTitle(const char* title, const char* subtitle) const {
  FILE* out = params->getConsoleOutput();
  if (title == nullptr || out == nullptr) return;
  std::fprintf(out, "\n%s - %s", params->getProcessName(), title);
  if (subtitle != nullptr) std::fprintf(out, " - %s", subtitle);
  std::fputc('\n', out);
  std::fflush(out);
}

void TavClConsoleUI::displayCopyright(const char* copyright, const char* level) const {
  FILE* out = params->getStandardOutput();
  if (out != nullptr) {
    char label[TAV_MSG_MAX_LENGTH + 1];
    const struct {
      unsigned long offset;
      const char* text;
    } rows[] = {{TAV_CONSOLE_TEXT_COPYRIGHT_LABEL, copyright},
                {TAV_CONSOLE_TEXT_LEVEL_LABEL, level}};
    for (const auto& row : rows) {
      if (row.text == nullptr) continue;
      getText(row.offset, label, sizeof label);
      writeIndentation(out);
      std::fprintf(out, "%s%s%s\n", label, kLabelSeparator, row.text);
    }
    std::fflush(out);
  }
  processExit(0);
}
