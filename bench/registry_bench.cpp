// Point reads of one existing value: through the registry service, through
// the direct settings (the Win32 registry layer), and as a bare prepared
// SQLite read of the same row, the floor both are measured against.
#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "korutl.h"
#include "siblings/rsv/rsv.h"

namespace {

const char *const key = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Global";

// One store file for the whole run, filled once.
const std::string &bench_store() {
  static const std::string file = [] {
    const std::string f = "/tmp/korutl-bench-" + std::to_string(getpid()) + ".db";
    setenv("KORVO_REGISTRY", f.c_str(), 1);
    rsv_create_key(key, "bench", __LINE__);
    rsv_set_value(key, "Install_Path", "/opt/vantrel/halcyra", "bench", __LINE__);
    std::atexit([] {
      const std::string base = std::getenv("KORVO_REGISTRY");
      for (const char *suffix : {"", "-wal", "-shm"}) unlink((base + suffix).c_str());
    });
    return f;
  }();
  return file;
}

void BM_RsvGetValue(benchmark::State &state) {
  bench_store();
  char buf[256];
  for (auto _ : state) {
    uint16_t len = sizeof buf;
    if (rsv_get_value(key, "Install_Path", buf, &len, "bench", __LINE__) != RSV_OK)
      state.SkipWithError("read failed");
    benchmark::DoNotOptimize(buf);
  }
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
  sqlite3 *db = nullptr;
  sqlite3_open_v2(bench_store().c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
  sqlite3_stmt *s = nullptr;
  sqlite3_prepare_v2(db,
                     "SELECT v.data FROM keys k JOIN vals v ON v.key = k.id "
                     "WHERE k.path = ?1 AND v.name = ?2",
                     -1, &s, nullptr);
  for (auto _ : state) {
    sqlite3_bind_text(s, 1, key, -1, SQLITE_STATIC);
    sqlite3_bind_text(s, 2, "Install_Path", -1, SQLITE_STATIC);
    if (sqlite3_step(s) != SQLITE_ROW) state.SkipWithError("read failed");
    benchmark::DoNotOptimize(sqlite3_column_blob(s, 0));
    sqlite3_reset(s);
  }
  sqlite3_finalize(s);
  sqlite3_close(db);
}
BENCHMARK(BM_SqlitePreparedPointRead);

}  // namespace
