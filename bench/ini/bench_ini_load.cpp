// Configuration file loading: about 8 MiB of configuration text (200,000 options in 2,000
// sections) parsed from memory into the full model, in bytes per second, beside the packaged
// peer parser reading the same bytes with a handler that only counts the options.
//
// The model is loaded twice over: with duplicate headers appended as new sections (what loading
// a file does) and with them merged into the first section of that name (each header then looks
// up the sections seen so far). Destroying the model is not timed. The model's rows also report
// its peak memory, counted by an allocator installed in the library's memory manager before
// anything is allocated. Each row reports the options it found; they must all agree.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <string>

#include "bench_ini_memory.h"
#include "bench_ini_text.h"
#include "tav_filename.h"
#include "tav_ini.h"

#if __has_include(<ini.h>) && defined(TAV_BENCH_HAVE_INIH)
#include <ini.h>
#define TAV_BENCH_INI_PEER 1
#endif

namespace {

using tav::bench::countedBytes;
using tav::bench::kIniOptions;

const std::string& iniText() {
  static const std::string text = tav::bench::makeIniText();
  return text;
}

// Options with a name, in every section, through the cursors.
std::int64_t countOptions(const TavClIniFile& file) {
  std::int64_t options = 0;
  for (TavClIniFileSectionCursor section(file); section.isValid(); section.setToNext())
    for (TavClIniFileOptionCursor option(section); option.isValid(); option.setToNext())
      if (option.getOption()[0] != '\0') ++options;
  return options;
}

void report(benchmark::State& state, std::int64_t options) {
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(iniText().size()));
  state.counters["options"] = static_cast<double>(options);
  if (options != kIniOptions) state.SkipWithError("not every option was found");
}

void BM_IniLoadModel(benchmark::State& state, bool appendDuplicateSections) {
  const std::string& text = iniText();
  const TavClFilename name("bench.ini");
  std::int64_t options = 0;
  std::size_t peakBytes = 0;
  for (auto _ : state) {
    const std::size_t before = countedBytes().current;
    countedBytes().peak = before;
    auto file = std::make_unique<TavClIniFile>(name);
    file->loadFromBuffer(text.data(), text.size(), '\n', appendDuplicateSections, false);
    state.PauseTiming();
    peakBytes = countedBytes().peak - before;
    options = countOptions(*file);
    file.reset();
    state.ResumeTiming();
  }
  report(state, options);
  state.counters["peak_MiB"] = static_cast<double>(peakBytes) / (1024.0 * 1024.0);
  state.counters["peak_bytes_per_option"] = static_cast<double>(peakBytes) / kIniOptions;
}

#ifdef TAV_BENCH_INI_PEER
int countOption(void* user, const char*, const char*, const char*) {
  ++*static_cast<std::int64_t*>(user);
  return 1;
}

void BM_IniLoadPeer(benchmark::State& state) {
  const std::string& text = iniText();
  std::int64_t options = 0;
  for (auto _ : state) {
    options = 0;
    if (ini_parse_string(text.c_str(), countOption, &options) != 0)
      state.SkipWithError("the peer reported a parse error");
    benchmark::DoNotOptimize(options);
  }
  report(state, options);
}
#endif

}  // namespace

int main(int argc, char** argv) {
  // Before the library allocates anything, so that every block is counted and released by the
  // allocator that handed it out.
  tav::bench::installCountingAllocator();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  benchmark::RegisterBenchmark("BM_IniLoad/tav_append_sections", BM_IniLoadModel, true)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark("BM_IniLoad/tav_merge_sections", BM_IniLoadModel, false)
      ->Unit(benchmark::kMillisecond);
#ifdef TAV_BENCH_INI_PEER
  benchmark::RegisterBenchmark("BM_IniLoad/inih", BM_IniLoadPeer)->Unit(benchmark::kMillisecond);
#endif
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
