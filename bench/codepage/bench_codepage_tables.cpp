// The built-in code page tables beside ICU's converters for the same CCSIDs, on 1 MiB inputs:
// EBCDIC 37 into UCS-2, mixed single- and double-byte EBCDIC 930 into UCS-2, and UCS-2 into PC
// 850 through the reverse table. Rows are "BM_Tables/<conversion>/<engine>", in input bytes per
// second.
//
// Before a row is timed, the engine's output is compared with the library's; an engine that
// disagrees reports an error instead of a figure.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "tav_codepage.h"

#ifdef TAV_BENCH_HAVE_ICU
#include <unicode/ucnv.h>
#endif

#include "bench_codepage_dice.h"

namespace {

constexpr size_t kInputSize = 1 << 20;

using tav::bench::Dice;

// Lower-case words of EBCDIC letters (a-i, j-r, s-z), some with an accented letter, blanks,
// full stops and line ends (0x25 line feed, 0x15 next line).
std::string makeEbcdic37() {
  static const char letters[] =
      "\x81\x82\x83\x84\x85\x86\x87\x88\x89\x91\x92\x93\x94\x95\x96\x97\x98\x99\xA2\xA3\xA4\xA5"
      "\xA6\xA7\xA8\xA9\x51\x54\xCC";
  Dice dice(37);
  std::string text;
  while (text.size() < kInputSize) {
    for (uint32_t length = 2 + dice.below(8); length != 0; --length) {
      text += letters[dice.below(sizeof letters - 1)];
    }
    uint32_t end = dice.below(16);
    text += end == 0 ? "\x4B\x25" : end == 1 ? "\x4B\x15" : "\x40";
  }
  text.resize(kInputSize);
  return text;
}

// Japanese host text: single-byte words and runs of kanji between shift-out and shift-in.
std::string makeEbcdic930() {
  Dice dice(37);
  std::string text;
  while (text.size() + 64 < kInputSize) {
    for (uint32_t length = 2 + dice.below(6); length != 0; --length) {
      text += static_cast<char>(0xC1 + dice.below(9));
    }
    text += '\x0E';
    for (uint32_t length = 4 + dice.below(20); length != 0; --length) {
      text += static_cast<char>(0x45 + dice.below(10));
      text += static_cast<char>(0x41 + dice.below(0xBC));
    }
    text += "\x0F\x40";
  }
  while (text.size() < kInputSize) text += '\x40';
  return text;
}

// Western European text in UCS-2: ASCII words with Latin-1 letters and a few others.
std::string makeUcs2() {
  static const uint16_t letters[] = {'e', 't', 'a', 'o', 'i',  'n',  's',  'r',  'h',  'l',
                                     'd', 'u', 'c', 'm', 0xE9, 0xE8, 0xFC, 0xDF, 0xE4, 0x20AC};
  Dice dice(37);
  std::string text;
  while (text.size() < kInputSize) {
    uint16_t unit = dice.below(6) == 0 ? uint16_t{' '} : letters[dice.below(20)];
    char bytes[2];
    std::memcpy(bytes, &unit, 2);
    text.append(bytes, 2);
  }
  text.resize(kInputSize);
  return text;
}

struct Conversion {
  const char* name;
  uint32_t ccsid;
  bool fromUnicode;
  std::string input;
};

const Conversion& conversion(int which) {
  static const Conversion conversions[] = {{"ebcdic37_to_ucs2", 37, false, makeEbcdic37()},
                                           {"ebcdic930_to_ucs2", 930, false, makeEbcdic930()},
                                           {"ucs2_to_pc850", 850, true, makeUcs2()}};
  return conversions[which];
}

using Convert = size_t (*)(const Conversion& conversion, std::string& out);

size_t tavConvert(const Conversion& conversion, std::string& out) {
  static TavClCodePage2UnicodeConverter from37(TAV_CCSID_EBCDIC_37);
  static TavClCodePage2UnicodeConverter from930(static_cast<TavEnCCSID>(930));
  static TavClUnicode2CodePageConverter to850(TAV_CCSID_PC_850);
  const TavClConverterABase& converter =
      conversion.fromUnicode   ? static_cast<const TavClConverterABase&>(to850)
      : conversion.ccsid == 37 ? static_cast<const TavClConverterABase&>(from37)
                               : from930;
  return converter.convertBytes(&out[0], out.size(), conversion.input.data(),
                                conversion.input.size());
}

#ifdef TAV_BENCH_HAVE_ICU
// ICU's converter opened as the library opens it: by CCSID, with fallback mappings.
UConverter* icuConverter(uint32_t ccsid) {
  UErrorCode error = U_ZERO_ERROR;
  UConverter* converter = ucnv_openCCSID(static_cast<int32_t>(ccsid), UCNV_IBM, &error);
  if (converter != nullptr) ucnv_setFallback(converter, true);
  return converter;
}

size_t icuConvert(const Conversion& conversion, std::string& out) {
  static UConverter* converters[] = {icuConverter(37), icuConverter(930), icuConverter(850)};
  UConverter* converter = converters[conversion.ccsid == 37 ? 0 : conversion.ccsid == 930 ? 1 : 2];
  UErrorCode error = U_ZERO_ERROR;
  const std::string& in = conversion.input;
  if (conversion.fromUnicode) {
    int32_t bytes = ucnv_fromUChars(converter, &out[0], static_cast<int32_t>(out.size()),
                                    reinterpret_cast<const UChar*>(in.data()),
                                    static_cast<int32_t>(in.size() / 2), &error);
    return U_SUCCESS(error) ? static_cast<size_t>(bytes) : 0;
  }
  int32_t units = ucnv_toUChars(converter, reinterpret_cast<UChar*>(&out[0]),
                                static_cast<int32_t>(out.size() / 2), in.data(),
                                static_cast<int32_t>(in.size()), &error);
  return U_SUCCESS(error) ? 2 * static_cast<size_t>(units) : 0;
}
#endif

// The library's output, against which the engines are compared.
std::string reference(const Conversion& conversion) {
  std::string out(2 * conversion.input.size() + 16, '\0');
  out.resize(tavConvert(conversion, out));
  return out;
}

// Whether an engine's output equals the library's; EBCDIC next line, which the tables write as
// line feed deliberately, counts as equal.
bool sameAsLibrary(int which, const std::string& out, size_t size) {
  static const std::string references[] = {reference(conversion(0)), reference(conversion(1)),
                                           reference(conversion(2))};
  const std::string& expected = references[which];
  if (size != expected.size()) return false;
  if (conversion(which).fromUnicode) return out.compare(0, size, expected) == 0;
  for (size_t i = 0; i + 1 < size; i += 2) {
    uint16_t mine;
    uint16_t theirs;
    std::memcpy(&mine, expected.data() + i, 2);
    std::memcpy(&theirs, out.data() + i, 2);
    if (mine != theirs && !(mine == 0x0A && theirs == 0x85)) return false;
  }
  return true;
}

void BM_Tables(benchmark::State& state, int which, Convert convert) {
  const Conversion& input = conversion(which);
  std::string out(2 * input.input.size() + 16, '\0');
  if (!sameAsLibrary(which, out, convert(input, out))) {
    state.SkipWithError("the output differs from the library's");
    return;
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(convert(input, out));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * input.input.size()));
}

[[maybe_unused]] const bool kRegistered = [] {
  struct Engine {
    const char* name;
    Convert convert;
  };
  static const Engine engines[] = {
      {"tav", tavConvert},
#ifdef TAV_BENCH_HAVE_ICU
      {"icu", icuConvert},
#endif
  };
  for (int which = 0; which < 3; ++which) {
    for (const Engine& engine : engines) {
      const std::string name =
          std::string("BM_Tables/") + conversion(which).name + "/" + engine.name;
      benchmark::RegisterBenchmark(name.c_str(), BM_Tables, which, engine.convert);
    }
  }
  return true;
}();

}  // namespace
