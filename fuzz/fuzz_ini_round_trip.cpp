// Fuzzes the exact save of configuration files: any bytes are loaded from memory (line feeds,
// duplicate sections kept apart, continuation lines allowed), saved with saveAtomic, and the
// file is loaded again. The second model must hold the same sections and options, with the
// same values and comments, in the same order; deleted entries are left out on both sides.
// A save may refuse a model it cannot write exactly, but never write one that reads back
// differently. Input: the whole input is the file's text.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "tav_filename.h"
#include "tav_ini.h"

namespace {

// Loading is linear; longer inputs only repeat what shorter ones reach.
constexpr std::size_t kMaxInputSize = 16384;

std::string describe(const TavClIniFile& model) {
  std::string text;
  TavClIniFileSectionCursor sections(model);
  for (sections.setToFirst(); sections.isValid(); sections.setToNext()) {
    if (sections.getSection()[0] == '\0') continue;
    text += std::string("[") + sections.getSection() + "]\n";
    TavClIniFileOptionCursor options(sections);
    for (options.setToFirst(); options.isValid(); options.setToNext()) {
      if (options.getOption()[0] == '\0') continue;
      text += std::string(options.getOption()) + "=<" + options.getValue() + "><" +
              options.getComment() + ">\n";
    }
  }
  return text;
}

const std::string& fileName() {
  static const std::string name = [] {
    const char* directory = std::getenv("TMPDIR");
    return std::string(directory != nullptr ? directory : "/tmp") + "/tav_fuzz_ini_round_trip.ini";
  }();
  return name;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > kMaxInputSize) return 0;
  const TavClFilename name(fileName().c_str());
  TavClIniFileSave first(name);
  first.loadFromBuffer(reinterpret_cast<const char*>(data), size, '\n', true, true);
  if (!first.saveAtomic()) return 0;
  TavClIniFile second(name);
  if (!second.load(true)) {
    std::fprintf(stderr, "the saved file does not load\n");
    std::abort();
  }
  const std::string before = describe(first);
  const std::string after = describe(second);
  if (before != after) {
    std::fprintf(stderr, "round trip changed the model:\n--- before\n%s--- after\n%s",
                 before.c_str(), after.c_str());
    std::abort();
  }
  return 0;
}
