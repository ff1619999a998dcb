// tav_icu_win32.cpp - the ICU converter calls through the system's icu.dll, loaded at run time.
//
// Windows 10 version 1903 and later carry icu.dll with ICU's C interface under names without a
// version suffix. The DLL is loaded once, on first use (the initialisation of a function-local
// static is thread safe), and stays loaded for the life of the process. Where it is missing, as
// under Wine, every open reports U_UNSUPPORTED_ERROR.

#include "../../fs/tav_library_os.h"
#include "../tav_icu_os.h"

namespace tav::os {

namespace {

// ICU's C types as the DLL sees them: UConverter* is opaque, UErrorCode and the platform
// enumeration are ints, UBool is a signed char.
using OpenFunction = void* (*)(const char*, int32_t*);
using OpenCCSIDFunction = void* (*)(int32_t, int32_t, int32_t*);
using SetFallbackFunction = void (*)(void*, signed char);
using CloseFunction = void (*)(void*);
using ToUnicodeFunction = void (*)(void*, char16_t**, const char16_t*, const char**, const char*,
                                   int32_t*, signed char, int32_t*);
using FromUnicodeFunction = void (*)(void*, char**, const char*, const char16_t**, const char16_t*,
                                     int32_t*, signed char, int32_t*);

// ICU's platform value under which CCSIDs are numbered (the first of its enumeration).
constexpr int32_t kCcsidPlatform = 0;

struct IcuEntryPoints {
  OpenFunction open = nullptr;
  OpenCCSIDFunction openCCSID = nullptr;
  SetFallbackFunction setFallback = nullptr;
  CloseFunction close = nullptr;
  ToUnicodeFunction toUnicode = nullptr;
  FromUnicodeFunction fromUnicode = nullptr;
  bool complete = false;
};

template <typename Function>
void find(LibraryHandle library, const char* name, Function* function) {
  *function = reinterpret_cast<Function>(findLibrarySymbol(library, name));
}

IcuEntryPoints loadIcu() {
  IcuEntryPoints entries;
  LibraryHandle library = nullptr;
  if (!openLibrary("icu.dll", &library).ok() || library == nullptr) return entries;
  find(library, "ucnv_open", &entries.open);
  find(library, "ucnv_openCCSID", &entries.openCCSID);
  find(library, "ucnv_setFallback", &entries.setFallback);
  find(library, "ucnv_close", &entries.close);
  find(library, "ucnv_toUnicode", &entries.toUnicode);
  find(library, "ucnv_fromUnicode", &entries.fromUnicode);
  entries.complete = entries.open != nullptr && entries.openCCSID != nullptr &&
                     entries.setFallback != nullptr && entries.close != nullptr &&
                     entries.toUnicode != nullptr && entries.fromUnicode != nullptr;
  if (!entries.complete) closeLibrary(library);
  return entries;
}

const IcuEntryPoints& icu() {
  static const IcuEntryPoints entries = loadIcu();
  return entries;
}

}  // namespace

bool icuIsAvailable() { return icu().complete; }

IcuConverter icuOpenByName(const char* name, int32_t* status) {
  *status = 0;
  if (!icuIsAvailable()) {
    *status = kIcuUnsupportedError;
    return nullptr;
  }
  void* converter = icu().open(name, status);
  return *status > 0 ? nullptr : converter;
}

IcuConverter icuOpenByCCSID(int32_t ccsid, int32_t* status) {
  *status = 0;
  if (!icuIsAvailable()) {
    *status = kIcuUnsupportedError;
    return nullptr;
  }
  void* converter = icu().openCCSID(ccsid, kCcsidPlatform, status);
  return *status > 0 ? nullptr : converter;
}

void icuSetFallback(IcuConverter converter, bool useFallback) {
  icu().setFallback(converter, useFallback ? 1 : 0);
}

void icuClose(IcuConverter converter) {
  if (converter != nullptr) icu().close(converter);
}

void icuToUnicode(IcuConverter converter, char16_t** target, const char16_t* targetLimit,
                  const char** source, const char* sourceLimit, bool flush, int32_t* status) {
  *status = 0;
  icu().toUnicode(converter, target, targetLimit, source, sourceLimit, nullptr, flush ? 1 : 0,
                  status);
}

void icuFromUnicode(IcuConverter converter, char** target, const char* targetLimit,
                    const char16_t** source, const char16_t* sourceLimit, bool flush,
                    int32_t* status) {
  *status = 0;
  icu().fromUnicode(converter, target, targetLimit, source, sourceLimit, nullptr, flush ? 1 : 0,
                    status);
}

}  // namespace tav::os
