// tav_codepage_tables.cpp - look-ups of the built-in conversion tables (none are built in yet).

#include "tav_codepage_tables.h"

namespace tav::codepage {

BuiltInTable findTableToUnicode(uint32_t /*tableCcsid*/, bool /*sourceIsEbcdic*/) {
  return {nullptr, nullptr};
}

BuiltInTable findTableFromUnicode(uint32_t /*ccsid*/) { return {nullptr, nullptr}; }

}  // namespace tav::codepage
