// tav_trace_demo - tracing a small program: function entry and exit, and typed data.
//
//   tav_trace_demo               runs the traced work under the key "tavdemo"
//   tav_trace_demo --count FILE  reads a trace file back and counts its records by type
//   tav_trace_demo --format FILE prints a trace file in the default format
//   tav_trace_demo --nested FILE prints it one line a record, indented by function nesting
//
// Tracing is off unless the environment switches it on, for example:
//
//   TAVDEMO_TRACE_ACTIVE=on TAVDEMO_TRACE_DETAIL=high TAVDEMO_TRACE_FILE=demo.trc tav_trace_demo
//
// Without TAVDEMO_TRACE_FILE the records go to tavdemotrace.trc in the temporary directory.

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <map>
#include <vector>

#include "tav_error.h"
#include "tav_trace.h"
#include "tav_trace_formatter.h"

namespace {

constexpr uint16_t kDemoComponent = 1;

// Records entry on construction and exit on destruction, while tracing is enabled.
class FunctionTrace {
 public:
  explicit FunctionTrace(const char* function) : function(function) {
    if (TAV_TRACE_IS_ENABLED()) {
      tavTraceDump(TAV_TRACE_DETAIL_LOW, kDemoComponent, TAV_TRACE_TYPE_FUNCTION_ENTRY, function,
                   nullptr, nullptr, 0);
    }
  }
  ~FunctionTrace() {
    if (TAV_TRACE_IS_ENABLED()) {
      tavTraceDump(TAV_TRACE_DETAIL_LOW, kDemoComponent, TAV_TRACE_TYPE_FUNCTION_EXIT, function,
                   nullptr, nullptr, 0);
    }
  }
  FunctionTrace(const FunctionTrace&) = delete;
  FunctionTrace& operator=(const FunctionTrace&) = delete;

 private:
  const char* function;
};

// One data record; the test of the enabled instance stays at the trace point.
#define DEMO_TRACE(detail, type, origin, message, data, size)                  \
  do {                                                                         \
    if (TAV_TRACE_IS_ENABLED())                                                \
      tavTraceDump(detail, kDemoComponent, type, origin, message, data, size); \
  } while (0)

double average(const std::vector<int32_t>& values) {
  FunctionTrace trace("average");
  int64_t sum = 0;
  for (const int32_t value : values) sum += value;
  DEMO_TRACE(TAV_TRACE_DETAIL_HIGH, TAV_TRACE_TYPE_INT64, "average", "sum", &sum, sizeof sum);
  const double result = values.empty() ? 0.0 : static_cast<double>(sum) / values.size();
  DEMO_TRACE(TAV_TRACE_DETAIL_MED, TAV_TRACE_TYPE_DOUBLE, "average", "result", &result,
             sizeof result);
  return result;
}

void processBatch(const char* name, const std::vector<int32_t>& values) {
  FunctionTrace trace("processBatch");
  DEMO_TRACE(TAV_TRACE_DETAIL_LOW, TAV_TRACE_TYPE_CSTRING, "processBatch", "batch name", name,
             std::strlen(name) + 1);
  const uint32_t count = static_cast<uint32_t>(values.size());
  DEMO_TRACE(TAV_TRACE_DETAIL_MED, TAV_TRACE_TYPE_UINT32, "processBatch", "value count", &count,
             sizeof count);
  const void* address = values.data();
  DEMO_TRACE(TAV_TRACE_DETAIL_HIGH, TAV_TRACE_TYPE_POINTER, "processBatch", "values at", &address,
             sizeof address);
  DEMO_TRACE(TAV_TRACE_DETAIL_HIGH, TAV_TRACE_TYPE_DATA, "processBatch", "raw values",
             values.data(), values.size() * sizeof(int32_t));
  const double mean = average(values);
  std::printf("batch %-6s %lu values, average %.2f\n", name,
              static_cast<unsigned long>(values.size()), mean);
}

int runTracedWork() {
  tavTraceCreateInstance("tavdemo", nullptr);
  std::printf("tracing is %s\n", tavTraceIsEnabled() ? "on" : "off (set TAVDEMO_TRACE_ACTIVE=on)");
  {
    FunctionTrace trace("runTracedWork");
    processBatch("small", {3, 1, 4, 1, 5});
    processBatch("signed", {-20, 7, 13, -1});
    processBatch("empty", {});
  }
  // Writes the rest of the buffer to the trace file; it would also happen at exit.
  tavTraceDeleteInstance();
  return 0;
}

// Counts the records of a trace file; texts are read through an environment that only knows
// how to decode them.
class ReadingEnvironment : public TavClTraceEnvironmentABase {
 public:
  explicit ReadingEnvironment(const char* fileName = "")
      : TavClTraceEnvironmentABase("tavdemo", nullptr), fileName(fileName) {}
  bool isCompressionEnabled() const override { return false; }
  uint64_t getBufferSize() const override { return UINT32_MAX; }
  const char* getTraceFileName() const override { return fileName; }
  bool isVerbose() const override { return false; }

 private:
  const char* fileName;
};

int countRecords(const char* fileName) {
  std::ifstream input(fileName, std::ios::binary);
  if (!input) {
    std::fprintf(stderr, "cannot open %s: check the name and that the trace ran\n", fileName);
    return 1;
  }
  ReadingEnvironment environment;
  TavClTraceFileEntry entry(environment);
  std::map<int, unsigned long> byType;
  unsigned long records = 0;
  while (entry.read(input)) {
    input.seekg(static_cast<std::streamoff>(entry.getSizeOfDumpData()), std::ios::cur);
    if (!input) break;
    ++records;
    ++byType[entry.getType()];
  }
  std::printf("%s: %lu records\n", fileName, static_cast<unsigned long>(records));
  for (const auto& [type, count] : byType) {
    std::printf("  type %2d: %lu\n", type, static_cast<unsigned long>(count));
  }
  return 0;
}

// Prints a trace file as text. The nested display puts each record on one line, shifted right
// by one indentation per function level.
int formatTrace(const char* fileName, bool nested) {
  ReadingEnvironment environment(fileName);
  TavClTraceFormatter formatter(environment);
  if (nested) {
    formatter.setFormatString("%x %f %m %d");
    formatter.setDisplayIndentation("|  ");
    formatter.enableNesting(true);
  }
  try {
    formatter.format(std::cout);
  } catch (const TavClExceptionFatal& failure) {
    std::cout.flush();
    std::fprintf(stderr, "%s: %s (%s); check that the file is a complete trace file\n", fileName,
                 failure.getCause(), failure.getModule());
    return 1;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::strcmp(argv[1], "--count") == 0) return countRecords(argv[2]);
  if (argc == 3 && std::strcmp(argv[1], "--format") == 0) return formatTrace(argv[2], false);
  if (argc == 3 && std::strcmp(argv[1], "--nested") == 0) return formatTrace(argv[2], true);
  if (argc != 1) {
    std::fprintf(stderr, "usage: %s [--count|--format|--nested TRACEFILE]\n", argv[0]);
    return 2;
  }
  return runTracedWork();
}
