// tav_ccsid_test.cpp - CCSIDs: look-up by number and name, the property table, equality, the
// byte order marks and the process code pages.

#include <gtest/gtest.h>

#include <string>

#include "../../src/codepage/tav_codeset_names.h"
#include "tav_codepage.h"
#include "tav_codepage_test_support.h"
#include "tav_test_data.h"

namespace {

using tav::test::parseCCSIDFlags;

TEST(CCSIDLookup, ByTextAndByNumber) {
  for (const auto& row : tav::test::readDataTable("codepage/ccsid_lookup.txt", 5)) {
    SCOPED_TRACE(row.where);
    TavClCCSID fromText(row.text(0));
    EXPECT_EQ(static_cast<int64_t>(fromText.getCCSID()), row.number(1));
    EXPECT_EQ(fromText.isValid(), row.flag(2));
    EXPECT_STREQ(fromText.getName(), row.text(3));
    uint32_t flags = parseCCSIDFlags(row.str(4));
    EXPECT_EQ(fromText.getFlags(), flags);
    // The same number made directly finds its row lazily, unless the text matched no name.
    if (row.flag(2)) {
      EXPECT_EQ(TavClCCSID(static_cast<TavEnCCSID>(row.number(1))).getFlags(), flags);
    }
  }
}

TEST(CCSIDTable, RowCountOrderAndSentinel) {
  ASSERT_EQ(TavClCCSID::getKnownCount(), 430u);
  EXPECT_EQ(TavClCCSID(static_cast<const char*>(nullptr)).getCCSID(), TAV_CCSID_UNKNOWN);
  for (size_t i = 1; i < TavClCCSID::getKnownCount(); ++i) {
    SCOPED_TRACE(i);
    TavClCCSID row = TavClCCSID::getKnownAt(i);
    EXPECT_GT(row.getCCSID(), TavClCCSID::getKnownAt(i - 1).getCCSID());
    // Binary search by number finds this very row.
    EXPECT_STREQ(TavClCCSID(row.getCCSID()).getName(), row.getName());
  }
  EXPECT_EQ(TavClCCSID::getKnownAt(430).getCCSID(), TAV_CCSID_UNKNOWN);
}

TEST(CCSIDEquality, LittleEndianUCS2IsTheInternalOne) {
  struct Case {
    TavEnCCSID left, right;
    bool equal;
  };
  const Case cases[] = {
      {TAV_CCSID_UCS2_LITTLE_ENDIAN, TAV_CCSID_UCS2, true},
      {TAV_CCSID_UCS2_BIG_ENDIAN, TAV_CCSID_UCS2, false},
      {TAV_CCSID_UCS2_ISO10646, TAV_CCSID_UCS2, false},
      {TAV_CCSID_EBCDIC_37, TAV_CCSID_EBCDIC_500, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.left) + " vs " + std::to_string(c.right));
    EXPECT_EQ(TavClCCSID(c.left) == c.right, c.equal);
    EXPECT_EQ(TavClCCSID(c.right) == TavClCCSID(c.left), c.equal);
    EXPECT_EQ(TavClCCSID(c.left) != TavClCCSID(c.right), !c.equal);
  }
}

TEST(CCSIDEndianness, EveryUCS2RowButOneIsInHostOrder) {
  for (size_t i = 0; i < TavClCCSID::getKnownCount(); ++i) {
    TavClCCSID row = TavClCCSID::getKnownAt(i);
    SCOPED_TRACE(row.getCCSID());
    EXPECT_EQ(row.isUCS2BigEndian(), row.getCCSID() == TAV_CCSID_UCS2_BIG_ENDIAN);
    EXPECT_EQ(row.isUCS2HostEndian(), row.isUCS2() && !row.isUCS2BigEndian());
    EXPECT_EQ(row.isUCS2LittleEndian(), row.isUCS2HostEndian());
  }
}

TEST(CCSIDEndianness, ByteOrderMarks) {
  struct Case {
    const char* bytes;
    TavEnCCSID ccsid;
  };
  const Case cases[] = {{"\xFE\xFF", TAV_CCSID_UCS2_BIG_ENDIAN},
                        {"\xFF\xFE", TAV_CCSID_UCS2_LITTLE_ENDIAN},
                        {"\xFE\xFE", TAV_CCSID_UNKNOWN},
                        {"\xFE", TAV_CCSID_UNKNOWN},
                        {"", TAV_CCSID_UNKNOWN},
                        {nullptr, TAV_CCSID_UNKNOWN}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.bytes == nullptr ? "null" : c.bytes);
    EXPECT_EQ(TavClCCSID::getCCSIDForUCS2EndianId(c.bytes), c.ccsid);
    EXPECT_EQ(TavClConverterABase::isUCS2BigEndianId(c.bytes),
              c.ccsid == TAV_CCSID_UCS2_BIG_ENDIAN);
    EXPECT_EQ(TavClConverterABase::isUCS2LittleEndianId(c.bytes),
              c.ccsid == TAV_CCSID_UCS2_LITTLE_ENDIAN);
  }
}

TEST(CodesetNames, PosixCodesetsToCCSIDs) {
  for (const auto& row : tav::test::readDataTable("codepage/codeset_names.txt", 2)) {
    SCOPED_TRACE(row.where);
    const auto ccsid = static_cast<uint32_t>(row.number(1));
    EXPECT_EQ(tav::codepage::ccsidForCodesetName(row.text(0)), ccsid);
    // Every CCSID a codeset maps to is one the property table knows.
    EXPECT_TRUE(ccsid == 0 || TavClCCSID(static_cast<TavEnCCSID>(ccsid)).isValid());
  }
}

}  // namespace
