// tav_trace_functions.cpp - the C trace functions, all working on the enabled instance.

#include "tav_trace.h"

void tavTraceCreateInstance(const char* key, const char* instanceName) {
  TavClTraceInstance::createInstance(key, instanceName);
}

void tavTraceDeleteInstance(void) { TavClTraceInstance::deleteInstance(); }

void tavTraceDump(TavEnTraceDetail detail, uint16_t componentId, TavEnTraceDataType type,
                  const char* origin, const char* message, const void* data, uint64_t size) {
  if (type == TAV_TRACE_TYPE_FUNCTION_ENTRY || type == TAV_TRACE_TYPE_FUNCTION_EXIT) {
    gs_pclTavTraceInstance->dumpFunction(detail, componentId, type, origin);
  } else {
    gs_pclTavTraceInstance->dump(detail, componentId, type, origin, message, data, size);
  }
}

void tavTraceFlush(void) { gs_pclTavTraceInstance->flush(); }

bool tavTraceIsEnabled(void) { return gs_pclTavTraceInstance != nullptr; }

void* TavClTraceInstance_getInstance(void) { return gs_pclTavTraceInstance; }
