// Fuzzes the file-name classes: builds names and locations from arbitrary text, runs every
// accessor and editor, and checks the parts against a reference split written here with
// std::string, and every text against the 260-character limit.
//
// Input layout: byte 0 holds flags (bit 0: normalise locations; bits 1-7: a length for the
// pointer-and-length constructors), then up to four texts separated by NUL bytes: a full name
// (also used as a path and a directory), a name, an extension, and a prefix. Each text is
// copied into a heap block of exactly its size, so a read past its end is an
// AddressSanitizer finding; so are the output buffers, of exactly TAV_PATH_BUFFER_SIZE bytes.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "fuzz_input.h"
#include "tav_error.h"
#include "tav_filename.h"

namespace {

constexpr std::size_t kMaxInputSize = 2048;
constexpr std::size_t kMax = TAV_PATH_MAX_LENGTH;

[[noreturn]] void fail(const char* what, const std::string& text) {
  std::fprintf(stderr, "file-name check failed: %s\n", what);
  tav_fuzz::PrintQuoted("text:", text.c_str());
  std::abort();
}

void check(bool condition, const char* what, const std::string& text) {
  if (!condition) fail(what, text);
}

// The split as the rules state it, on the text already cut to 260 characters.
struct Parts {
  std::size_t pathStart = 0;
  std::size_t baseNameStart = 0;
  std::size_t extensionStart = 0;
};

Parts referenceSplit(const std::string& text) {
  Parts parts;
  if (text.size() >= 3 && text[0] == '\\' && text[1] == '\\') {
    const std::size_t afterServer = text.find('\\', 3);
    if (afterServer != std::string::npos) {
      const std::size_t afterShare = text.find('\\', afterServer + 1);
      parts.pathStart = afterShare == std::string::npos ? text.size() : afterShare;
    }
  }
  const std::size_t lastBackslash = text.rfind('\\');
  const std::size_t lastSlash = text.rfind('/');
  if (lastBackslash != std::string::npos) {
    parts.baseNameStart = lastBackslash + 1;
  } else if (lastSlash != std::string::npos) {
    parts.baseNameStart = lastSlash + 1;
  } else {
    parts.baseNameStart = parts.pathStart;
  }
  const std::size_t lastDot = text.rfind('.');
  parts.extensionStart =
      lastDot != std::string::npos && lastDot >= parts.baseNameStart ? lastDot : text.size();
  return parts;
}

int referenceStyle(const std::string& text) {
  if (text.size() >= 2 &&
      ((text[0] >= 'A' && text[0] <= 'Z') || (text[0] >= 'a' && text[0] <= 'z')) &&
      text[1] == ':') {
    return TAV_PATH_STYLE_BACKSLASH;
  }
  if (text.find('\\') != std::string::npos) return TAV_PATH_STYLE_BACKSLASH;
  if (text.find('/') != std::string::npos) return TAV_PATH_STYLE_SLASH;
  return TavClPathProperty::getNativeStyle();
}

std::string cut(const std::string& text) { return text.substr(0, kMax); }

// Where each part pointer lies, as offsets from the text.
Parts partsOf(const TavClFilenameABase& name) {
  const char* text = name.getAsCString();
  return {static_cast<std::size_t>(name.getPathStart() - text),
          static_cast<std::size_t>(name.getName() - text),
          static_cast<std::size_t>(name.getExtension() - text)};
}

// Every name whose parts were found afresh must agree with the reference split of its text.
void checkParsed(const TavClFilenameABase& name) {
  const std::string text = name.getAsCString();
  check(text.size() == name.getLength(), "length", text);
  check(text.size() <= kMax, "longer than 260", text);
  const Parts expected = referenceSplit(text);
  const Parts actual = partsOf(name);
  check(actual.pathStart == expected.pathStart, "path start", text);
  check(actual.baseNameStart == expected.baseNameStart, "base name start", text);
  check(actual.extensionStart == expected.extensionStart, "extension start", text);
  const bool emptyServerOnly = expected.pathStart == text.size() && expected.pathStart != 0;
  const int style =
      emptyServerOnly ? TAV_PATH_STYLE_BACKSLASH : referenceStyle(text.substr(expected.pathStart));
  check(name.getPathStyle() == style, "style", text);
}

// Runs the extractors into exactly sized heap buffers and checks what they produced.
void checkExtractors(const TavClFilenameABase& name) {
  const std::string text = name.getAsCString();
  const Parts parts = partsOf(name);
  std::unique_ptr<char[]> out(new char[TAV_PATH_BUFFER_SIZE]);
  name.extractServer(out.get());
  check(std::string(out.get()) == text.substr(0, parts.pathStart), "server", text);
  for (bool withSeparator : {false, true}) {
    name.extractPath(out.get(), withSeparator);
    std::string expected;
    if (parts.baseNameStart != parts.pathStart) {
      expected = text.substr(0, parts.baseNameStart - (withSeparator ? 0 : 1));
    }
    check(std::string(out.get()) == expected, "path", text);
  }
  if (parts.baseNameStart <= parts.extensionStart) {
    name.extractBaseName(out.get());
    check(std::string(out.get()) ==
              text.substr(parts.baseNameStart, parts.extensionStart - parts.baseNameStart),
          "base name", text);
  }
}

void runQueries(const TavClFilenameABase& name, const TavClFilenameABase& other,
                const char* extension, const char* pattern) {
  volatile bool sink = false;
  sink = sink ^ name.hasDrive() ^ name.isAbsolute() ^ name.isNormalized() ^ name.hasServer();
  sink = sink ^ name.matchesPath(other) ^ other.matchesPath(name);
  sink = sink ^ name.matchesBase(other) ^ other.matchesBase(name);
  sink = sink ^ name.matchesExtension(extension) ^ name.matchesWildcardPattern(pattern);
  sink = sink ^ name.isStyleFAT_8_3() ^ name.isExistent();
  sink = sink ^ (name.getPathSep(name.getAsCString()) == '/');
  // A name matches itself in every part.
  const std::string text = name.getAsCString();
  check(name.matchesPath(name), "path matches itself", text);
  check(name.matchesBase(name), "base matches itself", text);
  check(name.matchesExtension(name.getExtension()), "extension matches itself", text);
}

void checkCopies(const TavClFilename& name) {
  auto heap = std::make_unique<TavClFilename>(name);
  TavClFilename assigned("x");
  assigned = *heap;
  const TavClFilename& alias = assigned;
  assigned = alias;
  const Parts original = partsOf(*heap);
  heap.reset();
  const Parts copied = partsOf(assigned);
  const std::string text = name.getAsCString();
  check(std::string(assigned.getAsCString()) == text, "copied text", text);
  check(copied.pathStart == original.pathStart && copied.baseNameStart == original.baseNameStart &&
            copied.extensionStart == original.extensionStart,
        "copied parts", text);
}

std::string withExtension(std::string text, const char* extension) {
  if (*extension == '\0') return text;
  if (*extension != '.') text += '.';
  return text + extension;
}

void checkEditors(const TavClFilename& start, const char* path, const char* name,
                  const char* extension) {
  const std::string before = start.getAsCString();
  const Parts parts = partsOf(start);
  TavClFilename edited(start);

  edited.setNewExtension(extension);
  checkParsed(edited);
  check(edited.getAsCString() ==
            cut(withExtension(before.substr(0, parts.extensionStart), extension)),
        "setNewExtension", before);

  edited = start;
  edited.setNewBaseName(name);
  checkParsed(edited);
  check(edited.getAsCString() ==
            cut(before.substr(0, parts.baseNameStart) + name + before.substr(parts.extensionStart)),
        "setNewBaseName", before);

  edited = start;
  edited.setNewName(name);
  checkParsed(edited);
  check(edited.getAsCString() == cut(before.substr(0, parts.baseNameStart) + name), "setNewName",
        before);

  edited = start;
  edited.removePath();
  checkParsed(edited);
  check(edited.getAsCString() == before.substr(parts.baseNameStart), "removePath", before);

  edited = start;
  edited.setNewPath(path);
  checkParsed(edited);
  edited = start;
  edited.setNewPath(TavClLocation(path));
  checkParsed(edited);
  edited.setNew(TavClLocation(name), extension);
  checkParsed(edited);
  checkExtractors(edited);
}

void checkBuilt(const char* path, const char* name, const char* extension) {
  const TavClFilename built(path, name, extension);
  checkParsed(built);
  std::string expected = cut(path);
  if (!expected.empty() && expected.size() < kMax) {
    const char last = expected.back();
    const bool backslashStyle = referenceStyle(expected) == TAV_PATH_STYLE_BACKSLASH;
    if (!(last == '/' || (last == '\\' && backslashStyle))) expected += backslashStyle ? '\\' : '/';
  }
  expected = cut(withExtension(expected + name, extension));
  check(built.getAsCString() == expected, "built from parts", expected);
}

void checkLocation(const char* text, std::size_t length, bool normalize,
                   const TavClFilename& name) {
  for (const TavClLocation& location :
       {TavClLocation(text, normalize), TavClLocation(text, length, normalize),
        TavClLocation(name, normalize)}) {
    const std::string result = location.getAsCString();
    check(result.size() == location.getLength() && result.size() <= kMax, "location length",
          result);
    if (!result.empty() && result.size() < kMax) {
      check(result.back() == '/' || result.back() == '\\', "location separator", result);
    }
    TavClLocation copy(location);
    copy = location;
    copy = copy.getAsCString() + copy.getLength() / 2;
    volatile bool sink = location.isRoot() ^ location.isAbsolute() ^ copy.isExistent();
    (void)sink;
  }
}

void checkBackup(const TavClFilename& name) {
  const TavClBakFilename backup(name);
  const std::string text = name.getAsCString();
  check(backup.getAsCString() == cut(text + ".BAK"), "backup text", text);
  const Parts before = partsOf(name);
  const Parts after = partsOf(backup);
  check(
      before.baseNameStart == after.baseNameStart && before.extensionStart == after.extensionStart,
      "backup keeps the parts", text);
}

// The directory comes from the input, so the existence tests may see real files; the search is
// bounded, and giving up is reported with an exception.
void checkTemporary(const char* directory, const char* prefix) {
  try {
    const TavClTmpFilename temporary(directory, prefix);
    const std::string text = temporary.getAsCString();
    check(text.size() <= kMax, "temporary name length", text);
    TavClFilename plain;
    plain = temporary;
    check(std::string(plain.getAsCString()) == text, "temporary name copy", text);
  } catch (const TavClException& failure) {
    if (failure.getErrorClass() != TAV_CLASS_RESOURCE_EXHAUSTED) fail("unexpected exception", "");
  }
}

std::vector<std::unique_ptr<char[]>> splitTexts(const std::uint8_t* data, std::size_t size,
                                                std::size_t count) {
  std::vector<std::unique_ptr<char[]>> texts;
  const std::uint8_t* cursor = data;
  const std::uint8_t* end = data + size;
  for (std::size_t i = 0; i < count; ++i) {
    const auto* stop = static_cast<const std::uint8_t*>(std::memchr(cursor, 0, end - cursor));
    if (stop == nullptr) stop = end;
    texts.push_back(tav_fuzz::CopyString(cursor, static_cast<std::size_t>(stop - cursor)));
    cursor = stop == end ? end : stop + 1;
  }
  return texts;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > kMaxInputSize) return 0;
  const bool normalize = (data[0] & 1) != 0;
  const std::size_t length = data[0] >> 1;
  const auto texts = splitTexts(data + 1, size - 1, 4);
  const char* full = texts[0].get();
  const char* name = texts[1].get();
  const char* extension = texts[2].get();
  const char* prefix = texts[3].get();

  const TavClFilename parsed(full);
  checkParsed(parsed);
  check(parsed.getAsCString() == cut(full), "cut at 260", full);
  checkExtractors(parsed);
  const TavClFilename partial(full, length);
  checkParsed(partial);
  check(partial.getAsCString() == std::string(full).substr(0, length), "pointer and length", full);

  const TavClFilename other(name);
  runQueries(parsed, other, extension, prefix);
  runQueries(other, parsed, name, extension);
  checkCopies(parsed);
  checkEditors(parsed, name, extension, prefix);
  checkBuilt(full, name, extension);
  checkLocation(full, length, normalize, parsed);
  checkBackup(parsed);
  checkTemporary(full, prefix);
  return 0;
}
