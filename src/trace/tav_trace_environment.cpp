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
#include "tav_trace_shared_ring.h"
#include "tav_trace_staging.h"

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
constexpr const char* kShared = "_TRACE_SHARED";

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
    if (!sharedMemoryRequested || !useSharedRing()) {
      bufferMemory = static_cast<uint8_t*>(tavCalloc(1, bufferSize));
      void* managerMemory = tavMalloc(sizeof(TavClTraceBufferManager));
      bufferManager = new (managerMemory) TavClTraceBufferManager(*this, bufferMemory, bufferSize);
      void* stagingMemory = tavMalloc(sizeof(tav::trace::RecordStaging));
      staging = new (stagingMemory) tav::trace::RecordStaging(*bufferManager, getBufferSize());
    }
  } catch (...) {
    release();  // the destructor does not run for an object that was never built
    throw;
  }

  if (settings->isAutosaveEnabled()) {
    installFileWriter();
    if (!controller && settings->isAutoclearEnabled()) std::remove(getTraceFileName());
  }
  // Reported once the buffer is made, so that the report says where it really is.
  if (settings->isVerboseEnabled()) reportSettings(key);
}

// A program joins the key's ring, or starts it empty when the memory holds none; a controller
// takes the ring only when it is valid, since the memory of a program that died may be corrupt.
// Either way the buffer falls back to private memory when the ring cannot be used.
bool TavClTraceEnvironment::useSharedRing() {
  void* ringMemory = tavMalloc(sizeof(tav::trace::SharedTraceRing));
  sharedRing = new (ringMemory) tav::trace::SharedTraceRing(tavGetTmpDirectory(), getKey());
  const bool mapped = controller ? sharedRing->attach() : sharedRing->open(bufferSize);
  sharedRingProblem = sharedRing->getProblem();
  sharedRingFileName = sharedRing->getFileName();
  if (mapped) {
    void* managerMemory = tavMalloc(sizeof(TavClTraceBufferManager));
    bufferManager = new (managerMemory) TavClTraceBufferManager(
        *this, sharedRing->getMemory(), sharedRing->getSize(), sharedRing,
        controller ? TAV_TRACE_RING_ATTACH_ONLY : TAV_TRACE_RING_START_EMPTY);
    const TavEnTraceRingCheck check = bufferManager->getAttachCheck();
    if (!controller || check == TAV_TRACE_RING_VALID) {
      sharedMemory = true;
      return true;
    }
    sharedRingProblem = TavClTraceBufferManager::describeRingCheck(check);
    bufferManager->~TavClTraceBufferManager();
    tavFree(bufferManager);
    bufferManager = nullptr;
  }
  sharedRing->~SharedTraceRing();
  tavFree(sharedRing);
  sharedRing = nullptr;
  return false;
}

void TavClTraceEnvironment::installFileWriter() {
  if (sharedRing == nullptr) {
    bufferManager->setOverflowCallback(TavClTraceFileWriter::appendHandOut, &fileWriter);
    return;
  }
  sharedRing->setFileWriter(&fileWriter, this);
  bufferManager->setOverflowCallback(tav::trace::SharedTraceRing::appendHandOut, sharedRing);
}

TavClTraceEnvironment::~TavClTraceEnvironment() { release(); }

void TavClTraceEnvironment::release() {
  if (staging != nullptr) {
    staging->~RecordStaging();  // moves the waiting records into the ring
    tavFree(staging);
  }
  staging = nullptr;
  if (bufferManager != nullptr) {
    // A controller attached to a shared ring saves it only when told to (saveSharedRing).
    if (!(controller && sharedMemory)) bufferManager->flush();
    if (settings->isAutosaveEnabled()) bufferManager->setOverflowCallback(nullptr, nullptr);
    bufferManager->~TavClTraceBufferManager();
    tavFree(bufferManager);
  }
  bufferManager = nullptr;
  if (sharedRing != nullptr) {
    sharedRing->~SharedTraceRing();
    tavFree(sharedRing);
  }
  sharedRing = nullptr;
  tavFree(bufferMemory);
  bufferMemory = nullptr;
  delete settings;
  settings = nullptr;
}

void TavClTraceEnvironment::saveSharedRing() {
  if (!sharedMemory) return;
  // The ring hands its pending records to the trace file, whatever autosave says.
  installFileWriter();
  bufferManager->flush();
  if (!settings->isAutosaveEnabled()) bufferManager->setOverflowCallback(nullptr, nullptr);
}

void TavClTraceEnvironment::add(const TavClTraceEntry& entry) {
  const TavClTraceBufferManager::RecordParts parts = TavClTraceBufferManager::partsOf(entry);
  addRecord(parts.header, parts.message, parts.messageLength, parts.origin, parts.originLength,
            parts.data);
}

void TavClTraceEnvironment::addRecord(const uint8_t* header, const char* message,
                                      uint64_t messageLength, const char* origin,
                                      uint64_t originLength, const void* data) {
  if (staging != nullptr) {
    staging->add(header, message, messageLength, origin, originLength, data);
  } else {
    bufferManager->writeRecord(header, message, messageLength, origin, originLength, data);
  }
  if (settings->isAutoflushEnabled()) flush();
}

void TavClTraceEnvironment::flush() {
  if (staging != nullptr) staging->drainAll();
  bufferManager->flush();
}

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

  sharedMemoryRequested = TraceVariable(key, kShared).hasValueEnabled();
  if (TraceVariable(key, kVerbose).hasValueEnabled()) settings->enableVerbose(true);
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
