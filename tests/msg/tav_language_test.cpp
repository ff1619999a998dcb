// Languages and territories: parsing, the four printed forms, the number form and the tables.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <sstream>
#include <string>

#include "tav_language.h"
#include "tav_test_data.h"

namespace {

using Language = TavClLanguage::TavEnLanguage;
using Territory = TavClLanguage::TavEnTerritory;

// The short, long, ISO short and ISO long codes.
std::vector<std::string> printed(const TavClLanguage& language) {
  char text[4][TAV_LANGUAGE_CODE_SIZE];
  language.extractShortCode(text[0]);
  language.extractLongCode(text[1]);
  language.extractISOShortCode(text[2]);
  language.extractISOLongCode(text[3]);
  return {text[0], text[1], text[2], text[3]};
}

TEST(Language, ParsesAndPrintsInEveryForm) {
  for (const auto& row : tav::test::readDataTable("msg/language_codes.txt", 5)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(printed(TavClLanguage(row.text(0))),
              std::vector<std::string>(row.fields.begin() + 1, row.fields.end()));
  }
  std::ostringstream stream;
  stream << TavClLanguage("DE_at") << ' ' << TavClLanguage("fr");
  EXPECT_EQ(stream.str(), "de-at fr-**");
}

// Every language code and every territory code (in capitals) parses back to its row: this shows
// the tables sorted and their codes unique.
TEST(Language, EveryTableCodeParsesToItsRow) {
  ASSERT_EQ(TavClLanguage::getNumberOfLanguagesSupported(), 143u);
  ASSERT_EQ(TavClLanguage::getNumberOfTerritoriesSupported(), 242u);
  for (uint32_t l = 0; l < 143; ++l) {
    const char* code = TavClLanguage::getLanguageCode(static_cast<Language>(l));
    ASSERT_EQ(TavClLanguage(code).getLanguage(), l) << code;
  }
  for (uint32_t t = 0; t < 242; ++t) {
    std::string code =
        std::string("EN_") + TavClLanguage::getTerritoryCodeShort(static_cast<Territory>(t));
    std::transform(code.begin(), code.end(), code.begin(), toupper);
    ASSERT_EQ(TavClLanguage(code.c_str()).getTerritory(), t) << code;
  }
}

TEST(Language, TheNumberFormKeepsBothPartsAndValuesBeyondTheTablesPrintAsUnknown) {
  const TavClLanguage swissGerman("de-ch");
  const unsigned int number = swissGerman.asNumber();
  EXPECT_EQ(printed(TavClLanguage(number)), printed(swissGerman));

  const TavClLanguage beyond(0xFFFF0000u | 500u);
  EXPECT_EQ(printed(beyond), std::vector<std::string>(4, "?\?-??"));
  EXPECT_STREQ(TavClLanguage::getTerritoryName(beyond.getTerritory()), "??");
  EXPECT_EQ(TavClLanguage::getTerritoryIdNumber(TavClLanguage::TAV_TERRITORY_UNKNOWN), -1);
}

// The rows that differ from the usual pattern.
TEST(LanguageTables, DeliberateRows) {
  for (const auto& row : tav::test::readDataTable("msg/language_names.txt", 2)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(TavClLanguage::getLanguageName(TavClLanguage(row.text(0)).getLanguage()), row.str(1));
  }
  for (const auto& row : tav::test::readDataTable("msg/territories.txt", 4)) {
    SCOPED_TRACE(row.where);
    const Territory territory = TavClLanguage(("en-" + row.str(0)).c_str()).getTerritory();
    EXPECT_EQ(TavClLanguage::getTerritoryCodeLong(territory), row.str(1));
    EXPECT_EQ(TavClLanguage::getTerritoryIdNumber(territory), row.number(2));
    EXPECT_EQ(TavClLanguage::getTerritoryName(territory), row.str(3));
  }
}

}  // namespace
