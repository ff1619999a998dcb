// tav_trace_filter.cpp - which records pass: detail, component ids, process and thread.

#include <cstring>

#include "tav_trace_environment.h"

namespace {

bool startsWithIgnoringCase(const char* text, const char* prefix) {
  for (; *prefix != '\0'; ++text, ++prefix) {
    char letter = *text;
    if (letter >= 'a' && letter <= 'z') letter = static_cast<char>(letter - 'a' + 'A');
    if (letter != *prefix) return false;  // also at the end of text
  }
  return true;
}

bool isDigit(char character) { return character >= '0' && character <= '9'; }

// The decimal number at the start of text after blanks, wrapping at 32 bits; 0 without one.
uint32_t leadingNumber(const char* text) {
  if (text == nullptr) return 0;
  while (*text == ' ' || *text == '\t') ++text;
  uint32_t value = 0;
  for (; isDigit(*text); ++text) value = value * 10u + static_cast<uint32_t>(*text - '0');
  return value;
}

}  // namespace

TavClTraceFilter::TavClTraceFilter() : detail(TAV_TRACE_DETAIL_LOW), processId(0), threadId(0) {
  enableAllComponentIds();
}

void TavClTraceFilter::setDetail(const char* text) {
  if (text == nullptr) {
    detail = TAV_TRACE_DETAIL_OFF;
  } else if (startsWithIgnoringCase(text, "HIGH")) {
    detail = TAV_TRACE_DETAIL_HIGH;
  } else if (startsWithIgnoringCase(text, "MED")) {
    detail = TAV_TRACE_DETAIL_MED;
  } else if (startsWithIgnoringCase(text, "LOW")) {
    detail = TAV_TRACE_DETAIL_LOW;
  } else {
    detail = TAV_TRACE_DETAIL_OFF;
  }
}

const char* TavClTraceFilter::getDetailAsCString(uint32_t detail) {
  static const char* const kNames[] = {"OFF", "LOW", "MED", "HIGH"};
  return detail < 4 ? kNames[detail] : nullptr;
}

void TavClTraceFilter::setProcessId(const char* text) { processId = leadingNumber(text); }

void TavClTraceFilter::setThreadId(const char* text) { threadId = leadingNumber(text); }

void TavClTraceFilter::enableComponentId(uint32_t id) {
  if (id <= kMaxComponentId)
    componentIds[id >> 3] = static_cast<uint8_t>(componentIds[id >> 3] | 1u << (id & 7));
}

void TavClTraceFilter::disableComponentId(uint32_t id) {
  if (id <= kMaxComponentId)
    componentIds[id >> 3] = static_cast<uint8_t>(componentIds[id >> 3] & ~(1u << (id & 7)));
}

void TavClTraceFilter::enableAllComponentIds() {
  std::memset(componentIds, 0xFF, sizeof componentIds);
}

void TavClTraceFilter::disableAllComponentIds() {
  std::memset(componentIds, 0, sizeof componentIds);
}

bool TavClTraceFilter::usesCompIdFilter() const {
  for (uint32_t id = 1; id <= kMaxComponentId; ++id) {
    if (!matchesCompId(id)) return true;
  }
  return false;
}

void TavClTraceFilter::setComponentIdSet(uint32_t from, uint32_t to, bool include) {
  if (from == 0) return;
  if (to == 0) to = from;
  if (to > kMaxComponentId) to = kMaxComponentId;
  for (uint32_t id = from; id <= to; ++id) {
    if (include) {
      enableComponentId(id);
    } else {
      disableComponentId(id);
    }
  }
}

void TavClTraceFilter::enableComponentIds(const char* text) {
  if (text == nullptr) return;
  // Numbers stop growing well above the largest id, so that long runs of digits cannot wrap
  // round into a valid id.
  constexpr uint32_t kNumberCeiling = 0x10000;
  uint32_t from = 0;
  uint32_t to = 0;
  uint32_t* target = &from;
  bool include = true;
  for (const char* next = text; *next != '\0';) {
    const char character = *next;
    if (isDigit(character)) {
      uint32_t value = 0;
      for (; isDigit(*next); ++next) {
        value = value * 10u + static_cast<uint32_t>(*next - '0');
        if (value > kNumberCeiling) value = kNumberCeiling;
      }
      *target = value;
      continue;
    }
    switch (character) {
      case '.': target = &to; break;
      case '*':
        from = 1;
        to = kMaxComponentId;
        break;
      case '-': include = false; break;
      case '+': include = true; break;
      case ',':
        setComponentIdSet(from, to, include);
        from = 0;
        to = 0;
        target = &from;
        include = true;
        break;
      default: break;
    }
    ++next;
  }
  setComponentIdSet(from, to, include);
}
