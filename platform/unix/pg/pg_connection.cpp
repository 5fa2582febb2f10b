#include "platform/unix/pg/pg_connection.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <unordered_map>
#include <utility>

#include "platform/store_hosts.h"
#include "platform/unix/pg/pg_schema.h"
#include "platform/unix/store_backend.h"
#include "platform/unix/store_file.h"

namespace korutl::store::pg {

namespace {

// Bumped in the child after every fork: a connection inherited from the
// parent shares the parent's socket and must never be used or closed
// with a goodbye to the server.
std::atomic<unsigned> fork_generation{0};
[[maybe_unused]] const int fork_watch =
    pthread_atfork(nullptr, nullptr, [] { fork_generation.fetch_add(1); });

struct Connection {
  unsigned generation = 0;
  std::string source;  // the KORVO_REGISTRY text it was opened for
  std::string server;  // the server as messages name it: never the password
  PGconn *conn = nullptr;
  std::unordered_map<const char *, std::string> statements;  // sql -> prepared name
  unsigned prepared = 0;  // statements prepared on this connection, for their names
  bool schema_ready = false;
  std::string role_host;  // the one host the role may use, "" for any
  unsigned snapshot_depth = 0;
  bool in_snapshot = false;

  void close() {
    if (conn != nullptr && generation != fork_generation.load()) {
      // The parent's socket: PQfinish's goodbye would end the parent's
      // session, so the socket is pointed at /dev/null before it.
      const int null_fd = open("/dev/null", O_RDWR | O_CLOEXEC);
      if (null_fd >= 0) {
        dup2(null_fd, PQsocket(conn));
        ::close(null_fd);
      }
    }
    if (conn != nullptr) PQfinish(conn);
    conn = nullptr;
    statements.clear();
    prepared = 0;
    schema_ready = false;
    role_host.clear();
    in_snapshot = false;
  }
  ~Connection() { close(); }
};

thread_local Connection this_thread;
thread_local std::string error_text;
thread_local bool conflict = false;

using Clock = std::chrono::steady_clock;
thread_local Clock::time_point deadline;

Status fail_with(Status why, std::string reason) {
  error_text = std::move(reason);
  return why;
}

// The server as a message may name it: host (or socket folder), port,
// database and user from the URI, never its password.
bool describe_server(const std::string &uri, std::string &server, std::string &why) {
  char *error = nullptr;
  PQconninfoOption *options = PQconninfoParse(uri.c_str(), &error);
  if (options == nullptr) {
    why = "KORVO_REGISTRY is not a connection URI libpq accepts: " +
          std::string(error != nullptr ? error : "out of memory");
    PQfreemem(error);
    return false;
  }
  std::string host = "the default socket", port, db, user;
  for (PQconninfoOption *o = options; o->keyword != nullptr; ++o) {
    if (o->val == nullptr || *o->val == '\0') continue;
    const std::string_view k = o->keyword;
    if (k == "host" || (k == "hostaddr" && host == "the default socket"))
      host = o->val;
    else if (k == "port")
      port = o->val;
    else if (k == "dbname")
      db = o->val;
    else if (k == "user")
      user = o->val;
  }
  PQconninfoFree(options);
  server = "PostgreSQL server " + host + (port.empty() ? "" : ":" + port) +
           (db.empty() ? "" : " database " + db) + (user.empty() ? "" : " user " + user);
  return true;
}

void ignore_notice(void *, const char *) {}

// libpq's messages end with a newline; trace lines add their own.
std::string trimmed(const char *message) {
  std::string m = message != nullptr ? message : "";
  while (!m.empty() && (m.back() == '\n' || m.back() == ' ')) m.pop_back();
  return m;
}

// The seconds a connection attempt may take: KORVO_REGISTRY_CONNECT_TIMEOUT
// when it is a whole number from 1 to 3600, else 5. A connect_timeout in
// the URI itself wins.
std::string connect_timeout() {
  const char *env = std::getenv("KORVO_REGISTRY_CONNECT_TIMEOUT");
  if (env != nullptr && *env != '\0') {
    char *end = nullptr;
    const long s = std::strtol(env, &end, 10);
    if (*end == '\0' && s >= 1 && s <= 3600) return std::to_string(s);
  }
  return "5";
}

// A text result's first cell, "" when there is none.
std::string first_cell(PGconn *conn, const char *sql, bool &ok) {
  Result r(PQexec(conn, sql));
  ok = r != nullptr && PQresultStatus(r.get()) == PGRES_TUPLES_OK;
  if (!ok) failure(conn, r.get());
  return ok && PQntuples(r.get()) > 0 && !PQgetisnull(r.get(), 0, 0) ? PQgetvalue(r.get(), 0, 0)
                                                                     : "";
}

// Reads whether the store's tables exist, checks their version and
// learns the one host this role may use.
Status read_schema(Connection &c) {
  bool ok;
  const std::string exists = first_cell(c.conn, "SELECT to_regclass('korvo.meta') IS NOT NULL", ok);
  if (!ok) return Status::store_error;
  if (exists != "t") return Status::ok;
  const std::string version = first_cell(c.conn, "SELECT max(version) FROM korvo.meta", ok);
  if (!ok) return Status::store_error;
  if (std::atoi(version.c_str()) != schema_version)
    return fail_with(Status::store_error, c.server + " holds a store of schema version " + version +
                                              "; this library reads version " +
                                              std::to_string(schema_version));
  c.role_host =
      first_cell(c.conn, "SELECT host FROM korvo.host_roles WHERE role = current_user", ok);
  if (!ok) return Status::store_error;
  c.schema_ready = true;
  return Status::ok;
}

Status open_server(Connection &c, const std::string &uri) {
  std::string server, why;
  if (!load_libpq(why) || !describe_server(uri, server, why))
    return fail_with(Status::store_error, why);
  const std::string timeout = connect_timeout();
  // Later keywords win: the URI's own settings over these defaults.
  const char *keys[] = {"connect_timeout", "application_name", "dbname", nullptr};
  const char *values[] = {timeout.c_str(), "korutl", uri.c_str(), nullptr};
  c.conn = PQconnectdbParams(keys, values, 1);
  c.server = server;
  c.source = uri;
  c.generation = fork_generation.load();
  if (c.conn == nullptr) return fail_with(Status::store_error, "out of memory");
  // The server's notices (a session ended by a shutdown, say) are not the
  // caller's output: failures reach it as statuses and trace lines.
  PQsetNoticeProcessor(c.conn, ignore_notice, nullptr);
  if (PQstatus(c.conn) != CONNECTION_OK) {
    const std::string reason = trimmed(PQerrorMessage(c.conn));
    c.close();
    return fail_with(Status::store_error, "cannot reach " + server + ": " + reason);
  }
  const std::string lock_wait =
      "SET lock_timeout = " + std::to_string(std::max(1L, busy_timeout_ms()));
  Result r(PQexec(c.conn, lock_wait.c_str()));
  if (r == nullptr || PQresultStatus(r.get()) != PGRES_COMMAND_OK) {
    const Status st = failure(c.conn, r.get());
    c.close();
    return st;
  }
  const Status st = read_schema(c);
  if (st != Status::ok) c.close();
  return st;
}

Status create_schema(Connection &c) {
  Result r(PQexec(c.conn, schema_sql));
  if (r == nullptr || PQresultStatus(r.get()) != PGRES_COMMAND_OK) {
    const Status st = failure(c.conn, r.get());
    Result(PQexec(c.conn, "ROLLBACK"));  // the failed statement left its transaction open
    return st;
  }
  const Status st = read_schema(c);
  if (st == Status::ok && !c.schema_ready)
    return fail_with(Status::store_error, "the store's tables went away as they were made");
  return st;
}

// Whether an idle connection is gone: a server that shut down or
// restarted has said so and closed the socket, which shows as input
// waiting while nothing was asked (this store never listens for
// notifications). Nothing was sent yet, so connecting afresh loses
// nothing.
bool gone(PGconn *conn) {
  if (PQstatus(conn) != CONNECTION_OK) return true;
  pollfd p{PQsocket(conn), POLLIN, 0};
  return poll(&p, 1, 0) != 0;
}

// libpq hands out the statement's own result when the connection dies
// after it: the server sent the rows, then went away before its commit
// and its "ready" message. Such an answer is a failure, never an
// acknowledgement.
Result answered(PGconn *conn, Result r) {
  if (r != nullptr && PQresultStatus(r.get()) != PGRES_FATAL_ERROR &&
      PQstatus(conn) != CONNECTION_OK)
    r.reset(PQmakeEmptyPGresult(conn, PGRES_FATAL_ERROR));
  return r;
}

}  // namespace

void set_error(std::string reason) { error_text = std::move(reason); }
const std::string &last_error() { return error_text; }
thread_local bool retrying = false;
bool conflicted() { return conflict; }
void set_conflicted(bool c) { conflict = c; }

bool may_retry() {
  const auto left = deadline - Clock::now();
  if (left <= Clock::duration::zero()) {
    error_text = "store busy: " + error_text;
    return false;
  }
  std::this_thread::sleep_for(std::min<Clock::duration>(left, std::chrono::milliseconds(2)));
  return true;
}

PGconn *connection(Access access, Status &status, std::string &host) {
  Connection &c = this_thread;
  status = Status::ok;
  deadline = Clock::now() + std::chrono::milliseconds(busy_timeout_ms());
  if (access == Access::write && c.snapshot_depth > 0) {
    status = fail_with(Status::store_error, "a write inside a read snapshot");
    return nullptr;
  }
  std::string why;
  if (!thread_host(host, why)) {
    status = fail_with(Status::store_error, why);
    return nullptr;
  }
  const char *env = std::getenv("KORVO_REGISTRY");
  const std::string_view source = env != nullptr ? env : "";
  if (c.conn != nullptr && (c.generation != fork_generation.load() || c.source != source))
    c.close();
  if (c.conn != nullptr && gone(c.conn)) {
    if (c.in_snapshot) {
      status = fail_with(Status::store_error,
                         "lost the connection to " + c.server + " inside a snapshot");
      return nullptr;
    }
    c.close();
  }
  if (c.conn == nullptr && (status = open_server(c, std::string(source))) != Status::ok)
    return nullptr;
  if (!c.schema_ready && c.in_snapshot == false) {
    // Another process may have made the tables since this one looked.
    if ((status = access == Access::write ? create_schema(c) : read_schema(c)) != Status::ok)
      return nullptr;
  }
  if (!c.schema_ready) {
    status = fail_with(Status::no_key, "no store on " + c.server + " yet");
    return nullptr;
  }
  if (!c.role_host.empty() && c.role_host != host) {
    status = fail_with(Status::store_error, std::string("access denied: role ") + PQuser(c.conn) +
                                                " works on host " + c.role_host +
                                                "'s tree only, not " + host + "'s");
    return nullptr;
  }
  if (c.snapshot_depth > 0 && !c.in_snapshot) {
    if ((status = exec(c.conn, "BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY")) != Status::ok)
      return nullptr;
    c.in_snapshot = true;
  }
  return c.conn;
}

Status begin_snapshot() {
  ++this_thread.snapshot_depth;
  return Status::ok;
}

Status end_snapshot() {
  Connection &c = this_thread;
  if (c.snapshot_depth == 0) return Status::bad_name;
  if (--c.snapshot_depth == 0 && c.in_snapshot) {
    c.in_snapshot = false;
    // Nothing was written: ending the read transaction cannot lose data;
    // a connection lost meanwhile is noticed by the next call.
    if (c.conn != nullptr && PQstatus(c.conn) == CONNECTION_OK) exec(c.conn, "COMMIT");
  }
  return Status::ok;
}

Param::Param(int64_t v) : size_(8), is_int_(true) {
  for (int i = 7; i >= 0; --i, v >>= 8) int_[i] = static_cast<char>(v & 0xFF);
}

Result run(PGconn *conn, const char *sql, std::initializer_list<Param> params) {
  Connection &c = this_thread;
  // The cache's slot and the name are made before the statement, so that
  // running out of memory never leaves a prepared name the cache forgot.
  auto [found, made] = c.statements.try_emplace(sql);
  if (made || found->second.empty()) {
    found->second = "korvo" + std::to_string(c.prepared++);
    Result prepared(PQprepare(conn, found->second.c_str(), sql, 0, nullptr));
    if (prepared == nullptr || PQresultStatus(prepared.get()) != PGRES_COMMAND_OK) {
      c.statements.erase(found);
      return prepared;
    }
  }
  constexpr size_t max_params = 8;
  std::array<const char *, max_params> values{};
  std::array<int, max_params> lengths{}, formats{};
  if (params.size() > max_params) return nullptr;
  size_t n = 0;
  for (const Param &p : params) {
    values[n] = p.data();
    lengths[n] = p.size();
    formats[n] = 1;
    ++n;
  }
  return answered(conn, Result(PQexecPrepared(conn, found->second.c_str(), static_cast<int>(n),
                                              values.data(), lengths.data(), formats.data(), 1)));
}

Status exec(PGconn *conn, const char *sql) {
  Result r = answered(conn, Result(PQexec(conn, sql)));
  return r != nullptr && PQresultStatus(r.get()) == PGRES_COMMAND_OK ? Status::ok
                                                                     : failure(conn, r.get());
}

Status failure(PGconn *conn, const PGresult *r) {
  const char *state = r != nullptr ? PQresultErrorField(r, PG_DIAG_SQLSTATE) : nullptr;
  const std::string_view code = state != nullptr ? state : "";
  // 40001 serialization failure, 40P01 deadlock; 23xxx: a key or parent
  // another writer made or removed between this call's statements.
  conflict =
      code == "40001" || code == "40P01" || code == "23505" || code == "23503" || code == "23514";
  const std::string message =
      trimmed(r != nullptr && *PQresultErrorMessage(r) != '\0' ? PQresultErrorMessage(r)
                                                               : PQerrorMessage(conn));
  const std::string &server = this_thread.server;
  if (PQstatus(conn) != CONNECTION_OK)
    error_text = "lost the connection to " + server + ": " + message;
  else if (code == "42501")
    error_text = "access denied on " + server + ": " + message;
  else if (code == "55P03")
    error_text = "store busy: " + server + " kept a lock for " + std::to_string(busy_timeout_ms()) +
                 " ms: " + message;
  else
    error_text = server + ": " + message;
  return Status::store_error;
}

int64_t int8_at(const PGresult *r, int row, int col) {
  const auto *p = reinterpret_cast<const unsigned char *>(PQgetvalue(r, row, col));
  if (PQgetlength(r, row, col) != 8) return 0;
  uint64_t v = 0;
  for (int i = 0; i < 8; ++i) v = v << 8 | p[i];
  return static_cast<int64_t>(v);
}

std::string bytes_at(const PGresult *r, int row, int col) {
  return std::string(PQgetvalue(r, row, col), static_cast<size_t>(PQgetlength(r, row, col)));
}

}  // namespace korutl::store::pg
