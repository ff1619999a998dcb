// Dump lines (from a table under tests/data/string) and whole-area dumps.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "tav_dump.h"
#include "tav_test_data.h"

namespace {

TEST(DumpLine, PlaceholdersOffsetsAndFixedLengths) {
  for (const auto& row : tav::test::readDataTable("string/dump_lines.txt", 5)) {
    SCOPED_TRACE(row.where);
    std::vector<unsigned char> bytes;
    for (size_t i = 0; i < row.str(2).size(); i += 2) {
      bytes.push_back(static_cast<unsigned char>(std::stoul(row.str(2).substr(i, 2), nullptr, 16)));
    }
    const auto offset = static_cast<size_t>(row.str(1) == "-" ? 0 : row.number(1));
    const unsigned char* data = bytes.data();
    const std::string line =
        row.str(0) == "bin"   ? TavClStrepBinDump(offset, data, bytes.size()).getAsCString()
        : row.str(0) == "hex" ? TavClStrepHexDump(offset, data, bytes.size()).getAsCString()
                              : TavClStrepHexDump(data, bytes.size()).getAsCString();
    EXPECT_EQ(line, row.str(3) + " | " + row.str(4));
  }
}

// What a dump function writes to a stream.
template <typename Dump>
std::string dumped(Dump dump) {
  std::ostringstream out;
  dump(out);
  return out.str();
}

TEST(DumpArea, RowsOfSixteenOrEightNumberedByOffset) {
  unsigned char bytes[17];
  std::memset(bytes, '-', sizeof(bytes));
  const std::string hex = dumped([&](std::ostream& out) { tavDumpHex(out, bytes, sizeof(bytes)); });
  // The second row is the last.
  EXPECT_EQ(hex.substr(hex.find('\n') + 1),
            "00000010: 2d __ __ __ __ __ __ __  __ __ __ __ __ __ __ __ | -_______________\n");
  const uint32_t elements[] = {0x01020304, 0x05060708};
  // Memory order: 04 comes first.
  EXPECT_EQ(dumped([&](std::ostream& out) { tavDumpBin(out, elements, 2); }).substr(0, 19),
            "00000000: 00000100 ");
  EXPECT_EQ(dumped([&](std::ostream& out) { tavDump(out, bytes, 0); }), "");
  const uint64_t values[] = {0, 0, 0};  // typed arrays dump all their 24 bytes, in two rows
  const std::string typed = dumped([&](std::ostream& out) { tavDump(out, values, 3); });
  EXPECT_EQ(std::count(typed.begin(), typed.end(), '\n'), 2);
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
