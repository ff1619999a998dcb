// Fuzzes relative-path expansion: arbitrary text in a caller's buffer of exactly
// TAV_PATH_BUFFER_SIZE bytes on the heap (so a write past it is an AddressSanitizer finding),
// expanded in both styles against an arbitrary working directory and compared with the plain
// implementation of the rules; then the native entry point against the real working directory.
//
// Input layout (see fuzz_input.h): byte 0 bit 0 chooses the style (1: slash style), then the
// text, a NUL, and the working directory.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "../src/fs/tav_relative_path.h"
#include "tav_relative_path_reference.h"
#include "fuzz_input.h"
#include "tav_file.h"

namespace {

constexpr std::size_t kMaxInputSize = 1024;

[[noreturn]] void fail(const char* what, const char* text, const char* current) {
  std::fprintf(stderr, "relative-path check failed: %s\n", what);
  tav_fuzz::PrintQuoted("text:", text);
  tav_fuzz::PrintQuoted("current directory:", current);
  std::abort();
}

std::unique_ptr<char[]> callerBuffer(const char* text) {
  std::unique_ptr<char[]> buffer(new char[TAV_PATH_BUFFER_SIZE]);
  std::strncpy(buffer.get(), text, TAV_PATH_MAX_LENGTH);
  buffer[TAV_PATH_MAX_LENGTH] = '\0';
  return buffer;
}

void checkStyle(const char* text, const char* current, TavEnPathStyle style) {
  const auto buffer = callerBuffer(text);
  const bool ok = tav::path::expandRelativePathIn(buffer.get(), style, current);
  std::string expected;
  const bool expectedOk = tav_reference::expandRelativePath(text, style, current, &expected);
  if (ok != expectedOk) fail("result differs from the plain implementation", text, current);
  if (expected != buffer.get()) fail("text differs from the plain implementation", text, current);
  const char separator = style == TAV_PATH_STYLE_SLASH ? '/' : '\\';
  if (ok && (expected.empty() || expected.back() != separator)) {
    fail("an expanded text ends with the separator", text, current);
  }
  // Expanding an absolute text leaves nothing to expand. (A result built on an arbitrary
  // working directory may keep that directory's oddities, such as doubled separators.)
  if (ok && !tav::path::isRelativePathIn(text, style)) {
    const auto again = callerBuffer(buffer.get());
    if (!tav::path::expandRelativePathIn(again.get(), style, current) ||
        std::strcmp(again.get(), buffer.get()) != 0) {
      fail("expanding an expanded absolute text changes it", text, current);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > kMaxInputSize) return 0;
  tav_fuzz::Input input;
  if (!tav_fuzz::SplitInput(data, size, &input)) return 0;
  const char* text = input.pattern.get();
  const char* current = input.text.get();
  const TavEnPathStyle first = input.flag ? TAV_PATH_STYLE_SLASH : TAV_PATH_STYLE_BACKSLASH;
  checkStyle(text, current, first);
  checkStyle(text, current,
             first == TAV_PATH_STYLE_SLASH ? TAV_PATH_STYLE_BACKSLASH : TAV_PATH_STYLE_SLASH);

  const auto native = callerBuffer(text);
  volatile bool sink = TavClFileABase::isRelativePath(native.get());
  sink = TavClFileABase::expandRelativePath(native.get());
  (void)sink;
  return 0;
}
