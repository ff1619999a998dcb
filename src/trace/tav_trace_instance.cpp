// tav_trace_instance.cpp - the process-wide trace instance and the built-in back end.

#include <cstdlib>
#include <cstring>

#include "../core/tav_system_os.h"
#include "../process/tav_process_os.h"
#include "tav_trace.h"
#include "tav_trace_record_layout.h"
#include "tav_trace_staging.h"
#include "tav_trace_text_copy.h"

TavClTraceInstance* gs_pclTavTraceInstance = nullptr;
TavClTraceInstance* TavClTraceInstance::cv_pclSingletonInstance = nullptr;

namespace {

void deleteInstanceAtExit() { TavClTraceInstance::deleteInstance(); }

}  // namespace

TavClTraceInstance* TavClTraceInstance::createInstance(const char* key, const char* instanceName) {
  return create(key, instanceName, false);
}

TavClTraceInstance* TavClTraceInstance::createControllerInstance(const char* key,
                                                                 const char* instanceName) {
  return create(key, instanceName, true);
}

TavClTraceInstance* TavClTraceInstance::create(const char* key, const char* instanceName,
                                               bool controller) {
  if (cv_pclSingletonInstance != nullptr) return cv_pclSingletonInstance;
  // Registered once, at the first creation, so that a trace still in memory reaches its file
  // when the program ends without deleting the instance.
  static const bool registered = std::atexit(deleteInstanceAtExit) == 0;
  (void)registered;
  cv_pclSingletonInstance = new TavClTraceInstance(key, instanceName, controller);
  cv_pclSingletonInstance->enable();
  return cv_pclSingletonInstance;
}

void TavClTraceInstance::deleteInstance() {
  TavClTraceInstance* instance = cv_pclSingletonInstance;
  if (instance == nullptr) return;
  cv_pclSingletonInstance = nullptr;
  delete instance;
}

TavClTraceInstance::TavClTraceInstance(const char* key, const char* instanceName, bool controller)
    : dumpCallback(&dumpImp), callbackContext(this) {
  environment = new TavClTraceEnvironment(key, instanceName, controller);
  settingsBlock = &environment->getSettings().getBlock();
}

TavClTraceInstance::~TavClTraceInstance() {
  disable();
  delete environment;
}

void TavClTraceInstance::enable() {
  if (environment->isActive()) gs_pclTavTraceInstance = this;
}

void TavClTraceInstance::disable() {
  flush();
  if (gs_pclTavTraceInstance == this) gs_pclTavTraceInstance = nullptr;
}

void TavClTraceInstance::flush() {
  if (environment->isActive()) environment->flush();
}

void TavClTraceInstance::registerUserCallback(TavPfuTraceDump callback, void* context) {
  dumpCallback = callback;
  callbackContext = context;
}

void TavClTraceInstance::dumpFunction(TavEnTraceDetail detail, uint16_t componentId,
                                      TavEnTraceDataType type, const char* origin) {
  // The level after the change, copied, so that the record carries this call's level even
  // while other threads move the shared count on.
  const uint32_t level = type == TAV_TRACE_TYPE_FUNCTION_ENTRY
                             ? nestingLevel.fetch_add(1, std::memory_order_relaxed) + 1
                             : nestingLevel.fetch_sub(1, std::memory_order_relaxed) - 1;
  if (detail == TAV_TRACE_DETAIL_LOW) detail = TAV_TRACE_DETAIL_OFF;
  dumpCallback(callbackContext, detail, componentId, type, origin, "", &level, sizeof level);
}

void TavClTraceInstance::dumpImp(void* context, TavEnTraceDetail detail, uint16_t componentId,
                                 TavEnTraceDataType type, const char* origin, const char* message,
                                 const void* data, uint64_t size) {
  const TavClTraceInstance& instance = *static_cast<TavClTraceInstance*>(context);
  const _TavStTraceSettingsBlock& settings = *instance.settingsBlock;
  if (!settings.filter.matchesDetail(detail) || !settings.filter.matchesCompId(componentId)) return;
  TavClTraceEnvironment& environment = *instance.environment;
  const bool compress = (settings.flags & TavClTraceSettings::kCompression) != 0;
  // The environment's own function, named so that it is called directly, not looked up.
  const uint64_t capacity = environment.TavClTraceEnvironment::getBufferSize();
  if (message == nullptr) message = "";
  if (origin == nullptr) origin = "";
  using namespace tav::trace_record;
  constexpr size_t kMaxText = TavClTraceEntry::kMaxStoredTextLength;
  const uint64_t dataSize = storedDataSize(data, size, capacity);

  // The record is built where it waits for the ring, in the thread's own area: the texts first,
  // then the header, which needs their stored lengths. The room asked for is what the longest
  // texts take, with the bytes a copy or compression may write past them. With autoflush on,
  // each record is handed to the file at once and goes the longer way below.
  tav::trace::RecordStaging* staging = environment.getStaging();
  tav::trace::RecordStaging::Room room;
  constexpr uint64_t kTextRoom = 2 * (kMaxText + tav::trace::kBoundedTextOvershoot + 1);
  size_t messageLength;
  size_t originLength;
  if (staging != nullptr && (settings.flags & TavClTraceSettings::kAutoflush) == 0 &&
      staging->reserve(kHeaderSize + kTextRoom + dataSize, &room)) {
    uint8_t* texts = room.at + kHeaderSize;
    if (compress) {
      // A compressed text of 256 bytes keeps only the low eight bits of its length (0), and the
      // origin then starts where that length puts it, as the record will read.
      messageLength = static_cast<uint8_t>(TavClTraceEntry::compressCString(texts, message, kMaxText));
      originLength = static_cast<uint8_t>(
          TavClTraceEntry::compressCString(texts + messageLength, origin, kMaxText));
    } else {
      messageLength = tav::trace::copyBoundedText(texts, message, kMaxText);
      originLength = tav::trace::copyBoundedText(texts + messageLength, origin, kMaxText);
    }
    storeCallHeader(room.at, detail, componentId, type, compress, data, size, capacity,
                    static_cast<uint8_t>(messageLength), static_cast<uint8_t>(originLength),
                    tav::os::tickCountMilliseconds(), environment.getProcessId(), room.threadId);
    uint8_t* dataBlock = texts + messageLength + originLength;
    if (dataSize <= kMaxText) {
      tav::trace::copyShortBytes(dataBlock, static_cast<const char*>(data), dataSize);
    } else {
      std::memcpy(dataBlock, data, dataSize);
    }
    tav::trace::RecordStaging::commit(room, kHeaderSize + messageLength + originLength + dataSize);
    return;
  }

  // The header on the stack, and compressed texts: uncompressed ones go from the caller's
  // strings straight into the ring.
  uint8_t compressed[2 * kMaxText + 2];
  if (!compress) {
    messageLength = tav::trace::boundedTextLength(message, kMaxText);
    originLength = tav::trace::boundedTextLength(origin, kMaxText);
  } else {
    messageLength =
        static_cast<uint8_t>(TavClTraceEntry::compressCString(compressed, message, kMaxText));
    originLength = static_cast<uint8_t>(
        TavClTraceEntry::compressCString(compressed + messageLength, origin, kMaxText));
    message = reinterpret_cast<const char*>(compressed);
    origin = message + messageLength;
  }
  uint8_t header[kHeaderSize];
  storeCallHeader(header, detail, componentId, type, compress, data, size, capacity,
                  static_cast<uint8_t>(messageLength), static_cast<uint8_t>(originLength),
                  tav::os::tickCountMilliseconds(), environment.getProcessId(),
                  tav::os::currentThreadId());
  environment.addRecord(header, message, messageLength, origin, originLength, data);
}
