// Fuzzes the parsing of language codes. The whole input (up to its first NUL) is the code. The
// result must equal what a plain reading of the parsing rules gives, written here with linear
// searches over the tables; printing and reparsing the short code must give the same value
// again; and no printed code may need more than TAV_LANGUAGE_CODE_SIZE bytes.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "tav_language.h"

namespace {

using Language = TavClLanguage::TavEnLanguage;
using Territory = TavClLanguage::TavEnTerritory;

constexpr std::size_t kMaxInputSize = 64;

std::string Lower(const std::string& text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

struct Parsed {
  std::uint32_t language;
  std::uint32_t territory;
};

Parsed ReferenceParse(const std::string& code) {
  const std::string lower = Lower(code);
  if (lower == "x-all" || lower == "x-unspecified") return {0, 0};

  Parsed parsed = {TavClLanguage::TAV_LANGUAGE_UNKNOWN, TavClLanguage::TAV_TERRITORY_UNSPECIFIED};
  std::size_t separator = lower.find('-');
  if (separator == std::string::npos) separator = lower.find('_');
  if (separator != std::string::npos) {
    parsed.territory = TavClLanguage::TAV_TERRITORY_UNKNOWN;
    const std::string territory = lower.substr(separator + 1);
    for (std::uint32_t t = 0; t < TavClLanguage::getNumberOfTerritoriesSupported(); ++t) {
      if (territory == TavClLanguage::getTerritoryCodeShort(static_cast<Territory>(t))) {
        parsed.territory = t;
      }
    }
  }
  if (lower.size() > 2 && lower[2] != '-' && lower[2] != '_') return parsed;
  const std::string language = lower.substr(0, 2);
  for (std::uint32_t l = 0; l < TavClLanguage::getNumberOfLanguagesSupported(); ++l) {
    if (language == TavClLanguage::getLanguageCode(static_cast<Language>(l))) parsed.language = l;
  }
  return parsed;
}

[[noreturn]] void Report(const char* what, const std::string& code, const TavClLanguage& actual) {
  std::fprintf(stderr, "%s for code \"%s\": language %u, territory %u\n", what, code.c_str(),
               static_cast<unsigned>(actual.getLanguage()),
               static_cast<unsigned>(actual.getTerritory()));
  std::abort();
}

// Runs one extract function into a buffer with guard bytes behind the documented size.
template <typename Extract>
std::string Extracted(const TavClLanguage& language, Extract extract, const std::string& code) {
  char buffer[TAV_LANGUAGE_CODE_SIZE + 8];
  std::memset(buffer, 0x7f, sizeof buffer);
  (language.*extract)(buffer);
  for (std::size_t i = TAV_LANGUAGE_CODE_SIZE; i < sizeof buffer; ++i) {
    if (buffer[i] != 0x7f) Report("a printed code overflows its size", code, language);
  }
  return buffer;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > kMaxInputSize) return 0;
  const auto* end = static_cast<const std::uint8_t*>(std::memchr(data, 0, size));
  const std::size_t length = end == nullptr ? size : static_cast<std::size_t>(end - data);
  // An exact heap copy, so that a read past the terminator is seen by AddressSanitizer.
  std::unique_ptr<char[]> exact(new char[length + 1]);
  std::memcpy(exact.get(), data, length);
  exact[length] = '\0';
  const std::string code(exact.get(), length);

  const TavClLanguage parsed(exact.get());
  const Parsed expected = ReferenceParse(code);
  if (parsed.getLanguage() != expected.language || parsed.getTerritory() != expected.territory) {
    std::fprintf(stderr, "expected language %u, territory %u\n", expected.language,
                 expected.territory);
    Report("the parse disagrees with the reference", code, parsed);
  }

  const std::string shortCode = Extracted(parsed, &TavClLanguage::extractShortCode, code);
  Extracted(parsed, &TavClLanguage::extractLongCode, code);
  Extracted(parsed, &TavClLanguage::extractISOShortCode, code);
  Extracted(parsed, &TavClLanguage::extractISOLongCode, code);
  const TavClLanguage reparsed(shortCode.c_str());
  if (reparsed.getLanguage() != parsed.getLanguage() ||
      reparsed.getTerritory() != parsed.getTerritory()) {
    Report("the short code does not parse back to the same value", code, reparsed);
  }
  const TavClLanguage fromNumber(parsed.asNumber());
  if (fromNumber.asNumber() != parsed.asNumber() ||
      fromNumber.getLanguage() != parsed.getLanguage()) {
    Report("the number form does not restore the value", code, fromNumber);
  }
  return 0;
}
