// Splitting a path into its parts: TavClFilename beside std::filesystem::path. Both take the
// text and produce the server (root name), the directory, the base name (stem) and the
// extension as texts of their own. Each pair is registered back to back as
// "<group>/tav" and "<group>/std_filesystem".
//
// The paths are in slash style, which std::filesystem understands on POSIX as TAV does on every
// platform; before timing, each pair checks that both produce the same parts.

#include <benchmark/benchmark.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "tav_filename.h"

namespace {

struct PathShape {
  const char* group;
  std::string text;
};

const PathShape kShapes[] = {
    {"Short", "notes.txt"},
    {"Typical", "/usr/lib/x86_64-linux-gnu/libtav.so.5"},
    {"ManyDots", "/srv/backup/2024.11.30/archive.tar.gz"},
    {"Deep",
     "/home/user/projects/library/src/fs/posix/generated/output/release/objects/"
     "tav_filename_parts.cpp.o"},
};

struct SplitParts {
  std::string server, directory, baseName, extension;
};

SplitParts splitWithTav(const std::string& text) {
  const TavClFilename name(text.c_str());
  char buffer[TAV_PATH_BUFFER_SIZE];
  SplitParts parts;
  name.extractServer(buffer);
  parts.server = buffer;
  name.extractPath(buffer, false);
  parts.directory = buffer;
  name.extractBaseName(buffer);
  parts.baseName = buffer;
  parts.extension = name.getExtension();
  return parts;
}

SplitParts splitWithFilesystem(const std::string& text) {
  const std::filesystem::path path(text);
  return {path.root_name().string(), path.parent_path().string(), path.stem().string(),
          path.extension().string()};
}

void BM_SplitTav(benchmark::State& state, const std::string& text) {
  char server[TAV_PATH_BUFFER_SIZE];
  char directory[TAV_PATH_BUFFER_SIZE];
  char baseName[TAV_PATH_BUFFER_SIZE];
  char extension[TAV_PATH_BUFFER_SIZE];
  for (auto _ : state) {
    const TavClFilename name(text.c_str());
    name.extractServer(server);
    name.extractPath(directory, false);
    name.extractBaseName(baseName);
    std::strcpy(extension, name.getExtension());
    benchmark::DoNotOptimize(server);
    benchmark::DoNotOptimize(directory);
    benchmark::DoNotOptimize(baseName);
    benchmark::DoNotOptimize(extension);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}

void BM_SplitFilesystem(benchmark::State& state, const std::string& text) {
  for (auto _ : state) {
    const std::filesystem::path path(text);
    std::filesystem::path server = path.root_name();
    std::filesystem::path directory = path.parent_path();
    std::filesystem::path baseName = path.stem();
    std::filesystem::path extension = path.extension();
    benchmark::DoNotOptimize(server);
    benchmark::DoNotOptimize(directory);
    benchmark::DoNotOptimize(baseName);
    benchmark::DoNotOptimize(extension);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}

void BM_Disagree(benchmark::State& state) {
  for (auto _ : state) {
  }
  state.SkipWithError("TAV and std::filesystem split this path differently");
}

[[maybe_unused]] const bool kRegistered = [] {
  for (const PathShape& shape : kShapes) {
    const std::string group = std::string("BM_SplitPath/") + shape.group;
    const SplitParts tav = splitWithTav(shape.text);
    const SplitParts peer = splitWithFilesystem(shape.text);
    if (tav.server != peer.server || tav.directory != peer.directory ||
        tav.baseName != peer.baseName || tav.extension != peer.extension) {
      benchmark::RegisterBenchmark((group + "/disagree").c_str(), BM_Disagree);
      continue;
    }
    benchmark::RegisterBenchmark((group + "/tav").c_str(), BM_SplitTav, shape.text);
    benchmark::RegisterBenchmark((group + "/std_filesystem").c_str(), BM_SplitFilesystem,
                                 shape.text);
  }
  return true;
}();

}  // namespace
