// tav_language_id.cpp - the table of Windows language ids by locale name.
//
// A Windows language id is a primary language in its low ten bits and a territory variant
// (sublanguage) above them. Values as Windows defines them for its locales.

#include "tav_language_id.h"

#include <cctype>
#include <cstring>

namespace {

struct LocaleId {
  const char* name;  // "ll" for the primary language (sublanguage 1), "ll_TT" for a territory
  uint16_t id;
};

// Primary languages first (their default sublanguage), then the territories that differ.
constexpr LocaleId kLocaleIds[] = {
    {"ar", 0x0401},
    {"bg", 0x0402},
    {"ca", 0x0403},
    {"zh", 0x0804},
    {"cs", 0x0405},
    {"da", 0x0406},
    {"de", 0x0407},
    {"el", 0x0408},
    {"en", 0x0409},
    {"es", 0x0c0a},
    {"fi", 0x040b},
    {"fr", 0x040c},
    {"he", 0x040d},
    {"hu", 0x040e},
    {"is", 0x040f},
    {"it", 0x0410},
    {"ja", 0x0411},
    {"ko", 0x0412},
    {"nl", 0x0413},
    {"nb", 0x0414},
    {"no", 0x0414},
    {"pl", 0x0415},
    {"pt", 0x0816},
    {"ro", 0x0418},
    {"ru", 0x0419},
    {"hr", 0x041a},
    {"sk", 0x041b},
    {"sq", 0x041c},
    {"sv", 0x041d},
    {"th", 0x041e},
    {"tr", 0x041f},
    {"ur", 0x0420},
    {"id", 0x0421},
    {"uk", 0x0422},
    {"be", 0x0423},
    {"sl", 0x0424},
    {"et", 0x0425},
    {"lv", 0x0426},
    {"lt", 0x0427},
    {"fa", 0x0429},
    {"vi", 0x042a},
    {"hy", 0x042b},
    {"eu", 0x042d},
    {"mk", 0x042f},
    {"af", 0x0436},
    {"ka", 0x0437},
    {"fo", 0x0438},
    {"hi", 0x0439},
    {"ms", 0x043e},
    {"kk", 0x043f},
    {"sw", 0x0441},
    {"nn", 0x0814},
    // Territories.
    {"ar_SA", 0x0401},
    {"ar_EG", 0x0c01},
    {"zh_TW", 0x0404},
    {"zh_CN", 0x0804},
    {"zh_HK", 0x0c04},
    {"zh_SG", 0x1004},
    {"de_DE", 0x0407},
    {"de_CH", 0x0807},
    {"de_AT", 0x0c07},
    {"de_LU", 0x1007},
    {"de_LI", 0x1407},
    {"en_US", 0x0409},
    {"en_GB", 0x0809},
    {"en_AU", 0x0c09},
    {"en_CA", 0x1009},
    {"en_NZ", 0x1409},
    {"en_IE", 0x1809},
    {"en_ZA", 0x1c09},
    {"en_IN", 0x4009},
    {"es_ES", 0x0c0a},
    {"es_MX", 0x080a},
    {"es_AR", 0x2c0a},
    {"fr_FR", 0x040c},
    {"fr_BE", 0x080c},
    {"fr_CA", 0x0c0c},
    {"fr_CH", 0x100c},
    {"fr_LU", 0x140c},
    {"it_IT", 0x0410},
    {"it_CH", 0x0810},
    {"nl_NL", 0x0413},
    {"nl_BE", 0x0813},
    {"nb_NO", 0x0414},
    {"nn_NO", 0x0814},
    {"pt_BR", 0x0416},
    {"pt_PT", 0x0816},
    {"sv_SE", 0x041d},
    {"sv_FI", 0x081d},
    {"ja_JP", 0x0411},
    {"ko_KR", 0x0412},
    {"ru_RU", 0x0419},
    {"pl_PL", 0x0415},
    {"cs_CZ", 0x0405},
    {"da_DK", 0x0406},
    {"fi_FI", 0x040b},
    {"el_GR", 0x0408},
    {"hu_HU", 0x040e},
    {"tr_TR", 0x041f},
    {"he_IL", 0x040d},
};

bool namesEqual(const char* a, const char* b, size_t length) {
  for (size_t i = 0; i < length; ++i) {
    if (std::tolower(static_cast<unsigned char>(a[i])) !=
        std::tolower(static_cast<unsigned char>(b[i]))) {
      return false;
    }
  }
  return b[length] == '\0';
}

uint16_t findId(const char* name, size_t length) {
  for (const LocaleId& entry : kLocaleIds) {
    if (namesEqual(name, entry.name, length)) return entry.id;
  }
  return 0;
}

void copyName(char* out, const char* name) {
  std::strncpy(out, name, tav::kLocaleNameSize - 1);
  out[tav::kLocaleNameSize - 1] = '\0';
}

}  // namespace

namespace tav {

uint16_t languageIdFromLocaleName(const char* localeName) {
  if (localeName == nullptr) return kLanguageIdEnglishUS;
  // The name proper ends before a codeset (".UTF-8") or a modifier ("@euro").
  const size_t length = std::strcspn(localeName, ".@");
  if (length == 0 || namesEqual(localeName, "C", length) ||
      namesEqual(localeName, "POSIX", length)) {
    return kLanguageIdEnglishUS;
  }
  const uint16_t exact = findId(localeName, length);
  if (exact != 0) return exact;
  const size_t languageLength = std::strcspn(localeName, "_.@");
  return languageLength < length ? findId(localeName, languageLength) : 0;
}

bool localeNamesFromLanguageId(uint16_t languageId, char territoryName[kLocaleNameSize],
                               char languageName[kLocaleNameSize]) {
  territoryName[0] = '\0';
  languageName[0] = '\0';
  const uint16_t primary = languageId & 0x3ff;
  for (const LocaleId& entry : kLocaleIds) {
    const bool hasTerritory = std::strchr(entry.name, '_') != nullptr;
    if (hasTerritory && entry.id == languageId && territoryName[0] == '\0') {
      copyName(territoryName, entry.name);
    } else if (!hasTerritory && (entry.id & 0x3ff) == primary && languageName[0] == '\0') {
      copyName(languageName, entry.name);
    }
  }
  return territoryName[0] != '\0' || languageName[0] != '\0';
}

}  // namespace tav
