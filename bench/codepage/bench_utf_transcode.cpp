// UTF-8 to UCS-2 and back: the library's conversions beside ICU's UTF-8 converter and iconv, on
// 1 MiB each of pure ASCII, Latin text with accents, and CJK text mixed with emoji. Rows are
// "BM_Utf8ToUcs2/<text>/<engine>" and "BM_Ucs2ToUtf8/<text>/<engine>", in input bytes per
// second. The UCS-2 inputs are the conversions of the three UTF-8 texts.
//
// Before a pair is timed, each engine's output is compared with the library's; an engine that
// disagrees reports an error instead of a figure.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "../../src/codepage/tav_utf_transcode.h"

#ifdef TAV_BENCH_HAVE_ICU
#include <unicode/ucnv.h>
#endif
#ifdef TAV_BENCH_HAVE_ICONV
#include <iconv.h>
#endif

#include "bench_codepage_dice.h"

namespace {

constexpr size_t kTextSize = 1 << 20;

using tav::bench::Dice;

void appendUtf8(std::string& text, uint32_t value) {
  if (value < 0x80) {
    text += static_cast<char>(value);
  } else if (value < 0x800) {
    text += static_cast<char>(0xC0 | (value >> 6));
    text += static_cast<char>(0x80 | (value & 0x3F));
  } else if (value < 0x10000) {
    text += static_cast<char>(0xE0 | (value >> 12));
    text += static_cast<char>(0x80 | ((value >> 6) & 0x3F));
    text += static_cast<char>(0x80 | (value & 0x3F));
  } else {
    text += static_cast<char>(0xF0 | (value >> 18));
    text += static_cast<char>(0x80 | ((value >> 12) & 0x3F));
    text += static_cast<char>(0x80 | ((value >> 6) & 0x3F));
    text += static_cast<char>(0x80 | (value & 0x3F));
  }
}

// Cuts the text back to whole characters at no more than kTextSize bytes.
std::string finish(std::string text) {
  size_t size = kTextSize;
  while ((static_cast<unsigned char>(text[size]) & 0xC0) == 0x80) --size;
  text.resize(size);
  return text;
}

std::string makeAscii() {
  static const char* const words[] = {"the",    "file",   "system", "of",     "a",
                                      "server", "writes", "every",  "record", "twice",
                                      "and",    "reads",  "it",     "back",   "later"};
  Dice dice(18);
  std::string text;
  while (text.size() <= kTextSize) {
    text += words[dice.below(15)];
    text += dice.below(12) == 0 ? ".\n" : " ";
  }
  return finish(text);
}

// French and German words, about one letter in six with an accent.
std::string makeLatin() {
  static const char* const words[] = {"été",   "über",    "Straße", "naïve",    "façade", "Bücher",
                                      "élève", "können",  "année",  "Größe",    "déjà",   "müssen",
                                      "crème", "Mädchen", "où",     "français", "Schön",  "garçon",
                                      "fête",  "hôtel",   "und",    "les",      "der",    "avec"};
  Dice dice(18);
  std::string text;
  while (text.size() <= kTextSize) {
    text += words[dice.below(24)];
    text += dice.below(10) == 0 ? ", " : " ";
  }
  return finish(text);
}

// CJK ideographs with an emoji about every tenth character and some ASCII punctuation.
std::string makeCjkEmoji() {
  Dice dice(18);
  std::string text;
  while (text.size() <= kTextSize) {
    const uint32_t pick = dice.below(20);
    if (pick < 2) {
      appendUtf8(text, 0x1F600 + dice.below(0x50));
    } else if (pick < 4) {
      text += pick == 2 ? ' ' : ',';
    } else {
      appendUtf8(text, 0x4E00 + dice.below(0x5200));
    }
  }
  return finish(text);
}

struct TextPair {
  std::string utf8;
  std::string ucs2;  // the same text in UCS-2, host order
};

const TextPair& text(int kind) {
  static const TextPair* pairs = [] {
    auto* made = new TextPair[3];
    const std::string texts[] = {makeAscii(), makeLatin(), makeCjkEmoji()};
    for (int i = 0; i < 3; ++i) {
      made[i].utf8 = texts[i];
      made[i].ucs2.resize(2 * texts[i].size());
      const auto result = tav::codepage::utf8ToUcs2(texts[i].data(), texts[i].size(),
                                                    &made[i].ucs2[0], made[i].ucs2.size());
      made[i].ucs2.resize(result.written);
    }
    return made;
  }();
  return pairs[kind];
}

// One conversion engine: converts in into out and returns the bytes written.
using Convert = size_t (*)(const std::string& in, std::string& out);

size_t tavUtf8ToUcs2(const std::string& in, std::string& out) {
  return tav::codepage::utf8ToUcs2(in.data(), in.size(), &out[0], out.size()).written;
}

size_t tavUcs2ToUtf8(const std::string& in, std::string& out) {
  return tav::codepage::ucs2ToUtf8(in.data(), in.size(), &out[0], out.size()).written;
}

#ifdef TAV_BENCH_HAVE_ICU
UConverter* icuUtf8() {
  static UConverter* converter = [] {
    UErrorCode error = U_ZERO_ERROR;
    return ucnv_open("UTF-8", &error);
  }();
  return converter;
}

size_t icuUtf8ToUcs2(const std::string& in, std::string& out) {
  UErrorCode error = U_ZERO_ERROR;
  const int32_t units = ucnv_toUChars(icuUtf8(), reinterpret_cast<UChar*>(&out[0]),
                                      static_cast<int32_t>(out.size() / 2), in.data(),
                                      static_cast<int32_t>(in.size()), &error);
  return U_SUCCESS(error) ? 2 * static_cast<size_t>(units) : 0;
}

size_t icuUcs2ToUtf8(const std::string& in, std::string& out) {
  UErrorCode error = U_ZERO_ERROR;
  const int32_t bytes = ucnv_fromUChars(icuUtf8(), &out[0], static_cast<int32_t>(out.size()),
                                        reinterpret_cast<const UChar*>(in.data()),
                                        static_cast<int32_t>(in.size() / 2), &error);
  return U_SUCCESS(error) ? static_cast<size_t>(bytes) : 0;
}
#endif

#ifdef TAV_BENCH_HAVE_ICONV
// UTF-16 in host order rather than UCS-2, so that the emoji convert as pairs as they do here.
size_t iconvConvert(iconv_t descriptor, const std::string& in, std::string& out) {
  iconv(descriptor, nullptr, nullptr, nullptr, nullptr);
  char* from = const_cast<char*>(in.data());
  size_t fromLeft = in.size();
  char* to = &out[0];
  size_t toLeft = out.size();
  if (iconv(descriptor, &from, &fromLeft, &to, &toLeft) == static_cast<size_t>(-1)) return 0;
  return out.size() - toLeft;
}

const char* hostUtf16() {
  const uint16_t probe = 1;
  unsigned char first;
  std::memcpy(&first, &probe, 1);
  return first == 1 ? "UTF-16LE" : "UTF-16BE";
}

size_t iconvUtf8ToUcs2(const std::string& in, std::string& out) {
  static iconv_t descriptor = iconv_open(hostUtf16(), "UTF-8");
  return iconvConvert(descriptor, in, out);
}

size_t iconvUcs2ToUtf8(const std::string& in, std::string& out) {
  static iconv_t descriptor = iconv_open("UTF-8", hostUtf16());
  return iconvConvert(descriptor, in, out);
}
#endif

void BM_Convert(benchmark::State& state, int kind, bool fromUtf8, Convert convert) {
  const TextPair& pair = text(kind);
  const std::string& in = fromUtf8 ? pair.utf8 : pair.ucs2;
  const std::string& expected = fromUtf8 ? pair.ucs2 : pair.utf8;
  std::string out(2 * in.size() + 16, '\0');
  if (convert(in, out) != expected.size() || out.compare(0, expected.size(), expected) != 0) {
    state.SkipWithError("the output differs from the library's");
    return;
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(convert(in, out));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * in.size()));
}

[[maybe_unused]] const bool kRegistered = [] {
  static const char* const kinds[] = {"ascii", "latin", "cjk_emoji"};
  struct Engine {
    const char* name;
    Convert toUcs2;
    Convert toUtf8;
  };
  static const Engine engines[] = {
      {"tav", tavUtf8ToUcs2, tavUcs2ToUtf8},
#ifdef TAV_BENCH_HAVE_ICU
      {"icu", icuUtf8ToUcs2, icuUcs2ToUtf8},
#endif
#ifdef TAV_BENCH_HAVE_ICONV
      {"iconv", iconvUtf8ToUcs2, iconvUcs2ToUtf8},
#endif
  };
  for (const bool fromUtf8 : {true, false}) {
    for (int kind = 0; kind < 3; ++kind) {
      for (const Engine& engine : engines) {
        const std::string name = std::string(fromUtf8 ? "BM_Utf8ToUcs2/" : "BM_Ucs2ToUtf8/") +
                                 kinds[kind] + "/" + engine.name;
        benchmark::RegisterBenchmark(name.c_str(), BM_Convert, kind, fromUtf8,
                                     fromUtf8 ? engine.toUcs2 : engine.toUtf8);
      }
    }
  }
  return true;
}();

}  // namespace
