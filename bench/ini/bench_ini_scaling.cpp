// Configuration file loading at growing sizes, to show that the load stays linear where a plain
// list walk would not: N sections whose headers all come twice (the second time merged into the
// first section of that name), and N options in one section. Google Benchmark fits the times to
// O(N); a quadratic look-up would show as a time per element that grows with N.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>
#include <string>

#include "tav_filename.h"
#include "tav_ini.h"

namespace {

std::string repeatedSectionsText(int sections) {
  std::string text;
  char line[64];
  for (int pass = 0; pass < 2; ++pass)
    for (int section = 0; section < sections; ++section) {
      std::snprintf(line, sizeof line, "[section_%d]\nkey_%d = %d\n", section, pass, section);
      text += line;
    }
  return text;
}

std::string oneSectionText(int options) {
  std::string text = "[only]\n";
  char line[64];
  for (int option = 0; option < options; ++option) {
    std::snprintf(line, sizeof line, "key_%d = %d\n", option, option);
    text += line;
  }
  return text;
}

void loadText(benchmark::State& state, const std::string& text, bool appendDuplicateSections) {
  const TavClFilename name("bench.ini");
  for (auto _ : state) {
    auto file = std::make_unique<TavClIniFile>(name);
    file->loadFromBuffer(text.data(), text.size(), '\n', appendDuplicateSections, false);
    state.PauseTiming();
    file.reset();
    state.ResumeTiming();
  }
  state.SetComplexityN(state.range(0));
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_IniMergeSections(benchmark::State& state) {
  loadText(state, repeatedSectionsText(static_cast<int>(state.range(0))), false);
}

void BM_IniOptionsInOneSection(benchmark::State& state) {
  loadText(state, oneSectionText(static_cast<int>(state.range(0))), true);
}

BENCHMARK(BM_IniMergeSections)
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);
BENCHMARK(BM_IniOptionsInOneSection)
    ->RangeMultiplier(10)
    ->Range(1000, 100000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oN);

}  // namespace
