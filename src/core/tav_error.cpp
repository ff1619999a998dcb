// tav_error.cpp - the exception classes, the mapping of error coordinates to message ids, and
// the report stream.

#include "tav_error.h"

#include <atomic>

namespace {
const char kNoCause[] = "";

// Null stands for standard output, which is no constant in every C runtime.
std::atomic<FILE*> reportStream{nullptr};
}  // namespace

FILE* tavSetReportStream(FILE* stream) {
  FILE* previous = reportStream.exchange(stream);
  return previous != nullptr ? previous : stdout;
}

FILE* tavGetReportStream() {
  FILE* stream = reportStream.load();
  return stream != nullptr ? stream : stdout;
}

TavClExceptionABase::~TavClExceptionABase() = default;

const char* TavClExceptionABase::getCause() const { return kNoCause; }

TavClException::TavClException(const char* cause, const char* module, uint32_t line, uint32_t id,
                               TavEnErrorClass errorClass, TavEnErrorSeverity severity,
                               TavEnErrorAction action)
    : cause(cause != nullptr ? cause : kNoCause),
      module(module),
      line(line),
      id(id),
      errorClass(errorClass),
      severity(severity),
      action(action) {}

TavClException::~TavClException() = default;

bool TavClException::isTavException() const { return true; }

const char* TavClException::getCause() const { return cause; }

TavClExceptionFatal::TavClExceptionFatal(unsigned long id, TavEnErrorClass errorClass,
                                         TavEnErrorAction action, const char* cause)
    : TavClException(cause, nullptr, 0, static_cast<uint32_t>(id), errorClass, TAV_SEVERITY_FATAL,
                     action) {}

TavClExceptionFatal::TavClExceptionFatal(const char* cause, const char* module, uint32_t line,
                                         uint32_t id, TavEnErrorClass errorClass,
                                         TavEnErrorSeverity /*severity*/, TavEnErrorAction action)
    : TavClException(cause, module, line, id, errorClass, TAV_SEVERITY_FATAL, action) {}

TavClExceptionFatal::~TavClExceptionFatal() = default;

#define TAV_MESSAGE_CASE(name, value, message) \
  case value: return message;

unsigned long tavErrorGetIdAsMessageId(unsigned long id) {
  switch (id) { TAV_ERROR_ID_LIST(TAV_MESSAGE_CASE) }
  return 0;
}

unsigned long tavErrorGetClassAsMessageId(TavEnErrorClass errorClass) {
  switch (static_cast<long>(errorClass)) { TAV_ERROR_CLASS_LIST(TAV_MESSAGE_CASE) }
  return 0;
}

unsigned long tavErrorGetSeverityAsMessageId(TavEnErrorSeverity severity) {
  switch (static_cast<long>(severity)) { TAV_ERROR_SEVERITY_LIST(TAV_MESSAGE_CASE) }
  return 0;
}

unsigned long tavErrorGetActionAsMessageId(TavEnErrorAction action) {
  switch (static_cast<long>(action)) { TAV_ERROR_ACTION_LIST(TAV_MESSAGE_CASE) }
  return 0;
}

#undef TAV_MESSAGE_CASE
