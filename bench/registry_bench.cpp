// Point reads of one existing value: through the registry service, through
// the direct settings (the Win32 registry layer), and as a bare prepared
// SQLite read of the same row, the floor both are measured against. Then
// the store's change counter beside SQLite's own change check,
// PRAGMA data_version, on a connection of its own.
#include <benchmark/benchmark.h>

#include "bench/bench_store.h"
#include "korutl.h"
#include "siblings/rsv/rsv.h"

namespace {

const char *const key = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Global";

// The run's store, with the one value read here (filled once).
void bench_store() {
  [[maybe_unused]] static const bool filled = [] {
    korutl_bench::bench_store();
    rsv_create_key(key, "bench", __LINE__);
    rsv_set_value(key, "Install_Path", "/opt/vantrel/halcyra", "bench", __LINE__);
    return true;
  }();
}

void BM_RsvGetValue(benchmark::State &state) {
  bench_store();
  korutl_bench::read_value_loop(state, key, "Install_Path");
}
BENCHMARK(BM_RsvGetValue);

void BM_KORVOGetSetting(benchmark::State &state) {
  bench_store();
  char out[1024];
  for (auto _ : state) {
    KORVOGetSetting("Halcyra", "Global", "Install_Path", "", out);
    benchmark::DoNotOptimize(out);
  }
}
BENCHMARK(BM_KORVOGetSetting);

void BM_SqlitePreparedPointRead(benchmark::State &state) {
  bench_store();
  korutl_bench::sqlite_prepared_read(state, korutl_bench::point_read_sql, key, "Install_Path", 1);
}
BENCHMARK(BM_SqlitePreparedPointRead);

void BM_RsvChangeCounter(benchmark::State &state) {
  bench_store();
  for (auto _ : state) {
    uint64_t counter = 0;
    if (rsv_change_counter(&counter, "bench", __LINE__) != RSV_OK)
      state.SkipWithError("no change counter");
    benchmark::DoNotOptimize(counter);
  }
}
BENCHMARK(BM_RsvChangeCounter);

void BM_SqlitePragmaDataVersion(benchmark::State &state) {
  bench_store();
  korutl_bench::sqlite_prepared_read(state, "PRAGMA data_version", nullptr, nullptr, 1);
}
BENCHMARK(BM_SqlitePragmaDataVersion);

}  // namespace
