// Builds messages from an arbitrary table text and variables through a catalog, a proxy and
// assignment, and checks that each stores what the substitution routine gives: inline exactly
// up to 80 characters, never more than the message limit, the proxy's copy equal to it.
//
// Input: byte 0 is a repeat count (0 to 3) for the text, then NUL-separated fields: the text
// and up to ten variables, each copied into a block of exactly its size. Repeating the text
// reaches the 4096-character limit from small inputs.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "../src/msg/tav_message_substitution.h"
#include "fuzz_input.h"
#include "tav_message.h"

namespace {

void check(bool condition, const char* what) {
  if (!condition) {
    std::fprintf(stderr, "fuzz_message: %s\n", what);
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const unsigned repeats = data[0] & 3u;
  // The text, then up to ten variables.
  const auto fields = tav_fuzz::SplitFields(data + 1, data + size, 11);
  std::string text = fields[0].get();
  for (unsigned i = 0; i < repeats; ++i) text += text;
  const char* vars[TAV_MSG_VARIABLE_COUNT] = {};
  for (std::size_t i = 1; i < fields.size(); ++i) vars[i - 1] = fields[i].get();

  const char* table[] = {"[TAV_MSGTAB_SIGNATURE] 2", text.c_str()};
  TavClMessageCatalog catalog(TavClFilename("no-such-catalog"));
  catalog.useStringTable(table, 2);

  const char* filled[TAV_MSG_VARIABLE_COUNT];
  for (std::size_t i = 0; i < TAV_MSG_VARIABLE_COUNT; ++i) filled[i] = vars[i] ? vars[i] : "???";
  std::unique_ptr<char[]> expected(new char[TAV_MSG_MAX_LENGTH + 1]);
  const std::size_t expectedLength = tav::substituteMessageVariables(
      expected.get(), TAV_MSG_MAX_LENGTH, text.c_str(), filled, TAV_MSG_VARIABLE_COUNT);

  const TavClMessage message(catalog, 1, vars);
  check(message.isMessageLoaded(), "a table message did not load");
  check(std::strcmp(message.getText(), expected.get()) == 0, "text differs from the routine");
  check(message.isTextInline() == (expectedLength <= TavClMessage::kInlineLength),
        "inline storage does not follow the length");

  TavClMessage target(catalog, 0);
  target = message;
  check(std::strcmp(target.getText(), expected.get()) == 0, "assignment changed the text");

  TavClMessageCatalogProxy proxy(&catalog);
  check(std::strcmp(proxy.getMessage(1, vars), expected.get()) == 0, "proxy text differs");
  return 0;
}
