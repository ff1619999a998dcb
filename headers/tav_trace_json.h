// tav_trace_json.h - a trace file as trace-event JSON, which timeline viewers open.
//
// The writer turns the records a formatter would show into one JSON object,
//
//   {"traceEvents":[
//   {"name":"parse","cat":"trace","ph":"B","ts":1200.000,"pid":7,"tid":9,"args":{...}},
//   ...
//   ],"displayTimeUnit":"ms"}
//
// one event a line:
//   function entry  "ph":"B" named after the origin, args: component, detail, level
//   function exit   "ph":"E" named after the origin, same args
//   other records   "ph":"i" (instant, "s":"t" for its thread) named after the message (the
//                   origin when the message is empty), args: origin, message, type (the short
//                   tag), data (the formatter's display of the data block), component, detail
// Events are per process and thread ("pid", "tid"). "ts" is the record's time stamp in
// microseconds (milliseconds times 1000); wrapping of the 32-bit time stamp is followed, and a
// record never gets an earlier or equal time than the one before it (a nanosecond later at
// least), so that viewers keep the file's order.
//
// Begin and end events balance on every thread: an exit without an entry on its thread becomes
// an instant event, and entries still open at the end are closed by end events after the last
// record. The formatter's filter and its switches for function records and for hexadecimal and
// binary data apply; nesting, indentation, repeated origins and the format string do not.
//
// Every string is valid JSON whatever the bytes: quotes, backslashes and control characters are
// escaped, well-formed UTF-8 is kept, and every other byte is written as \u00XX (the byte read
// as Latin-1). The writer raises the formatter's exceptions (TRACEFORMAT_COULD_NOT_OPEN,
// TRACEFORMAT_UNEXPECTED_EOF, TRACEFORMAT_FILE_CORRUPTED); when the file fails after output has
// begun, the JSON document is closed first, so what was written is valid JSON too.

#ifndef TAV_TRACE_JSON_H
#define TAV_TRACE_JSON_H

#include <stddef.h>

#include <iosfwd>
#include <string>

#include "tav_export.h"
#include "tav_trace_formatter.h"

class TAV_API TavClTraceJsonWriter {
 public:
  // The formatter gives the trace file, the filter, the switches and the data display; it must
  // outlive the writer.
  explicit TavClTraceJsonWriter(TavClTraceFormatter& formatter) : formatter(formatter) {}
  TavClTraceJsonWriter(const TavClTraceJsonWriter&) = delete;
  TavClTraceJsonWriter& operator=(const TavClTraceJsonWriter&) = delete;

  // The formatter environment's trace file as JSON onto output.
  void write(std::ostream& output);
  // Trace records read from input, which must be a binary stream, as JSON onto output.
  void write(std::istream& input, std::ostream& output);

  // Appends text as a JSON string, with its quotes, escaped as described above.
  static void appendString(std::string& json, const char* text, size_t length);

 private:
  TavClTraceFormatter& formatter;
};

#endif  // TAV_TRACE_JSON_H
