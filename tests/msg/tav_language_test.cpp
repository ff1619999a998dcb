// Languages and territories: parsing, the four printed forms, the number form and the tables.

#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <sstream>
#include <string>

#include "tav_language.h"

namespace {

using Language = TavClLanguage::TavEnLanguage;
using Territory = TavClLanguage::TavEnTerritory;

struct Printed {
  std::string shortCode, longCode, isoShortCode, isoLongCode;
};

Printed printed(const TavClLanguage& language) {
  char text[4][TAV_LANGUAGE_CODE_SIZE];
  language.extractShortCode(text[0]);
  language.extractLongCode(text[1]);
  language.extractISOShortCode(text[2]);
  language.extractISOLongCode(text[3]);
  return {text[0], text[1], text[2], text[3]};
}

TEST(Language, ParsesAndPrintsInEveryForm) {
  struct Row {
    const char* code;
    const char* shortCode;
    const char* longCode;
    const char* isoShortCode;
    const char* isoLongCode;
  };
  const Row rows[] = {
      {"EN_gb", "en-gb", "en-gbr", "en-gb", "en-gbr"},
      {"en-US", "en-us", "en-usa", "en-us", "en-usa"},
      {"de_CH", "de-ch", "de-che", "de-ch", "de-che"},
      {"en", "en-**", "en-***", "en", "en"},     // no separator: territory unspecified
      {"en-", "en-??", "en-??", "en", "en"},     // an empty territory is unknown
      {"en-usa", "en-??", "en-??", "en", "en"},  // the territory is the whole rest, short code
      {"en_us-gb", "en-gb", "en-gbr", "en-gb", "en-gbr"},  // "-" is preferred to "_"
      {"en-**", "en-**", "en-***", "en", "en"},
      {"eng", "?\?-**", "?\?-***", "??", "??"},  // a third letter makes the language unknown
      {"eng-us", "?\?-us", "?\?-usa", "?\?-us", "?\?-usa"},
      {"zz-zz", "?\?-??", "?\?-??", "??", "??"},
      {"-us", "?\?-us", "?\?-usa", "?\?-us", "?\?-usa"},
      {"e", "?\?-**", "?\?-***", "??", "??"},
      {"", "?\?-**", "?\?-***", "??", "??"},
      {"x-all", "**-**", "**-***", "**", "**"},
      {"X-Unspecified", "**-**", "**-***", "**", "**"},
      {"x-allx", "?\?-??", "?\?-??", "??", "??"},
      {"iw-IL", "iw-il", "iw-isr", "iw-il", "iw-isr"},
      {"sh_YU", "sh-yu", "sh-yug", "sh-yu", "sh-yug"},
      {"zu-zr", "zu-zr", "zu-zar", "zu-zr", "zu-zar"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << '"' << row.code << '"');
    const Printed actual = printed(TavClLanguage(row.code));
    EXPECT_EQ(actual.shortCode, row.shortCode);
    EXPECT_EQ(actual.longCode, row.longCode);
    EXPECT_EQ(actual.isoShortCode, row.isoShortCode);
    EXPECT_EQ(actual.isoLongCode, row.isoLongCode);
  }

  const TavClLanguage unknown("eng");
  EXPECT_EQ(unknown.getLanguage(), TavClLanguage::TAV_LANGUAGE_UNKNOWN);
  EXPECT_EQ(unknown.getTerritory(), TavClLanguage::TAV_TERRITORY_UNSPECIFIED);
  const TavClLanguage nullCode(static_cast<const char*>(nullptr));
  EXPECT_EQ(nullCode.getLanguage(), TavClLanguage::TAV_LANGUAGE_UNKNOWN);
  EXPECT_EQ(nullCode.getTerritory(), TavClLanguage::TAV_TERRITORY_UNSPECIFIED);
}

TEST(Language, EveryPairOfTableCodesParsesToItsRows) {
  const auto languages = static_cast<uint32_t>(TavClLanguage::getNumberOfLanguagesSupported());
  const auto territories = static_cast<uint32_t>(TavClLanguage::getNumberOfTerritoriesSupported());
  for (uint32_t l = 0; l < languages; ++l) {
    for (uint32_t t = 0; t < territories; ++t) {
      std::string code = TavClLanguage::getLanguageCode(static_cast<Language>(l));
      code += (l + t) % 2 == 0 ? "-" : "_";
      code += TavClLanguage::getTerritoryCodeShort(static_cast<Territory>(t));
      if (t % 3 == 0) {
        for (char& c : code) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
      }
      const TavClLanguage parsed(code.c_str());
      ASSERT_EQ(parsed.getLanguage(), l) << code;
      ASSERT_EQ(parsed.getTerritory(), t) << code;
    }
  }
}

TEST(Language, TheNumberFormKeepsBothParts) {
  const TavClLanguage swissGerman("de-ch");
  const unsigned int number = swissGerman.asNumber();
  EXPECT_EQ(number >> 16, swissGerman.getLanguage());
  EXPECT_EQ(number & 0xFFFF, swissGerman.getTerritory());
  const TavClLanguage restored(number);
  EXPECT_EQ(restored.getLanguage(), swissGerman.getLanguage());
  EXPECT_EQ(restored.getTerritory(), swissGerman.getTerritory());

  // Values beyond the tables print as unknown.
  const TavClLanguage beyond(0xFFFF0000u | 500u);
  EXPECT_EQ(printed(beyond).shortCode, "?\?-??");
  EXPECT_EQ(printed(beyond).isoLongCode, "?\?-??");
  EXPECT_EQ(beyond.asNumber(), 0xFFFF0000u | 500u);
  EXPECT_STREQ(TavClLanguage::getLanguageName(beyond.getLanguage()), "??");
  EXPECT_STREQ(TavClLanguage::getTerritoryName(beyond.getTerritory()), "??");
  EXPECT_EQ(TavClLanguage::getTerritoryIdNumber(TavClLanguage::TAV_TERRITORY_UNKNOWN), -1);
}

TEST(Language, StreamsTheShortCode) {
  std::ostringstream stream;
  stream << TavClLanguage("DE_at") << ' ' << TavClLanguage("fr");
  EXPECT_EQ(stream.str(), "de-at fr-**");
  EXPECT_STREQ(TavClLanguage::cv_cpszCombiningCharString, "-");
}

TEST(LanguageTables, HaveTheirSizesOrderAndUnspecifiedRows) {
  ASSERT_EQ(TavClLanguage::getNumberOfLanguagesSupported(), 143u);
  ASSERT_EQ(TavClLanguage::getNumberOfTerritoriesSupported(), 242u);
  EXPECT_STREQ(TavClLanguage::getLanguageCode(TavClLanguage::TAV_LANGUAGE_UNSPECIFIED), "**");
  EXPECT_STREQ(TavClLanguage::getLanguageName(TavClLanguage::TAV_LANGUAGE_UNSPECIFIED),
               "Unspecified");
  const Territory none = TavClLanguage::TAV_TERRITORY_UNSPECIFIED;
  EXPECT_STREQ(TavClLanguage::getTerritoryCodeShort(none), "**");
  EXPECT_STREQ(TavClLanguage::getTerritoryCodeLong(none), "***");
  EXPECT_EQ(TavClLanguage::getTerritoryIdNumber(none), 0);
  EXPECT_STREQ(TavClLanguage::getTerritoryName(none), "Unspecified");

  // Order and uniqueness show in the test that parses every pair of codes.
  for (uint32_t t = 1; t < 242; ++t) {
    const auto territory = static_cast<Territory>(t);
    const char* code = TavClLanguage::getTerritoryCodeShort(territory);
    ASSERT_EQ(std::strlen(TavClLanguage::getTerritoryCodeLong(territory)), 3u) << code;
    for (const char* c = TavClLanguage::getTerritoryName(territory); *c != '\0'; ++c) {
      ASSERT_TRUE(*c >= 0x20 && *c < 0x7f) << "a name that is not plain ASCII, " << code;
    }
  }
}

TEST(LanguageTables, KeepTheirDeliberateRows) {
  struct LanguageRow {
    const char* code;
    const char* name;
  };
  const LanguageRow languages[] = {
      {"aa", "Afar"},
      {"ab", "Abkhazian"},
      {"zh", "Chinese"},
      {"zu", "Zulu"},
      {"he", "Hebrew"},
      {"iw", "Hebrew"},
      {"mo", "Moldavian"},
      {"sh", "Serbo-Croatian"},
      {"nb", "Norwegian (Bokmal)"},
      {"nn", "Norwegian (Nynorsk)"},
      {"no", "Norwegian"},
      {"es", "Spanish"},
  };
  for (const LanguageRow& row : languages) {
    SCOPED_TRACE(row.code);
    const TavClLanguage parsed(row.code);
    EXPECT_STREQ(TavClLanguage::getLanguageName(parsed.getLanguage()), row.name);
  }

  struct TerritoryRow {
    const char* code;
    const char* codeLong;
    int32_t number;
    const char* name;
  };
  const TerritoryRow territories[] = {
      {"aa", "ara", 0, "Arabic"},
      {"fx", "fxx", 249, "France Metropolitan"},
      {"sp", "ser", 0, "Serbia"},
      {"tp", "tmp", 626, "East Timor"},
      {"yu", "yug", 891, "Yugoslavia"},
      {"zr", "zar", 180, "Zaire"},
      {"an", "ant", 530, "Netherlands Antilles"},
      {"zm", "zwb", 894, "Zambia"},
      {"gs", "sgs", 23, "South Georgia"},
      {"kp", "prk", 408, "Korea North"},
      {"us", "usa", 840, "United States"},
      {"de", "deu", 276, "Germany"},
      {"ad", "and", 20, "Andorra"},
      {"ci", "civ", 384, "Cote d'Ivoire"},
  };
  for (const TerritoryRow& row : territories) {
    SCOPED_TRACE(row.code);
    const Territory territory =
        TavClLanguage((std::string("en-") + row.code).c_str()).getTerritory();
    EXPECT_STREQ(TavClLanguage::getTerritoryCodeLong(territory), row.codeLong);
    EXPECT_EQ(TavClLanguage::getTerritoryIdNumber(territory), row.number);
    EXPECT_STREQ(TavClLanguage::getTerritoryName(territory), row.name);
  }
}

}  // namespace
