// Walking a directory of 10,000 entries and counting the files: TavClDirectoryWalk beside
// std::filesystem::directory_iterator. Both take the entry type from the directory listing
// itself, so neither makes a status call per entry; both are registered back to back as
// "BM_CountFiles/tav" and "BM_CountFiles/std_filesystem".
//
// The directory (9,000 files and 1,000 sub-directories) is made once under the temporary
// directory and removed at exit; before timing, both counts are checked to agree.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "tav_file.h"

namespace {

constexpr int kFiles = 9000;
constexpr int kDirectories = 1000;

class Population {
 public:
  Population() {
    root = std::filesystem::temp_directory_path() / "tav-bench-walk";
    std::filesystem::remove_all(root);
    std::filesystem::create_directories(root);
    for (int i = 0; i < kFiles; ++i) std::ofstream(root / ("file" + std::to_string(i) + ".dat"));
    for (int i = 0; i < kDirectories; ++i) {
      std::filesystem::create_directory(root / ("dir" + std::to_string(i)));
    }
    text = root.string();
    text += static_cast<char>(std::filesystem::path::preferred_separator);
  }
  ~Population() {
    std::error_code ignored;
    std::filesystem::remove_all(root, ignored);
  }

  std::filesystem::path root;
  std::string text;
};

const Population& population() {
  static const Population made;
  return made;
}

long countWithTav(const TavClLocation& location) {
  long files = 0;
  for (TavClDirectoryWalk walk(location); walk.isValid(); walk.setToNext()) {
    if (!walk.isDirectory()) ++files;
  }
  return files;
}

long countWithFilesystem(const std::filesystem::path& root) {
  long files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(root)) {
    if (!entry.is_directory()) ++files;
  }
  return files;
}

void BM_CountFilesTav(benchmark::State& state) {
  const TavClLocation location(population().text.c_str());
  for (auto _ : state) benchmark::DoNotOptimize(countWithTav(location));
  state.SetItemsProcessed(state.iterations() * (kFiles + kDirectories));
}

void BM_CountFilesFilesystem(benchmark::State& state) {
  const std::filesystem::path& root = population().root;
  for (auto _ : state) benchmark::DoNotOptimize(countWithFilesystem(root));
  state.SetItemsProcessed(state.iterations() * (kFiles + kDirectories));
}

void BM_Disagree(benchmark::State& state) {
  for (auto _ : state) {
  }
  state.SkipWithError("TAV and std::filesystem count a different number of files");
}

[[maybe_unused]] const bool kRegistered = [] {
  const long tav = countWithTav(TavClLocation(population().text.c_str()));
  const long peer = countWithFilesystem(population().root);
  if (tav != kFiles || peer != kFiles) {
    benchmark::RegisterBenchmark("BM_CountFiles/disagree", BM_Disagree);
    return true;
  }
  benchmark::RegisterBenchmark("BM_CountFiles/tav", BM_CountFilesTav)
      ->Unit(benchmark::kMicrosecond);
  benchmark::RegisterBenchmark("BM_CountFiles/std_filesystem", BM_CountFilesFilesystem)
      ->Unit(benchmark::kMicrosecond);
  return true;
}();

}  // namespace
