// tav_language.h - a language together with a territory, parsed from and printed as codes such
// as "en-us" or "de_CH".
//
// TavClLanguage is a value of two numbers: the row of its language in a table of 142 two-letter
// language codes and the row of its territory in a table of 241 two-letter territory codes, each
// with row 0 for "unspecified" and one value past the table for "unknown". The territory table
// also gives three-letter codes, numeric codes and English names.
//
// The tables are generated from the published ISO 639 and ISO 3166 lists. Some rows differ from
// the standard on purpose and are kept: "iw" (Hebrew, like "he"), "mo" (Moldavian), "sh"
// (Serbo-Croatian), the territories "aa" (Arabic), "sp" (Serbia) and the withdrawn "fx", "tp",
// "yu", "zr", "an", and the rows of "zm" (three-letter code "zwb"), "gs" (number 23) and "kp".
// The other rows give the standard as published today, which in places differs from its late
// 1990s edition ("ro" has "rou", "sd" the number 729, several names are today's short names).
// Names are plain ASCII.

#ifndef TAV_LANGUAGE_H
#define TAV_LANGUAGE_H

#include <stddef.h>
#include <stdint.h>

#include <iosfwd>

#include "tav_export.h"
#include "tav_memmgr.h"

// Room for the longest code the extract functions write ("xx-xxx") and its NUL.
#define TAV_LANGUAGE_CODE_SIZE 7

class TAV_API TavClLanguage : public TavClMemoryManagedObject {
 public:
  // 0 is unspecified, 1 to 142 the rows of the language table in code order, 143 unknown.
  enum TavEnLanguage : uint32_t { TAV_LANGUAGE_UNSPECIFIED = 0, TAV_LANGUAGE_UNKNOWN = 143 };
  // 0 is unspecified, 1 to 241 the rows of the territory table in code order, 242 unknown.
  enum TavEnTerritory : uint32_t { TAV_TERRITORY_UNSPECIFIED = 0, TAV_TERRITORY_UNKNOWN = 242 };

  // The separator the extract functions write between language and territory: "-".
  static const char* const cv_cpszCombiningCharString;

  // Parses code, ignoring letter case:
  //  - "x-all" and "x-unspecified" are unspecified in both parts;
  //  - the text after the first "-" (or, without one, after the first "_") is the territory,
  //    looked up whole ("en-US" finds "us", "en-usa" finds nothing and gives unknown); without
  //    a separator the territory is unspecified;
  //  - the first two characters are the language if a separator or the end follows them,
  //    otherwise (and when they are not in the table) the language is unknown.
  // A null code is parsed as the empty text: language unknown, territory unspecified.
  explicit TavClLanguage(const char* code);
  // The inverse of asNumber: language from the high 16 bits, territory from the low 16 bits.
  // Pass an unsigned value: a literal 0 would as well be a null code.
  explicit TavClLanguage(unsigned int number);

  unsigned int asNumber() const;
  TavEnLanguage getLanguage() const { return language; }
  TavEnTerritory getTerritory() const { return territory; }

  // The codes below are written to out, which must hold TAV_LANGUAGE_CODE_SIZE bytes. An
  // unspecified part reads "**", an unknown one "??".
  // Language, "-", territory's two-letter code, always: "en-us", "en-**".
  void extractShortCode(char* out) const;
  // The same with the territory's three-letter code: "en-usa".
  void extractLongCode(char* out) const;
  // As above, but only the language when the territory is unspecified or unknown: "en".
  void extractISOShortCode(char* out) const;
  void extractISOLongCode(char* out) const;

  // Table lookups; a value past the table gives "??" (and -1 for the numeric code).
  static const char* getLanguageCode(TavEnLanguage language);
  static const char* getLanguageName(TavEnLanguage language);
  static const char* getTerritoryCodeShort(TavEnTerritory territory);
  static const char* getTerritoryCodeLong(TavEnTerritory territory);
  static const char* getTerritoryName(TavEnTerritory territory);
  static int32_t getTerritoryIdNumber(TavEnTerritory territory);
  // The number of language and territory values, "unspecified" included: 143 and 242.
  static size_t getNumberOfLanguagesSupported();
  static size_t getNumberOfTerritoriesSupported();

 private:
  void init(const char* code);
  void extract(char* out, const char* territoryCode, bool territoryAlways) const;

  TavEnLanguage language;
  TavEnTerritory territory;
};

// Writes the short code ("en-us").
TAV_API std::ostream& operator<<(std::ostream& stream, const TavClLanguage& language);

#endif  // TAV_LANGUAGE_H
