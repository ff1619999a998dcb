// tav_ini_value.cpp - the value rules of configuration options: escapes, character literals,
// quoted strings, environment references and comments.
//
// Every rule reads only up to the NUL that ends its line and writes only inside the option's
// fixed store: a value is cut at kMaxValueLength characters or where the store ends, whichever
// comes first, and the comment behind it is cut at the end of the store.

#include <ctype.h>
#include <limits.h>
#include <string.h>

#include "tav_environment.h"
#include "tav_ini.h"

namespace {

int hexDigitValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// Reads digits of `base` as a number the way strtol does, saturating at LONG_MAX, and moves p
// behind the last digit.
long readNumber(const char*& p, int base) {
  long number = 0;
  for (int digit = hexDigitValue(*p); digit >= 0 && digit < base; digit = hexDigitValue(*++p)) {
    number = number > (LONG_MAX - digit) / base ? LONG_MAX : number * base + digit;
  }
  return number;
}

bool isSpace(char c) { return isspace(static_cast<unsigned char>(c)) != 0; }

// Appends characters to a value, dropping those that do not fit.
struct ValueWriter {
  char* next;
  char* limit;
  void put(char c) {
    if (next < limit) *next++ = c;
  }
};

}  // namespace

char tavIniFileGetEscCharacter(const char*& p) {
  const char c = *p;
  switch (c) {
    case 'a': ++p; return '\a';
    case 'b': ++p; return '\b';
    case 'f': ++p; return '\f';
    case 'n': ++p; return '\n';
    case 'r': ++p; return '\r';
    case 't': ++p; return '\t';
    case 'v': ++p; return '\v';
    case 'x': ++p; return static_cast<char>(readNumber(p, 16));
    case '\0': return '\0';  // the line ends: nothing to consume
    default: break;
  }
  if (c >= '0' && c <= '9') return static_cast<char>(readNumber(p, 8));
  ++p;
  return c;
}

char tavIniFileGetQuotedCharacter(const char*& p) {
  ++p;  // the opening apostrophe
  char c = '\0';
  if (*p == '\\') {
    ++p;
    c = tavIniFileGetEscCharacter(p);
  } else if (*p != '\0') {
    c = *p++;
  }
  // The closing apostrophe is skipped unseen, unless the line has already ended.
  if (*p != '\0') ++p;
  return c;
}

void TavClIniFileOption::processValue(const char* source, char* destination) {
  const char* s = source;
  while (isSpace(*s)) ++s;
  char* const storeEnd = text + kTextSize;
  char* limit = value + kMaxValueLength;
  // Room stays for the value's NUL and the comment's NUL.
  if (limit > storeEnd - 2) limit = storeEnd - 2;
  ValueWriter out{destination, limit};
  char* keep = destination;  // trailing blanks before this point are protected
  while (*s != '\0' && *s != ';') {
    if (*s == '"') {
      for (++s; *s != '\0' && *s != '"';) {
        if (*s == '\\') {
          ++s;
          if (*s == '\0') break;  // a backslash at the end of the line escapes nothing
          out.put(tavIniFileGetEscCharacter(s));
        } else {
          out.put(*s++);
        }
      }
      if (*s == '"') ++s;
      keep = out.next;
      continue;
    }
    if (*s == '$' && s[1] == '(') {
      const char* close = strchr(s + 2, ')');
      if (close != nullptr) {
        char name[TavClIniFile::kMaxLineLength + 1];
        const size_t length = static_cast<size_t>(close - (s + 2));
        memcpy(name, s + 2, length);
        name[length] = '\0';
        const char* expansion = TavClEnvironmentVariableQueryOnly(name).getValue();
        for (; expansion != nullptr && *expansion != '\0'; ++expansion) out.put(*expansion);
        s = close + 1;
        keep = out.next;
        continue;
      }
    }
    if (*s == '\'') {
      const char c = tavIniFileGetQuotedCharacter(s);
      if (c != '\0' || *s != '\0') {  // a literal cut by the line's end gives nothing
        out.put(c);
        keep = out.next;
      }
      continue;
    }
    out.put(*s++);
  }
  char* end = out.next;
  while (end > keep && isSpace(end[-1])) --end;
  *end = '\0';
  comment = end + 1;
  char* c = comment;
  if (*s == ';') {
    for (++s; isSpace(*s); ++s) {
    }
    for (; *s != '\0' && c < storeEnd - 1; ++s) *c++ = *s;
  }
  *c = '\0';
  if (c == comment) comment = end;  // no comment: it reads as the empty text behind the value
}
