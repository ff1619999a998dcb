// Fuzzes the component set text of the trace filter against a set of 256 booleans
// filled by a reader written here straight from the rules. The input is the component set
// text; the first byte's low bit chooses whether the set starts full or empty.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tav_trace_environment.h"

namespace {

using IdSet = std::array<bool, 256>;

// Any number above the largest id acts alike; digits past the ninth cannot matter.
uint32_t numberOf(const std::string& digits) {
  size_t start = digits.find_first_not_of('0');
  if (start == std::string::npos) return 0;
  if (digits.size() - start > 9) return 1000000000;
  return static_cast<uint32_t>(std::stoul(digits.substr(start)));
}

void apply(IdSet& ids, uint32_t from, uint32_t to, bool include) {
  if (from == 0) return;
  if (to == 0) to = from;
  for (uint32_t id = from; id <= to && id <= 255; ++id) ids[id] = include;
}

void referenceEnable(IdSet& ids, const std::string& text) {
  uint32_t range[2] = {0, 0};
  int target = 0;
  bool include = true;
  for (size_t position = 0; position < text.size();) {
    const char character = text[position];
    if (character >= '0' && character <= '9') {
      const size_t end = text.find_first_not_of("0123456789", position);
      const size_t length = (end == std::string::npos ? text.size() : end) - position;
      range[target] = numberOf(text.substr(position, length));
      position += length;
      continue;
    }
    if (character == '.') target = 1;
    if (character == '*') range[0] = 1, range[1] = 255;
    if (character == '-') include = false;
    if (character == '+') include = true;
    if (character == ',') {
      apply(ids, range[0], range[1], include);
      range[0] = range[1] = 0;
      target = 0;
      include = true;
    }
    ++position;
  }
  apply(ids, range[0], range[1], include);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > 4096) return 0;
  const bool startFull = (data[0] & 1) != 0;
  // Up to the first NUL, as the filter reads it.
  std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
  text = text.substr(0, text.find('\0'));

  TavClTraceFilter filter;
  IdSet expected;
  expected.fill(startFull);
  if (!startFull) filter.disableAllComponentIds();
  filter.enableComponentIds(text.c_str());
  referenceEnable(expected, text);
  for (uint32_t id = 1; id <= 255; ++id) {
    if (filter.matchesCompId(id) != expected[id]) {
      std::fprintf(stderr, "component set \"%s\": id %u is %s, the reference says %s\n",
                   text.c_str(), id, filter.matchesCompId(id) ? "on" : "off",
                   expected[id] ? "on" : "off");
      std::abort();
    }
  }
  if (!filter.matchesCompId(0)) std::abort();
  return 0;
}
