// Wildcard matching: tavMatchesWildcardPattern beside POSIX fnmatch on the same patterns and
// texts. Each pair is registered back to back under one group name, "<group>/tav" and
// "<group>/fnmatch", so the two figures appear together in the output.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <iterator>
#include <string>

#if __has_include(<fnmatch.h>)
#include <fnmatch.h>
#define TAV_BENCH_HAVE_FNMATCH 1
#endif

#include "tav_utils.h"

namespace {

// The matchers share one static signature so that every benchmark body is written once.
struct TavExact {
  static bool Match(const char* pattern, const char* text) {
    return tavMatchesWildcardPattern(pattern, text, true);
  }
};

struct TavNoCase {
  static bool Match(const char* pattern, const char* text) {
    return tavMatchesWildcardPattern(pattern, text, false);
  }
};

#ifdef TAV_BENCH_HAVE_FNMATCH
// With flags 0 neither '/' nor a leading '.' is special to fnmatch, so for patterns without
// '[' or '\\' it answers the same question as tavMatchesWildcardPattern.
struct FnmatchExact {
  static bool Match(const char* pattern, const char* text) {
    return fnmatch(pattern, text, 0) == 0;
  }
};

#ifdef FNM_CASEFOLD
struct FnmatchNoCase {
  static bool Match(const char* pattern, const char* text) {
    return fnmatch(pattern, text, FNM_CASEFOLD) == 0;
  }
};
#endif
#endif

// File names as a directory listing might hold them, in mixed case, so that the
// case-insensitive runs match more of them than the exact ones.
const char* const kNames[] = {
    "report-2024.txt", "notes.TXT",     "archive.tar.gz", "backup-2023-11.tar.gz",
    "data_01.csv",     "data_2024.csv", "DATA_ab.CSV",    "syslog",
    "app.log",         "catalog.json",  "IMG_0042.JPG",   "img_0043.jpg",
    "README.md",       "Makefile",      "main.cpp",       "build.log.1",
    "changelog.txt",   ".bashrc",       "photo.jpeg",     "tav_utils_text.cpp",
};

const char* const kPatterns[] = {
    "*.txt", "*.tar.gz", "data_??.csv", "*log*", "IMG_????.JPG", "*.cpp", "report-*.txt",
};

constexpr std::int64_t kPairsPerIteration = std::size(kPatterns) * std::size(kNames);

// Every pattern against every name. The "matches" counter must be equal within a pair;
// otherwise the two matchers disagree and the timings do not compare the same work.
template <class Matcher>
void BM_Typical(benchmark::State& state) {
  int matches = 0;
  for (auto _ : state) {
    matches = 0;
    for (const char* pattern : kPatterns) {
      for (const char* name : kNames) {
        matches += Matcher::Match(pattern, name) ? 1 : 0;
      }
    }
    benchmark::DoNotOptimize(matches);
  }
  state.counters["matches"] = matches;
  state.SetItemsProcessed(state.iterations() * kPairsPerIteration);
}

// Many stars followed by a character the text never holds: a matcher that backtracks tries
// every way of spreading the text over the stars before it can give up.
constexpr const char* kPathologicalPattern = "*a*a*a*a*a*a*a*a*b";

template <class Matcher>
void BM_Pathological(benchmark::State& state, std::size_t length) {
  const std::string text(length, 'a');
  for (auto _ : state) {
    bool matched = Matcher::Match(kPathologicalPattern, text.c_str());
    benchmark::DoNotOptimize(matched);
    if (matched) {
      state.SkipWithError("matched a text that holds no 'b'");
      break;
    }
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(length));
}

[[maybe_unused]] const bool kRegistered = [] {
  benchmark::RegisterBenchmark("BM_Wildcard_Typical/tav", BM_Typical<TavExact>);
#ifdef TAV_BENCH_HAVE_FNMATCH
  benchmark::RegisterBenchmark("BM_Wildcard_Typical/fnmatch", BM_Typical<FnmatchExact>);
#endif

  benchmark::RegisterBenchmark("BM_Wildcard_TypicalNoCase/tav", BM_Typical<TavNoCase>);
#if defined(TAV_BENCH_HAVE_FNMATCH) && defined(FNM_CASEFOLD)
  benchmark::RegisterBenchmark("BM_Wildcard_TypicalNoCase/fnmatch", BM_Typical<FnmatchNoCase>);
#endif

  // 30 and 60 characters are file-name sized; 1000 shows how each matcher grows with the text.
  for (std::size_t length : {30, 60, 1000}) {
    const std::string group = "BM_Wildcard_Pathological/" + std::to_string(length);
    benchmark::RegisterBenchmark((group + "/tav").c_str(), BM_Pathological<TavExact>, length);
#ifdef TAV_BENCH_HAVE_FNMATCH
    benchmark::RegisterBenchmark((group + "/fnmatch").c_str(), BM_Pathological<FnmatchExact>,
                                 length);
#endif
  }
  return true;
}();

}  // namespace
