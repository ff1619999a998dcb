// tav_icu_interface_test.cpp - ICU's error codes translated into the library's error records.

#include <gtest/gtest.h>

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
    EXPECT_EQ(TavClIcuInterface::getTavErrorClassForIcuError(code), row.number(2));
    EXPECT_EQ(TavClIcuInterface::getTavErrorActionForIcuError(code), row.number(3));
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

// The id of the exception a call throws, and its class; 0 when it throws none.
template <typename Call>
uint32_t thrownId(Call call, TavEnErrorClass* errorClass = nullptr) {
  try {
    call();
  } catch (const TavClException& exception) {
    if (errorClass != nullptr) *errorClass = exception.getErrorClass();
    return exception.getId();
  }
  return 0;
}

TEST(IcuErrorTable, CodesOutsideTheTableThrowAndHandlingThrowsForErrorsOnly) {
  // ICU's warnings are negative, and 21 and 66569 are errors the table does not hold.
  for (TavIcuErrorCode code : {-1, 21, 66569}) {
    SCOPED_TRACE(code);
    _TavStError error;
    EXPECT_EQ(thrownId([&] { TavClIcuInterface::mapIcuError(error, code); }),
              static_cast<uint32_t>(ICU_UNEXPECTED_ICU_ERROR));
    EXPECT_EQ(thrownId([&] { TavClIcuInterface::getTavErrorIdForIcuError(code); }),
              static_cast<uint32_t>(ICU_UNEXPECTED_ICU_ERROR));
  }
  EXPECT_EQ(thrownId([] { TavClIcuInterface::handleIcuErrorCode(0); }), 0u);
  EXPECT_EQ(thrownId([] { TavClIcuInterface::handleIcuErrorCode(-127); }), 0u);
  TavEnErrorClass errorClass = TAV_CLASS_UNKNOWN;
  EXPECT_EQ(thrownId([] { TavClIcuInterface::handleIcuErrorCode(15); }, &errorClass),
            static_cast<uint32_t>(CPCONVERTER_TOO_BIG));
  EXPECT_EQ(errorClass, TAV_CLASS_USER_DATA_ERROR);
}

}  // namespace
