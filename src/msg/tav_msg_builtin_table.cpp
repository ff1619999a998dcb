// tav_msg_builtin_table.cpp - the built-in table of the library's messages.
//
// The texts come from the message source (generated into tav_msg_builtin_texts.inc), the names
// of the error ids, classes, severities and actions from the lists of tav_error_ids.h, so that
// each text is written in one place only. The table is built at compile time, and the build
// fails if two sources claim one entry.

#include "tav_error.h"
#include "tav_message.h"

namespace {

constexpr unsigned long kSize = TAV_MSG_BUILTIN_TABLE_SIZE;

struct BuiltInTable {
  const char* entries[kSize] = {};
  bool claimedTwice = false;

  constexpr void set(unsigned long id, const char* text) {
    if (entries[id] != nullptr) claimedTwice = true;
    entries[id] = text;
  }
};

constexpr BuiltInTable makeTable() {
  BuiltInTable table;
  table.set(0, "[TAV_MSGTAB_SIGNATURE] " TAV_STRINGIZE(TAV_MSG_BUILTIN_TABLE_SIZE));
#define TAV_MSG_TEXT(id, text) table.set(id, text);
#include "tav_msg_builtin_texts.inc"
#undef TAV_MSG_TEXT
#define TAV_MSG_NAME(name, value, message) table.set(message, #name);
  TAV_ERROR_ID_LIST(TAV_MSG_NAME)
  TAV_ERROR_CLASS_LIST(TAV_MSG_NAME)
  TAV_ERROR_SEVERITY_LIST(TAV_MSG_NAME)
  TAV_ERROR_ACTION_LIST(TAV_MSG_NAME)
#undef TAV_MSG_NAME
  // Reserved ids read "?".
  for (const char*& entry : table.entries) {
    if (entry == nullptr) entry = "?";
  }
  return table;
}

constexpr BuiltInTable kTable = makeTable();
static_assert(!kTable.claimedTwice, "two sources give the same built-in message");

}  // namespace

const char* const* tavMsgCatGetBuiltInStringTable(void) { return kTable.entries; }

unsigned long tavMsgCatGetBuiltInStringTableSize(void) { return kSize; }
