// Fuzzes the trace formatter and its JSON writer: any byte stream formatted as a trace file
// must end normally or with one of the formatter's three errors, never crash, hang or allocate
// by a size field; and the JSON written from it, whether the file failed or not, must be valid
// JSON to a strict parser.
// Input layout: byte 0 chooses the display switches (bit 0 nesting, bit 1 function headers
// off, bit 2 repeated origins off, bit 3 hexadecimal, bit 4 binary, bit 5 a format without
// "%d"); the rest is the trace file.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

#include "../tests/support/tav_test_json.h"
#include "fuzz_trace_environment.h"
#include "tav_error.h"
#include "tav_trace_formatter.h"
#include "tav_trace_json.h"

namespace {

constexpr std::size_t kMaxInputSize = 1 << 16;

// Discards the text, counting it, so that the formatter's output costs nothing.
class CountingBuffer : public std::streambuf {
 public:
  std::size_t count = 0;

 protected:
  int_type overflow(int_type c) override {
    ++count;
    return traits_type::not_eof(c);
  }
  std::streamsize xsputn(const char*, std::streamsize n) override {
    count += static_cast<std::size_t>(n);
    return n;
  }
};

void expectFormatFailure(const TavClExceptionFatal& failure) {
  const std::uint32_t id = failure.getId();
  if (id != TRACEFORMAT_UNEXPECTED_EOF && id != TRACEFORMAT_FILE_CORRUPTED) {
    std::fprintf(stderr, "unexpected error id %u\n", static_cast<unsigned>(id));
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > kMaxInputSize) return 0;
  static tav_fuzz::TraceEnvironment environment;
  const std::uint8_t switches = data[0];
  TavClTraceFormatter formatter(environment);
  formatter.enableNesting((switches & 1) != 0);
  formatter.enableFunctionHeaders((switches & 2) == 0);
  formatter.enableRepeatedOrigins((switches & 4) == 0);
  formatter.enableHexData((switches & 8) != 0);
  formatter.enableBinData((switches & 16) != 0);
  formatter.setDisplayIndentation("  ");
  if ((switches & 32) != 0) formatter.setFormatString("%f %m %x%n");

  const std::string trace(reinterpret_cast<const char*>(data + 1), size - 1);
  std::istringstream input(trace);
  CountingBuffer sink;
  std::ostream output(&sink);
  try {
    formatter.format(input, output);
  } catch (const TavClExceptionFatal& failure) {
    expectFormatFailure(failure);
  }

  std::istringstream jsonInput(trace);
  std::ostringstream json;
  try {
    TavClTraceJsonWriter(formatter).write(jsonInput, json);
  } catch (const TavClExceptionFatal& failure) {
    expectFormatFailure(failure);
  }
  std::string error;
  if (!tav::test::JsonParser::parse(json.str(), nullptr, &error)) {
    std::fprintf(stderr, "invalid JSON: %s\n", error.c_str());
    std::abort();
  }
  // Each input byte yields a bounded amount of text: at most one record per 20 bytes, each at
  // most the format, its texts, the deepest indentation and its data shown.
  if (sink.count > (size / 20 + 1) * 8192 + size * 16) {
    std::fprintf(stderr, "%zu characters of text from %zu bytes\n", sink.count, size);
    std::abort();
  }
  return 0;
}
