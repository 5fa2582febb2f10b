// The configuration tree: one value read with KORVOCfgGetValue, the first
// read of a thread (which opens its connection to the store), and the
// version list of a product with 20 to 4,000 versions, beside bare
// prepared SQLite reads of the same rows (the floor) in the same run.
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

#include "bench/bench_store.h"
#include "korutl.h"
#include "siblings/rsv/rsv.h"

namespace {

const std::string products_key = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Products";
const std::string versions_key = products_key + "\\Bench\\Versions";
const std::string value_key = versions_key + "\\2.10";

// The product with `n` versions, "Many<n>"; their names are scattered
// over the version order ("3.142.61", ...), so that the sort has work.
std::string many_product(int n) { return "Many" + std::to_string(n); }

std::string many_versions_key(int n) {
  return products_key + "\\" + many_product(n) + "\\Versions";
}

// Product "Bench" with versions 1.0 .. 2.19 (20 of them), the value
// Install_Dir on 2.10, and products Many<n> with n versions, imported in
// one transaction. Filled once.
void fill_store() {
  [[maybe_unused]] static const bool filled = [] {
    korutl_bench::bench_store();
    const std::string file = korutl_bench::bench_store() + ".reg";
    {
      std::ofstream reg(file);
      reg << "Windows Registry Editor Version 5.00\n\n";
      for (int major = 1; major <= 2; ++major)
        for (int minor = 0; minor < 10; ++minor)
          reg << "[" << versions_key << "\\" << major << "." << (major == 1 ? minor : minor + 10)
              << "]\n";
      reg << "[" << value_key << "]\n\"Install_Dir\"=\"/opt/vantrel/bench/2.10\"\n";
      for (const int n : {250, 1000, 4000})
        for (int i = 0; i < n; ++i)
          reg << "[" << many_versions_key(n) << "\\" << i % 7 << "." << i / 7 << "."
              << (i * 37) % 101 << "]\n";
    }
    const bool ok = rsv_import_file(file.c_str(), nullptr, "bench", __LINE__) == RSV_OK;
    unlink(file.c_str());
    return ok;
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

// The first read of a thread opens the thread's connection to the store
// and prepares the statement: each iteration starts a thread whose first
// call alone is timed, as a program's first call after loading the
// library is.
void BM_CfgFirstGetValue(benchmark::State &state) {
  fill_store();
  for (auto _ : state) {
    double seconds = 0;
    bool read = false;
    std::thread([&] {
      const auto start = std::chrono::steady_clock::now();
      char *text = KORVOCfgGetValue(value_key.c_str(), "Install_Dir");
      seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
      read = text != nullptr;
      std::free(text);
    }).join();
    if (!read) state.SkipWithError("read failed");
    state.SetIterationTime(seconds);
  }
}
BENCHMARK(BM_CfgFirstGetValue)->UseManualTime()->Unit(benchmark::kMicrosecond);

// Its floor: open a connection, prepare the point read, read, close.
void BM_CfgSqliteFirstPointRead(benchmark::State &state) {
  fill_store();
  for (auto _ : state) {
    sqlite3 *db = nullptr;
    sqlite3_open_v2(korutl_bench::bench_store().c_str(), &db, SQLITE_OPEN_READWRITE, nullptr);
    sqlite3_stmt *s = nullptr;
    sqlite3_prepare_v2(db, korutl_bench::point_read_sql, -1, &s, nullptr);
    sqlite3_bind_text(s, 1, value_key.c_str(), -1, SQLITE_STATIC);
    sqlite3_bind_text(s, 2, "Install_Dir", -1, SQLITE_STATIC);
    if (sqlite3_step(s) != SQLITE_ROW) state.SkipWithError("read failed");
    benchmark::DoNotOptimize(sqlite3_column_blob(s, 0));
    sqlite3_finalize(s);
    sqlite3_close(db);
  }
}
BENCHMARK(BM_CfgSqliteFirstPointRead)->Unit(benchmark::kMicrosecond);

void expect_versions(benchmark::State &state, const char *product, uint16_t expected) {
  for (auto _ : state) {
    uint16_t count = 0;
    char **list = KORVOCfgGetProductVersions(product, &count);
    if (count != expected) state.SkipWithError("listing failed");
    benchmark::DoNotOptimize(list);
    KORVOCfgFreeProductVersions(list);
  }
}

void BM_CfgGetProductVersions20(benchmark::State &state) {
  fill_store();
  expect_versions(state, "Bench", 20);
}
BENCHMARK(BM_CfgGetProductVersions20);

void BM_CfgGetProductVersions(benchmark::State &state) {
  fill_store();
  const int n = static_cast<int>(state.range(0));
  expect_versions(state, many_product(n).c_str(), static_cast<uint16_t>(n));
  state.SetComplexityN(n);
}
BENCHMARK(BM_CfgGetProductVersions)
    ->Arg(250)
    ->Arg(1000)
    ->Arg(4000)
    ->Unit(benchmark::kMicrosecond)
    ->Complexity(benchmark::oNLogN);

void BM_CfgSqlitePointRead(benchmark::State &state) {
  fill_store();
  korutl_bench::sqlite_prepared_read(state, korutl_bench::point_read_sql, value_key.c_str(),
                                     "Install_Dir", 1);
}
BENCHMARK(BM_CfgSqlitePointRead);

// The subkey names in name order, unsorted by version: what the listing
// reads from the store at the least.
constexpr const char *subkey_names_sql =
    "SELECT c.name FROM keys p JOIN keys c ON c.parent = p.id WHERE p.path = ?1 "
    "ORDER BY c.name COLLATE NOCASE";

void BM_CfgSqliteSubkeyNames20(benchmark::State &state) {
  fill_store();
  korutl_bench::sqlite_prepared_read(state, subkey_names_sql, versions_key.c_str(), nullptr, 20);
}
BENCHMARK(BM_CfgSqliteSubkeyNames20);

void BM_CfgSqliteSubkeyNames(benchmark::State &state) {
  fill_store();
  const int n = static_cast<int>(state.range(0));
  korutl_bench::sqlite_prepared_read(state, subkey_names_sql, many_versions_key(n).c_str(), nullptr,
                                     n);
}
BENCHMARK(BM_CfgSqliteSubkeyNames)->Arg(1000)->Unit(benchmark::kMicrosecond);

}  // namespace
