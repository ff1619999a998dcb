// tav_language.cpp - parsing and printing of language and territory codes.
//
// Both tables are generated (tools/gen_language_tables.py) and sorted by code, so lookups are
// binary searches. Codes are compared ignoring the case of ASCII letters only, whatever the C
// locale, so that a code parses the same on every platform and in every locale.

#include "tav_language.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <ostream>

namespace {

struct LanguageRow {
  const char* code;
  const char* name;
};

struct TerritoryRow {
  const char* codeShort;
  const char* codeLong;
  int32_t idNumber;
  const char* name;
};

#include "tav_language_tables.inc"

static_assert(std::size(kLanguageRows) == TavClLanguage::TAV_LANGUAGE_UNKNOWN,
              "one language row per value below the unknown one; rerun the table generator");
static_assert(std::size(kTerritoryRows) == TavClLanguage::TAV_TERRITORY_UNKNOWN,
              "one territory row per value below the unknown one; rerun the table generator");

constexpr const char kOutOfTable[] = "??";

int lowerAscii(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 'A' && byte <= 'Z' ? byte - 'A' + 'a' : byte;
}

int compareIgnoringCase(const char* left, const char* right) {
  for (;; ++left, ++right) {
    const int l = lowerAscii(*left);
    const int r = lowerAscii(*right);
    if (l != r || l == 0) return l - r;
  }
}

// The row whose code equals key ignoring case, or notFound.
template <typename Row, size_t kRows>
uint32_t findRow(const Row (&rows)[kRows], const char* Row::*code, const char* key,
                 uint32_t notFound) {
  const Row* const found = std::lower_bound(
      std::begin(rows), std::end(rows), key,
      [code](const Row& row, const char* k) { return compareIgnoringCase(row.*code, k) < 0; });
  if (found == std::end(rows) || compareIgnoringCase(found->*code, key) != 0) return notFound;
  return static_cast<uint32_t>(found - std::begin(rows));
}

bool isSeparator(char c) { return c == '-' || c == '_'; }

}  // namespace

const char* const TavClLanguage::cv_cpszCombiningCharString = "-";

TavClLanguage::TavClLanguage(const char* code)
    : language(TAV_LANGUAGE_UNKNOWN), territory(TAV_TERRITORY_UNSPECIFIED) {
  init(code != nullptr ? code : "");
}

TavClLanguage::TavClLanguage(unsigned int number)
    : language(static_cast<TavEnLanguage>(number >> 16)),
      territory(static_cast<TavEnTerritory>(number & 0xFFFF)) {}

void TavClLanguage::init(const char* code) {
  if (compareIgnoringCase(code, "x-all") == 0 || compareIgnoringCase(code, "x-unspecified") == 0) {
    language = TAV_LANGUAGE_UNSPECIFIED;
    territory = TAV_TERRITORY_UNSPECIFIED;
    return;
  }

  const char* separator = std::strchr(code, '-');
  if (separator == nullptr) separator = std::strchr(code, '_');
  territory = separator == nullptr
                  ? TAV_TERRITORY_UNSPECIFIED
                  : static_cast<TavEnTerritory>(findRow(kTerritoryRows, &TerritoryRow::codeShort,
                                                        separator + 1, TAV_TERRITORY_UNKNOWN));

  // The language is the first two characters, and only if nothing but a separator follows.
  // A text shorter than two characters is looked up as it is, and is not read beyond its end.
  char prefix[3] = {};
  size_t length = 0;
  while (length < 2 && code[length] != '\0') {
    prefix[length] = code[length];
    ++length;
  }
  if (length == 2 && code[2] != '\0' && !isSeparator(code[2])) {
    language = TAV_LANGUAGE_UNKNOWN;
    return;
  }
  language = static_cast<TavEnLanguage>(
      findRow(kLanguageRows, &LanguageRow::code, prefix, TAV_LANGUAGE_UNKNOWN));
}

unsigned int TavClLanguage::asNumber() const {
  return static_cast<unsigned int>(language) << 16 | static_cast<unsigned int>(territory);
}

void TavClLanguage::extract(char* out, const char* territoryCode, bool territoryAlways) const {
  const bool withTerritory = territoryAlways || (territory != TAV_TERRITORY_UNSPECIFIED &&
                                                 territory != TAV_TERRITORY_UNKNOWN);
  std::strcpy(out, getLanguageCode(language));
  if (withTerritory) {
    std::strcat(out, cv_cpszCombiningCharString);
    std::strcat(out, territoryCode);
  }
}

void TavClLanguage::extractShortCode(char* out) const {
  extract(out, getTerritoryCodeShort(territory), true);
}

void TavClLanguage::extractLongCode(char* out) const {
  extract(out, getTerritoryCodeLong(territory), true);
}

void TavClLanguage::extractISOShortCode(char* out) const {
  extract(out, getTerritoryCodeShort(territory), false);
}

void TavClLanguage::extractISOLongCode(char* out) const {
  extract(out, getTerritoryCodeLong(territory), false);
}

const char* TavClLanguage::getLanguageCode(TavEnLanguage language) {
  return language < TAV_LANGUAGE_UNKNOWN ? kLanguageRows[language].code : kOutOfTable;
}

const char* TavClLanguage::getLanguageName(TavEnLanguage language) {
  return language < TAV_LANGUAGE_UNKNOWN ? kLanguageRows[language].name : kOutOfTable;
}

const char* TavClLanguage::getTerritoryCodeShort(TavEnTerritory territory) {
  return territory < TAV_TERRITORY_UNKNOWN ? kTerritoryRows[territory].codeShort : kOutOfTable;
}

const char* TavClLanguage::getTerritoryCodeLong(TavEnTerritory territory) {
  return territory < TAV_TERRITORY_UNKNOWN ? kTerritoryRows[territory].codeLong : kOutOfTable;
}

const char* TavClLanguage::getTerritoryName(TavEnTerritory territory) {
  return territory < TAV_TERRITORY_UNKNOWN ? kTerritoryRows[territory].name : kOutOfTable;
}

int32_t TavClLanguage::getTerritoryIdNumber(TavEnTerritory territory) {
  return territory < TAV_TERRITORY_UNKNOWN ? kTerritoryRows[territory].idNumber : -1;
}

size_t TavClLanguage::getNumberOfLanguagesSupported() { return std::size(kLanguageRows); }

size_t TavClLanguage::getNumberOfTerritoriesSupported() { return std::size(kTerritoryRows); }

std::ostream& operator<<(std::ostream& stream, const TavClLanguage& language) {
  char code[TAV_LANGUAGE_CODE_SIZE];
  language.extractShortCode(code);
  return stream << code;
}
