// Substitutes variables into arbitrary message texts and checks that the output stays within
// its limit, is terminated, that every "%"-free text comes out unchanged, and that the text
// taken apart once gives the same output as scanning it.
//
// Input: byte 0 is the limit (0 to 255), then NUL-separated fields: the text and up to ten
// variables. Each field is copied into a block of exactly its size, so that AddressSanitizer
// sees any read past its end.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "../src/msg/tav_message_substitution.h"
#include "../src/msg/tav_message_texts.h"
#include "fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::size_t limit = data[0];
  // The text, then up to ten variables.
  const auto fields = tav_fuzz::SplitFields(data + 1, data + size, 11);
  const char* variables[10] = {};
  for (std::size_t i = 1; i < fields.size(); ++i) variables[i - 1] = fields[i].get();

  std::unique_ptr<char[]> out(new char[limit + 1]);
  const std::size_t written =
      tav::substituteMessageVariables(out.get(), limit, fields[0].get(), variables, 10);
  if (written > limit || std::strlen(out.get()) != written) std::abort();
  if (std::strchr(fields[0].get(), '%') == nullptr &&
      std::strncmp(out.get(), fields[0].get(), limit) != 0) {
    std::abort();
  }
  const char* const table[] = {fields[0].get()};
  const tav::CompiledMessageTexts compiled(table, 1);
  std::unique_ptr<char[]> again(new char[limit + 1]);
  if (compiled.substitute(0, again.get(), limit, variables, 10) != written ||
      std::strcmp(again.get(), out.get()) != 0) {
    std::abort();
  }
  return 0;
}
