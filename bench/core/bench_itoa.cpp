// Integer to decimal text: each tav conversion beside std::to_chars over the same values.
// Pairs are registered back to back as "<group>/tav" and "<group>/to_chars".

#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "tav_utils.h"

namespace {

constexpr std::size_t kValueCount = 1024;

// Values whose decimal length is spread evenly from one digit to the longest the type has,
// about half of them negative for the signed types, plus the type's extremes and zero. A fixed
// seed gives every run, and both sides of a pair, the same values.
template <class T>
std::vector<T> MakeValues() {
  using Limits = std::numeric_limits<T>;
  constexpr int kMaxDigits = Limits::digits10 + 1;
  const std::uint64_t typeMax = static_cast<std::uint64_t>(Limits::max());

  std::mt19937_64 random(20100513);
  std::vector<T> values{Limits::min(), Limits::max(), T(0)};
  while (values.size() < kValueCount) {
    const int digits = 1 + static_cast<int>(random() % kMaxDigits);
    std::uint64_t low = 1;
    for (int i = 1; i < digits; ++i) low *= 10;
    // The largest value with this many digits; 10^20 - 1 does not fit, the type's max does.
    std::uint64_t high = digits >= 20 ? typeMax : low * 10 - 1;
    if (high > typeMax) high = typeMax;
    if (digits == 1) low = 0;
    const std::uint64_t magnitude = low + random() % (high - low + 1);

    T value = static_cast<T>(magnitude);
    if constexpr (std::is_signed_v<T>) {
      if (random() & 1) value = static_cast<T>(-value);
    }
    values.push_back(value);
  }
  return values;
}

template <class T, int (*Convert)(T, char*)>
void BM_Tav(benchmark::State& state) {
  const std::vector<T> values = MakeValues<T>();
  char buffer[TAV_INT64_TEXT_SIZE];
  // Once the buffer has escaped, the memory barrier in each DoNotOptimize below keeps the
  // compiler from dropping the digit stores.
  char* text = buffer;
  benchmark::DoNotOptimize(text);
  for (auto _ : state) {
    for (T value : values) {
      int length = Convert(value, text);
      benchmark::DoNotOptimize(length);
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(values.size()));
}

template <class T>
void BM_ToChars(benchmark::State& state) {
  const std::vector<T> values = MakeValues<T>();
  char buffer[TAV_INT64_TEXT_SIZE];
  char* text = buffer;
  benchmark::DoNotOptimize(text);
  for (auto _ : state) {
    for (T value : values) {
      // The terminator is written too, as the tav functions do.
      char* end = std::to_chars(text, text + sizeof(buffer) - 1, value).ptr;
      *end = '\0';
      int length = static_cast<int>(end - text);
      benchmark::DoNotOptimize(length);
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(values.size()));
}

[[maybe_unused]] const bool kRegistered = [] {
  benchmark::RegisterBenchmark("BM_Itoa_Int32/tav", BM_Tav<std::int32_t, tavItoa>);
  benchmark::RegisterBenchmark("BM_Itoa_Int32/to_chars", BM_ToChars<std::int32_t>);
  benchmark::RegisterBenchmark("BM_Itoa_UInt32/tav", BM_Tav<std::uint32_t, tavULtoa>);
  benchmark::RegisterBenchmark("BM_Itoa_UInt32/to_chars", BM_ToChars<std::uint32_t>);
  benchmark::RegisterBenchmark("BM_Itoa_Int64/tav", BM_Tav<std::int64_t, tavI64toa>);
  benchmark::RegisterBenchmark("BM_Itoa_Int64/to_chars", BM_ToChars<std::int64_t>);
  benchmark::RegisterBenchmark("BM_Itoa_UInt64/tav", BM_Tav<std::uint64_t, tavW64toa>);
  benchmark::RegisterBenchmark("BM_Itoa_UInt64/to_chars", BM_ToChars<std::uint64_t>);
  return true;
}();

}  // namespace
