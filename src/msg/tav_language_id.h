// tav_language_id.h - Windows language ids for POSIX locale names, and back.
//
// The catalogs select their language by Windows language id on every platform. On POSIX the
// user's language is a locale name such as "de_DE.UTF-8"; these functions map between the two
// for the languages the table knows. Pure rules: they never look at the host.

#ifndef TAV_LANGUAGE_ID_H
#define TAV_LANGUAGE_ID_H

#include <cstddef>
#include <cstdint>

#include "tav_export.h"

namespace tav {

constexpr uint16_t kLanguageIdEnglishUS = 1033;

// "de_DE.UTF-8" gives 1031, "de_CH" 2055, "de" 1031 (the language's main territory); "C",
// "POSIX", "C.UTF-8" and an empty or null name give 1033. A language the table does not know
// gives 0, which no catalog has.
TAV_INTERNAL_API uint16_t languageIdFromLocaleName(const char* localeName);

// The directory names a language's catalogs use on POSIX: "de_DE" and "de" for 1031.
// Either is set to "" when the table has no such name; false when it has neither.
constexpr size_t kLocaleNameSize = 8;
TAV_INTERNAL_API bool localeNamesFromLanguageId(uint16_t languageId,
                                                char territoryName[kLocaleNameSize],
                                                char languageName[kLocaleNameSize]);

}  // namespace tav

#endif  // TAV_LANGUAGE_ID_H
