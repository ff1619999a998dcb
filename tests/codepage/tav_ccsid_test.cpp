// tav_ccsid_test.cpp - CCSIDs: look-up by number and name, the property table, equality, the
// byte order marks and the process code pages.

#include <gtest/gtest.h>

#include <string>

#include "../../src/codepage/tav_codeset_names.h"
#include "tav_codepage.h"
#include "tav_codepage_test_support.h"
#include "tav_test_data.h"

namespace {

TEST(CCSIDLookup, ByTextAndByNumber) {
  for (const auto& row : tav::test::readDataTable("codepage/ccsid_lookup.txt", 5)) {
    SCOPED_TRACE(row.where);
    TavClCCSID fromText(row.text(0));
    EXPECT_EQ(static_cast<int64_t>(fromText.getCCSID()), row.number(1));
    EXPECT_EQ(fromText.isValid(), row.flag(2));
    EXPECT_STREQ(fromText.getName(), row.text(3));
    EXPECT_EQ(fromText.getFlags(), row.number(4));
    // The same number made directly finds its row lazily, unless the text matched no name.
    if (row.flag(2)) {
      EXPECT_EQ(TavClCCSID(static_cast<TavEnCCSID>(row.number(1))).getFlags(), fromText.getFlags());
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
  for (const auto& row : tav::test::readDataTable("codepage/ccsid_equality.txt", 3)) {
    SCOPED_TRACE(row.where);
    const auto left = static_cast<TavEnCCSID>(row.number(0));
    const auto right = static_cast<TavEnCCSID>(row.number(1));
    EXPECT_EQ(TavClCCSID(left) == right, row.flag(2));
    EXPECT_EQ(TavClCCSID(right) == TavClCCSID(left), row.flag(2));
    EXPECT_EQ(TavClCCSID(left) != TavClCCSID(right), !row.flag(2));
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
  for (const auto& row : tav::test::readDataTable("codepage/byte_order_marks.txt", 2)) {
    SCOPED_TRACE(row.where);
    const std::string marked = row.text(0) == nullptr ? "" : tav::test::parseHex(row.str(0));
    const char* bytes = row.text(0) == nullptr ? nullptr : marked.c_str();
    const auto ccsid = static_cast<TavEnCCSID>(row.number(1));
    EXPECT_EQ(TavClCCSID::getCCSIDForUCS2EndianId(bytes), ccsid);
    EXPECT_EQ(TavClConverterABase::isUCS2BigEndianId(bytes), ccsid == TAV_CCSID_UCS2_BIG_ENDIAN);
    EXPECT_EQ(TavClConverterABase::isUCS2LittleEndianId(bytes),
              ccsid == TAV_CCSID_UCS2_LITTLE_ENDIAN);
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
