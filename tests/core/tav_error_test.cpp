// Error coordinates, their message ids, and the exception classes.

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>

#include "tav_error.h"
#include "tav_report_capture.h"

namespace {

// Every error id, class, severity and action has a message of its own, from 47 to 149 and 200;
// values outside the tables have none.
TEST(ErrorMessageIds, OneMessageForEachCoordinateAndNoneOutsideTheTables) {
  std::set<unsigned long> messages;
#define TAV_ADD_ID(name, value, message) messages.insert(tavErrorGetIdAsMessageId(value));
#define TAV_ADD_CLASS(name, value, message) \
  messages.insert(tavErrorGetClassAsMessageId(static_cast<TavEnErrorClass>(value)));
#define TAV_ADD_SEVERITY(name, value, message) \
  messages.insert(tavErrorGetSeverityAsMessageId(static_cast<TavEnErrorSeverity>(value)));
#define TAV_ADD_ACTION(name, value, message) \
  messages.insert(tavErrorGetActionAsMessageId(static_cast<TavEnErrorAction>(value)));
  TAV_ERROR_ID_LIST(TAV_ADD_ID)
  TAV_ERROR_CLASS_LIST(TAV_ADD_CLASS)
  TAV_ERROR_SEVERITY_LIST(TAV_ADD_SEVERITY)
  TAV_ERROR_ACTION_LIST(TAV_ADD_ACTION)
  EXPECT_EQ(messages.size(), 104u);
  for (unsigned long id : {1000501ul, 200ul, 0xFFFFFFFFul}) {  // 1000501: the unassigned block
    EXPECT_EQ(tavErrorGetIdAsMessageId(id), 0u) << id;
  }
  // The messages of RETRYDELAY and USER are crossed on purpose.
  EXPECT_EQ(tavErrorGetActionAsMessageId(TAV_ACTION_RETRYDELAY), 146u);
  EXPECT_EQ(tavErrorGetActionAsMessageId(TAV_ACTION_USER), 145u);
}

// A fatal exception is always of severity fatal, a missing cause reads as empty, and copies
// share the static texts.
TEST(Exceptions, FatalIsAlwaysOfSeverityFatalAndCopiesShareTheTexts) {
  const TavClExceptionFatal fatal(MEMMGR_NO_USER_REALLOC_FUNC, TAV_CLASS_FUNCTION_NOT_SUPPORTED,
                                  TAV_ACTION_ABORT, nullptr);
  EXPECT_STREQ(fatal.getCause(), "");
  EXPECT_EQ(fatal.getSeverity(), TAV_SEVERITY_FATAL);
  const TavClExceptionFatal warning("cause", "x.cpp:1", 1, ICU_PARSE_ERROR, TAV_CLASS_INVALID_DATA,
                                    TAV_SEVERITY_WARNING, TAV_ACTION_RETRY);
  EXPECT_EQ(warning.getSeverity(), TAV_SEVERITY_FATAL);
  static const char kCause[] = "cause text";
  const TavClException original(kCause, "m.cpp:9", 9, INIFILE_INVAL_OPTION,
                                TAV_CLASS_USER_DATA_ERROR, TAV_SEVERITY_NORMAL, TAV_ACTION_USER);
  const TavClException copy = original;
  EXPECT_EQ(copy.getCause(), kCause);
}

// The throw macros record the file and line of the throw site. A handler for the base class by
// reference sees the whole exception and its dynamic type; one for the standard exceptions
// sees nothing.
TEST(Exceptions, ThrowSitesAndCatchingByBaseReference) {
  try {
    TAV_THROW("ICU", ICU_PARSE_ERROR, TAV_CLASS_UNKNOWN, TAV_SEVERITY_INTERNAL, TAV_ACTION_ABORT);
  } catch (const TavClException& caught) {
    EXPECT_EQ(caught.getUserError().severity, TAV_SEVERITY_INTERNAL);
    EXPECT_EQ(caught.getLine(), __LINE__ - 3u);
  }
  const std::string site = "tav_error_test.cpp:" + std::to_string(__LINE__ + 3);
  try {
    try {
      TAV_THROW_FATAL("disk", FILE_COULD_NOT_COPY, TAV_CLASS_IO_WRITE_PROBLEM, TAV_ACTION_ABORT);
    } catch (const std::exception&) {
      FAIL() << "a standard-exception handler caught a library exception";
    }
  } catch (const TavClExceptionABase& caught) {
    EXPECT_STREQ(caught.getCause(), "disk");
    const auto* fatal = dynamic_cast<const TavClExceptionFatal*>(&caught);
    ASSERT_NE(fatal, nullptr);
    EXPECT_EQ(fatal->getModule(), site);
    return;
  }
  FAIL() << "nothing caught";
}

TEST(DebugPrint, PrefixesFileAndLineAndEndsTheLine) {
  tav::test::ReportCapture reports;
  EXPECT_EQ(tav_tprintf("main.cpp", 42, "value %d", 7), 0);
  EXPECT_EQ(tav_tprintf("a.c", 1, "two\nlines"), 0);
  // A format that has a newline anywhere gets none added.
  EXPECT_EQ(reports.take(), "[main.cpp:42] value 7\n[a.c:1] two\nlines");
}

}  // namespace
