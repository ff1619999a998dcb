// tav_ini_writer.h - the line formats of a written configuration file, on any output stream.
//
// Two ways of writing a value. The plain one is the file format as it has always been written:
// values are quoted only for a ';' or a control character, double quotes inside quotes are
// left bare, and empty values are dropped. The exact one writes every value so that the parser
// gives back the same text: it quotes whatever the parser would otherwise interpret or trim,
// escapes the double quote, keeps an escape from reading on into a following digit, and spreads
// a value too long for one line over continuation lines.

#ifndef TAV_INI_WRITER_H
#define TAV_INI_WRITER_H

#include <cstddef>
#include <ostream>

#include "tav_export.h"

namespace tav::ini {

// The longest line the parser reads whole.
constexpr size_t kMaxWrittenLineLength = 1023;

// One character in the escaped form of a quoted value (a double quote stays bare). Control
// characters without a letter escape leave the stream in hexadecimal with fill '0'.
TAV_INTERNAL_API void writeEscapedChar(std::ostream& out, char c);
// A line feed, "[", the name, "]"; the caller writes the comment part.
TAV_INTERNAL_API void writeSectionHeader(std::ostream& out, const char* name);
// A tab, ";", a blank and the comment, then a line feed; only the line feed for no comment.
TAV_INTERNAL_API void writeCommentPart(std::ostream& out, const char* comment);
// True when the plain format quotes the value: a ';' or a control character in it.
TAV_INTERNAL_API bool plainValueNeedsQuotes(const char* value);
// The plain format of one option line; nothing at all for an empty value.
TAV_INTERNAL_API void writePlainOption(std::ostream& out, const char* name, const char* value,
                                       const char* comment);

// True when the exact format must quote the value to read it back unchanged.
TAV_INTERNAL_API bool exactValueNeedsQuotes(const char* value);
// The exact format of one section header line; false (nothing written) for a name the parser
// could not give back.
TAV_INTERNAL_API bool writeExactSection(std::ostream& out, const char* name);
// The exact format of one option, on one line or, for a long value, on continuation lines
// that need loading with continuation allowed. False, with nothing written, for a name or
// comment the parser could not give back, or a comment too long to fit any line.
TAV_INTERNAL_API bool writeExactOption(std::ostream& out, const char* name, const char* value,
                                       const char* comment);

}  // namespace tav::ini

#endif  // TAV_INI_WRITER_H
