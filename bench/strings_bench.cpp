// Wildcard matching beside glibc fnmatch, the pathological many-asterisk
// pattern, and the round trip of parsing and releasing an object identifier.
#include <benchmark/benchmark.h>
#include <fnmatch.h>

#include <string>

#include "korutl.h"

namespace {

struct MatchCase {
  const char *pattern, *text;
};
constexpr MatchCase kTypical[] = {
    {"*.log", "/var/log/halcyra/agent-controller.log"},
    {"*.log", "/var/log/halcyra/agent-controller.txt"},
    {"host-??.example.*", "host-17.example.org"},
    {"host-??.example.*", "host-170.example.org"},
};

void BM_Korutl_MatchTypical(benchmark::State &state) {
  for (auto _ : state) {
    for (const MatchCase &c : kTypical)
      benchmark::DoNotOptimize(KORVOStrMatchesPattern(c.text, c.pattern, 0));
  }
  state.SetItemsProcessed(state.iterations() * 4);
}
BENCHMARK(BM_Korutl_MatchTypical);

void BM_Fnmatch_MatchTypical(benchmark::State &state) {
  for (auto _ : state) {
    for (const MatchCase &c : kTypical) benchmark::DoNotOptimize(fnmatch(c.pattern, c.text, 0));
  }
  state.SetItemsProcessed(state.iterations() * 4);
}
BENCHMARK(BM_Fnmatch_MatchTypical);

void BM_Korutl_Match20Asterisks(benchmark::State &state) {
  const std::string text(200, 'a');
  const std::string pattern = std::string(20, '*') + "b";
  for (auto _ : state)
    benchmark::DoNotOptimize(KORVOStrMatchesPattern(text.c_str(), pattern.c_str(), 0));
}
BENCHMARK(BM_Korutl_Match20Asterisks);

void BM_Korutl_ObjectIdCreateDestroy(benchmark::State &state) {
  for (auto _ : state) {
    KORVOObjectId *id = KORVOStrCreateObjectId("\\localhost\\Halcyra\\2.2.1.3", nullptr);
    benchmark::DoNotOptimize(id);
    KORVOStrDestroyObjectId(id);
  }
}
BENCHMARK(BM_Korutl_ObjectIdCreateDestroy);

}  // namespace
