// Substring search: TavClStringSearch beside std::string_view::find and memmem on a text of
// 1 MiB of words, where the pattern occurs once, at the very end, so that every search reads
// the whole text. Groups run back to back as "BM_Search/<kind>/<pattern length>/<searcher>".
//
// Two kinds of pattern: "common" ones, whose first and last letters are frequent in the text,
// and "rare" ones, whose first letter never occurs in it. std::string_view::find looks for the
// first letter with memchr and then compares, so it races through a text without that letter
// and stops at every occurrence of a frequent one.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#if __has_include(<strings.h>)
#include <strings.h>
#endif

#include "tav_strmatch.h"

namespace {

constexpr std::size_t kTextSize = 1 << 20;

// Patterns of 4 (3), 8, 16 and 32 characters that occur nowhere in a text of the vocabulary
// below. The rare ones begin with a letter that no word of it has.
const char* const kCommonPatterns[] = {"seat", "interest", "thermostatically",
                                       "the reasonable station of stones"};
const char* const kRarePatterns[] = {"zyx", "quixotic", "jumbo quiz jacks",
                                     "zealous yak juggles quixotic jam"};

const char* const kVocabulary[] = {
    "the",    "of",     "and",     "to",      "in",       "is",      "that",   "for",
    "it",     "as",     "was",     "with",    "be",       "by",      "on",     "not",
    "he",     "this",   "are",     "or",      "his",      "from",    "at",     "which",
    "but",    "have",   "an",      "had",     "they",     "you",     "were",   "their",
    "one",    "all",    "we",      "can",     "her",      "has",     "there",  "been",
    "if",     "more",   "when",    "will",    "would",    "who",     "so",     "no",
    "system", "memory", "process", "library", "function", "pointer", "buffer", "string",
    "search", "window", "pattern", "table",   "skip",     "first",   "match",  "text"};

// The words in a fixed pseudo-random order, then the pattern at the end.
std::string makeText(const char* pattern) {
  std::mt19937 random(42);
  std::string text;
  text.reserve(kTextSize);
  const std::size_t patternLength = std::strlen(pattern);
  while (text.size() + patternLength + 16 < kTextSize) {
    text += kVocabulary[random() % std::size(kVocabulary)];
    text += ' ';
  }
  text.append(kTextSize - patternLength - text.size(), ' ');
  text += pattern;
  return text;
}

template <typename Search>
void runSearch(benchmark::State& state, const char* pattern, Search search) {
  const std::string text = makeText(pattern);
  std::size_t offset = 0;
  for (auto _ : state) {
    offset = search(std::string_view(text), pattern);
    benchmark::DoNotOptimize(offset);
  }
  if (offset != text.size() - std::strlen(pattern)) {
    state.SkipWithError("the pattern was not found at the end of the text");
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

std::size_t offsetOf(std::string_view text, const void* found) {
  return found == nullptr ? std::string_view::npos
                          : static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
}

[[maybe_unused]] const bool kRegistered = [] {
  std::vector<std::pair<const char*, const char*>> patterns;
  for (const char* pattern : kCommonPatterns) patterns.emplace_back("common", pattern);
  for (const char* pattern : kRarePatterns) patterns.emplace_back("rare", pattern);
  for (const auto& [kind, pattern] : patterns) {
    const std::string group =
        std::string("BM_Search/") + kind + "/" + std::to_string(std::strlen(pattern));
    benchmark::RegisterBenchmark((group + "/tav").c_str(), [pattern](benchmark::State& state) {
      const TavClStringSearch searcher(pattern, false);
      runSearch(state, pattern, [&searcher](std::string_view text, const char*) {
        return offsetOf(text, searcher.getPattern(text.data(), static_cast<unsigned>(text.size())));
      });
    });
    benchmark::RegisterBenchmark((group + "/find").c_str(), [pattern](benchmark::State& state) {
      runSearch(state, pattern, [](std::string_view text, const char* p) { return text.find(p); });
    });
#if defined(__GLIBC__)
    benchmark::RegisterBenchmark((group + "/memmem").c_str(), [pattern](benchmark::State& state) {
      const std::size_t length = std::strlen(pattern);
      runSearch(state, pattern, [length](std::string_view text, const char* p) {
        return offsetOf(text, memmem(text.data(), text.size(), p, length));
      });
    });
#endif
  }

  // Ignoring case: TavClStringSearch beside strcasestr, the C library's case-folding search.
  for (const char* pattern : {"interest", "the reasonable station of stones"}) {
    const std::string group = "BM_SearchNoCase/" + std::to_string(std::strlen(pattern));
    benchmark::RegisterBenchmark((group + "/tav").c_str(), [pattern](benchmark::State& state) {
      const TavClStringSearch searcher(pattern, true);
      runSearch(state, pattern, [&searcher](std::string_view text, const char*) {
        return offsetOf(text, searcher.getPattern(text.data(), static_cast<unsigned>(text.size())));
      });
    });
#if defined(__GLIBC__)
    benchmark::RegisterBenchmark(
        (group + "/strcasestr").c_str(), [pattern](benchmark::State& state) {
          runSearch(state, pattern, [](std::string_view text, const char* p) {
            return offsetOf(text, strcasestr(text.data(), p));
          });
        });
#endif
  }
  return true;
}();

}  // namespace
