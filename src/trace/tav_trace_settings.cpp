// tav_trace_settings.cpp - the flags and the filter a trace consults for every record.

#include <new>

#include "tav_trace_environment.h"

TavClTraceSettings::TavClTraceSettings() : block(&ownBlock), ownBlock() { init(); }

TavClTraceSettings::TavClTraceSettings(void* memory)
    : block(new (memory) _TavStTraceSettingsBlock()), ownBlock() {
  init();
}

void TavClTraceSettings::init() {
  block->signature = kSignature;
  block->flags = kInitialFlags;
}

void TavClTraceSettings::initComponentIds(const char* text) {
  block->filter.disableAllComponentIds();
  block->filter.enableComponentIds(text);
}
