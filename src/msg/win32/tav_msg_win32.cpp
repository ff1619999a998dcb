// tav_msg_win32.cpp - catalog modules as resource-only DLLs read with FormatMessageA.

#include <windows.h>

#include <cstring>

#include "../tav_msg_os.h"

namespace tav::os {

namespace {

// FormatMessageA reads one argument per insert number the text names, up to "%99": the ten
// variables are followed by "???" for every number above ten, so that no insert reads past
// the array.
constexpr size_t kInsertCount = 99;

HMODULE asModule(CatalogModule* module) { return reinterpret_cast<HMODULE>(module); }

}  // namespace

const char* catalogModuleExtension() { return ".DLL"; }

// Loaded as a data file: a catalog's texts are read, its code (if it has any) never runs.
OsStatus openCatalogModule(const char* path, CatalogModule** opened) {
  const UINT previousMode = SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
  HMODULE module = LoadLibraryExA(path, nullptr, LOAD_LIBRARY_AS_DATAFILE);
  const DWORD error = GetLastError();
  SetErrorMode(previousMode);
  if (module == nullptr) return statusFromWindowsError(error);
  *opened = reinterpret_cast<CatalogModule*>(module);
  return kOsSuccess;
}

void closeCatalogModule(CatalogModule* module) {
  if (module != nullptr) FreeLibrary(asModule(module));
}

OsStatus formatCatalogMessage(CatalogModule* module, uint32_t id, uint16_t languageId,
                              const char* const variables[10], char* out, size_t limit) {
  DWORD_PTR inserts[kInsertCount];
  for (size_t i = 0; i < kInsertCount; ++i) {
    inserts[i] = reinterpret_cast<DWORD_PTR>(i < 10 ? variables[i] : "???");
  }
  char* text = nullptr;
  const DWORD length = FormatMessageA(
      FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_ARGUMENT_ARRAY | FORMAT_MESSAGE_ALLOCATE_BUFFER,
      asModule(module), id, languageId, reinterpret_cast<LPSTR>(&text), 0,
      reinterpret_cast<va_list*>(inserts));
  if (length == 0 || text == nullptr) {
    const DWORD error = GetLastError();
    if (text != nullptr) LocalFree(text);
    // Whatever the reason, the module has no text to give for this id and language.
    return {OsFailure::notFound, static_cast<int32_t>(error)};
  }
  const size_t kept = length < limit ? length : limit;
  std::memcpy(out, text, kept);
  out[kept] = '\0';
  LocalFree(text);
  return kOsSuccess;
}

uint16_t userDefaultLanguageId() { return GetUserDefaultLangID(); }

uint16_t systemDefaultLanguageId() { return GetSystemDefaultLangID(); }

bool libraryDirectory(char* out, size_t size) {
  HMODULE library = nullptr;
  if (!GetModuleHandleExA(
          GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
          reinterpret_cast<LPCSTR>(&libraryDirectory), &library)) {
    return false;
  }
  char path[MAX_PATH + 1];
  const DWORD length = GetModuleFileNameA(library, path, sizeof path);
  if (length == 0 || length >= sizeof path) return false;
  char* separator = nullptr;
  for (char* p = path; *p != '\0'; ++p) {
    if (*p == '\\' || *p == '/') separator = p;
  }
  if (separator == nullptr || static_cast<size_t>(separator - path) + 1 >= size) return false;
  separator[1] = '\0';
  std::memcpy(out, path, static_cast<size_t>(separator - path) + 2);
  return true;
}

}  // namespace tav::os
