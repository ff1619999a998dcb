// Messages built from string tables: the substitution of "%1" to "%10", substitution through a
// catalog, the inline and heap texts, assignment, and the failure notices.

#include "tav_message.h"

#include "../../src/msg/tav_message_substitution.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "tav_test_allocator.h"
#include "tav_test_data.h"

namespace {

const char* const kLetters[TAV_MSG_VARIABLE_COUNT] = {"a", "b", "c", "d", "e",
                                                      "f", "g", "h", "i", "j"};

// A catalog without module that serves table, under a name no catalog file has.
struct TableCatalog {
  explicit TableCatalog(const char* const* table, unsigned long size)
      : catalog(TavClFilename("no-such-catalog")) {
    catalog.useStringTable(table, size);
  }
  TavClMessageCatalog catalog;
};

const std::string k80(80, 'x');
const std::string k81(81, 'y');
const char* const kSmallTable[] = {
    "[TAV_MSGTAB_SIGNATURE] 7", "short %1", k80.c_str(), k81.c_str(), "%1%1", nullptr, "other"};
constexpr unsigned long kSmallTableSize = sizeof kSmallTable / sizeof kSmallTable[0];

TEST(Message, BuiltInTableSubstitutesTheTenVariables) {
  TableCatalog table(tavMsgCatGetBuiltInStringTable(), TAV_MSG_BUILTIN_TABLE_SIZE);
  const TavClMessage message(table.catalog, 2, kLetters);
  EXPECT_STREQ(message.getText(),
               "Percent:% Arg1:a Arg2:b Arg3:c Arg4:d Arg5:e Arg6:f Arg7:g Arg8:h Arg9:i Arg10:j");
  EXPECT_TRUE(message.isMessageLoaded());
  EXPECT_TRUE(message.isTextInline());  // exactly 80 characters

  const TavClMessage nulls(table.catalog, 2, "one", nullptr, "three");
  EXPECT_STREQ(nulls.getText(),
               "Percent:% Arg1:one Arg2:??? Arg3:three Arg4:??? Arg5:??? Arg6:??? Arg7:??? "
               "Arg8:??? Arg9:??? Arg10:???");
  EXPECT_EQ(table.catalog.getStringTableSignatureCount(), TAV_MSG_BUILTIN_TABLE_SIZE);
}

TEST(Message, FailureNoticesNameTheCatalog) {
  TableCatalog table(kSmallTable, kSmallTableSize);
  const TavClMessage beyondTable(table.catalog, kSmallTableSize);
  EXPECT_EQ(std::string(beyondTable.getText()),
            std::string("UNABLE TO LOAD MESSAGE CATALOG: ") + table.catalog.getName());
  EXPECT_FALSE(beyondTable.isMessageLoaded());

  // Every id below the size loads, the signature line and a null entry included.
  EXPECT_TRUE(TavClMessage(table.catalog, 0).isMessageLoaded());
  const TavClMessage nullEntry(table.catalog, 5);
  EXPECT_TRUE(nullEntry.isMessageLoaded());
  EXPECT_STREQ(nullEntry.getText(), "");

  const TavClMessageCatalog noTable(TavClFilename("no-such-catalog"));
  EXPECT_FALSE(noTable.isModuleLoaded());
  EXPECT_EQ(noTable.getLanguage(), 0u);
  EXPECT_FALSE(TavClMessage(noTable, 1).isMessageLoaded());
}

TEST(Message, TextsUpToEightyCharactersStayInlineAndAllAreCutAtTheLimit) {
  TableCatalog table(kSmallTable, kSmallTableSize);
  const std::string long40(40, 'v');
  const std::string long41(41, 'v');
  // Message id, variable, length of the text, and whether it is inline.
  const std::tuple<unsigned long, const char*, size_t, bool> cases[] = {
      {2, nullptr, 80, true},
      {3, nullptr, 81, false},
      {4, long40.c_str(), 80, true},
      {4, long41.c_str(), 82, false},
  };
  for (const auto& [id, variable, length, inlineText] : cases) {
    SCOPED_TRACE(testing::Message() << "id " << id << " length " << length);
    const TavClMessage message(table.catalog, id, variable);
    EXPECT_EQ(std::string(message.getText()).size(), length);
    EXPECT_EQ(message.isTextInline(), inlineText);
  }
  const std::string huge(3000, 'h');  // longer texts are cut at the message limit
  EXPECT_EQ(std::string(TavClMessage(table.catalog, 4, huge.c_str()).getText()),
            std::string(TAV_MSG_MAX_LENGTH, 'h'));
}

TEST(Message, AssignmentCopiesTheTextButKeepsTheTargetsCatalog) {
  TableCatalog first(kSmallTable, kSmallTableSize);
  TableCatalog second(tavMsgCatGetBuiltInStringTable(), TAV_MSG_BUILTIN_TABLE_SIZE);
  TavClMessage target(first.catalog, 1, "inline");
  for (unsigned long id : {3ul, 6ul, 3ul}) {  // heap, inline, heap again
    SCOPED_TRACE(id);
    const TavClMessage source(id == 3 ? first.catalog : second.catalog, id);
    target = source;
    EXPECT_STREQ(target.getText(), source.getText());
    EXPECT_EQ(target.isTextInline(), source.isTextInline());
    EXPECT_EQ(target.getMessageId(), id);
  }
  const TavClMessage fromSecond(second.catalog, 3);  // "YES" in the built-in table
  target = fromSecond;
  const TavClMessage& sameMessage = target;
  target = sameMessage;  // assigning a message to itself keeps its text
  EXPECT_STREQ(target.getText(), "YES");
  EXPECT_STREQ(target.setNewMessageId(6), "other");  // looked up in the first catalog

  TavClMessage copy(target);
  std::ostringstream stream;
  stream << copy;
  EXPECT_EQ(stream.str(), "other");
  EXPECT_STREQ(copy.setNewMessageId(1, "x"), "short x");
}

TEST(Message, FailedAllocationsLeakNothing) {
  TableCatalog table(kSmallTable, kSmallTableSize);
  tav::test::forEachAllocationFailure([&] {
    TavClMessage message(table.catalog, 3);
    const TavClMessage other(table.catalog, 1, "short");
    message = other;
    message.setNewMessageId(3);
    TavClMessage copy(message);
  });
}

std::string substitute(const char* in, size_t limit = 4096, const char* const* variables = kLetters,
                       size_t count = 10) {
  std::vector<char> out(limit + 1, '#');
  const size_t written = tav::substituteMessageVariables(out.data(), limit, in, variables, count);
  EXPECT_EQ(written, std::string(out.data()).size());
  return out.data();
}

TEST(MessageSubstitution, Rules) {
  for (const auto& row : tav::test::readDataTable("msg/message_substitution.txt", 2)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(substitute(row.text(0)), row.str(1));
  }
}

TEST(MessageSubstitution, NullAndMissingVariablesReadAsQuestionMarks) {
  const char* const variables[3] = {"one", nullptr, "three"};
  EXPECT_EQ(substitute("%1 %2 %3 %4", 4096, variables, 3), "one ??? three ???");
  EXPECT_EQ(substitute("%1", 4096, nullptr, 0), "???");
}

TEST(MessageSubstitution, OutputStopsAtTheLimitEvenInsideAVariable) {
  EXPECT_EQ(substitute("abcdefgh", 5), "abcde");
  const char* const longVariable[1] = {"12345"};
  EXPECT_EQ(substitute("x%1y", 3, longVariable, 1), "x12");
  EXPECT_EQ(substitute("%%%%", 1), "%");
  EXPECT_EQ(substitute("anything", 0), "");
}

}  // namespace
