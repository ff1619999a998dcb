// tav_trace_environment.cpp - a trace's settings from environment variables, its buffer and
// its trace file.

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "tav_environment.h"
#include "tav_error.h"
#include "tav_memmgr.h"
#include "tav_trace_environment.h"

namespace {

// The suffixes, in the order they are read.
constexpr const char* kActive = "_TRACE_ACTIVE";
constexpr const char* kDetail = "_TRACE_DETAIL";
constexpr const char* kAutosave = "_TRACE_AUTOSAVE";
constexpr const char* kAutoflush = "_TRACE_AUTOFLUSH";
constexpr const char* kAutoclear = "_TRACE_AUTOCLEAR";
constexpr const char* kCompress = "_TRACE_COMPRESS";
constexpr const char* kCompset = "_TRACE_COMPSET";
constexpr const char* kBufsize = "_TRACE_BUFSIZE";
constexpr const char* kFile = "_TRACE_FILE";
constexpr const char* kFormat = "_TRACE_FORMAT";
constexpr const char* kVerbose = "_TRACE_VERBOSE";

// The text of two parts one after the other, in memory from the memory manager.
std::unique_ptr<char, decltype(&tavFree)> joined(const char* first, const char* second) {
  const size_t firstLength = std::strlen(first);
  const size_t secondLength = std::strlen(second);
  std::unique_ptr<char, decltype(&tavFree)> text(
      static_cast<char*>(tavMalloc(firstLength + secondLength + 1)), &tavFree);
  std::memcpy(text.get(), first, firstLength);
  std::memcpy(text.get() + firstLength, second, secondLength + 1);
  return text;
}

// The variable named by the upper-cased key and a suffix, however long the key is.
class TraceVariable : public TavClEnvironmentVariableQueryOnly {
 public:
  TraceVariable(const char* key, const char* suffix) {
    const auto name = joined(key != nullptr ? key : "", suffix);
    for (char* letter = name.get(); *letter != '\0'; ++letter) {
      if (*letter >= 'a' && *letter <= 'z') *letter = static_cast<char>(*letter - 'a' + 'A');
    }
    setNewName(name.get());
  }
};

const char* onOff(bool on) { return on ? "on" : "off"; }

void reportLine(const char* label, const char* value) {
  std::fprintf(tavGetReportStream(), "[TAV: TRACE: %s %s]\n", label, value);
}

}  // namespace

uint32_t TavClTraceEnvironment::bufferSizeFromText(const char* text) {
  if (text == nullptr) return kMinBufferSize;
  while (*text == ' ' || *text == '\t') ++text;
  const bool negative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  // Kilobytes beyond the largest buffer all give the largest buffer, so the number stops
  // growing there instead of overflowing.
  constexpr int64_t kCeiling = kMaxBufferSize / 1024 + 1;
  int64_t kilobytes = 0;
  for (; *text >= '0' && *text <= '9'; ++text) {
    kilobytes = kilobytes * 10 + (*text - '0');
    if (kilobytes > kCeiling) kilobytes = kCeiling;
  }
  const int64_t bytes = (negative ? -kilobytes : kilobytes) * 1024;
  if (bytes <= kMinBufferSize) return kMinBufferSize;
  if (bytes >= kMaxBufferSize) return kMaxBufferSize;
  return static_cast<uint32_t>(bytes);
}

TavClTraceEnvironment::TavClTraceEnvironment(const char* key, const char* instance, bool controller)
    : TavClTraceEnvironmentABase(key, instance), controller(controller), fileWriter(*this) {
  try {
    settings = new TavClTraceSettings();
    determineSettingsFromEnvVars(key);

    bufferMemory = static_cast<uint8_t*>(tavCalloc(1, bufferSize));
    sharedMemory = false;
    void* managerMemory = tavMalloc(sizeof(TavClTraceBufferManager));
    bufferManager = new (managerMemory) TavClTraceBufferManager(*this, bufferMemory, bufferSize);
  } catch (...) {
    release();  // the destructor does not run for an object that was never built
    throw;
  }

  if (settings->isAutosaveEnabled()) {
    bufferManager->setOverflowCallback(TavClTraceFileWriter::appendHandOut, &fileWriter);
    if (!controller && settings->isAutoclearEnabled()) std::remove(getTraceFileName());
  }
}

TavClTraceEnvironment::~TavClTraceEnvironment() { release(); }

void TavClTraceEnvironment::release() {
  if (bufferManager != nullptr) {
    bufferManager->flush();
    if (settings->isAutosaveEnabled()) bufferManager->setOverflowCallback(nullptr, nullptr);
    bufferManager->~TavClTraceBufferManager();
    tavFree(bufferManager);
  }
  bufferManager = nullptr;
  if (!sharedMemory) tavFree(bufferMemory);
  bufferMemory = nullptr;
  delete settings;
  settings = nullptr;
}

void TavClTraceEnvironment::add(const TavClTraceEntry& entry) {
  bufferManager->write(entry);
  if (settings->isAutoflushEnabled()) bufferManager->flush();
}

void TavClTraceEnvironment::flush() { bufferManager->flush(); }

void TavClTraceEnvironment::setFormatString(const char* text) {
  if (text == nullptr) text = "";
  size_t length = std::strlen(text);
  if (length > kMaxFormatLength) length = kMaxFormatLength;
  std::memcpy(formatString, text, length);
  formatString[length] = '\0';
}

void TavClTraceEnvironment::determineSettingsFromEnvVars(const char* key) {
  active = TraceVariable(key, kActive).hasValueEnabled();

  const TraceVariable detail(key, kDetail);
  if (detail.hasValue()) settings->setDetailLevel(detail.getValue());

  // The flags can only be switched on from here.
  if (TraceVariable(key, kAutosave).hasValueEnabled()) settings->enableAutosave(true);
  if (TraceVariable(key, kAutoflush).hasValueEnabled()) settings->enableAutoflush(true);
  if (TraceVariable(key, kAutoclear).hasValueEnabled()) settings->enableAutoclear(true);
  if (TraceVariable(key, kCompress).hasValueEnabled()) settings->enableCompression(true);

  const TraceVariable componentSet(key, kCompset);
  if (componentSet.hasValue()) settings->initComponentIds(componentSet.getValue());

  const TraceVariable size(key, kBufsize);
  bufferSize = size.hasValue() ? bufferSizeFromText(size.getValue()) : kDefaultBufferSize;

  const TraceVariable file(key, kFile);
  if (file.hasValue()) {
    traceFileName = TavClFilename(file.getValue());
  } else {
    const auto name = joined(key != nullptr ? key : "", kDefaultFileSuffix);
    traceFileName = TavClFilename(tavGetTmpDirectory(), name.get(), nullptr);
  }

  const TraceVariable format(key, kFormat);
  setFormatString(format.hasValue() ? format.getValue() : kDefaultFormat);

  if (TraceVariable(key, kVerbose).hasValueEnabled()) {
    settings->enableVerbose(true);
    reportSettings(key);
  }
}

void TavClTraceEnvironment::reportSettings(const char* key) const {
  char number[24];
  reportLine("key:", key != nullptr ? key : "");
  reportLine("active:", onOff(active));
  reportLine("resource key:", getKey());
  reportLine("compression:", onOff(settings->isCompressionEnabled()));
  reportLine("autosave:", onOff(settings->isAutosaveEnabled()));
  reportLine("autoflush:", onOff(settings->isAutoflushEnabled()));
  reportLine("autoclear:", onOff(settings->isAutoclearEnabled()));
  const char* detail = TavClTraceFilter::getDetailAsCString(settings->getFilter().getDetail());
  reportLine("detail:", detail != nullptr ? detail : "?");
  std::snprintf(number, sizeof number, "%" PRIu32, bufferSize);
  reportLine("buffersize:", number);
  std::snprintf(number, sizeof number, "%" PRIu32, getProcessId());
  reportLine("process id:", number);
  reportLine("format:", formatString);
  reportLine("file:", getTraceFileName());
  reportLine("sharedMemory:", onOff(sharedMemory));
  std::fflush(tavGetReportStream());
}
