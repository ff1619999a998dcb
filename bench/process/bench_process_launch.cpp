// bench_process_launch.cpp - a synchronous launch of a program that ends at once, with the
// calling process holding 10 MiB and 2 GiB of touched memory, beside fork + exec and
// posix_spawn in the same run. The library's launch should cost the same at both sizes; fork
// copies the page tables of everything the parent holds, so its cost grows with it.

#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>

#include "tav_exefile.h"
#include "tav_newprocess.h"

extern char** environ;

namespace {

const char* const kProgram = "/bin/true";

// The memory the process holds while a benchmark runs: one mapping, every page touched once
// (one byte a page is enough to give it a page-table entry and a frame).
class HeldMemory {
 public:
  void hold(size_t mebibytes) {
    const size_t bytes = mebibytes << 20;
    if (bytes == size) return;
    if (block != nullptr) munmap(block, size);
    block = nullptr;
    size = 0;
    void* mapped = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) return;
    block = static_cast<char*>(mapped);
    size = bytes;
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    for (size_t at = 0; at < size; at += page) block[at] = 1;
  }
  bool holds(size_t mebibytes) const { return size == (mebibytes << 20); }

 private:
  char* block = nullptr;
  size_t size = 0;
};

HeldMemory held;

bool prepare(benchmark::State& state) {
  const size_t mebibytes = static_cast<size_t>(state.range(0));
  held.hold(mebibytes);
  if (!held.holds(mebibytes)) {
    state.SkipWithError("could not map the memory to hold");
    return false;
  }
  state.counters["held_MiB"] = static_cast<double>(mebibytes);
  return true;
}

void BM_Launch_tav(benchmark::State& state) {
  if (!prepare(state)) return;
  const TavClExeFile program(kProgram);
  for (auto _ : state) {
    TavClNewSyncProcess process(program);
    if (!process.launch() || process.getResult() != 0) state.SkipWithError("launch failed");
  }
}

void BM_Launch_fork_exec(benchmark::State& state) {
  if (!prepare(state)) return;
  char* const arguments[] = {const_cast<char*>(kProgram), nullptr};
  for (auto _ : state) {
    const pid_t child = fork();
    if (child == 0) {
      execv(kProgram, arguments);
      _exit(127);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
      state.SkipWithError("fork + exec failed");
    }
  }
}

void BM_Launch_posix_spawn(benchmark::State& state) {
  if (!prepare(state)) return;
  char* const arguments[] = {const_cast<char*>(kProgram), nullptr};
  for (auto _ : state) {
    pid_t child = 0;
    int status = 0;
    if (posix_spawn(&child, kProgram, nullptr, nullptr, arguments, environ) != 0 ||
        waitpid(child, &status, 0) != child || status != 0) {
      state.SkipWithError("posix_spawn failed");
    }
  }
}

// Size by size, so that the memory is mapped and touched only once per size.
void registerAll() {
  for (int64_t mebibytes : {10, 2048}) {
    benchmark::RegisterBenchmark("BM_Launch/tav", BM_Launch_tav)->Arg(mebibytes);
    benchmark::RegisterBenchmark("BM_Launch/fork_exec", BM_Launch_fork_exec)->Arg(mebibytes);
    benchmark::RegisterBenchmark("BM_Launch/posix_spawn", BM_Launch_posix_spawn)->Arg(mebibytes);
  }
}

const bool registered = (registerAll(), true);

}  // namespace
