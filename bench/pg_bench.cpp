// The store on a PostgreSQL server, on a Unix socket: a point read and a
// value write through the registry service beside bare libpq doing the
// same (a prepared point read of the same row; a prepared single-row
// update, committed), and a fleet of 1,000 hosts x 1,000 values: one
// host's full export and one value across all hosts. Runs when the
// driver starts with KORVO_REGISTRY naming a server (see README.md);
// skipped otherwise.
#include <benchmark/benchmark.h>
#include <libpq-fe.h>
#include <unistd.h>

#include <cctype>
#include <cstdlib>
#include <string>

#include "bench/bench_store.h"
#include "siblings/rsv/rsv.h"

namespace {

const char *const key = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Global";
const char *const fleet = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Fleet";
constexpr int fleet_hosts = 1000, fleet_keys = 100, values_per_key = 10;

// The server's URI, or null when this run's store is a file.
const char *server() {
  korutl_bench::bench_store();
  return korutl_bench::bench_server();
}

// This run's host, with the value the point benchmarks use.
bool filled() {
  static const bool ok =
      server() != nullptr && rsv_create_key(key, "bench", __LINE__) == RSV_OK &&
      rsv_set_value(key, "Install_Path", "/opt/vantrel/halcyra", "bench", __LINE__) == RSV_OK;
  return ok;
}

PGconn *connect_bare(benchmark::State &state) {
  PGconn *conn = PQconnectdb(server());
  if (PQstatus(conn) != CONNECTION_OK) state.SkipWithError(PQerrorMessage(conn));
  return conn;
}

void BM_PgRsvGetValue(benchmark::State &state) {
  if (!filled()) return state.SkipWithError("KORVO_REGISTRY names no server");
  korutl_bench::read_value_loop(state, key, "Install_Path");
}
BENCHMARK(BM_PgRsvGetValue);

void BM_LibpqPreparedPointRead(benchmark::State &state) {
  if (!filled()) return state.SkipWithError("KORVO_REGISTRY names no server");
  PGconn *conn = connect_bare(state);
  PQclear(PQprepare(conn, "read",
                    "SELECT v.data FROM korvo.keys k JOIN korvo.vals v ON v.key = k.id"
                    " WHERE k.path = $2::bytea AND k.host = $1::text AND v.folded = $3::bytea",
                    0, nullptr));
  const std::string host = std::getenv("KORVO_HOST"),
                    path = "hkey_local_machine\\software\\vantrel\\halcyra\\global";
  const char *values[] = {host.c_str(), path.c_str(), "install_path"};
  const int lengths[] = {static_cast<int>(host.size()), static_cast<int>(path.size()), 12};
  const int formats[] = {1, 1, 1};
  for (auto _ : state) {
    PGresult *r = PQexecPrepared(conn, "read", 3, values, lengths, formats, 1);
    if (PQntuples(r) != 1) state.SkipWithError("unexpected rows");
    benchmark::DoNotOptimize(PQgetvalue(r, 0, 0));
    PQclear(r);
  }
  PQfinish(conn);
}
BENCHMARK(BM_LibpqPreparedPointRead);

void BM_PgRsvSetValue(benchmark::State &state) {
  if (!filled()) return state.SkipWithError("KORVO_REGISTRY names no server");
  for (auto _ : state)
    if (rsv_set_value(key, "Install_Path", "/opt/vantrel/halcyra", "bench", __LINE__) != RSV_OK)
      state.SkipWithError("write failed");
}
BENCHMARK(BM_PgRsvSetValue)->UseRealTime();

void BM_LibpqUpdateCommit(benchmark::State &state) {
  if (!filled()) return state.SkipWithError("KORVO_REGISTRY names no server");
  PGconn *conn = connect_bare(state);
  PQclear(PQprepare(conn, "update",
                    "UPDATE korvo.vals SET data = $2::bytea WHERE id ="
                    " (SELECT v.id FROM korvo.vals v JOIN korvo.keys k ON v.key = k.id"
                    " WHERE k.host = $1::text AND v.folded = 'install_path' LIMIT 1)",
                    0, nullptr));
  const std::string host = std::getenv("KORVO_HOST");
  const char data[] = "/opt/vantrel/halcyra";
  const char *values[] = {host.c_str(), data};
  const int lengths[] = {static_cast<int>(host.size()), sizeof data};
  const int formats[] = {1, 1};
  for (auto _ : state) {
    PGresult *r = PQexecPrepared(conn, "update", 2, values, lengths, formats, 1);
    if (PQresultStatus(r) != PGRES_COMMAND_OK) state.SkipWithError(PQresultErrorMessage(r));
    PQclear(r);
  }
  PQfinish(conn);
}
BENCHMARK(BM_LibpqUpdateCommit)->UseRealTime();

// 1,000 hosts, each with 100 keys of 10 values below `fleet`, made once
// by the server itself (hosts fleet-1 ... fleet-1000).
bool fleet_filled(benchmark::State &state) {
  static const bool ok = [&] {
    if (!filled()) return false;
    PGconn *conn = connect_bare(state);
    PGresult *r = PQexec(conn, "SELECT FROM korvo.keys WHERE host = 'fleet-1' LIMIT 1");
    const bool present = PQntuples(r) == 1;
    PQclear(r);
    std::string sql = "BEGIN;";
    std::string parent;
    for (const char *level : {"HKEY_LOCAL_MACHINE", "SOFTWARE", "Vantrel", "Halcyra", "Fleet"}) {
      std::string lower = level;
      for (char &c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      const std::string path = parent.empty() ? lower : parent + "\\" + lower;
      sql +=
          "INSERT INTO korvo.keys(host, path, parent, name, folded) SELECT 'fleet-' || h, "
          "convert_to('" +
          path + "', 'UTF8'), " +
          (parent.empty() ? std::string("NULL")
                          : "(SELECT id FROM korvo.keys p WHERE p.host = 'fleet-' || h AND "
                            "p.path = convert_to('" +
                                parent + "', 'UTF8'))") +
          ", convert_to('" + level + "', 'UTF8'), convert_to('" + lower +
          "', 'UTF8') FROM generate_series(1, 1000) h;";
      parent = path;
    }
    sql +=
        "INSERT INTO korvo.keys(host, path, parent, name, folded) SELECT p.host, p.path || "
        "convert_to('\\k' || i, 'UTF8'), p.id, convert_to('K' || i, 'UTF8'), convert_to('k' "
        "|| i, 'UTF8') FROM korvo.keys p, generate_series(0, 99) i WHERE p.host LIKE 'fleet-%' "
        "AND p.path = convert_to('" +
        parent +
        "', 'UTF8');"
        "INSERT INTO korvo.vals(host, key, name, folded, type, data) SELECT k.host, k.id, "
        "convert_to('V' || i, 'UTF8'), convert_to('v' || i, 'UTF8'), 1, convert_to('value ' "
        "|| i, 'UTF8') || '\\x00'::bytea FROM korvo.keys k JOIN korvo.keys p ON k.parent = "
        "p.id, generate_series(0, 9) i WHERE p.host LIKE 'fleet-%' AND p.path = convert_to('" +
        parent + "', 'UTF8');COMMIT;ANALYZE korvo.keys;ANALYZE korvo.vals;";
    if (!present) {
      r = PQexec(conn, sql.c_str());
      if (PQresultStatus(r) != PGRES_COMMAND_OK) state.SkipWithError(PQresultErrorMessage(r));
      PQclear(r);
    }
    PQfinish(conn);
    return true;
  }();
  return ok;
}

void BM_PgFleetExportOneHost(benchmark::State &state) {
  if (!fleet_filled(state)) return state.SkipWithError("KORVO_REGISTRY names no server");
  const std::string out = "/tmp/korutl-bench-" + std::to_string(getpid()) + ".reg";
  rsv_set_host("fleet-500", "bench", __LINE__);
  for (auto _ : state)
    if (rsv_export_file(fleet, out.c_str(), "bench", __LINE__) != RSV_OK)
      state.SkipWithError("export failed");
  rsv_set_host(nullptr, "bench", __LINE__);
  unlink(out.c_str());
  state.counters["values"] = fleet_keys * values_per_key;
}
BENCHMARK(BM_PgFleetExportOneHost)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_PgFleetOneValueAllHosts(benchmark::State &state) {
  if (!fleet_filled(state)) return state.SkipWithError("KORVO_REGISTRY names no server");
  const std::string k7 = std::string(fleet) + "\\K7";
  for (auto _ : state) {
    int hosts = 0;
    rsv_get_value_all_hosts(
        k7.c_str(), "V3",
        [](const char *, uint32_t, const void *, uint32_t, void *c) -> int32_t {
          ++*static_cast<int *>(c);
          return 0;
        },
        &hosts, "bench", __LINE__);
    if (hosts != fleet_hosts) state.SkipWithError("not every host answered");
  }
}
BENCHMARK(BM_PgFleetOneValueAllHosts)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
