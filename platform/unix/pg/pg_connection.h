// The per-thread session with the PostgreSQL server that holds the store:
// the connection KORVO_REGISTRY names, its prepared statements, the
// store's schema, snapshots, and what a failure is said as. Opening once
// per thread keeps point reads to one round trip; a change of
// KORVO_REGISTRY, a fork or a connection found dead makes the next call
// connect afresh.
#ifndef KORUTL_PLATFORM_UNIX_PG_PG_CONNECTION_H
#define KORUTL_PLATFORM_UNIX_PG_PG_CONNECTION_H

#include "platform/unix/pg/libpq_loader.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

#include "platform/store.h"

namespace korutl::store::pg {

struct ResultDeleter {
  void operator()(PGresult *r) const { PQclear(r); }
};
using Result = std::unique_ptr<PGresult, ResultDeleter>;

// What a call does: read (a server without the store's tables is an
// empty tree, left as it is) or write (creates the tables when missing).
enum class Access { read, write };

// This thread's connection, ready for `access`, and the host (folded) the
// call works on. Null with `status` set when the call cannot go on:
// store_error (unreachable server, a write inside a snapshot, a host the
// role may not use), or no_key for a read of a server without the store.
PGconn *connection(Access access, Status &status, std::string &host);

// One parameter, sent in binary: bytes as they are (text, bytea), an int8
// in network order, or NULL.
class Param {
 public:
  Param(std::string_view bytes) : data_(bytes.data()), size_(static_cast<int>(bytes.size())) {}
  Param(const std::string &bytes) : Param(std::string_view(bytes)) {}
  Param(int64_t v);
  static Param null() { return Param(); }
  const char *data() const { return is_int_ ? int_ : data_; }
  int size() const { return size_; }

 private:
  Param() = default;
  const char *data_ = nullptr;
  int size_ = 0;
  bool is_int_ = false;
  char int_[8] = {};
};

// Runs `sql` (a string literal: its address names the prepared statement,
// prepared on this connection at first use) with binary parameters and
// binary results. Never null unless memory ran out.
Result run(PGconn *conn, const char *sql, std::initializer_list<Param> params);

// Whether a result is what a statement that worked gives.
inline bool worked(const PGresult *r) {
  const ExecStatusType s = PQresultStatus(r);
  return r != nullptr && (s == PGRES_TUPLES_OK || s == PGRES_COMMAND_OK);
}

// The store error of a failed statement (r may be null): sets the reason,
// naming the server, and notes a conflict with another writer (a
// serialization failure, deadlock, or a key or parent that another
// transaction created or removed meanwhile) for with_retries.
Status failure(PGconn *conn, const PGresult *r);

// Runs `attempt` (returning a Status) once, and again while it failed on a
// conflict with another writer, until the busy timeout of the call ran
// out. A conflict that lasts that long is "store busy". Inside another
// with_retries (a statement of a transaction) it runs once: a conflict
// aborts the transaction, which the outer one runs again whole.
bool conflicted();
void set_conflicted(bool conflict);
bool may_retry();
extern thread_local bool retrying;
template <typename Attempt>
Status with_retries(Attempt attempt) {
  if (retrying) return attempt();
  struct Outermost {
    Outermost() { retrying = true; }
    ~Outermost() { retrying = false; }
  } outermost;
  while (true) {
    set_conflicted(false);
    const Status st = attempt();
    if (st == Status::ok || !conflicted() || !may_retry()) return st;
  }
}

// Runs `body(conn)` in one read-write transaction, committed when it gave
// ok; a write is acknowledged only once its COMMIT succeeded.
Status exec(PGconn *conn, const char *sql);
template <typename Body>
Status in_transaction(PGconn *conn, Body body) {
  return with_retries([&] {
    Status st = exec(conn, "BEGIN");
    if (st != Status::ok) return st;
    // Rolled back unless committed, also when the body runs out of memory.
    struct Open {
      PGconn *conn;
      bool open = true;
      ~Open() {
        if (open) PQclear(PQexec(conn, "ROLLBACK"));
      }
    } transaction{conn};
    if ((st = body(conn)) != Status::ok) return st;
    transaction.open = false;
    return exec(conn, "COMMIT");
  });
}

// Column values of a binary result.
int64_t int8_at(const PGresult *r, int row, int col);
std::string bytes_at(const PGresult *r, int row, int col);

// The thread's reason for its last failure.
void set_error(std::string reason);

}  // namespace korutl::store::pg

#endif
