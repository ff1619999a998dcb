// Dump lines and whole-area dumps.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <sstream>
#include <string>
#include <utility>

#include "tav_dump.h"

namespace {

// Short lines show placeholders for the missing bytes.
TEST(DumpLine, PlaceholdersAndFixedLengths) {
  const unsigned char bytes[] = {0x41, 0x00, 0x7F};
  EXPECT_STREQ(TavClStrepHexDump(16, bytes, 3).getAsCString(),
               "00000010: 41 00 7f __ __ __ __ __  __ __ __ __ __ __ __ __ | A.._____________");
  EXPECT_STREQ(TavClStrepHexDump(bytes, 3).getAsCString(),
               "41 00 7f __ __ __ __ __  __ __ __ __ __ __ __ __ | A.._____________");
  const unsigned char byte = 0xA5;
  EXPECT_STREQ(TavClStrepBinDump(0, &byte, 1).getAsCString(),
               "00000000: 10100101 ________ ________ ________  ________ ________ ________ "
               "________ | ._______");
  const size_t offset = static_cast<size_t>(0x12345678) << 4;  // nine digits, shown whole
  EXPECT_EQ(std::string(TavClStrepHexDump(offset, &byte, 1).getAsCString()).substr(0, 11),
            "123456780: ");

  // Full lines have their fixed length (77 and 93) and ignore extra bytes.
  unsigned char letters[20];
  for (unsigned i = 0; i < sizeof(letters); ++i) letters[i] = static_cast<unsigned char>('a' + i);
  const TavClStrepHexDump hex(0xABCDEF, letters, sizeof(letters));
  EXPECT_STREQ(hex.getAsCString() + 59, "| abcdefghijklmnop");
  const TavClStrepBinDump bin(0, letters, 8);
  EXPECT_STREQ(bin.getAsCString() + 83, "| abcdefgh");
}

// What a dump function writes to a stream, and the number of lines in it.
template <typename Dump>
std::pair<std::string, long> dumped(Dump dump) {
  std::ostringstream out;
  dump(out);
  const std::string text = out.str();
  return {text, static_cast<long>(std::count(text.begin(), text.end(), '\n'))};
}

TEST(DumpArea, RowsOfSixteenOrEightNumberedByOffset) {
  unsigned char bytes[17];
  std::memset(bytes, '-', sizeof(bytes));
  const auto hex = dumped([&](std::ostream& out) { tavDumpHex(out, bytes, sizeof(bytes)); });
  ASSERT_EQ(hex.second, 2);
  EXPECT_EQ(hex.first.substr(hex.first.find('\n') + 1),
            "00000010: 2d __ __ __ __ __ __ __  __ __ __ __ __ __ __ __ | -_______________\n");
  const uint32_t elements[] = {0x01020304, 0x05060708};
  const auto bin = dumped([&](std::ostream& out) { tavDumpBin(out, elements, 2); });
  EXPECT_EQ(bin.second, 1);
  EXPECT_EQ(bin.first.substr(0, 19), "00000000: 00000100 ");  // memory order: 04 comes first
  EXPECT_EQ(dumped([&](std::ostream& out) { tavDump(out, bytes, 0); }).first, "");
  const uint64_t values[] = {0, 0, 0};  // typed arrays dump all their 24 bytes
  EXPECT_EQ(dumped([&](std::ostream& out) { tavDump(out, values, 3); }).second, 2);
}

TEST(Representation, StreamsItsTextAndAddressesMatchTheStreamInserter) {
  const unsigned char byte = 'z';
  std::ostringstream out;
  out << TavClStrepHexDump(&byte, 1);
  EXPECT_EQ(out.str().substr(0, 3), "7a ");
  std::ostringstream expected;
  expected << static_cast<const void*>(&byte);
  EXPECT_EQ(TavClStrepAddress(&byte).getAsCString(), expected.str());
}

}  // namespace
