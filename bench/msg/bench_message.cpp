// A message with two variables built from the built-in table, beside snprintf producing the
// same text: "BM_Message/tav" constructs a TavClMessage of message 2 with two variables (the
// other eight placeholders read "???", 84 characters, so the text goes to the heap) and
// "BM_Message/snprintf" formats the same text into a stack buffer. Each checks first that the
// two texts agree.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>

#include "tav_message.h"

namespace {

const char kFirst[] = "alpha";
const char kSecond[] = "beta";
const char kFormat[] =
    "Percent:%% Arg1:%s Arg2:%s Arg3:??? Arg4:??? Arg5:??? Arg6:??? Arg7:??? Arg8:??? "
    "Arg9:??? Arg10:???";

const TavClMessageCatalog& builtInCatalog() {
  static TavClMessageCatalog* catalog = [] {
    auto* built = new TavClMessageCatalog(TavClFilename("no-catalog-module"));
    built->useStringTable(tavMsgCatGetBuiltInStringTable(), tavMsgCatGetBuiltInStringTableSize());
    return built;
  }();
  return *catalog;
}

bool textsAgree() {
  char expected[TAV_MSG_MAX_LENGTH + 1];
  std::snprintf(expected, sizeof expected, kFormat, kFirst, kSecond);
  return std::strcmp(TavClMessage(builtInCatalog(), 2, kFirst, kSecond).getText(), expected) == 0;
}

void BM_MessageTav(benchmark::State& state) {
  if (!textsAgree()) state.SkipWithError("the two texts differ");
  const TavClMessageCatalog& catalog = builtInCatalog();
  for (auto _ : state) {
    const TavClMessage message(catalog, 2, kFirst, kSecond);
    benchmark::DoNotOptimize(message.getText());
  }
}

void BM_MessageSnprintf(benchmark::State& state) {
  if (!textsAgree()) state.SkipWithError("the two texts differ");
  for (auto _ : state) {
    char text[TAV_MSG_MAX_LENGTH + 1];
    benchmark::DoNotOptimize(std::snprintf(text, sizeof text, kFormat, kFirst, kSecond));
    benchmark::DoNotOptimize(text);
  }
}

BENCHMARK(BM_MessageTav)->Name("BM_Message/tav");
BENCHMARK(BM_MessageSnprintf)->Name("BM_Message/snprintf");

}  // namespace
