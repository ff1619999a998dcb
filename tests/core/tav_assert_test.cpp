// The assertion report, read from the standard error of a child process that asserts.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "tav_error.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

// The report ends with the child's process id in decimal and an empty line.
bool endsWithProcessIdLine(const std::string& standardError) {
  const size_t label = standardError.find("PROCESS ID: ");
  const size_t end = standardError.find_first_not_of("0123456789", label + 12);
  return label != std::string::npos && end != label + 12 && end != std::string::npos &&
         standardError.compare(end, 2, "\n\n") == 0;
}

// Every child re-runs this program from the start, so that no state of this process leaks into
// the report. The pop-up must stay off in the child.
TEST(AssertionReport, WithOrWithoutMessageAndFunctionAndThroughTheMacro) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  ASSERT_NE(std::getenv("TAV_NO_ASSERT_POPUP"), nullptr) << "run with TAV_NO_ASSERT_POPUP=1";
  EXPECT_DEATH(tav__assert_msg("count > 0", "tav_queue.cpp", 77, "popFront", "queue is empty"),
               AllOf(HasSubstr("\n*** INTERNAL ERROR OCCURED ***\n"
                               "*** queue is empty ***\n"
                               "***         FUNCTION: popFront\n"
                               "*** ASSERTION FAILED: count > 0"
                               "\n***             LINE: 77"
                               "\n***           MODULE: tav_queue.cpp"
                               "\n***       PROCESS ID: "),
                     testing::Truly(endsWithProcessIdLine)));
  // Without a message the function is not shown.
  EXPECT_DEATH(tav__assert_msg("p != 0", "a.cpp", 5, "onlyFunction", nullptr),
               AllOf(HasSubstr("\n*** INTERNAL ERROR OCCURED ***\n"
                               "*** ASSERTION FAILED: p != 0"
                               "\n***             LINE: 5"
                               "\n***           MODULE: a.cpp\n"),
                     Not(HasSubstr("FUNCTION"))));
  const int zero = 0;
  EXPECT_DEATH(TAV_ASSERT(zero == 1), HasSubstr("*** ASSERTION FAILED: zero == 1\n"));
}

}  // namespace
