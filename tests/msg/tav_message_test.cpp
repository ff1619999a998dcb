// Messages built from string tables: the substitution of "%1" to "%10", substitution through a
// catalog, the inline and heap texts, assignment, and the failure notices.

#include "tav_message.h"

#include "../../src/msg/tav_message_substitution.h"
#include "../../src/msg/tav_message_texts.h"

#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "tav_test_allocator.h"
#include "tav_test_data.h"

namespace {

const char* const kLetters[TAV_MSG_VARIABLE_COUNT] = {"a", "b", "c", "d", "e",
                                                      "f", "g", "h", "i", "j"};

// A catalog without module that serves a table, under a name no catalog file has.
struct TableCatalog {
  TableCatalog(const char* const* table, unsigned long size) {
    catalog.useStringTable(table, size);
  }
  TavClMessageCatalog catalog{TavClFilename("no-such-catalog")};
};

const std::string k80(80, 'x'), k81(81, 'y');
const char* const kSmallTable[] = {
    "[TAV_MSGTAB_SIGNATURE] 7", "short %1", k80.c_str(), k81.c_str(), "%1%1", nullptr, "other"};
constexpr unsigned long kSmallTableSize = std::size(kSmallTable);

// Texts up to 80 characters stay inline, longer ones go to the heap, all are cut at the
// message limit. Every id below the table's size loads, a null entry as the empty text; others
// and a catalog without table give the catalog's notice.
TEST(Message, InlineAndHeapTextsAndTheFailureNotices) {
  TableCatalog table(kSmallTable, kSmallTableSize);
  const std::string long41(41, 'v'), huge(3000, 'h');
  // Message id, variable, length of the text, and whether it is inline.
  const std::tuple<unsigned long, const char*, size_t, bool> cases[] = {
      {2, nullptr, 80, true},         {3, nullptr, 81, false},
      {4, long41.c_str(), 82, false}, {4, huge.c_str(), TAV_MSG_MAX_LENGTH, false},
      {5, nullptr, 0, true},
  };
  for (const auto& [id, variable, length, inlineText] : cases) {
    SCOPED_TRACE(testing::Message() << "id " << id << " length " << length);
    const TavClMessage message(table.catalog, id, variable);
    EXPECT_EQ(std::string(message.getText()), std::string(length, *(message.getText())));
    EXPECT_EQ(message.isTextInline(), inlineText);
    EXPECT_TRUE(message.isMessageLoaded());
  }
  const TavClMessage beyondTable(table.catalog, kSmallTableSize);
  EXPECT_EQ(std::string(beyondTable.getText()),
            std::string("UNABLE TO LOAD MESSAGE CATALOG: ") + table.catalog.getName());
  EXPECT_FALSE(beyondTable.isMessageLoaded());
  EXPECT_FALSE(
      TavClMessage(TavClMessageCatalog(TavClFilename("no-such-catalog")), 1).isMessageLoaded());
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
  }
  const TavClMessage fromSecond(second.catalog, 3);  // "YES" in the built-in table
  target = fromSecond;
  const TavClMessage& sameMessage = target;
  target = sameMessage;  // assigning a message to itself keeps its text
  EXPECT_STREQ(target.getText(), "YES");
  EXPECT_STREQ(target.setNewMessageId(6), "other");  // looked up in the first catalog

  std::ostringstream stream;
  stream << TavClMessage(target);
  EXPECT_EQ(stream.str(), "other");
  EXPECT_STREQ(target.setNewMessageId(1, "x"), "short x");
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

// The rules, from a table; null and missing variables read as "???"; output stops at the
// limit, even inside a variable.
TEST(MessageSubstitution, RulesMissingVariablesAndTheLimit) {
  for (const auto& row : tav::test::readDataTable("msg/message_substitution.txt", 2)) {
    SCOPED_TRACE(row.where);
    EXPECT_EQ(substitute(row.text(0)), row.str(1));
  }
  const char* const variables[3] = {"one", nullptr, "three"};
  EXPECT_EQ(substitute("%1 %2 %3 %4", 4096, variables, 3), "one ??? three ???");
  EXPECT_EQ(substitute("abcdefgh", 5), "abcde");
  const char* const longVariable[1] = {"12345"};
  EXPECT_EQ(substitute("x%1y", 3, longVariable, 1), "x12");
  EXPECT_EQ(substitute("anything", 0), "");
}

// Texts taken apart once give what scanning gives: every built-in text and random texts of
// placeholders in every form, with variables short and long, missing and null, and every limit
// up to past the whole result (the block copies must stop at the limit too).
TEST(MessageSubstitution, TextsTakenApartOnceAgreeWithScanning) {
  std::mt19937 random(11);
  std::vector<std::string> randomTexts;
  for (int i = 0; i < 100; ++i) {
    std::string text;
    for (size_t length = random() % 40; length > 0; --length) {
      text += "%%%%%0123456789 +-abcdefghijklmnopqrstu"[random() % 40];
    }
    randomTexts.push_back(text);
  }
  std::vector<const char*> table{nullptr};
  for (const std::string& text : randomTexts) table.push_back(text.c_str());
  const tav::CompiledMessageTexts compiled(table.data(), table.size());
  const tav::CompiledMessageTexts& builtIn = tav::CompiledMessageTexts::builtIn();
  EXPECT_TRUE(builtIn.isFrom(tavMsgCatGetBuiltInStringTable()));

  const std::string longText(40, 'L');
  const char* const mixed[TAV_MSG_VARIABLE_COUNT] = {"", longText.c_str(), nullptr, "x"};
  const char* const* variableSets[] = {kLetters, mixed};
  const auto agree = [&](const tav::CompiledMessageTexts& texts, size_t id, const char* text) {
    for (const char* const* variables : variableSets) {
      const size_t count = variables == kLetters ? TAV_MSG_VARIABLE_COUNT : 4;
      const std::string whole = substitute(text, 4096, variables, count);
      for (size_t limit = 0; limit <= whole.size() + 1; ++limit) {
        std::vector<char> out(limit + 1, '#');
        const size_t written = texts.substitute(id, out.data(), limit, variables, count);
        ASSERT_EQ(std::string(out.data()), substitute(text, limit, variables, count))
            << "text '" << text << "', limit " << limit;
        ASSERT_EQ(written, std::string(out.data()).size());
      }
    }
  };
  for (size_t id = 1; id < table.size(); ++id) agree(compiled, id, table[id]);
  for (size_t id = 1; id < tavMsgCatGetBuiltInStringTableSize(); ++id) {
    agree(builtIn, id, tavMsgCatGetBuiltInStringTable()[id]);
  }
}

}  // namespace
