// tav_trace_status.cpp - the controller's status display: what the traced program's variables
// set up, and what its trace file holds.
//
// One label a line, each followed by a colon and its value, the labels padded to the longest of
// them in the catalog's language. The "Trace Status" and "Trace Filter" lines head the lines
// below them. The filter shown is the one the traced program records with; its component set
// appears three times: as the variable gave it, and as the ranges included and excluded.

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>

#include "tav_console.h"
#include "tav_environment.h"
#include "tav_message.h"
#include "tav_trace.h"
#include "tav_trace_controller.h"
#include "tav_trace_entry.h"
#include "tav_trace_environment.h"

namespace {

// The labels, as numbered in the library's catalog, in the order they are stored there.
enum : unsigned long {
  kLabelKeyInstance = 173,
  kLabelTraceStatus,
  kLabelTraceFilter,
  kLabelTraceActive,
  kLabelTraceEnabled,
  kLabelSharedMemory,
  kLabelBufferSize,
  kLabelTraceFile,
  kLabelDetailLevel,
  kLabelProcessId,
  kLabelThreadId,
  kLabelComponentSet,
  kLabelCompressionRate,
  kLabelEntryCount,
  kLabelIncluded,
  kLabelExcluded,
  kLabelAfterLast
};
constexpr unsigned long kMessageYes = 3;
constexpr unsigned long kMessageNo = 4;
constexpr unsigned long kMessageBytes = 189;
constexpr char kNothing[] = "-";

// Characters, not bytes: a UTF-8 catalog text counts each character once.
size_t displayWidth(const char* text) {
  size_t width = 0;
  for (; *text != '\0'; ++text) width += (static_cast<unsigned char>(*text) & 0xC0) != 0x80;
  return width;
}

// The ids from 1 to 255 whose bit is as wanted, as ranges: "1-6,8,10-255", or "-" for none.
std::string componentRanges(const TavClTraceFilter& filter, bool included) {
  std::string ranges;
  for (uint32_t id = 1; id <= TavClTraceFilter::kMaxComponentId; ++id) {
    if (filter.matchesCompId(id) != included) continue;
    uint32_t last = id;
    while (last < TavClTraceFilter::kMaxComponentId && filter.matchesCompId(last + 1) == included)
      ++last;
    if (!ranges.empty()) ranges += ',';
    ranges += std::to_string(id);
    if (last > id) ranges += '-' + std::to_string(last);
    id = last;
  }
  return ranges.empty() ? kNothing : ranges;
}

// The trace file's records and their compression rate, or "-" twice when it cannot be read.
struct TraceFileCounts {
  std::string entries = kNothing;
  std::string compressionRate = kNothing;
};

TraceFileCounts countRecords(TavClTraceEnvironmentABase& environment) {
  TraceFileCounts counts;
  std::ifstream input(environment.getTraceFileName(), std::ios::binary);
  if (!input) return counts;
  TavClTraceFileEntry entry(environment);
  uint64_t count = 0;
  while (entry.read(input)) {
    ++count;
    input.ignore(static_cast<std::streamsize>(entry.getSizeOfDumpData()));
  }
  char rate[32];
  std::snprintf(rate, sizeof rate, "%.2f", static_cast<double>(environment.getCompressionRate()));
  counts.entries = std::to_string(count);
  counts.compressionRate = rate;
  return counts;
}

// Only for counting: the trace file named, nothing else of a trace.
class CountingEnvironment : public TavClTraceEnvironmentABase {
 public:
  CountingEnvironment(const char* key, const char* instance, const char* fileName)
      : TavClTraceEnvironmentABase(key, instance), fileName(fileName) {}
  bool isCompressionEnabled() const override { return false; }
  uint64_t getBufferSize() const override { return 0; }
  const char* getTraceFileName() const override { return fileName; }
  bool isVerbose() const override { return false; }

 private:
  const char* fileName;
};

}  // namespace

void TavClTraceController::displayStatus() {
  if (output == nullptr) return;
  const TavClMessageCatalog& catalog = console.getCatalog();
  const TavClMessage title(catalog, kTitleMessage);
  console.displayTitle(title.getText(), nullptr);

  std::string labels[kLabelAfterLast - kLabelKeyInstance];
  size_t width = 0;
  for (unsigned long id = kLabelKeyInstance; id < kLabelAfterLast; ++id) {
    labels[id - kLabelKeyInstance] = TavClMessage(catalog, id).getText();
    width = std::max(width, displayWidth(labels[id - kLabelKeyInstance].c_str()));
  }
  auto line = [&](unsigned long id, bool indented, const std::string& value) {
    const std::string& label = labels[id - kLabelKeyInstance];
    std::fprintf(output, "%s%s%*s : %s\n", indented ? "    " : "", label.c_str(),
                 static_cast<int>(width - displayWidth(label.c_str())), "", value.c_str());
  };
  auto heading = [&](unsigned long id) {
    std::fprintf(output, "%s\n", labels[id - kLabelKeyInstance].c_str());
  };
  const std::string yes = TavClMessage(catalog, kMessageYes).getText();
  const std::string no = TavClMessage(catalog, kMessageNo).getText();
  auto yesNo = [&](bool value) { return value ? yes : no; };

  const TavClTraceFilter& filter = environment->getSettings().getFilter();
  CountingEnvironment counting(key, instance, traceFile.c_str());
  const TraceFileCounts counts = countRecords(counting);
  std::string upperKey = key;
  for (char& c : upperKey) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  const TavClEnvironmentVariableQueryOnly componentSet((upperKey + "_TRACE_COMPSET").c_str());

  line(kLabelKeyInstance, false,
       std::string(key) + "/" + (instance != nullptr ? instance : environment->kDefaultInstance));
  heading(kLabelTraceStatus);
  line(kLabelTraceActive, true, yesNo(environment->isActive()));
  line(kLabelTraceEnabled, true, yesNo(TavClTraceInstance::isEnabled()));
  line(kLabelSharedMemory, true, yesNo(environment->usesSharedMemory()));
  line(kLabelBufferSize, true,
       std::to_string(environment->getTotalBufferSize()) + " " +
           TavClMessage(catalog, kMessageBytes).getText());
  line(kLabelTraceFile, true, traceFile);
  line(kLabelCompressionRate, true, counts.compressionRate);
  line(kLabelEntryCount, true, counts.entries);
  heading(kLabelTraceFilter);
  line(kLabelDetailLevel, true, TavClTraceFilter::getDetailAsCString(filter.getDetail()));
  line(kLabelProcessId, true, std::to_string(filter.getProcessId()));
  line(kLabelThreadId, true, std::to_string(filter.getThreadId()));
  line(kLabelComponentSet, true, componentSet.hasValue() ? componentSet.getValue() : "*");
  line(kLabelIncluded, true, componentRanges(filter, true));
  line(kLabelExcluded, true, componentRanges(filter, false));
}
