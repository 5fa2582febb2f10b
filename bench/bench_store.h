// The one store file of a benchmark run, shared by every bench file (the
// store follows KORVO_REGISTRY, so two files would make each other's
// reads switch stores), and the bare SQLite reads that are the floor of
// the store's own operations.
#ifndef KORUTL_BENCH_BENCH_STORE_H
#define KORUTL_BENCH_BENCH_STORE_H

#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "siblings/rsv/rsv.h"

namespace korutl_bench {

// The store file, named by KORVO_REGISTRY from the first call on and
// removed at exit. Each bench file fills its own keys.
// A driver started with KORVO_REGISTRY naming a PostgreSQL server keeps
// it, on a host of its own (bench-PID); bench_server() then gives the
// URI, and the SQLite floors skip.
inline const char *bench_server() {
  const char *r = std::getenv("KORVO_REGISTRY");
  const std::string s = r != nullptr ? r : "";
  return s.rfind("postgresql://", 0) == 0 || s.rfind("postgres://", 0) == 0 ? r : nullptr;
}

inline const std::string &bench_store() {
  static const std::string file = [] {
    if (const char *uri = bench_server()) {
      setenv("KORVO_HOST", ("bench-" + std::to_string(getpid())).c_str(), 1);
      return std::string(uri);
    }
    const std::string f = "/tmp/korutl-bench-" + std::to_string(getpid()) + ".db";
    setenv("KORVO_REGISTRY", f.c_str(), 1);
    std::atexit([] {
      const std::string base = std::getenv("KORVO_REGISTRY");
      for (const char *suffix : {"", "-wal", "-shm"}) unlink((base + suffix).c_str());
    });
    return f;
  }();
  return file;
}

// Runs `sql` with ?1 = a and ?2 = b (b may be null) over and over as one
// prepared statement on its own read-only connection, stepping through
// every row; `rows` rows are expected each time.
inline void sqlite_prepared_read(benchmark::State &state, const char *sql, const char *a,
                                 const char *b, int rows) {
  if (bench_server() != nullptr) return state.SkipWithError("the store is a server");
  sqlite3 *db = nullptr;
  sqlite3_open_v2(bench_store().c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
  sqlite3_stmt *s = nullptr;
  sqlite3_prepare_v2(db, sql, -1, &s, nullptr);
  for (auto _ : state) {
    sqlite3_bind_text(s, 1, a, -1, SQLITE_STATIC);
    if (b != nullptr) sqlite3_bind_text(s, 2, b, -1, SQLITE_STATIC);
    int n = 0;
    while (sqlite3_step(s) == SQLITE_ROW) {
      benchmark::DoNotOptimize(sqlite3_column_blob(s, 0));
      ++n;
    }
    if (n != rows) state.SkipWithError("unexpected rows");
    sqlite3_reset(s);
  }
  sqlite3_finalize(s);
  sqlite3_close(db);
}

// One value's data by key path and value name: the floor of a point read.
inline constexpr const char *point_read_sql =
    "SELECT v.data FROM keys k JOIN vals v ON v.key = k.id WHERE k.path = ?1 AND v.name = ?2";

// Reads one REG_SZ value through the registry service on every iteration:
// the point read measured on a store file and on a server alike.
inline void read_value_loop(benchmark::State &state, const char *key, const char *name) {
  char buf[256];
  for (auto _ : state) {
    uint16_t len = sizeof buf;
    if (rsv_get_value(key, name, buf, &len, "bench", __LINE__) != RSV_OK)
      state.SkipWithError("read failed");
    benchmark::DoNotOptimize(buf);
  }
}

}  // namespace korutl_bench

#endif
