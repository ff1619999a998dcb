// tav_trace_json.cpp - trace records as trace-event JSON for timeline viewers.
//
// Records are read and filtered as the formatter does, and their data blocks are shown by the
// formatter's own display, caught in a string and escaped. The writer keeps, per process and
// thread, how many functions are open, so that begin and end events always balance.

#include "tav_trace_json.h"

#include <cstring>
#include <istream>
#include <ostream>
#include <streambuf>
#include <unordered_map>

#include "tav_trace_environment.h"

namespace {

// Collects what the formatter displays, for one record at a time. The formatter hands over its
// output in blocks only (write), so single characters never arrive here.
class CaptureBuffer : public std::streambuf {
 public:
  std::string text;

 protected:
  std::streamsize xsputn(const char* data, std::streamsize count) override {
    text.append(data, static_cast<size_t>(count));
    return count;
  }
};

// The length of the well-formed UTF-8 sequence at text (at most length bytes), or 0.
size_t utf8SequenceLength(const unsigned char* text, size_t length) {
  const unsigned char lead = text[0];
  size_t count;
  unsigned char low = 0x80;
  unsigned char high = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    count = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    count = 3;
    if (lead == 0xE0) low = 0xA0;   // no overlong forms
    if (lead == 0xED) high = 0x9F;  // no surrogates
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    count = 4;
    if (lead == 0xF0) low = 0x90;   // no overlong forms
    if (lead == 0xF4) high = 0x8F;  // nothing beyond U+10FFFF
  } else {
    return 0;
  }
  if (count > length) return 0;
  if (text[1] < low || text[1] > high) return 0;
  for (size_t i = 2; i < count; ++i) {
    if (text[i] < 0x80 || text[i] > 0xBF) return 0;
  }
  return count;
}

void appendUnsigned(std::string& json, uint64_t value) {
  char digits[20];
  size_t count = 0;
  do {
    digits[sizeof(digits) - ++count] = static_cast<char>('0' + value % 10);
    value /= 10;
  } while (value != 0);
  json.append(digits + sizeof(digits) - count, count);
}

// Nanoseconds as microseconds with three decimals.
void appendMicroseconds(std::string& json, uint64_t nanoseconds) {
  appendUnsigned(json, nanoseconds / 1000);
  const unsigned fraction = static_cast<unsigned>(nanoseconds % 1000);
  const char decimals[5] = {'.', static_cast<char>('0' + fraction / 100),
                            static_cast<char>('0' + fraction / 10 % 10),
                            static_cast<char>('0' + fraction % 10), '\0'};
  json.append(decimals, 4);
}

struct ThreadState {
  uint32_t openFunctions = 0;
};

// The state of one write: the output text, the time line and the open functions per thread.
class JsonTrace {
 public:
  explicit JsonTrace(std::ostream& output) : output(output) { json.reserve(kFlushSize + 4096); }

  void begin() { json += "{\"traceEvents\":[\n"; }

  // An event of phase 'B', 'E' (with the nesting level) or 'i' (with the data display).
  void add(char phase, const TavClTraceFileEntry& entry, const std::string* data, uint32_t level) {
    const uint64_t time = nextTime(entry.getTimeStamp());
    const char* origin = entry.getOrigin();
    const size_t originLength = strnlen(origin, entry.getOriginLength());
    const char* message = entry.getMessage();
    const size_t messageLength = strnlen(message, entry.getMessageLength());
    startEvent();
    json += "{\"name\":";
    if (phase == 'i' && messageLength > 0) {
      TavClTraceJsonWriter::appendString(json, message, messageLength);
    } else {
      TavClTraceJsonWriter::appendString(json, origin, originLength);
    }
    json += ",\"cat\":\"trace\",\"ph\":\"";
    json += phase;
    json += phase == 'i' ? "\",\"s\":\"t\",\"ts\":" : "\",\"ts\":";
    appendMicroseconds(json, time);
    appendThread(entry.getProcessId(), entry.getThreadId());
    json += ",\"args\":{";
    if (phase == 'i') {
      json += "\"origin\":";
      TavClTraceJsonWriter::appendString(json, origin, originLength);
      json += ",\"message\":";
      TavClTraceJsonWriter::appendString(json, message, messageLength);
      json += ",\"type\":";
      const char* type = TavClTraceFormatter::getTypeAsShortCString(entry.getType());
      TavClTraceJsonWriter::appendString(json, type, std::strlen(type));
      json += ",\"data\":";
      TavClTraceJsonWriter::appendString(json, data->data(), data->size());
      json += ',';
    }
    json += "\"component\":";
    appendUnsigned(json, entry.getComponentId());
    json += ",\"detail\":\"";
    json += TavClTraceFilter::getDetailAsCString(entry.getDetail());
    json += '"';
    if (phase != 'i') {
      json += ",\"level\":";
      appendUnsigned(json, level);
    }
    json += "}}";
    if (json.size() >= kFlushSize) flush();
  }

  // Counts the functions open on each thread; leave tells whether an exit closes one of them.
  void enter(uint32_t processId, uint32_t threadId) {
    ++threads[key(processId, threadId)].openFunctions;
  }
  bool leave(uint32_t processId, uint32_t threadId) {
    ThreadState& state = threads[key(processId, threadId)];
    if (state.openFunctions == 0) return false;
    --state.openFunctions;
    return true;
  }

  // Closes what is open and the document; safe to call once after any failure.
  void end() {
    for (auto& thread : threads) {
      for (; thread.second.openFunctions > 0; --thread.second.openFunctions) {
        startEvent();
        json += "{\"cat\":\"trace\",\"ph\":\"E\",\"ts\":";
        appendMicroseconds(json, nextTime(lastTicks));
        appendThread(static_cast<uint32_t>(thread.first >> 32),
                     static_cast<uint32_t>(thread.first));
        json += '}';
      }
    }
    json += "\n],\"displayTimeUnit\":\"ms\"}\n";
    flush();
  }

  void flush() {
    output.write(json.data(), static_cast<std::streamsize>(json.size()));
    json.clear();
  }

 private:
  static constexpr size_t kFlushSize = 16384;

  static uint64_t key(uint32_t processId, uint32_t threadId) {
    return uint64_t{processId} << 32 | threadId;
  }

  void startEvent() {
    if (eventCount++ > 0) json += ",\n";
  }

  void appendThread(uint32_t processId, uint32_t threadId) {
    json += ",\"pid\":";
    appendUnsigned(json, processId);
    json += ",\"tid\":";
    appendUnsigned(json, threadId);
  }

  // The time of the next event in nanoseconds: the 32-bit millisecond ticks unwrapped, and
  // always after the previous event.
  uint64_t nextTime(uint32_t ticks) {
    if (eventCount == 0 && !hasTime) {
      unwrappedTicks = ticks;
    } else {
      unwrappedTicks += static_cast<int64_t>(static_cast<int32_t>(ticks - lastTicks));
      if (unwrappedTicks < 0) unwrappedTicks = 0;
    }
    lastTicks = ticks;
    hasTime = true;
    uint64_t time = static_cast<uint64_t>(unwrappedTicks) * 1000000u;
    if (time <= lastTime && eventCount > 0) time = lastTime + 1;
    lastTime = time;
    return time;
  }

  std::ostream& output;
  std::string json;
  std::unordered_map<uint64_t, ThreadState> threads;
  uint64_t eventCount = 0;
  bool hasTime = false;
  uint32_t lastTicks = 0;
  int64_t unwrappedTicks = 0;
  uint64_t lastTime = 0;
};

}  // namespace

void TavClTraceJsonWriter::appendString(std::string& json, const char* text, size_t length) {
  static constexpr char kHexDigits[] = "0123456789abcdef";
  const auto* bytes = reinterpret_cast<const unsigned char*>(text);
  json += '"';
  size_t i = 0;
  while (i < length) {
    // Runs of plain ASCII go out in one piece.
    size_t run = i;
    while (run < length && bytes[run] >= 0x20 && bytes[run] < 0x80 && bytes[run] != '"' &&
           bytes[run] != '\\')
      ++run;
    json.append(text + i, run - i);
    if (run == length) break;
    i = run;
    const unsigned char c = bytes[i];
    if (c >= 0x80) {
      const size_t sequence = utf8SequenceLength(bytes + i, length - i);
      if (sequence > 0) {
        json.append(text + i, sequence);
        i += sequence;
        continue;
      }
    }
    switch (c) {
      case '"': json += "\\\""; break;
      case '\\': json += "\\\\"; break;
      case '\n': json += "\\n"; break;
      case '\r': json += "\\r"; break;
      case '\t': json += "\\t"; break;
      case '\b': json += "\\b"; break;
      case '\f': json += "\\f"; break;
      default: {
        const char escape[6] = {'\\', 'u', '0', '0', kHexDigits[c >> 4], kHexDigits[c & 0xF]};
        json.append(escape, sizeof escape);
        break;
      }
    }
    ++i;
  }
  json += '"';
}

void TavClTraceJsonWriter::write(std::ostream& output) {
  std::pair<TavClTraceJsonWriter*, std::ostream*> target(this, &output);
  formatter.readTraceFile(
      [](std::istream& input, void* context) {
        auto* self = static_cast<std::pair<TavClTraceJsonWriter*, std::ostream*>*>(context);
        self->first->write(input, *self->second);
      },
      &target);
}

void TavClTraceJsonWriter::write(std::istream& input, std::ostream& output) {
  JsonTrace trace(output);
  CaptureBuffer capture;
  std::ostream captureStream(&capture);
  TavClTraceFileEntry entry(formatter.environment);
  formatter.nestingLevel = 0;
  formatter.recordDepth = 0;
  trace.begin();
  try {
    while (entry.read(input)) {
      formatter.dataConsumed = false;
      formatter.smallDataLoaded = false;
      const uint32_t type = entry.getType();
      const TavClTraceFilter& filter = formatter.filter;
      const bool isFunctionRecord =
          type == TAV_TRACE_TYPE_FUNCTION_ENTRY || type == TAV_TRACE_TYPE_FUNCTION_EXIT;
      const bool shown = (!isFunctionRecord || formatter.isEnabled(formatter.kFunctionHeaders)) &&
                         filter.matchesDetail(entry.getDetail()) &&
                         filter.matchesCompId(entry.getComponentId()) &&
                         filter.matchesProcessId(entry.getProcessId()) &&
                         filter.matchesThreadId(entry.getThreadId());
      if (!shown) {
        formatter.skipEntry(input, entry.getSizeOfDumpData());
        continue;
      }
      if (isFunctionRecord) {
        formatter.readSmallData(input, entry);
        if (type == TAV_TRACE_TYPE_FUNCTION_ENTRY) {
          trace.enter(entry.getProcessId(), entry.getThreadId());
          trace.add('B', entry, nullptr, formatter.nestingLevel);
          continue;
        }
        if (trace.leave(entry.getProcessId(), entry.getThreadId())) {
          trace.add('E', entry, nullptr, formatter.nestingLevel);
          continue;
        }
      }
      // The data as the formatter displays it, caught rather than written.
      capture.text.clear();
      formatter.output = &captureStream;
      formatter.outputLength = 0;
      if (isFunctionRecord) {
        formatter.formatSmallData(type, entry.getSizeOfDumpData());
      } else {
        formatter.formatData(input, entry);
      }
      formatter.flushOutput();
      formatter.output = nullptr;
      trace.add('i', entry, &capture.text, 0);
    }
  } catch (...) {
    formatter.output = nullptr;
    formatter.outputLength = 0;
    trace.end();
    throw;
  }
  trace.end();
}
