// tav_assert.cpp - the assertion report and the debugging print.

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tav_environment.h"
#include "tav_error.h"
#include "tav_process.h"
#include "tav_system_os.h"

namespace {

// The report is composed in a fixed buffer so that a failed assertion never allocates; texts
// that do not fit are cut.
constexpr size_t kReportCapacity = 8192;

// Only the first failed assertion of a process consults TAV_NO_ASSERT_POPUP, and the answer is
// not kept: a later failure (from another thread racing towards abort) shows the pop-up.
bool popupVariableConsulted = false;

bool popupSuppressed() {
  if (popupVariableConsulted) return false;
  popupVariableConsulted = true;
  return TavClEnvironmentVariableQueryOnly("TAV_NO_ASSERT_POPUP").hasValueEnabled();
}

}  // namespace

void tav__assert(const char* expression, const char* file, unsigned long line) {
  tav__assert_msg(expression, file, line, nullptr, nullptr);
}

void tav__assert_msg(const char* expression, const char* file, unsigned long line,
                     const char* function, const char* message) {
  const unsigned long processId = TavClProcessProperty().getId();

  char report[kReportCapacity];
  size_t used = 0;
  auto append = [&](const char* format, auto... values) {
    if (used >= sizeof(report)) return;
    const int written = std::snprintf(report + used, sizeof(report) - used, format, values...);
    if (written > 0) used += static_cast<size_t>(written);
  };

  append("%s", "\n*** INTERNAL ERROR OCCURED ***\n");
  if (message != nullptr) {
    append("*** %s ***\n", message);
    // A function name is shown only together with a message.
    if (function != nullptr) append("***         FUNCTION: %s\n", function);
  }
  append("*** ASSERTION FAILED: %s", expression != nullptr ? expression : "");
  append("\n***             LINE: %lu", line);
  append("\n***           MODULE: %s", file != nullptr ? file : "");
  append("\n***       PROCESS ID: %lu", processId);
  append("%s", "\n\n");

  std::fputs(report, stderr);
  std::fflush(stderr);

  if (!popupSuppressed()) tav::os::showAssertionPopup(report);
  std::abort();
}

int tav_tprintf(const char* file, int line, const char* format, ...) {
  FILE* stream = tavGetReportStream();
  std::fprintf(stream, "[%s:%d] ", file, line);
  va_list arguments;
  va_start(arguments, format);
  std::vfprintf(stream, format, arguments);
  va_end(arguments);
  if (std::strchr(format, '\n') == nullptr) std::fputc('\n', stream);
  return std::fflush(stream);
}
