// tav_icu_interface_test.cpp - ICU's error codes translated into the library's error records.

#include <gtest/gtest.h>

#include <string>

#include "tav_codepage.h"
#include "tav_test_data.h"

namespace {

TEST(IcuErrorTable, EveryRowInEveryForm) {
  auto rows = tav::test::readDataTable("codepage/icu_errors.txt", 5);
  ASSERT_EQ(rows.size(), TavClIcuInterface::getEntryCount());
  size_t index = 0;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.where);
    auto code = static_cast<TavIcuErrorCode>(row.number(0));
    EXPECT_EQ(TavClIcuInterface::getEntryAt(index++).icuCode, code);
    EXPECT_EQ(TavClIcuInterface::getTavErrorIdForIcuError(code), row.number(1));
    EXPECT_EQ(TavClIcuInterface::getTavErrorSeverityForIcuError(code), row.number(4));
    _TavStUserError user{1, TAV_CLASS_LOGIC, TAV_SEVERITY_PANIC, TAV_ACTION_PANIC};
    TavClIcuInterface::mapIcuError(user, code);
    EXPECT_EQ(user.id, row.number(1));
    EXPECT_EQ(user.errorClass, row.number(2));
    EXPECT_EQ(user.action, row.number(3));
    EXPECT_EQ(user.severity, row.number(4));
  }
  // An index past the table answers with its first row.
  EXPECT_EQ(TavClIcuInterface::getEntryAt(99).icuCode, 0);
}

TEST(IcuErrorTable, CodesOutsideTheTableThrow) {
  // ICU's warnings are negative, and 21 and 27 are errors the table does not hold.
  const TavIcuErrorCode unknown[] = {-1, 21, 66569};
  for (TavIcuErrorCode code : unknown) {
    SCOPED_TRACE(code);
    try {
      _TavStError error;
      TavClIcuInterface::mapIcuError(error, code);
      ADD_FAILURE() << "no exception";
    } catch (const TavClException& exception) {
      EXPECT_EQ(exception.getId(), static_cast<uint32_t>(ICU_UNEXPECTED_ICU_ERROR));
    }
    EXPECT_THROW(TavClIcuInterface::getTavErrorIdForIcuError(code), TavClException);
  }
}

TEST(IcuErrorHandling, SuccessAndWarningsPassErrorsThrow) {
  EXPECT_NO_THROW(TavClIcuInterface::handleIcuErrorCode(0));
  EXPECT_NO_THROW(TavClIcuInterface::handleIcuErrorCode(-127));
  try {
    TavClIcuInterface::handleIcuErrorCode(15);
    ADD_FAILURE() << "no exception";
  } catch (const TavClException& exception) {
    EXPECT_EQ(exception.getId(), static_cast<uint32_t>(CPCONVERTER_TOO_BIG));
    EXPECT_EQ(exception.getErrorClass(), TAV_CLASS_USER_DATA_ERROR);
  }
}

}  // namespace
