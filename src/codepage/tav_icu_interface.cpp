// tav_icu_interface.cpp - ICU's error codes in the library's terms.
//
// One fixed table of 22 rows, searched in order. Converters use only mapIcuError (through
// tav_icu_error.h, which never throws); the look-up of a code outside the table and
// handleIcuErrorCode throw.

#include <iterator>

#include "tav_codepage.h"
#include "tav_icu_error.h"

namespace {

constexpr TavEnErrorAction action(int value) { return static_cast<TavEnErrorAction>(value); }
constexpr TavEnErrorSeverity severity(int value) { return static_cast<TavEnErrorSeverity>(value); }
constexpr TavEnErrorClass errorClass(int value) { return static_cast<TavEnErrorClass>(value); }

// ICU code, error id, class, action, severity.
const _TavStIcuErrorEntry kIcuErrors[] = {
    {0, NO_ERROR, errorClass(0), action(0), severity(0)},
    {1, ICU_ILLEGAL_ARGUMENT_ERROR, errorClass(100), action(1), severity(7)},
    {2, ICU_MISSING_RESOURCE_ERROR, errorClass(0), action(1), severity(5)},
    {3, ICU_INVALID_FORMAT_ERROR, errorClass(0), action(1), severity(5)},
    {4, ICU_FILE_ACCESS_ERROR, errorClass(500), action(1), severity(5)},
    {5, ICU_INTERNAL_PROGRAM_ERROR, errorClass(0), action(8), severity(7)},
    {6, ICU_MESSAGE_PARSE_ERROR, errorClass(101), action(1), severity(5)},
    {7, ICU_MEMORY_ALLOCATION_ERROR, errorClass(200), action(1), severity(6)},
    {8, ICU_INDEX_OUTOFBOUNDS_ERROR, errorClass(101), action(1), severity(5)},
    {9, ICU_PARSE_ERROR, errorClass(101), action(1), severity(5)},
    {10, CPCONVERTER_INVALID_SEQ, errorClass(202), action(1), severity(5)},
    {11, CPCONVERTER_INCOMPLETE, errorClass(202), action(1), severity(5)},
    {12, CPCONVERTER_INVALID_SEQ, errorClass(202), action(1), severity(5)},
    {13, ICU_INVALID_TABLE_FORMAT, errorClass(101), action(1), severity(5)},
    {14, ICU_INVALID_TABLE_FILE, errorClass(500), action(1), severity(5)},
    {15, CPCONVERTER_TOO_BIG, errorClass(101), action(1), severity(5)},
    {16, ICU_UNSUPPORTED_ERROR, errorClass(1), action(1), severity(5)},
    {17, ICU_RESOURCE_TYPE_MISMATCH, errorClass(101), action(1), severity(5)},
    {18, ICU_ILLEGAL_ESCAPE_SEQUENCE, errorClass(202), action(1), severity(5)},
    {19, ICU_UNSUPPORTED_ESCAPE_SEQ, errorClass(202), action(1), severity(5)},
    {20, ICU_NO_SPACE_AVAILABLE, errorClass(201), action(1), severity(5)},
    {66568, ICU_ERROR_LIMIT, errorClass(0), action(0), severity(0)},
};

// The throws name fixed source positions rather than __LINE__, so that the reports that quote
// them stay the same however this file is edited.
constexpr const char* kUnexpectedCodeModule = "tav_icu_interface.cpp:252";
constexpr uint32_t kUnexpectedCodeLine = 252;
constexpr const char* kHandledCodeModule = "tav_icu_interface.cpp:325";
constexpr uint32_t kHandledCodeLine = 325;

}  // namespace

namespace tav::codepage {

const _TavStIcuErrorEntry* findIcuError(TavIcuErrorCode code) {
  for (const _TavStIcuErrorEntry& entry : kIcuErrors) {
    if (entry.icuCode == code) return &entry;
  }
  return nullptr;
}

void mapIcuErrorQuietly(_TavStError& error, TavIcuErrorCode code) {
  const _TavStIcuErrorEntry* entry = findIcuError(code);
  if (entry != nullptr) {
    error = {entry->id, entry->errorClass};
  } else {
    error = {ICU_UNEXPECTED_ICU_ERROR, TAV_CLASS_UNKNOWN};
  }
}

}  // namespace tav::codepage

const _TavStIcuErrorEntry& TavClIcuInterface::getTavEntryForIcuError(TavIcuErrorCode code) {
  const _TavStIcuErrorEntry* entry = tav::codepage::findIcuError(code);
  if (entry == nullptr) {
    throw TavClException("Unexpected ICU error", kUnexpectedCodeModule, kUnexpectedCodeLine,
                         ICU_UNEXPECTED_ICU_ERROR, TAV_CLASS_UNKNOWN, severity(8), action(7));
  }
  return *entry;
}

uint32_t TavClIcuInterface::getTavErrorIdForIcuError(TavIcuErrorCode code) {
  return getTavEntryForIcuError(code).id;
}

TavEnErrorClass TavClIcuInterface::getTavErrorClassForIcuError(TavIcuErrorCode code) {
  return getTavEntryForIcuError(code).errorClass;
}

TavEnErrorAction TavClIcuInterface::getTavErrorActionForIcuError(TavIcuErrorCode code) {
  return getTavEntryForIcuError(code).action;
}

TavEnErrorSeverity TavClIcuInterface::getTavErrorSeverityForIcuError(TavIcuErrorCode code) {
  return getTavEntryForIcuError(code).severity;
}

void TavClIcuInterface::mapIcuError(_TavStError& error, TavIcuErrorCode code) {
  const _TavStIcuErrorEntry& entry = getTavEntryForIcuError(code);
  error = {entry.id, entry.errorClass};
}

void TavClIcuInterface::mapIcuError(_TavStUserError& error, TavIcuErrorCode code) {
  const _TavStIcuErrorEntry& entry = getTavEntryForIcuError(code);
  error = {entry.id, entry.errorClass, entry.severity, entry.action};
}

void TavClIcuInterface::handleIcuErrorCode(TavIcuErrorCode code) {
  if (code <= 0) return;
  _TavStUserError error;
  mapIcuError(error, code);
  throw TavClException("ICU error", kHandledCodeModule, kHandledCodeLine, error.id,
                       error.errorClass, error.severity, error.action);
}

size_t TavClIcuInterface::getEntryCount() { return std::size(kIcuErrors); }

const _TavStIcuErrorEntry& TavClIcuInterface::getEntryAt(size_t index) {
  return kIcuErrors[index < std::size(kIcuErrors) ? index : 0];
}
