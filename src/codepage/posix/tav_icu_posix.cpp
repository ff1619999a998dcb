// tav_icu_posix.cpp - the ICU converter calls, straight into the ICU linked with the library.

#include <unicode/ucnv.h>

#include "../tav_icu_os.h"

namespace tav::os {

namespace {

UConverter* native(IcuConverter converter) { return static_cast<UConverter*>(converter); }

}  // namespace

bool icuIsAvailable() { return true; }

IcuConverter icuOpenByName(const char* name, int32_t* status) {
  UErrorCode code = U_ZERO_ERROR;
  UConverter* converter = ucnv_open(name, &code);
  *status = code;
  return U_FAILURE(code) ? nullptr : converter;
}

IcuConverter icuOpenByCCSID(int32_t ccsid, int32_t* status) {
  UErrorCode code = U_ZERO_ERROR;
  UConverter* converter = ucnv_openCCSID(ccsid, UCNV_IBM, &code);
  *status = code;
  return U_FAILURE(code) ? nullptr : converter;
}

void icuSetFallback(IcuConverter converter, bool useFallback) {
  ucnv_setFallback(native(converter), useFallback ? true : false);
}

void icuClose(IcuConverter converter) { ucnv_close(native(converter)); }

void icuToUnicode(IcuConverter converter, char16_t** target, const char16_t* targetLimit,
                  const char** source, const char* sourceLimit, bool flush, int32_t* status) {
  UErrorCode code = U_ZERO_ERROR;
  ucnv_toUnicode(native(converter), reinterpret_cast<UChar**>(target),
                 reinterpret_cast<const UChar*>(targetLimit), source, sourceLimit, nullptr, flush,
                 &code);
  *status = code;
}

void icuFromUnicode(IcuConverter converter, char** target, const char* targetLimit,
                    const char16_t** source, const char16_t* sourceLimit, bool flush,
                    int32_t* status) {
  UErrorCode code = U_ZERO_ERROR;
  ucnv_fromUnicode(native(converter), target, targetLimit, reinterpret_cast<const UChar**>(source),
                   reinterpret_cast<const UChar*>(sourceLimit), nullptr, flush, &code);
  *status = code;
}

}  // namespace tav::os
