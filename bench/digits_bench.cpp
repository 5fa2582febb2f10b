// Digit values over a text of mixed characters, the inner loop of key-text
// and escape readers.
#include <benchmark/benchmark.h>

#include <string>

#include "korutl.h"

namespace {

void BM_Hex2IntText(benchmark::State &state) {
  const std::string text = "0123456789abcdefABCDEF:g~ \x7f\xe9";
  for (auto _ : state) {
    int32_t sum = 0;
    for (const char c : text) sum += KORVOHex2Int(c) + KORVOChar2Int(c);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_Hex2IntText);

}  // namespace
