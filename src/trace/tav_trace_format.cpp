// tav_trace_format.cpp - the trace formatter: trace records as text through a format string.
//
// Reading never trusts a size field: texts live in the record's fixed image, data blocks are
// read through fixed buffers or skipped, and a block that claims more than the file holds ends
// in TRACEFORMAT_UNEXPECTED_EOF once the file runs out. Output collects in a fixed buffer that
// goes to the stream when full, at the end, and before an exception leaves.

#include "tav_trace_formatter.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <istream>
#include <ostream>
#include <streambuf>
#include <utility>

#include "../fs/tav_file_io_os.h"
#include "tav_dump.h"
#include "tav_error.h"
#include "tav_message.h"
#include "tav_trace_record_layout.h"
#include "tav_utils.h"

namespace {

using tav::trace_record::loadLittleEndian;

// The fixed texts of the display, as numbered in the library's catalog.
constexpr unsigned long kMessageBytes = 189;
constexpr unsigned long kMessageClipped = 190;
constexpr unsigned long kMessageNullPointer = 191;
constexpr unsigned long kMessageNestingLevel = 192;

// Where each failure is reported: a line number and the module text "tav_trace_format:<line>",
// both from one literal. The numbers are part of the formatter's interface, not lines of this
// file.
struct FailureSite {
  uint32_t line;
  const char* module;
};
#define TAV_TRACE_FORMAT_SITE(number) \
  { number, "tav_trace_format:" #number }

constexpr FailureSite kCouldNotOpen = TAV_TRACE_FORMAT_SITE(837);
constexpr FailureSite kEofInFormat = TAV_TRACE_FORMAT_SITE(644);
constexpr FailureSite kEofAtData = TAV_TRACE_FORMAT_SITE(342);
constexpr FailureSite kAddressSize = TAV_TRACE_FORMAT_SITE(364);
constexpr FailureSite kSmallDataSize = TAV_TRACE_FORMAT_SITE(377);
constexpr FailureSite kEntrySize = TAV_TRACE_FORMAT_SITE(398);
constexpr FailureSite kExitSize = TAV_TRACE_FORMAT_SITE(416);
constexpr FailureSite kNoDataSize = TAV_TRACE_FORMAT_SITE(433);
constexpr FailureSite kEofInSkip = TAV_TRACE_FORMAT_SITE(186);

#undef TAV_TRACE_FORMAT_SITE

[[noreturn]] void raise(uint32_t id, const FailureSite& site) {
  const char* module = site.module;
  const uint32_t line = site.line;
  switch (id) {
    case TRACEFORMAT_COULD_NOT_OPEN:
      throw TavClExceptionFatal("Could not open trace file for read access", module, line, id,
                                TAV_CLASS_IO_READ_PROBLEM, TAV_SEVERITY_FATAL,
                                TAV_ACTION_TERMINATE);
    case TRACEFORMAT_UNEXPECTED_EOF:
      throw TavClExceptionFatal("Trace file corrupted: unexpected end-of-file", module, line, id,
                                TAV_CLASS_IO_READ_PROBLEM, TAV_SEVERITY_FATAL,
                                TAV_ACTION_TERMINATE);
    default:
      throw TavClExceptionFatal("Trace file corrupted: invalid data found", module, line, id,
                                TAV_CLASS_INVALID_DATA, TAV_SEVERITY_FATAL, TAV_ACTION_TERMINATE);
  }
}

// A trace file read through a fixed buffer. A read error ends the data like the end of the
// file does and is remembered, so that the formatter can tell the two apart afterwards.
class TraceFileReadBuffer : public std::streambuf {
 public:
  explicit TraceFileReadBuffer(int handle) : handle(handle) {}
  ~TraceFileReadBuffer() override { tav::os::closeFile(handle); }
  TraceFileReadBuffer(const TraceFileReadBuffer&) = delete;
  TraceFileReadBuffer& operator=(const TraceFileReadBuffer&) = delete;

  bool hasReadFailed() const { return readFailed; }

 protected:
  int_type underflow() override {
    if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
    uint64_t count = 0;
    if (!tav::os::readFile(handle, buffer, sizeof(buffer), &count).ok()) readFailed = true;
    if (count == 0) return traits_type::eof();
    char* begin = reinterpret_cast<char*>(buffer);
    setg(begin, begin, begin + count);
    return traits_type::to_int_type(*gptr());
  }

 private:
  int handle;
  bool readFailed = false;
  uint8_t buffer[16384];
};

// What the formatter knows of each data type, indexed by its value.
struct DataTypeFacts {
  const char* shortTag;
  const char* longName;
  unsigned integerWidth;  // in bytes; 0 for the types that are no integers
  bool isSigned;
};

#define TAV_TRACE_DATA_TYPE_FACTS(name, value, tag, longName, width, isSigned) \
  {tag, longName, width, isSigned != 0},
constexpr DataTypeFacts kDataTypes[] = {TAV_TRACE_DATA_TYPE_LIST(TAV_TRACE_DATA_TYPE_FACTS)};
#undef TAV_TRACE_DATA_TYPE_FACTS

// The table is indexed by value, so the list must count up from 0 without gaps.
#define TAV_TRACE_DATA_TYPE_VALUE(name, value, tag, longName, width, isSigned) value,
constexpr unsigned kDataTypeValues[] = {TAV_TRACE_DATA_TYPE_LIST(TAV_TRACE_DATA_TYPE_VALUE)};
#undef TAV_TRACE_DATA_TYPE_VALUE
constexpr bool valuesCountUpFromZero() {
  for (unsigned i = 0; i < sizeof(kDataTypeValues) / sizeof(kDataTypeValues[0]); ++i) {
    if (kDataTypeValues[i] != i) return false;
  }
  return true;
}
static_assert(valuesCountUpFromZero(), "the data types are listed in the order of their values");
static_assert(sizeof(kDataTypeValues) / sizeof(kDataTypeValues[0]) <= 32,
              "a record has five bits for its data type");

const DataTypeFacts* factsOf(uint32_t type) {
  return type < sizeof(kDataTypes) / sizeof(kDataTypes[0]) ? &kDataTypes[type] : nullptr;
}

// The 80-bit extended format: 64 bits of mantissa with its leading bit, then 15 bits of
// exponent and the sign. Read by hand, so that the value does not depend on the reader's own
// long double.
double extendedToDouble(const uint8_t* bytes) {
  const uint64_t mantissa = loadLittleEndian(bytes, 8);
  const unsigned signAndExponent = static_cast<unsigned>(loadLittleEndian(bytes + 8, 2));
  const bool negative = (signAndExponent & 0x8000) != 0;
  const int exponent = static_cast<int>(signAndExponent & 0x7FFF);
  double value;
  if (exponent == 0x7FFF) {
    value = (mantissa << 1) == 0 ? HUGE_VAL : std::nan("");
  } else {
    value = std::ldexp(static_cast<double>(mantissa), exponent - 16383 - 63);
  }
  return negative ? -value : value;
}

}  // namespace

// The output helpers come first, so that the formatting below can inline them.
inline void TavClTraceFormatter::displayBuffer(const char* text, size_t length) {
  while (length > 0) {
    if (outputLength == kOutputBufferSize) flushOutput();
    const size_t room = kOutputBufferSize - outputLength;
    const size_t take = length < room ? length : room;
    std::memcpy(outputBuffer + outputLength, text, take);
    outputLength += take;
    text += take;
    length -= take;
  }
}

inline void TavClTraceFormatter::displayText(const char* text) {
  if (text != nullptr) displayBuffer(text, std::strlen(text));
}

inline void TavClTraceFormatter::displayChar(char c) {
  if (outputLength == kOutputBufferSize) flushOutput();
  outputBuffer[outputLength++] = c;
}

inline void TavClTraceFormatter::displayUnsigned(uint64_t value) {
  char digits[TAV_INT64_TEXT_SIZE];
  displayBuffer(digits, static_cast<size_t>(tavW64toa(value, digits)));
}

TavClTraceFormatter::TavClTraceFormatter(TavClTraceEnvironment& environment,
                                         const TavClTraceFilter* filter)
    : TavClTraceFormatter(static_cast<TavClTraceEnvironmentABase&>(environment), filter) {
  setFormatString(environment.getFormatString());
}

TavClTraceFormatter::TavClTraceFormatter(TavClTraceEnvironmentABase& environment,
                                         const TavClTraceFilter* filter)
    : environment(environment) {
  if (filter != nullptr) {
    this->filter = *filter;
  } else {
    this->filter.setDetail(TAV_TRACE_DETAIL_HIGH);
  }
  setFormatString(TavClTraceEnvironment::kDefaultFormat);
}

TavClTraceFormatter::~TavClTraceFormatter() { delete message; }

void TavClTraceFormatter::attachTavMessageCatalog(const TavClMessageCatalog& newCatalog) {
  delete message;
  message = nullptr;
  message = new TavClMessage(newCatalog, kMessageBytes);
  catalog = &newCatalog;
}

void TavClTraceFormatter::setFormatString(const char* text) {
  const size_t length = text == nullptr ? 0 : strnlen(text, kMaxFormatLength);
  std::memcpy(formatString, text == nullptr ? "" : text, length);
  formatString[length] = '\0';
  compileFormat();
}

// A "%" or a backslash starts a directive: "%%" and backslash-t are single characters,
// backslash-n and "%n" line breaks, an unknown "%q" stays as the text it is, and a lone "%" or
// backslash at the end stands for itself.
void TavClTraceFormatter::compileFormat() {
  formatStepCount = 0;
  const auto add = [this](FormatStep::Kind kind, char value, size_t start, size_t length) {
    formatSteps[formatStepCount++] = {kind, value, static_cast<uint16_t>(start),
                                      static_cast<uint16_t>(length)};
  };
  for (size_t i = 0; formatString[i] != '\0';) {
    const char c = formatString[i];
    if (c != '%' && c != '\\') {
      const size_t run = std::strcspn(formatString + i, "%\\");
      add(FormatStep::run, 0, i, run);
      i += run;
      continue;
    }
    const char next = formatString[i + 1];
    if (next == '\0') {
      add(FormatStep::character, c, 0, 0);
      break;
    }
    if (c == '\\') {
      if (next == 'n') {
        add(FormatStep::directive, 'n', 0, 0);
      } else {
        add(FormatStep::character, next == 't' ? '\t' : next, 0, 0);
      }
    } else if (next == '%') {
      add(FormatStep::character, '%', 0, 0);
    } else if (std::strchr("fmpstclxXdn", next) != nullptr) {
      add(FormatStep::directive, next, 0, 0);
    } else {
      add(FormatStep::run, 0, i, 2);
    }
    i += 2;
  }
}

void TavClTraceFormatter::setDisplayIndentation(const char* text) {
  indentationLength = text == nullptr ? 0 : strnlen(text, kMaxIndentationLength);
  std::memcpy(indentation, text == nullptr ? "" : text, indentationLength);
  indentation[indentationLength] = '\0';
}

const char* TavClTraceFormatter::getTypeAsShortCString(uint32_t type) {
  const DataTypeFacts* facts = factsOf(type);
  return facts != nullptr ? facts->shortTag : "";
}

const char* TavClTraceFormatter::getTypeAsLongCString(uint32_t type) {
  const DataTypeFacts* facts = factsOf(type);
  return facts != nullptr ? facts->longName : "";
}

void TavClTraceFormatter::readTraceFile(void (*body)(std::istream& input, void* context),
                                        void* context) {
  int handle = -1;
  if (!tav::os::openFile(environment.getTraceFileName(), tav::os::FileOpening::read, &handle)
           .ok()) {
    raise(TRACEFORMAT_COULD_NOT_OPEN, kCouldNotOpen);
  }
  TraceFileReadBuffer file(handle);
  std::istream input(&file);
  body(input, context);
  if (file.hasReadFailed()) raise(TRACEFORMAT_UNEXPECTED_EOF, kEofInFormat);
}

void TavClTraceFormatter::format(std::ostream& stream) {
  std::pair<TavClTraceFormatter*, std::ostream*> target(this, &stream);
  readTraceFile(
      [](std::istream& input, void* context) {
        auto* self = static_cast<std::pair<TavClTraceFormatter*, std::ostream*>*>(context);
        self->first->format(input, *self->second);
      },
      &target);
}

void TavClTraceFormatter::format(std::istream& input, std::ostream& stream) {
  output = &stream;
  outputLength = 0;
  hasPreviousOrigin = false;
  previousOriginLength = 0;
  nestingLevel = 0;
  TavClTraceFileEntry entry(environment);
  try {
    while (formatEntry(input, entry)) {
    }
  } catch (...) {
    flushOutput();
    output = nullptr;
    throw;
  }
  flushOutput();
  output = nullptr;
}

bool TavClTraceFormatter::formatEntry(std::istream& input, TavClTraceFileEntry& entry) {
  if (!entry.read(input)) return false;
  const uint32_t type = entry.getType();
  dataConsumed = false;
  smallDataLoaded = false;

  const bool isFunctionRecord =
      type == TAV_TRACE_TYPE_FUNCTION_ENTRY || type == TAV_TRACE_TYPE_FUNCTION_EXIT;
  // The nesting level travels in the function records' data, needed before the first line.
  if (isFunctionRecord && isEnabled(kNesting)) readSmallData(input, entry);

  const bool shown =
      (!isFunctionRecord || isEnabled(kFunctionHeaders)) &&
      filter.matchesDetail(entry.getDetail()) && filter.matchesCompId(entry.getComponentId()) &&
      filter.matchesProcessId(entry.getProcessId()) && filter.matchesThreadId(entry.getThreadId());
  if (!shown) {
    if (!dataConsumed) skipEntry(input, entry.getSizeOfDumpData());
    return true;
  }

  bool showOrigin = true;
  if (!isEnabled(kRepeatedOrigins)) {
    const size_t length = strnlen(entry.getOrigin(), entry.getOriginLength());
    const bool repeated = hasPreviousOrigin && length == previousOriginLength &&
                          std::memcmp(entry.getOrigin(), previousOrigin, length) == 0;
    if (repeated && type != TAV_TRACE_TYPE_FUNCTION_ENTRY) {
      showOrigin = false;
    } else {
      std::memcpy(previousOrigin, entry.getOrigin(), length);
      previousOriginLength = length;
      hasPreviousOrigin = true;
    }
  }

  recordDepth = isEnabled(kNesting) ? depthOf(entry) : 0;
  displayIndent(recordDepth);
  walkFormat(input, entry, showOrigin);
  if (!dataConsumed) skipEntry(input, entry.getSizeOfDumpData());
  displayChar('\n');
  return true;
}

uint32_t TavClTraceFormatter::depthOf(const TavClTraceFileEntry& entry) const {
  uint32_t depth = nestingLevel;
  // An entry's level counts the function it enters; the entry line belongs to its caller.
  if (entry.getType() == TAV_TRACE_TYPE_FUNCTION_ENTRY && depth > 0) --depth;
  return depth < kMaxNestingDepth ? depth : kMaxNestingDepth;
}

void TavClTraceFormatter::walkFormat(std::istream& input, const TavClTraceFileEntry& entry,
                                     bool showOrigin) {
  // Only the data directive reads the input, so its state is checked before the first step and
  // after each data step that other steps follow.
  if (formatStepCount > 0 && !input) raise(TRACEFORMAT_UNEXPECTED_EOF, kEofInFormat);
  for (size_t i = 0; i < formatStepCount; ++i) {
    const FormatStep& step = formatSteps[i];
    if (step.kind == FormatStep::run) {
      displayBuffer(formatString + step.start, step.length);
      continue;
    }
    if (step.kind == FormatStep::character) {
      displayChar(step.value);
      continue;
    }
    switch (step.value) {
      case 'f':
        if (showOrigin)
          displayBuffer(entry.getOrigin(), strnlen(entry.getOrigin(), entry.getOriginLength()));
        break;
      case 'm':
        displayBuffer(entry.getMessage(), strnlen(entry.getMessage(), entry.getMessageLength()));
        break;
      case 'p': displayUnsigned(entry.getProcessId()); break;
      case 's': displayUnsigned(entry.getTimeStamp()); break;
      case 't': displayUnsigned(entry.getThreadId()); break;
      case 'c': displayUnsigned(entry.getComponentId()); break;
      case 'l': displayText(TavClTraceFilter::getDetailAsCString(entry.getDetail())); break;
      case 'x': displayText(getTypeAsShortCString(entry.getType())); break;
      case 'X': displayText(getTypeAsLongCString(entry.getType())); break;
      case 'd':
        if (!dataConsumed) formatData(input, entry);
        if (i + 1 < formatStepCount && !input) raise(TRACEFORMAT_UNEXPECTED_EOF, kEofInFormat);
        break;
      default: displayLineBreak(); break;  // 'n'
    }
  }
}

void TavClTraceFormatter::skipEntry(std::istream& input, uint64_t size) {
  if (!input) raise(TRACEFORMAT_UNEXPECTED_EOF, kEofInSkip);
  dataConsumed = true;
  if (size == 0) return;
  input.ignore(static_cast<std::streamsize>(size));
  if (static_cast<uint64_t>(input.gcount()) != size) {
    raise(TRACEFORMAT_UNEXPECTED_EOF, kEofInSkip);
  }
}

void TavClTraceFormatter::readExactly(std::istream& input, uint8_t* buffer, uint64_t count) {
  if (count == 0) return;
  input.read(reinterpret_cast<char*>(buffer), static_cast<std::streamsize>(count));
  if (static_cast<uint64_t>(input.gcount()) != count) {
    raise(TRACEFORMAT_UNEXPECTED_EOF, kEofInFormat);
  }
}

void TavClTraceFormatter::formatData(std::istream& input, const TavClTraceFileEntry& entry) {
  if (!input) raise(TRACEFORMAT_UNEXPECTED_EOF, kEofAtData);
  const uint32_t type = entry.getType();
  const uint64_t size = entry.getSizeOfDumpData();
  dataConsumed = true;
  switch (type) {
    case TAV_TRACE_TYPE_DATA:
    case TAV_TRACE_TYPE_DATA_CLIPPED:
    case TAV_TRACE_TYPE_UNICODE:
      displayUnsigned(size);
      displayChar(' ');
      displayText(getMessage(kMessageBytes));
      if (type == TAV_TRACE_TYPE_DATA_CLIPPED) displayText(getMessage(kMessageClipped));
      formatHexDump(&input, size);
      return;
    case TAV_TRACE_TYPE_CSTRING: formatCString(input, size); return;
    case TAV_TRACE_TYPE_POINTER:
      if (size != 8) raise(TRACEFORMAT_FILE_CORRUPTED, kAddressSize);
      readExactly(input, smallData, 8);
      formatAdrs();
      return;
    default:
      readSmallData(input, entry);
      formatSmallData(type, size);
      return;
  }
}

void TavClTraceFormatter::readSmallData(std::istream& input, const TavClTraceFileEntry& entry) {
  if (smallDataLoaded) return;
  const uint32_t type = entry.getType();
  const uint64_t size = entry.getSizeOfDumpData();
  if (size >= kMaxSmallDataSize) raise(TRACEFORMAT_FILE_CORRUPTED, kSmallDataSize);
  if (type == TAV_TRACE_TYPE_FUNCTION_ENTRY && size != 4) {
    raise(TRACEFORMAT_FILE_CORRUPTED, kEntrySize);
  }
  if (type == TAV_TRACE_TYPE_FUNCTION_EXIT && size != 4) {
    raise(TRACEFORMAT_FILE_CORRUPTED, kExitSize);
  }
  if (type == TAV_TRACE_TYPE_NO_DATA && size != 0) {
    raise(TRACEFORMAT_FILE_CORRUPTED, kNoDataSize);
  }
  // Values shorter than their type read the missing bytes as zero.
  std::memset(smallData, 0, sizeof(smallData));
  dataConsumed = true;
  readExactly(input, smallData, size);
  smallDataLoaded = true;
  if (type == TAV_TRACE_TYPE_FUNCTION_ENTRY || type == TAV_TRACE_TYPE_FUNCTION_EXIT) {
    nestingLevel = static_cast<uint32_t>(loadLittleEndian(smallData, 4));
  }
}

void TavClTraceFormatter::formatSmallData(uint32_t type, uint64_t size) {
  switch (type) {
    case TAV_TRACE_TYPE_FUNCTION_ENTRY:
    case TAV_TRACE_TYPE_FUNCTION_EXIT:
      displayText(getMessage(kMessageNestingLevel));
      displayUnsigned(loadLittleEndian(smallData, 4));
      return;
    case TAV_TRACE_TYPE_NO_DATA: return;
    case TAV_TRACE_TYPE_DATA_NULL: displayText(getMessage(kMessageNullPointer)); return;
    case TAV_TRACE_TYPE_BOOL: displayText(smallData[0] != 0 ? "TRUE" : "FALSE"); return;
    case TAV_TRACE_TYPE_FLOAT:
    case TAV_TRACE_TYPE_DOUBLE:
    case TAV_TRACE_TYPE_LONG_DOUBLE: formatFloat(type, size); return;
    default:
      if (factsOf(type) != nullptr && factsOf(type)->integerWidth != 0) {
        formatInteger(type);
        return;
      }
      // Types no producer writes: their bytes, as for untyped data.
      displayUnsigned(size);
      displayChar(' ');
      displayText(getMessage(kMessageBytes));
      formatHexDump(nullptr, size);
      return;
  }
}

// Called for the integer types only.
void TavClTraceFormatter::formatInteger(uint32_t type) {
  static constexpr char kHexDigits[] = "0123456789abcdef";
  const DataTypeFacts& layout = *factsOf(type);
  const uint64_t raw = loadLittleEndian(smallData, layout.integerWidth);
  const unsigned bits = layout.integerWidth * 8;
  const uint64_t signBit = uint64_t{1} << (bits - 1);
  const bool negative = layout.isSigned && (raw & signBit) != 0;
  // The magnitude of a negative value: the two's complement within the type's width.
  const uint64_t magnitude = negative ? (bits == 64 ? 0 - raw : (uint64_t{1} << bits) - raw) : raw;

  auto displayDecimal = [&] {
    if (negative) displayChar('-');
    displayUnsigned(magnitude);
  };
  auto displayHex = [&] {
    displayText("0x");
    for (unsigned shift = bits; shift > 0; shift -= 4)
      displayChar(kHexDigits[raw >> (shift - 4) & 0xF]);
  };

  if (layout.integerWidth == 1) {
    displayHex();
    displayChar('/');
    displayDecimal();
    if (raw >= 0x20 && raw < 0x7F) {
      displayText("/'");
      displayChar(static_cast<char>(raw));
      displayChar('\'');
    }
  } else {
    displayDecimal();
    if (isEnabled(kHexData)) {
      displayChar('/');
      displayHex();
    }
  }
  if (isEnabled(kBinData)) {
    displayText("/0b");
    for (unsigned bit = bits; bit > 0; --bit) displayChar((raw >> (bit - 1) & 1) != 0 ? '1' : '0');
  }
}

void TavClTraceFormatter::formatFloat(uint32_t type, uint64_t size) {
  double value;
  int digits = 15;
  if (type == TAV_TRACE_TYPE_FLOAT) {
    float single;
    std::memcpy(&single, smallData, sizeof(single));
    value = single;
    digits = 7;
  } else if (type == TAV_TRACE_TYPE_DOUBLE || size == 8) {
    std::memcpy(&value, smallData, sizeof(value));
  } else {
    value = extendedToDouble(smallData);
  }
  if (std::isnan(value)) {
    displayText("nan");
    return;
  }
  if (std::isinf(value)) {
    displayText(value < 0 ? "-inf" : "inf");
    return;
  }
  char text[64];
  const int length = std::snprintf(text, sizeof(text), "%.*g", digits, value);
  // The program may have set a locale with a decimal comma; the display is the same everywhere.
  for (int i = 0; i < length; ++i) {
    if (text[i] == ',') text[i] = '.';
  }
  if (length > 0) displayBuffer(text, static_cast<size_t>(length));
}

// Without an input stream the bytes are the record's small data, already read.
void TavClTraceFormatter::formatHexDump(std::istream* input, uint64_t size) {
  constexpr uint64_t kRowBytes = 16;
  uint8_t row[kRowBytes];
  for (uint64_t offset = 0; offset < size; offset += kRowBytes) {
    const uint64_t count = size - offset < kRowBytes ? size - offset : kRowBytes;
    const uint8_t* bytes = row;
    if (input == nullptr) {
      bytes = smallData + offset;
    } else {
      readExactly(*input, row, count);
    }
    displayLineBreak();
    displayText(TavClStrepHexDump(static_cast<size_t>(offset), bytes, static_cast<size_t>(count))
                    .getAsCString());
  }
}

void TavClTraceFormatter::formatCString(std::istream& input, uint64_t size) {
  uint8_t chunk[256];
  bool ended = false;
  for (uint64_t offset = 0; offset < size; offset += sizeof(chunk)) {
    const uint64_t count = size - offset < sizeof(chunk) ? size - offset : sizeof(chunk);
    readExactly(input, chunk, count);
    if (ended) continue;
    const void* zero = std::memchr(chunk, 0, static_cast<size_t>(count));
    const size_t length = zero == nullptr
                              ? static_cast<size_t>(count)
                              : static_cast<size_t>(static_cast<const uint8_t*>(zero) - chunk);
    displayBuffer(reinterpret_cast<const char*>(chunk), length);
    ended = zero != nullptr;
  }
}

void TavClTraceFormatter::formatAdrs() {
  static constexpr char kHexDigits[] = "0123456789abcdef";
  const uint64_t address = loadLittleEndian(smallData, 8);
  displayText("0x");
  for (unsigned shift = 64; shift > 0; shift -= 4)
    displayChar(kHexDigits[address >> (shift - 4) & 0xF]);
}

const char* TavClTraceFormatter::getMessage(unsigned long messageNumber) {
  if (message != nullptr) return message->setNewMessageId(messageNumber);
  if (messageNumber >= tavMsgCatGetBuiltInStringTableSize()) return "";
  return tavMsgCatGetBuiltInStringTable()[messageNumber];
}

void TavClTraceFormatter::displayLineBreak() {
  displayChar('\n');
  displayIndent(recordDepth + 1);
}

void TavClTraceFormatter::displayIndent(uint32_t levels) {
  if (indentationLength == 0) return;
  for (uint32_t level = 0; level < levels; ++level) displayBuffer(indentation, indentationLength);
}

void TavClTraceFormatter::flushOutput() {
  if (output != nullptr && outputLength > 0) {
    output->write(outputBuffer, static_cast<std::streamsize>(outputLength));
  }
  outputLength = 0;
}
