// tav_msg_posix.cpp - catalog modules as X/Open message catalogs, and the locale's language.
//
// A module "dir/name.cat" is a family of catalogs compiled by gencat: "dir/name.cat" itself
// holds the English (United States) texts, and each other language has its own beside it in
// "dir/<ll_TT>/name.cat" or "dir/<ll>/name.cat" ("dir/de/name.cat" serves German anywhere).
// The texts are in set 1 under their message ids; "%1" to "%10" are put in by the library's
// own substitution, as the Windows message formatter does on Windows.

#include <dlfcn.h>
#include <nl_types.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "../tav_language_id.h"
#include "../tav_message_substitution.h"
#include "../tav_msg_os.h"
#include "tav_filename.h"
#include "tav_memmgr.h"

namespace tav::os {

namespace {

const nl_catd kNoCatalog = reinterpret_cast<nl_catd>(-1);
constexpr int kMessageSet = 1;
// The generic code asks for the user's, the system's and the English language only.
constexpr size_t kMaxLanguages = 4;

nl_catd openCatalog(const char* directory, const char* subdirectory, const char* baseName) {
  char path[3 * TAV_PATH_BUFFER_SIZE];
  const int length = std::snprintf(path, sizeof path, "%s%s%s%s", directory, subdirectory,
                                   subdirectory[0] != '\0' ? "/" : "", baseName);
  if (length < 0 || static_cast<size_t>(length) >= sizeof path) return kNoCatalog;
  return catopen(path, 0);
}

}  // namespace

}  // namespace tav::os

struct tav::os::CatalogModule : public TavClMemoryManagedObject {
  char directory[TAV_PATH_BUFFER_SIZE];  // with its final '/'
  char baseName[TAV_PATH_BUFFER_SIZE];
  nl_catd neutral = kNoCatalog;
  // Filled while the catalog is opened, when its language is probed on the opening thread;
  // afterwards lookups ask only for the chosen language and just read the list, so a catalog
  // can be shared between threads without a lock.
  struct Language {
    uint16_t id;
    nl_catd catalog;
  } languages[kMaxLanguages];
  size_t languageCount = 0;

  ~CatalogModule() {
    for (size_t i = 0; i < languageCount; ++i) {
      if (languages[i].catalog != kNoCatalog && languages[i].catalog != neutral) {
        catclose(languages[i].catalog);
      }
    }
    if (neutral != kNoCatalog) catclose(neutral);
  }

  nl_catd catalogFor(uint16_t languageId) {
    for (size_t i = 0; i < languageCount; ++i) {
      if (languages[i].id == languageId) return languages[i].catalog;
    }
    nl_catd catalog = kNoCatalog;
    char territoryName[tav::kLocaleNameSize];
    char languageName[tav::kLocaleNameSize];
    if (tav::localeNamesFromLanguageId(languageId, territoryName, languageName)) {
      if (territoryName[0] != '\0') catalog = openCatalog(directory, territoryName, baseName);
      if (catalog == kNoCatalog && languageName[0] != '\0') {
        catalog = openCatalog(directory, languageName, baseName);
      }
    }
    if (catalog == kNoCatalog && languageId == tav::kLanguageIdEnglishUS) catalog = neutral;
    if (languageCount < kMaxLanguages) {
      languages[languageCount++] = {languageId, catalog};
    } else if (catalog != kNoCatalog && catalog != neutral) {
      catclose(catalog);  // not kept: a further language is not asked for
      catalog = kNoCatalog;
    }
    return catalog;
  }
};

namespace tav::os {

const char* catalogModuleExtension() { return ".cat"; }

OsStatus openCatalogModule(const char* path, CatalogModule** opened) {
  const char* slash = std::strrchr(path, '/');
  const char* baseName = slash != nullptr ? slash + 1 : path;
  // catopen searches NLSPATH for a name without '/': "./" keeps it to the current directory.
  const size_t directoryLength = slash != nullptr ? static_cast<size_t>(baseName - path) : 2;
  if (std::strlen(baseName) >= TAV_PATH_BUFFER_SIZE || directoryLength >= TAV_PATH_BUFFER_SIZE) {
    return failureStatus(OsFailure::invalidName);
  }
  auto* module = new CatalogModule;
  std::memcpy(module->directory, slash != nullptr ? path : "./", directoryLength);
  module->directory[directoryLength] = '\0';
  std::strcpy(module->baseName, baseName);
  module->neutral = openCatalog(module->directory, "", module->baseName);
  if (module->neutral == kNoCatalog) {
    const OsStatus status = statusFromErrno(errno);
    delete module;
    return status.ok() ? failureStatus(OsFailure::notFound) : status;
  }
  // English is the last resort of the language probing and is used without a probe.
  module->catalogFor(tav::kLanguageIdEnglishUS);
  *opened = module;
  return kOsSuccess;
}

void closeCatalogModule(CatalogModule* module) { delete module; }

OsStatus formatCatalogMessage(CatalogModule* module, uint32_t id, uint16_t languageId,
                              const char* const variables[10], char* out, size_t limit) {
  const OsStatus missing = failureStatus(OsFailure::notFound);
  if (id == 0 || id > static_cast<uint32_t>(INT_MAX)) return missing;
  const nl_catd catalog = module->catalogFor(languageId);
  if (catalog == kNoCatalog) return missing;
  // catgets hands back the default it was given when the message is missing, which tells a
  // missing message from an empty one.
  static const char kMissing[] = "";
  const char* text = catgets(catalog, kMessageSet, static_cast<int>(id), kMissing);
  if (text == kMissing) return missing;
  tav::substituteMessageVariables(out, limit, text, variables, 10);
  return kOsSuccess;
}

// The locale variables in the order that decides the language of messages.
uint16_t userDefaultLanguageId() {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = std::getenv(name);
    if (value != nullptr && value[0] != '\0') return tav::languageIdFromLocaleName(value);
  }
  return tav::kLanguageIdEnglishUS;
}

// The value of the LANG line of a locale settings file, without quotes.
static bool readLangSetting(const char* file, char* value, size_t size) {
  std::FILE* stream = std::fopen(file, "r");
  if (stream == nullptr) return false;
  bool found = false;
  char line[256];
  while (!found && std::fgets(line, sizeof line, stream) != nullptr) {
    if (std::strncmp(line, "LANG=", 5) != 0) continue;
    const char* start = line + 5 + std::strspn(line + 5, "\"'");
    const size_t length = std::strcspn(start, "\"'\r\n");
    std::snprintf(value, size, "%.*s", static_cast<int>(length), start);
    found = true;
  }
  std::fclose(stream);
  return found;
}

// The system's default locale is the LANG setting of the system's locale file.
uint16_t systemDefaultLanguageId() {
  char value[256];
  for (const char* file : {"/etc/default/locale", "/etc/locale.conf"}) {
    if (readLangSetting(file, value, sizeof value)) return tav::languageIdFromLocaleName(value);
  }
  return tav::kLanguageIdEnglishUS;
}

bool libraryDirectory(char* out, size_t size) {
  Dl_info info;
  if (dladdr(reinterpret_cast<void*>(&libraryDirectory), &info) == 0 || info.dli_fname == nullptr) {
    return false;
  }
  const char* slash = std::strrchr(info.dli_fname, '/');
  if (slash == nullptr) return false;
  const size_t length = static_cast<size_t>(slash - info.dli_fname) + 1;
  if (length >= size) return false;
  std::memcpy(out, info.dli_fname, length);
  out[length] = '\0';
  return true;
}

}  // namespace tav::os
