// tav_ini_writer.cpp - the line formats of a written configuration file.
//
// Characters are classified as unsigned char: the ctype functions are undefined for the
// negative values that bytes above 0x7F have in a plain char.

#include "tav_ini_writer.h"

#include <cctype>
#include <cstring>
#include <iomanip>
#include <string>

namespace tav::ini {
namespace {

bool isControl(char c) { return std::iscntrl(static_cast<unsigned char>(c)) != 0; }
bool isSpace(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

// The letter of a control character's short escape, or 0 when it has none.
char escapeLetter(char c) {
  switch (c) {
    case '\a': return 'a';
    case '\b': return 'b';
    case '\f': return 'f';
    case '\n': return 'n';
    case '\r': return 'r';
    case '\t': return 't';
    case '\v': return 'v';
    case '\\': return '\\';
    default: return 0;
  }
}

// The exact form of one character inside double quotes; *hexForm tells whether it ended in
// hexadecimal digits that a following hexadecimal digit would extend.
std::string exactEscape(char c, bool* hexForm) {
  *hexForm = false;
  if (c == '"') return "\\\"";
  if (const char letter = escapeLetter(c)) return std::string{'\\', letter};
  if (!isControl(c)) return std::string(1, c);
  static const char kDigits[] = "0123456789abcdef";
  const unsigned code = static_cast<unsigned char>(c);
  *hexForm = true;
  return std::string{'\\', 'x', kDigits[code >> 4], kDigits[code & 15]};
}

// An option name the parser reads back as it stands: not empty, no '=', no whitespace, and
// not beginning as a header or comment line does.
bool isWritableName(const char* name) {
  if (name[0] == '\0' || name[0] == '[' || name[0] == ';') return false;
  for (const char* p = name; *p != '\0'; ++p) {
    if (*p == '=' || isSpace(*p)) return false;
  }
  return true;
}

// A comment the parser reads back as it stands: it starts after the blanks behind ';' and
// ends at the line's end, where a file's reader drops a carriage return.
bool isWritableComment(const char* comment) {
  const size_t length = std::strlen(comment);
  return !isSpace(comment[0]) && std::strchr(comment, '\n') == nullptr &&
         (length == 0 || comment[length - 1] != '\r');
}

// Appends the value as quoted pieces, starting a continuation line whenever the next
// character would not fit on the current one.
void appendQuotedValue(std::string* text, std::string* line, const char* value) {
  // A name that leaves no room for a quoted character stands alone on its line.
  constexpr size_t kLongestFirstPiece = 4;
  if (line->size() + 2 + kLongestFirstPiece + 1 > kMaxWrittenLineLength) {
    *text += *line + '\n';
    *line = "\t\"";
  } else {
    *line += " \"";
  }
  bool previousHex = false;
  for (const char* p = value; *p != '\0'; ++p) {
    bool hexForm = false;
    std::string piece = exactEscape(*p, &hexForm);
    // "\x01" followed by "7" would read as one escape: close the quote and open another.
    if (previousHex && std::isxdigit(static_cast<unsigned char>(*p))) piece.insert(0, "\"\"");
    if (line->size() + piece.size() + 1 > kMaxWrittenLineLength) {
      *text += *line + "\"\n";
      *line = "\t\"";
      piece = exactEscape(*p, &hexForm);
    }
    *line += piece;
    previousHex = hexForm;
  }
  *line += '"';
}

}  // namespace

void writeEscapedChar(std::ostream& out, char c) {
  if (const char letter = escapeLetter(c)) {
    out << '\\' << letter;
  } else if (isControl(c)) {
    out << "\\x" << std::hex << std::setfill('0') << std::setw(2)
        << static_cast<unsigned>(static_cast<unsigned char>(c));
  } else {
    out << c;
  }
}

void writeSectionHeader(std::ostream& out, const char* name) { out << "\n[" << name << ']'; }

void writeCommentPart(std::ostream& out, const char* comment) {
  if (comment != nullptr && comment[0] != '\0') out << "\t; " << comment;
  out << '\n';
}

bool plainValueNeedsQuotes(const char* value) {
  for (const char* p = value; *p != '\0'; ++p) {
    if (*p == ';' || isControl(*p)) return true;
  }
  return false;
}

void writePlainOption(std::ostream& out, const char* name, const char* value, const char* comment) {
  if (value[0] == '\0') return;
  out << name << "= ";
  if (plainValueNeedsQuotes(value)) {
    out << '"';
    for (const char* p = value; *p != '\0'; ++p) writeEscapedChar(out, *p);
    out << '"';
  } else {
    out << value;
  }
  writeCommentPart(out, comment);
}

bool exactValueNeedsQuotes(const char* value) {
  const size_t length = std::strlen(value);
  if (length == 0) return false;
  if (isSpace(value[0]) || isSpace(value[length - 1])) return true;
  for (const char* p = value; *p != '\0'; ++p) {
    if (*p == '"' || *p == '\'' || *p == ';' || isControl(*p)) return true;
    if (p[0] == '$' && p[1] == '(') return true;
  }
  return false;
}

bool writeExactSection(std::ostream& out, const char* name) {
  if (std::strchr(name, ']') != nullptr || std::strchr(name, '\n') != nullptr) return false;
  out << "\n[" << name << "]\n";
  return true;
}

bool writeExactOption(std::ostream& out, const char* name, const char* value, const char* comment) {
  if (!isWritableName(name) || !isWritableComment(comment)) return false;
  if (std::strlen(name) + 1 > kMaxWrittenLineLength) return false;
  std::string text;
  std::string line = std::string(name) + "=";
  const size_t valueLength = std::strlen(value);
  if (valueLength != 0) {
    if (!exactValueNeedsQuotes(value) && line.size() + 1 + valueLength <= kMaxWrittenLineLength) {
      line += ' ';
      line += value;
    } else {
      appendQuotedValue(&text, &line, value);
    }
  }
  if (comment[0] != '\0') {
    const size_t commentLength = std::strlen(comment);
    if (line.size() + 3 + commentLength <= kMaxWrittenLineLength) {
      line += "\t; ";
    } else if (line.size() + 1 + commentLength <= kMaxWrittenLineLength) {
      line += ';';
    } else {
      // A continuation line that adds nothing to the value carries the comment.
      text += line + '\n';
      line = "\t\"\";";
    }
    line += comment;
  }
  if (line.size() > kMaxWrittenLineLength) return false;
  out << text << line << '\n';
  return true;
}

}  // namespace tav::ini
