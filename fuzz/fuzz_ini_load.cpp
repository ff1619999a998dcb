// Fuzzes loading configuration text from memory. Whatever the bytes, the load ends, every
// section name fits its 80 characters, and every option's name, value and comment lie inside
// the option's store, each terminated there, with the value at most 1024 characters; the
// cursors walk the whole model and the look-ups find the first section and option of each name.
// Input layout: a flag byte (bit 0: merge duplicate headers, bit 1: continuation lines,
// bit 2: the error handler stops the load, bit 3: NUL rather than line feed ends a line), then
// the text.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tav_filename.h"
#include "tav_ini.h"

namespace {

// Long enough for several over-long lines and a full store; longer inputs add only time.
constexpr std::size_t kMaxInputSize = 16384;

void Check(bool condition, const char* what) {
  if (!condition) {
    std::fprintf(stderr, "configuration model broken: %s\n", what);
    std::abort();
  }
}

// Whether text starts inside [store, store + size) and its NUL lies there too.
bool TerminatedInside(const char* text, const char* store, std::size_t size) {
  if (text < store || text >= store + size) return false;
  return std::memchr(text, '\0', static_cast<std::size_t>(store + size - text)) != nullptr;
}

bool StopAtFirstError(const _TavStError&, unsigned int line, void* lines) {
  Check(line > *static_cast<unsigned int*>(lines) || line == 0, "line numbers go back");
  *static_cast<unsigned int*>(lines) = line;
  return false;
}

bool GoOn(const _TavStError&, unsigned int line, void* lines) {
  Check(line >= *static_cast<unsigned int*>(lines), "line numbers go back");
  *static_cast<unsigned int*>(lines) = line;
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > kMaxInputSize) return 0;
  const unsigned flags = data[0];
  const char* text = reinterpret_cast<const char*>(data + 1);
  const std::size_t length = size - 1;

  TavClFilename name("fuzz.ini");
  TavClIniFile file(name);
  unsigned int lastLine = 0;
  file.setErrorHandler((flags & 4) != 0 ? &StopAtFirstError : &GoOn, &lastLine);
  file.loadFromBuffer(text, length, (flags & 8) != 0 ? '\0' : '\n', (flags & 1) == 0,
                      (flags & 2) != 0);

  TavClIniFileSectionCursor sections(file);
  for (bool more = sections.setToFirst(); more; more = sections.setToNext()) {
    const char* sectionName = sections.getSection();
    Check(std::strlen(sectionName) <= TavClIniFileSection::kMaxNameLength, "section name too long");
    // The look-ups find the first section of a name, and the cursor's setTo finds the same one.
    TavClIniFileSectionCursor first(file);
    Check(first.setTo(sectionName), "a section is not found by its name");
    const bool firstOfItsName = first.getSection() == sectionName;
    Check(file.getSection(sectionName), "a section is not found by its name");
    TavClIniFileOptionCursor options(sections);
    for (bool next = options.setToFirst(); next; next = options.setToNext()) {
      const char* store = options.getOption();
      Check(TerminatedInside(store, store, TavClIniFileOption::kTextSize),
            "name outside the store");
      Check(TerminatedInside(options.getValue(), store, TavClIniFileOption::kTextSize),
            "value outside the store");
      Check(TerminatedInside(options.getComment(), store, TavClIniFileOption::kTextSize),
            "comment outside the store");
      Check(std::strlen(options.getValue()) <= TavClIniFileOption::kMaxValueLength,
            "value too long");
      if (*store == '\0' || !firstOfItsName) continue;
      TavClIniFileOptionCursor firstOption(sections);
      Check(firstOption.setTo(store), "an option is not found by its name");
      const char* found = nullptr;
      Check(file.getOption(store, found), "an option is not found by its name");
      Check(found == firstOption.getValue(), "a look-up finds another option than the first");
    }
  }
  return 0;
}
