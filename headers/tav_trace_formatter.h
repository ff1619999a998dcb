// tav_trace_formatter.h - a binary trace file as readable text.
//
// The formatter reads a trace file record by record, drops the records its filter rejects and
// writes every other record through a format string, followed by a line break. The format
// string is text with directives, each "%" or a backslash and one character:
//
//   %f  the origin (function name)       %m  the message
//   %p  the process id                   %s  the time stamp
//   %t  the thread id                    %c  the component id
//   %l  the detail: OFF, LOW, MED, HIGH  %x  the type's short tag (FE, DA, cpsz, ...)
//   %X  the type's long name             %d  the data block, shown by its type
//   %n  a line break and the indentation %%  a percent sign
//   \n  a line break and the indentation \t  a tab             \\  a backslash
//
// A backslash before any other character writes that character alone; "%" before any other
// character is copied with it. Numbers are decimal.
//
// The data block is read exactly once per record, whatever the format holds: the first "%d"
// shows it, a further "%d" in the same record shows nothing, and the block of a record whose
// format has no "%d", or that is not shown at all, is passed over. Blocks are read through a
// small fixed buffer, so a size field never decides how much memory is taken.
//
// The data display by type:
//   FE, FX            "Nesting level: " and the level (the block must be 4 bytes)
//   NO DATA           nothing (the block must be empty)
//   DATA, Unicode     "<size> Bytes", " *** Clipped ***" for clipped data, then one line per
//                     16 bytes: offset, bytes in hexadecimal and as characters
//   null data         "*** Illegal NULL pointer ***"
//   Address           "0x" and 16 hexadecimal digits (the block must be 8 bytes)
//   C string          the bytes up to the first zero byte or the end of the block
//   bool              TRUE or FALSE
//   i8, w8            0x41/65/'A' (the character only when it prints)
//   i16 ... w64       the value in decimal
//   f, d, ld          the value with 7, 15 and 15 significant digits; inf, -inf, nan
// With hexadecimal display on, the integers of 16 to 64 bits add "/0x" and all their hex
// digits; with binary display on, every integer adds "/0b" and all its bits. The other types
// take a block of less than 128 bytes; an integer or floating-point value takes its bytes
// from the start of the block, and missing bytes count as zero. A long double is read as the
// 80-bit extended format that both platforms write, or as a double when the block has 8
// bytes; it is shown through a double.
//
// Lines: a line break ("%n", "\n", and those inside a hex dump) writes the indentation text
// after it. With nesting on, every line of a record starts with the indentation text once per
// nesting level (at most kMaxNestingDepth) and its further lines once more: a function entry
// sits at the level of its caller, the records inside the function one level deeper, and the
// exit back at the caller's level. The level is taken from the function records, shown or not.
//
// Failures raise TavClExceptionFatal with module "tav_trace_format:<line>":
//   TRACEFORMAT_COULD_NOT_OPEN  the trace file cannot be opened for reading (check the name
//                               and the access rights)
//   TRACEFORMAT_UNEXPECTED_EOF  the file ends inside a record's data block, or cannot be read
//   TRACEFORMAT_FILE_CORRUPTED  a data size that does not fit its type
// A file that ends inside a record's header or texts ends the output normally, as does an
// empty file. Whatever was formatted before a failure has been written to the output.

#ifndef TAV_TRACE_FORMATTER_H
#define TAV_TRACE_FORMATTER_H

#include <stddef.h>
#include <stdint.h>

#include <iosfwd>

#include "tav_export.h"
#include "tav_memmgr.h"
#include "tav_trace_entry.h"
#include "tav_trace_environment.h"

class TavClMessage;
class TavClMessageCatalog;

class TAV_API TavClTraceFormatter : public TavClMemoryManagedObject {
 public:
  static constexpr size_t kMaxFormatLength = TavClTraceEnvironment::kMaxFormatLength;
  static constexpr size_t kMaxIndentationLength = 64;
  static constexpr uint32_t kMaxNestingDepth = 64;
  // Blocks of the types without a display of their own must be smaller than this.
  static constexpr uint64_t kMaxSmallDataSize = 128;

  // The environment names the trace file and gives the default format; its format string
  // serves as the default. Without a filter every record is shown; a filter is copied.
  explicit TavClTraceFormatter(TavClTraceEnvironment& environment,
                               const TavClTraceFilter* filter = nullptr);
  // For environments that carry no format string: the default format is kDefaultFormat.
  explicit TavClTraceFormatter(TavClTraceEnvironmentABase& environment,
                               const TavClTraceFilter* filter = nullptr);
  ~TavClTraceFormatter();
  TavClTraceFormatter(const TavClTraceFormatter&) = delete;
  TavClTraceFormatter& operator=(const TavClTraceFormatter&) = delete;

  // Formats the environment's trace file onto output.
  void format(std::ostream& output);
  // Formats trace records read from input, which must be a binary stream.
  void format(std::istream& input, std::ostream& output);

  // The fixed texts of the display ("Bytes", " *** Clipped ***", "*** Illegal NULL pointer
  // ***", "Nesting level: ") come from the catalog, which must outlive the formatter; without a
  // catalog they come from the library's built-in table.
  void attachTavMessageCatalog(const TavClMessageCatalog& catalog);

  // Null means empty; texts are cut at kMaxFormatLength and kMaxIndentationLength.
  void setFormatString(const char* text);
  const char* getFormatString() const { return formatString; }
  void setDisplayIndentation(const char* text);

  // Function entry and exit records (default on).
  void enableFunctionHeaders(bool on) { setFlag(kFunctionHeaders, on); }
  // The origin of a record again when the previous record shown had the same one (default on).
  // Function entries always show theirs.
  void enableRepeatedOrigins(bool on) { setFlag(kRepeatedOrigins, on); }
  void enableNesting(bool on) { setFlag(kNesting, on); }
  void enableHexData(bool on) { setFlag(kHexData, on); }
  void enableBinData(bool on) { setFlag(kBinData, on); }

  TavClTraceFilter& getFilter() { return filter; }

  // The names of the data types; "" for 0 and for values beyond the last type.
  static const char* getTypeAsShortCString(uint32_t type);
  static const char* getTypeAsLongCString(uint32_t type);

 private:
  // The JSON writer shows records through this formatter's filter, switches and data display.
  friend class TavClTraceJsonWriter;

  static constexpr uint32_t kFunctionHeaders = 1;
  static constexpr uint32_t kRepeatedOrigins = 2;
  static constexpr uint32_t kNesting = 4;
  static constexpr uint32_t kHexData = 8;
  static constexpr uint32_t kBinData = 16;
  static constexpr size_t kOutputBufferSize = 8192;

  void setFlag(uint32_t flag, bool on) { flags = on ? flags | flag : flags & ~flag; }
  bool isEnabled(uint32_t flag) const { return (flags & flag) != 0; }

  // Opens the environment's trace file and hands it to body; raises the open and read failures.
  void readTraceFile(void (*body)(std::istream& input, void* context), void* context);
  bool formatEntry(std::istream& input, TavClTraceFileEntry& entry);
  void walkFormat(std::istream& input, const TavClTraceFileEntry& entry, bool showOrigin);
  // Takes the format string apart into steps once, so that records do not scan it again.
  void compileFormat();
  void skipEntry(std::istream& input, uint64_t size);
  void formatData(std::istream& input, const TavClTraceFileEntry& entry);
  void readSmallData(std::istream& input, const TavClTraceFileEntry& entry);
  void formatSmallData(uint32_t type, uint64_t size);
  void formatInteger(uint32_t type);
  void formatFloat(uint32_t type, uint64_t size);
  void formatHexDump(std::istream* input, uint64_t size);
  void formatCString(std::istream& input, uint64_t size);
  void formatAdrs();
  void readExactly(std::istream& input, uint8_t* buffer, uint64_t count);
  uint32_t depthOf(const TavClTraceFileEntry& entry) const;

  void displayBuffer(const char* text, size_t length);
  void displayText(const char* text);
  void displayChar(char c);
  void displayUnsigned(uint64_t value);
  void displayLineBreak();
  void displayIndent(uint32_t levels);
  void flushOutput();

  const char* getMessage(unsigned long messageNumber);

  TavClTraceEnvironmentABase& environment;
  TavClTraceFilter filter;
  std::ostream* output = nullptr;
  const TavClMessageCatalog* catalog = nullptr;
  TavClMessage* message = nullptr;
  char formatString[kMaxFormatLength + 1] = {};
  // One step of the format: a run of formatString's text, one character, or a directive.
  struct FormatStep {
    enum Kind : uint8_t { run, character, directive } kind;
    char value;       // the character, or the directive's letter
    uint16_t start;   // of a run in formatString
    uint16_t length;  // of a run
  };
  FormatStep formatSteps[kMaxFormatLength + 1] = {};
  size_t formatStepCount = 0;
  char indentation[kMaxIndentationLength + 1] = {};
  size_t indentationLength = 0;
  uint32_t flags = kFunctionHeaders | kRepeatedOrigins;
  char previousOrigin[TavClTraceFileEntry::kTextCapacity] = {};
  size_t previousOriginLength = 0;
  bool hasPreviousOrigin = false;

  // The state of the record being formatted.
  uint32_t nestingLevel = 0;
  uint32_t recordDepth = 0;
  bool dataConsumed = false;
  bool smallDataLoaded = false;
  uint8_t smallData[kMaxSmallDataSize] = {};

  char outputBuffer[kOutputBufferSize];
  size_t outputLength = 0;
};

#endif  // TAV_TRACE_FORMATTER_H
