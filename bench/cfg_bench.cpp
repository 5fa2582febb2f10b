// The configuration tree: one value read with KORVOCfgGetValue and the
// version list of a product with 20 versions, beside bare prepared SQLite
// reads of the same rows (the floor) in the same run.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>

#include "bench/bench_store.h"
#include "korutl.h"
#include "siblings/rsv/rsv.h"

namespace {

const std::string versions_key =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Products\\Bench\\Versions";
const std::string value_key = versions_key + "\\2.10";

// Product "Bench" with versions 1.0 .. 2.19 (20 of them), the value
// Install_Dir on 2.10. Filled once.
void fill_store() {
  [[maybe_unused]] static const bool filled = [] {
    korutl_bench::bench_store();
    for (int major = 1; major <= 2; ++major)
      for (int minor = 0; minor < 10; ++minor) {
        const std::string key = versions_key + "\\" + std::to_string(major) + "." +
                                std::to_string(major == 1 ? minor : minor + 10);
        rsv_create_key(key.c_str(), "bench", __LINE__);
      }
    rsv_set_value(value_key.c_str(), "Install_Dir", "/opt/vantrel/bench/2.10", "bench", __LINE__);
    return true;
  }();
}

void BM_CfgGetValue(benchmark::State &state) {
  fill_store();
  for (auto _ : state) {
    char *text = KORVOCfgGetValue(value_key.c_str(), "Install_Dir");
    if (text == nullptr) state.SkipWithError("read failed");
    benchmark::DoNotOptimize(text);
    std::free(text);
  }
}
BENCHMARK(BM_CfgGetValue);

void BM_CfgGetProductVersions20(benchmark::State &state) {
  fill_store();
  for (auto _ : state) {
    uint16_t count = 0;
    char **list = KORVOCfgGetProductVersions("Bench", &count);
    if (count != 20) state.SkipWithError("listing failed");
    benchmark::DoNotOptimize(list);
    KORVOCfgFreeProductVersions(list);
  }
}
BENCHMARK(BM_CfgGetProductVersions20);

void BM_CfgSqlitePointRead(benchmark::State &state) {
  fill_store();
  korutl_bench::sqlite_prepared_read(state, korutl_bench::point_read_sql, value_key.c_str(),
                                     "Install_Dir", 1);
}
BENCHMARK(BM_CfgSqlitePointRead);

// The 20 subkey names in name order, unsorted by version: what the listing
// reads from the store at the least.
void BM_CfgSqliteSubkeyNames20(benchmark::State &state) {
  fill_store();
  korutl_bench::sqlite_prepared_read(
      state,
      "SELECT c.name FROM keys p JOIN keys c ON c.parent = p.id WHERE p.path = ?1 "
      "ORDER BY c.name COLLATE NOCASE",
      versions_key.c_str(), nullptr, 20);
}
BENCHMARK(BM_CfgSqliteSubkeyNames20);

}  // namespace
