// The built-in table, the C functions, the language ids of locale names, and the library's
// own catalog module. The module's language depends on the environment ctest gives the
// program: TAV_TEST_CATALOG_LANGUAGE names the language id its texts must be in.

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <string>

#include "../../src/msg/tav_language_id.h"
#include "tav_error.h"
#include "tav_message.h"
#include "tav_test_data.h"

namespace {

const char* const* builtIn() { return tavMsgCatGetBuiltInStringTable(); }

// The error ids, classes, severities and actions name their built-in messages after
// themselves, through the lookups of tav_error.h; the other texts are fixed.
TEST(BuiltInTable, NamesComeFromTheErrorListsAndTheOtherTextsAreFixed) {
  ASSERT_EQ(tavMsgCatGetBuiltInStringTableSize(), 221u);
  EXPECT_STREQ(builtIn()[tavErrorGetIdAsMessageId(ICU_ERROR_LIMIT)], "ICU_ERROR_LIMIT");
  EXPECT_STREQ(builtIn()[tavErrorGetClassAsMessageId(TAV_CLASS_IO_INVALID_NAME)],
               "IO_INVALID_NAME");

  for (const auto& row : tav::test::readDataTable("msg/builtin_table_texts.txt", 2)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(builtIn()[row.number(0)], row.str(1));
  }
}

// The C functions: a catalog file that is not there gives no handle, or one over a table; the
// library's own catalog opens by name and attaches; null handles read as an empty catalog.
TEST(MessageCatalogCFunctions, Handles) {
  EXPECT_EQ(tavMsgCatOpen("no-such-catalog"), nullptr);
  const TavClMessageCatalog unloaded(TavClFilename("no-such-catalog"));
  EXPECT_EQ(tavMsgCatOpenAttach(&unloaded), nullptr);
  EXPECT_EQ(tavMsgCatOpenAttach(nullptr), nullptr);
  EXPECT_STREQ(tavMsgCatGet(nullptr, 1), "");
  EXPECT_EQ(tavMsgCatGetLanguage(nullptr), 0u);
  tavMsgCatClose(nullptr);

  TavClMessageCatalogProxy* handle =
      tavMsgCatOpenOrUseStringTable("msgs.txt", builtIn(), TAV_MSG_BUILTIN_TABLE_SIZE);
  ASSERT_NE(handle, nullptr);
  EXPECT_STREQ(tavMsgCatGet(handle, 17), "Usage");
  EXPECT_FALSE(tavMsgCatIsValid(handle, 221));
  const std::string catalogName = handle->getCatalog()->getName();
  EXPECT_TRUE(catalogName == "msgs.cat" || catalogName == "msgs.DLL") << catalogName;
  EXPECT_EQ(tavMsgCatGet(handle, 221), "UNABLE TO LOAD MESSAGE CATALOG: " + catalogName);
  // Ten entries are read at most: the list needs no null pointer after the tenth.
  EXPECT_STREQ(tavMsgCatGetVar(handle, 2, "1", "2", "3", "4", "5", "6", "7", "8", "9", "10"),
               "Percent:% Arg1:1 Arg2:2 Arg3:3 Arg4:4 Arg5:5 Arg6:6 Arg7:7 Arg8:8 Arg9:9 Arg10:10");
  tavMsgCatClose(handle);

  // The handle's buffer holds the longest message.
  const std::string half(TAV_MSG_MAX_LENGTH / 2 + 7, 'q');
  const char* const table[] = {"[TAV_MSGTAB_SIGNATURE] 2", "%1%1"};
  handle = tavMsgCatOpenOrUseStringTable(nullptr, table, 2);
  EXPECT_EQ(std::string(tavMsgCatGetVar(handle, 1, half.c_str(), nullptr)),
            std::string(TAV_MSG_MAX_LENGTH, 'q'));
  tavMsgCatClose(handle);

  const TavClMessageCatalog library{TavClFilename(TAV_MSG_LIBRARY_CATALOG)};
  TavClMessageCatalogProxy* opened = tavMsgCatOpen(TAV_MSG_LIBRARY_CATALOG);
  TavClMessageCatalogProxy* attached = tavMsgCatOpenAttach(&library);
  // A null handle would fail each of these.
  EXPECT_TRUE(tavMsgCatIsValid(opened, 200));
  EXPECT_EQ(tavMsgCatGetLanguage(opened), library.getLanguage());
  EXPECT_STREQ(tavMsgCatGet(attached, 4), TavClMessage(library, 4).getText());
  tavMsgCatClose(attached);
  tavMsgCatClose(opened);
}

TEST(LanguageId, LocaleNames) {
  for (const auto& row : tav::test::readDataTable("msg/locale_language_ids.txt", 2)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(tav::languageIdFromLocaleName(row.text(0)), row.number(1));
  }
  for (const auto& row : tav::test::readDataTable("msg/language_id_locales.txt", 4)) {
    SCOPED_TRACE(row.where);
    char territory[tav::kLocaleNameSize] = "", language[tav::kLocaleNameSize] = "";
    EXPECT_EQ(
        tav::localeNamesFromLanguageId(static_cast<uint16_t>(row.number(0)), territory, language),
        row.flag(1));
    EXPECT_EQ(territory + std::string("|") + language, row.str(2) + "|" + row.str(3));
  }
}

// The library's own catalog, found beside the library although the tests run elsewhere.
class MessageCatalogModule : public testing::Test {
 protected:
  void SetUp() override {
    const char* expected = std::getenv("TAV_TEST_CATALOG_LANGUAGE");
    if (expected == nullptr) GTEST_SKIP() << "run through ctest, which sets the language";
    expectedLanguage = static_cast<unsigned int>(std::strtoul(expected, nullptr, 10));
  }
  bool german() const { return expectedLanguage == 1031; }

  unsigned int expectedLanguage = 0;
  TavClMessageCatalog catalog{TavClFilename(TAV_MSG_LIBRARY_CATALOG)};
};

TEST_F(MessageCatalogModule, TextsInTheEnvironmentsLanguageAndNoticesForMissingIds) {
  ASSERT_TRUE(catalog.isModuleLoaded());
  EXPECT_EQ(catalog.getLanguage(), expectedLanguage);
  EXPECT_STREQ(TavClMessage(catalog, 18).getText(), german() ? "Hilfe" : "Help");
  // Missing ids give the catalog's notice.
  for (unsigned long id : {0ul, 201ul, 4000000000ul}) {
    SCOPED_TRACE(id);
    const TavClMessage message(catalog, id);
    EXPECT_FALSE(message.isMessageLoaded());
    EXPECT_EQ(std::string(message.getText()), "UNABLE TO LOAD MESSAGE #" + std::to_string(id) +
                                                  " FROM CATALOG: " + catalog.getName());
  }
}

// The English catalog holds the built-in table's texts, the error names included; line ends
// are compared as "\n", which the Windows message table writes as "\r\n".
TEST_F(MessageCatalogModule, EnglishCatalogMatchesTheBuiltInTable) {
  ASSERT_TRUE(catalog.isModuleLoaded());
  if (german()) GTEST_SKIP() << "the German catalog is a translation";
  TavClMessageCatalog table{TavClFilename("no-such-catalog")};
  table.useStringTable(builtIn(), TAV_MSG_BUILTIN_TABLE_SIZE);
  for (unsigned long id = 1; id < TAV_MSG_BUILTIN_TABLE_SIZE; ++id) {
    if (id > 200 && id < 220) continue;  // reserved ids are no messages
    SCOPED_TRACE(id);
    const TavClMessage message(catalog, id);
    std::string text = message.getText();
    for (size_t crlf; (crlf = text.find("\r\n")) != std::string::npos;) text.erase(crlf, 1);
    EXPECT_EQ(text, TavClMessage(table, id).getText());
  }
}

// The catalog takes its language from the environment without setting the process's locale,
// so the program keeps printing numbers in its own conventions. The fixture's catalog is
// already open: the locale is set back to "C" first so that a second opening would show.
TEST_F(MessageCatalogModule, OpeningLeavesTheProcessLocaleAlone) {
  ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
  const TavClMessageCatalog opened{TavClFilename(TAV_MSG_LIBRARY_CATALOG)};
  ASSERT_TRUE(opened.isModuleLoaded());
  EXPECT_EQ(opened.getLanguage(), expectedLanguage);
  EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
}

}  // namespace
