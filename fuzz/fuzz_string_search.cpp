// Fuzzes TavClStringSearch against std::string_view::find: for every input both agree on the
// first occurrence, and the search ends. A case-ignoring search must agree with find on the
// texts folded by toupper. Both forms are checked: the NUL-terminated text, and the length form
// on a copy without a terminator (and on a prefix of it), where any read beyond the given length
// leaves the heap block and AddressSanitizer reports it.
// Input layout: see fuzz_input.h; the flag bit set means ignoreCase, the byte's upper bits
// choose the prefix length.

#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "fuzz_input.h"
#include "tav_strmatch.h"

namespace {

// The search is linear in the text for most inputs and never worse than text times pattern;
// longer inputs add time without reaching new states.
constexpr std::size_t kMaxInputSize = 4096;

std::string Folded(std::string_view text) {
  std::string folded(text);
  for (char& c : folded) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return folded;
}

std::size_t Expected(std::string_view text, std::string_view pattern, bool ignoreCase) {
  return ignoreCase ? Folded(text).find(Folded(pattern)) : text.find(pattern);
}

// An offset into text, or npos; a pointer outside the text aborts at once with its address.
std::size_t OffsetIn(const char* text, std::size_t length, const char* found) {
  if (found == nullptr) return std::string_view::npos;
  if (found < text || found > text + length) {
    std::fprintf(stderr, "the search returned %p, outside the text\n",
                 static_cast<const void*>(found));
    std::abort();
  }
  return static_cast<std::size_t>(found - text);
}

void Check(const char* form, std::size_t actual, std::size_t expected, const char* text,
           const char* pattern, bool ignoreCase) {
  if (actual == expected) return;
  std::fprintf(stderr, "TavClStringSearch (%s) disagrees with std::string_view::find\n", form);
  tav_fuzz::PrintQuoted("text:   ", text);
  tav_fuzz::PrintQuoted("pattern:", pattern);
  std::fprintf(stderr, "ignoreCase: %s, tav offset: %ld, expected offset: %ld\n",
               ignoreCase ? "true" : "false", static_cast<long>(actual),
               static_cast<long>(expected));
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > kMaxInputSize) return 0;
  tav_fuzz::Input input;
  if (!tav_fuzz::SplitInput(data, size, &input)) return 0;
  const bool ignoreCase = input.flag;
  const char* text = input.text.get();
  const char* pattern = input.pattern.get();
  const std::string_view textView(text, input.textLength);
  const std::string_view patternView(pattern, input.patternLength);

  const TavClStringSearch search(pattern, ignoreCase);
  const std::size_t expected = Expected(textView, patternView, ignoreCase);
  Check("text", OffsetIn(text, input.textLength, search.getPattern(text)), expected, text, pattern,
        ignoreCase);

  // The same text without a terminator, whole and cut short.
  const std::size_t prefixLength = (data[0] >> 1) % (input.textLength + 1);
  for (std::size_t length : {input.textLength, prefixLength}) {
    // A block of exactly that size: a read past it is a finding.
    std::unique_ptr<char[]> exact(new char[length == 0 ? 1 : length]);
    std::memcpy(exact.get(), text, length);
    const char* found = search.getPattern(exact.get(), static_cast<unsigned>(length));
    Check("length", OffsetIn(exact.get(), length, found),
          Expected(textView.substr(0, length), patternView, ignoreCase), text, pattern, ignoreCase);
  }
  return 0;
}
