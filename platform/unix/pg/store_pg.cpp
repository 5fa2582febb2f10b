// The operations on the configuration tree held by a PostgreSQL server.
// Every read is one statement, so it sees one committed state by itself
// (and the caller's snapshot inside rsv_begin_snapshot); a write of one
// row is one statement committed by the server before it answers, a
// write of several rows one transaction. Each statement names the host
// ($1) and the folded key path ($2).
#include <vector>

#include "platform/store_hosts.h"
#include "platform/store_read_hook.h"
#include "platform/store_rules.h"
#include "platform/unix/pg/pg_connection.h"
#include "platform/unix/store_backend.h"

namespace korutl::store::pg {

namespace {

constexpr const char *find_key_sql =
    "SELECT id FROM korvo.keys WHERE path = $2::bytea AND host = $1::text";
constexpr const char *counts_sql =
    "SELECT (SELECT count(*) FROM korvo.keys c WHERE c.parent = k.id),"
    " (SELECT count(*) FROM korvo.vals v WHERE v.key = k.id)"
    " FROM korvo.keys k WHERE k.path = $2::bytea AND k.host = $1::text";
// A missing value still gives the key's row, with nulls: one statement
// tells a missing key from a missing value.
constexpr const char *get_value_sql =
    "SELECT v.type, v.data, v.name FROM korvo.keys k"
    " LEFT JOIN korvo.vals v ON v.key = k.id AND v.folded = $3::bytea"
    " WHERE k.path = $2::bytea AND k.host = $1::text";
constexpr const char *set_value_sql =
    "INSERT INTO korvo.vals(host, key, name, folded, type, data)"
    " SELECT k.host, k.id, $3::bytea, $4::bytea, $5::int8, $6::bytea FROM korvo.keys k"
    " WHERE k.path = $2::bytea AND k.host = $1::text"
    " ON CONFLICT (key, folded) DO UPDATE SET type = excluded.type, data = excluded.data"
    " RETURNING 1";
constexpr const char *delete_value_sql =
    "DELETE FROM korvo.vals v USING korvo.keys k"
    " WHERE k.path = $2::bytea AND k.host = $1::text AND v.key = k.id AND v.folded = $3::bytea"
    " RETURNING 1";
constexpr const char *insert_key_sql =
    "INSERT INTO korvo.keys(host, path, parent, name, folded)"
    " VALUES($1::text, $2::bytea, $3::int8, $4::bytea, $5::bytea)"
    " ON CONFLICT (path, host) DO NOTHING RETURNING id";
constexpr const char *delete_key_sql =
    "DELETE FROM korvo.keys WHERE path = $2::bytea AND host = $1::text RETURNING 1";
constexpr const char *list_subkeys_sql =
    "SELECT c.name FROM korvo.keys k LEFT JOIN korvo.keys c ON c.parent = k.id"
    " WHERE k.path = $2::bytea AND k.host = $1::text ORDER BY c.folded";
constexpr const char *list_values_sql =
    "SELECT v.name, v.type, v.data FROM korvo.keys k LEFT JOIN korvo.vals v ON v.key = k.id"
    " WHERE k.path = $2::bytea AND k.host = $1::text ORDER BY v.id";
constexpr const char *list_hosts_sql =
    "SELECT host FROM korvo.keys WHERE parent IS NULL GROUP BY host ORDER BY host COLLATE \"C\"";
constexpr const char *all_hosts_sql =
    "SELECT k.host, v.type, v.data, v.name FROM korvo.keys k"
    " JOIN korvo.vals v ON v.key = k.id AND v.folded = $2::bytea"
    " WHERE k.path = $1::bytea ORDER BY k.host COLLATE \"C\"";

// Names compare case-insensitively in ASCII only, as the SQLite store's
// NOCASE does: the lower-cased bytes are the identity and the order.
std::string folded(std::string_view name) {
  std::string f(name);
  for (char &c : f)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return f;
}

// Checks the path and reaches the server for the call.
PGconn *open_for(std::string_view path, Access access, Status &status, std::string &host) {
  std::vector<std::string_view> parts;
  if (!split_key_path(path, parts)) {
    set_error("bad key path");
    status = Status::bad_name;
    return nullptr;
  }
  return connection(access, status, host);
}

// The key's id (0 when it does not exist), or a failure.
Status find_key(PGconn *conn, const std::string &host, std::string_view path, int64_t &id) {
  const Result r = run(conn, find_key_sql, {host, folded(path)});
  if (!worked(r.get())) return failure(conn, r.get());
  id = PQntuples(r.get()) > 0 ? int8_at(r.get(), 0, 0) : 0;
  return Status::ok;
}

// Inside a transaction: the key and its missing parents, each level
// inserted below the id of the level above, so a parent that another
// writer removes meanwhile fails the insert (a conflict, retried).
Status create_in(PGconn *conn, const std::string &host, std::string_view path, bool *created) {
  std::vector<std::string_view> parts;
  if (!split_key_path(path, parts)) return Status::bad_name;
  int64_t parent = 0;
  size_t end = 0;
  for (size_t i = 0; i < parts.size(); ++i) {
    end += parts[i].size() + (i > 0 ? 1 : 0);
    const std::string level = folded(path.substr(0, end));
    const Result r =
        run(conn, insert_key_sql,
            {host, level, i == 0 ? Param::null() : Param(parent), parts[i], folded(parts[i])});
    if (!worked(r.get())) return failure(conn, r.get());
    const bool made = PQntuples(r.get()) > 0;
    if (i + 1 == parts.size() && created != nullptr) *created = made;
    if (made) {
      parent = int8_at(r.get(), 0, 0);
      continue;
    }
    Status st = find_key(conn, host, level, parent);
    if (st != Status::ok) return st;
    if (parent == 0) {  // removed since the insert saw it
      set_conflicted(true);
      set_error("a key was removed while it was created");
      return Status::store_error;
    }
  }
  return Status::ok;
}

// One statement that changes rows, retried on a conflict: Status::ok
// with `rows` the rows it changed.
template <typename Params>
Status change(PGconn *conn, const char *sql, const Params &params, int &rows) {
  return with_retries([&] {
    const Result r = run(conn, sql, params);
    if (!worked(r.get())) return failure(conn, r.get());
    rows = PQntuples(r.get());
    return Status::ok;
  });
}

Status set_in(PGconn *conn, const std::string &host, std::string_view path, const Value &v) {
  int rows = 0;
  const Status st = change(conn, set_value_sql,
                           std::initializer_list<Param>{host, folded(path), v.name, folded(v.name),
                                                        int64_t{v.type}, v.data},
                           rows);
  return st != Status::ok ? st : rows > 0 ? Status::ok : Status::no_key;
}

// A failed delete of nothing says whether the key or the value was missing.
Status absent(PGconn *conn, const std::string &host, std::string_view path) {
  int64_t id;
  const Status st = find_key(conn, host, path, id);
  return st != Status::ok ? st : id == 0 ? Status::no_key : Status::no_value;
}

Status delete_value_in(PGconn *conn, const std::string &host, std::string_view path,
                       std::string_view name) {
  int rows = 0;
  const Status st = change(conn, delete_value_sql,
                           std::initializer_list<Param>{host, folded(path), folded(name)}, rows);
  return st != Status::ok ? st : rows > 0 ? Status::ok : absent(conn, host, path);
}

Status delete_key_in(PGconn *conn, const std::string &host, std::string_view path) {
  int rows = 0;
  const Status st =
      change(conn, delete_key_sql, std::initializer_list<Param>{host, folded(path)}, rows);
  return st != Status::ok ? st : rows > 0 ? Status::ok : Status::no_key;
}

// Runs a listing of the key at `path` and hands each row to `on_row`: no
// row at all means no key; a row of nulls, a key without entries.
template <typename OnRow>
Status for_each_row(std::string_view path, const char *sql, OnRow on_row) {
  note_read(path);
  Status st;
  std::string host;
  PGconn *conn = open_for(path, Access::read, st, host);
  if (conn == nullptr) return st;
  const Result r = run(conn, sql, {host, folded(path)});
  if (!worked(r.get())) return failure(conn, r.get());
  const int rows = PQntuples(r.get());
  if (rows == 0) return Status::no_key;
  for (int i = 0; i < rows; ++i)
    if (!PQgetisnull(r.get(), i, 0)) on_row(r.get(), i);
  return Status::ok;
}

// A write of this thread's host's tree, for a path that must be sound.
template <typename Body>
Status writing(std::string_view path, Body body) {
  Status st;
  std::string host;
  PGconn *conn = open_for(path, Access::write, st, host);
  return conn == nullptr ? st : body(conn, host);
}

}  // namespace

Status query_key(std::string_view path, uint32_t *subkeys, uint32_t *values) {
  note_read(path);
  Status st;
  std::string host;
  PGconn *conn = open_for(path, Access::read, st, host);
  if (conn == nullptr) return st;
  if (subkeys == nullptr && values == nullptr) {
    int64_t id;
    st = find_key(conn, host, path, id);
    return st != Status::ok ? st : id == 0 ? Status::no_key : Status::ok;
  }
  const Result r = run(conn, counts_sql, {host, folded(path)});
  if (!worked(r.get())) return failure(conn, r.get());
  if (PQntuples(r.get()) == 0) return Status::no_key;
  if (subkeys != nullptr) *subkeys = static_cast<uint32_t>(int8_at(r.get(), 0, 0));
  if (values != nullptr) *values = static_cast<uint32_t>(int8_at(r.get(), 0, 1));
  return Status::ok;
}

Status get_value(std::string_view path, std::string_view name, Value &out) {
  note_read(path);
  Status st;
  std::string host;
  PGconn *conn = open_for(path, Access::read, st, host);
  if (conn == nullptr) return st;
  const Result r = run(conn, get_value_sql, {host, folded(path), folded(name)});
  if (!worked(r.get())) return failure(conn, r.get());
  if (PQntuples(r.get()) == 0) return Status::no_key;
  if (PQgetisnull(r.get(), 0, 0)) return Status::no_value;
  out.type = static_cast<uint32_t>(int8_at(r.get(), 0, 0));
  out.data = bytes_at(r.get(), 0, 1);
  out.name = bytes_at(r.get(), 0, 2);
  return Status::ok;
}

Status set_value(std::string_view path, std::string_view name, uint32_t type,
                 std::string_view data) {
  if (const Status st = check_value(path, name, data); st != Status::ok) return st;
  return writing(path, [&](PGconn *conn, const std::string &host) {
    return set_in(conn, host, path, Value{std::string(name), type, std::string(data)});
  });
}

Status delete_value(std::string_view path, std::string_view name) {
  return writing(path, [&](PGconn *conn, const std::string &host) {
    return delete_value_in(conn, host, path, name);
  });
}

Status create_key(std::string_view path, bool *created) {
  return writing(path, [&](PGconn *conn, const std::string &host) {
    // Most calls make sure of a key that is there: one read settles them.
    int64_t id;
    const Status st = find_key(conn, host, path, id);
    if (st != Status::ok || id != 0) {
      if (created != nullptr) *created = false;
      return st;
    }
    return in_transaction(conn, [&](PGconn *c) { return create_in(c, host, path, created); });
  });
}

Status delete_key(std::string_view path) {
  return writing(
      path, [&](PGconn *conn, const std::string &host) { return delete_key_in(conn, host, path); });
}

Status list_subkeys(std::string_view path, std::vector<std::string> &names) {
  names.clear();
  return for_each_row(path, list_subkeys_sql,
                      [&](const PGresult *r, int i) { names.push_back(bytes_at(r, i, 0)); });
}

Status list_values(std::string_view path, std::vector<Value> &values) {
  values.clear();
  return for_each_value(path, [&](Value &v) { values.push_back(std::move(v)); });
}

// The server hands a statement's rows over whole; they are passed on one
// value at a time all the same, so that the caller holds one at once.
Status for_each_value(std::string_view path, const std::function<void(Value &)> &on_value) {
  Value v;
  return for_each_row(path, list_values_sql, [&](const PGresult *r, int i) {
    v = {bytes_at(r, i, 0), static_cast<uint32_t>(int8_at(r, i, 1)), bytes_at(r, i, 2)};
    on_value(v);
  });
}

Status write_batch(const std::vector<KeyRecord> &records) {
  if (records.empty()) return Status::ok;
  return writing(records.front().path, [&](PGconn *conn, const std::string &host) {
    return in_transaction(conn, [&](PGconn *c) {
      for (const KeyRecord &r : records) {
        Status st;
        std::vector<std::string_view> parts;
        if (!split_key_path(r.path, parts)) return Status::bad_name;
        if (r.remove) {
          if ((st = absent_is_removed(delete_key_in(c, host, r.path))) != Status::ok) return st;
          continue;
        }
        if ((st = create_in(c, host, r.path, nullptr)) != Status::ok) return st;
        for (const Value &v : r.values) {
          if ((st = check_value(r.path, v.name, v.data)) != Status::ok) return st;
          if ((st = set_in(c, host, r.path, v)) != Status::ok) return st;
        }
        for (const std::string &name : r.removed_values)
          if ((st = absent_is_removed(delete_value_in(c, host, r.path, name))) != Status::ok)
            return st;
      }
      return Status::ok;
    });
  });
}

Status list_hosts(std::vector<std::string> &hosts) {
  hosts.clear();
  Status st;
  std::string host;
  PGconn *conn = connection(Access::read, st, host);
  if (conn == nullptr) return st == Status::no_key ? Status::ok : st;
  const Result r = run(conn, list_hosts_sql, {});
  if (!worked(r.get())) return failure(conn, r.get());
  for (int i = 0; i < PQntuples(r.get()); ++i) hosts.push_back(bytes_at(r.get(), i, 0));
  return Status::ok;
}

Status get_value_all_hosts(std::string_view path, std::string_view name,
                           std::vector<HostValue> &out) {
  out.clear();
  note_read(path);
  Status st;
  std::string host;
  PGconn *conn = open_for(path, Access::read, st, host);
  if (conn == nullptr) return st == Status::no_key ? Status::ok : st;
  const Result r = run(conn, all_hosts_sql, {folded(path), folded(name)});
  if (!worked(r.get())) return failure(conn, r.get());
  for (int i = 0; i < PQntuples(r.get()); ++i)
    out.push_back({bytes_at(r.get(), i, 0),
                   {bytes_at(r.get(), i, 3), static_cast<uint32_t>(int8_at(r.get(), i, 1)),
                    bytes_at(r.get(), i, 2)}});
  return Status::ok;
}

bool change_counter(uint64_t &) { return false; }

}  // namespace korutl::store::pg
