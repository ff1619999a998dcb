// tav_trace_instance.cpp - the process-wide trace instance and the built-in back end.

#include <cstdlib>

#include "tav_trace.h"

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
  // The environment's own function, named so that it is called directly, not looked up.
  const TavClTraceEntry entry(environment, (settings.flags & TavClTraceSettings::kCompression) != 0,
                              environment.TavClTraceEnvironment::getBufferSize(), detail,
                              componentId, type, origin, message, data, size);
  environment.add(entry);
}
