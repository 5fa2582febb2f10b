// The operations on the configuration tree. A point read is one statement;
// an operation that reads more than once reads inside one snapshot; every
// write runs in one immediate transaction.
#include "platform/store.h"

#include <optional>

#include "platform/store_read_hook.h"
#include "platform/store_rules.h"
#include "platform/unix/store_backend.h"
#include "platform/unix/store_connection.h"

namespace korutl::store::sqlite {

namespace {

constexpr const char *find_key_sql = "SELECT id FROM keys WHERE path = ?1";
constexpr const char *insert_key_sql =
    "INSERT OR IGNORE INTO keys(parent, name, path) "
    "VALUES((SELECT id FROM keys WHERE path = ?1), ?2, ?3)";

// Checks the path and opens the store; for a read, a missing store file is
// an empty tree.
sqlite3 *open_for(std::string_view path, Access access, Status &status) {
  std::vector<std::string_view> parts;
  if (!split_key_path(path, parts)) {
    set_error("bad key path");
    status = Status::bad_name;
    return nullptr;
  }
  return connection(access, status);
}

// The key's row id, 0 when it does not exist, -1 on a database failure.
int64_t find_key(sqlite3 *db, std::string_view path) {
  Statement s(db, find_key_sql);
  if (!s) return -1;
  s.bind(1, path);
  const int rc = s.step();
  if (rc == SQLITE_ROW) return sqlite3_column_int64(s.get(), 0);
  if (rc == SQLITE_DONE) return 0;
  sqlite_failure(db);  // damaged or busy is said as such
  return -1;
}

Status key_id(sqlite3 *db, std::string_view path, int64_t &id) {
  id = find_key(db, path);
  if (id < 0) return Status::store_error;
  return id == 0 ? Status::no_key : Status::ok;
}

// Inside a write transaction: creates the key and its missing parents.
Status create_in(sqlite3 *db, std::string_view path, bool *created) {
  std::vector<std::string_view> parts;
  if (!split_key_path(path, parts)) return Status::bad_name;
  size_t end = 0;
  for (size_t i = 0; i < parts.size(); ++i) {
    const std::string_view parent = path.substr(0, end == 0 ? 0 : end - 1);
    end += parts[i].size() + 1;
    Statement s(db, insert_key_sql);
    if (!s) return Status::store_error;
    s.bind(1, parent);
    s.bind(2, parts[i]);
    s.bind(3, path.substr(0, end - 1));
    if (s.step() != SQLITE_DONE) return sqlite_failure(db);
    if (i + 1 == parts.size() && created != nullptr) *created = sqlite3_changes(db) > 0;
  }
  return Status::ok;
}

// Values are checked (check_value) before they come here.
Status set_in(sqlite3 *db, int64_t key, std::string_view name, uint32_t type,
              std::string_view data) {
  Statement s(db,
              "INSERT INTO vals(key, name, type, data) VALUES(?1, ?2, ?3, ?4) "
              "ON CONFLICT(key, name) DO UPDATE SET type = excluded.type, data = excluded.data");
  if (!s) return Status::store_error;
  s.bind(1, key);
  s.bind(2, name);
  s.bind(3, int64_t{type});
  s.bind_blob(4, data);
  return s.step() == SQLITE_DONE ? Status::ok : sqlite_failure(db);
}

Status delete_value_in(sqlite3 *db, int64_t key, std::string_view name) {
  Statement s(db, "DELETE FROM vals WHERE key = ?1 AND name = ?2");
  if (!s) return Status::store_error;
  s.bind(1, key);
  s.bind(2, name);
  if (s.step() != SQLITE_DONE) return sqlite_failure(db);
  return sqlite3_changes(db) > 0 ? Status::ok : Status::no_value;
}

Status delete_key_in(sqlite3 *db, std::string_view path) {
  Statement s(db, "DELETE FROM keys WHERE path = ?1");
  if (!s) return Status::store_error;
  s.bind(1, path);
  if (s.step() != SQLITE_DONE) return sqlite_failure(db);
  return sqlite3_changes(db) > 0 ? Status::ok : Status::no_key;
}

// Runs `body` in one write transaction and commits when it succeeded.
// Writes that need an existing key leave a missing store uncreated.
template <typename Body>
Status in_write_transaction(std::string_view path, bool may_create, Body body) {
  Status st;
  sqlite3 *db = open_for(path, may_create ? Access::create : Access::write, st);
  if (db == nullptr) return st;
  WriteTransaction tx(db);
  if (!tx.begun()) return Status::store_error;
  st = body(db);
  if (st != Status::ok) return st;
  return tx.commit() ? Status::ok : Status::store_error;
}

std::string column_bytes(sqlite3_stmt *row, int i) {
  const void *bytes = sqlite3_column_blob(row, i);
  return bytes == nullptr ? std::string()
                          : std::string(static_cast<const char *>(bytes),
                                        static_cast<size_t>(sqlite3_column_bytes(row, i)));
}

// Runs `sql` (with the key's id as ?1) and hands each row to `on_row`.
template <typename OnRow>
Status for_each_row(std::string_view path, const char *sql, OnRow on_row) {
  note_read(path);
  SnapshotScope snapshot;
  Status st;
  sqlite3 *db = open_for(path, Access::read, st);
  if (db == nullptr) return st;
  int64_t id;
  if ((st = key_id(db, path, id)) != Status::ok) return st;
  Statement s(db, sql);
  if (!s) return Status::store_error;
  s.bind(1, id);
  int rc;
  while ((rc = s.step()) == SQLITE_ROW) on_row(s.get());
  return rc == SQLITE_DONE ? Status::ok : sqlite_failure(db);
}

// The count `sql` gives for the key's id, or -1 when it cannot be read:
// a damaged page must fail the query, never read as an empty key.
int64_t count_rows(sqlite3 *db, const char *sql, int64_t key) {
  Statement s(db, sql);
  if (!s) return -1;
  s.bind(1, key);
  if (s.step() == SQLITE_ROW) return sqlite3_column_int64(s.get(), 0);
  sqlite_failure(db);
  return -1;
}

}  // namespace

Status query_key(std::string_view path, uint32_t *subkeys, uint32_t *values) {
  note_read(path);
  // Only the counts need the key's row to stay as it was read.
  std::optional<SnapshotScope> snapshot;
  if (subkeys != nullptr || values != nullptr) snapshot.emplace();
  Status st;
  sqlite3 *db = open_for(path, Access::read, st);
  if (db == nullptr) return st;
  int64_t id;
  if ((st = key_id(db, path, id)) != Status::ok) return st;
  const int64_t s =
      subkeys != nullptr ? count_rows(db, "SELECT count(*) FROM keys WHERE parent = ?1", id) : 0;
  const int64_t v =
      values != nullptr ? count_rows(db, "SELECT count(*) FROM vals WHERE key = ?1", id) : 0;
  if (s < 0 || v < 0) return Status::store_error;
  if (subkeys != nullptr) *subkeys = static_cast<uint32_t>(s);
  if (values != nullptr) *values = static_cast<uint32_t>(v);
  return Status::ok;
}

Status get_value(std::string_view path, std::string_view name, Value &out) {
  note_read(path);
  Status st;
  sqlite3 *db = open_for(path, Access::read, st);
  if (db == nullptr) return st;
  // One statement tells a missing key from a missing value: the left join
  // gives a row with a null type when only the value is missing.
  Statement s(db,
              "SELECT v.type, v.data, v.name FROM keys k "
              "LEFT JOIN vals v ON v.key = k.id AND v.name = ?2 WHERE k.path = ?1");
  if (!s) return Status::store_error;
  s.bind(1, path);
  s.bind(2, name);
  const int rc = s.step();
  if (rc == SQLITE_DONE) return Status::no_key;
  if (rc != SQLITE_ROW) return sqlite_failure(db);
  if (sqlite3_column_type(s.get(), 0) == SQLITE_NULL) return Status::no_value;
  out.type = static_cast<uint32_t>(sqlite3_column_int64(s.get(), 0));
  out.data = column_bytes(s.get(), 1);
  out.name = column_bytes(s.get(), 2);
  return Status::ok;
}

Status set_value(std::string_view path, std::string_view name, uint32_t type,
                 std::string_view data) {
  if (const Status st = check_value(path, name, data); st != Status::ok) return st;
  return in_write_transaction(path, false, [&](sqlite3 *db) {
    int64_t id;
    const Status st = key_id(db, path, id);
    return st != Status::ok ? st : set_in(db, id, name, type, data);
  });
}

Status delete_value(std::string_view path, std::string_view name) {
  return in_write_transaction(path, false, [&](sqlite3 *db) {
    int64_t id;
    const Status st = key_id(db, path, id);
    return st != Status::ok ? st : delete_value_in(db, id, name);
  });
}

Status create_key(std::string_view path, bool *created) {
  return in_write_transaction(path, true,
                              [&](sqlite3 *db) { return create_in(db, path, created); });
}

Status delete_key(std::string_view path) {
  return in_write_transaction(path, false, [&](sqlite3 *db) { return delete_key_in(db, path); });
}

Status list_subkeys(std::string_view path, std::vector<std::string> &names) {
  names.clear();
  return for_each_row(path, "SELECT name FROM keys WHERE parent = ?1 ORDER BY name COLLATE NOCASE",
                      [&](sqlite3_stmt *row) { names.push_back(column_bytes(row, 0)); });
}

Status list_values(std::string_view path, std::vector<Value> &values) {
  values.clear();
  return for_each_value(path, [&](Value &v) { values.push_back(std::move(v)); });
}

Status for_each_value(std::string_view path, const std::function<void(Value &)> &on_value) {
  Value v;
  return for_each_row(
      path, "SELECT name, type, data FROM vals WHERE key = ?1 ORDER BY id", [&](sqlite3_stmt *row) {
        v = {column_bytes(row, 0), static_cast<uint32_t>(sqlite3_column_int64(row, 1)),
             column_bytes(row, 2)};
        on_value(v);
      });
}

Status write_batch(const std::vector<KeyRecord> &records) {
  if (records.empty()) return Status::ok;
  return in_write_transaction(records.front().path, true, [&](sqlite3 *db) {
    for (const KeyRecord &r : records) {
      Status st;
      if (r.remove) {
        std::vector<std::string_view> parts;
        if (!split_key_path(r.path, parts)) return Status::bad_name;
        if ((st = absent_is_removed(delete_key_in(db, r.path))) != Status::ok) return st;
        continue;
      }
      if ((st = create_in(db, r.path, nullptr)) != Status::ok) return st;
      int64_t id;
      if ((st = key_id(db, r.path, id)) != Status::ok) return st;
      for (const Value &v : r.values) {
        if ((st = check_value(r.path, v.name, v.data)) != Status::ok) return st;
        if ((st = set_in(db, id, v.name, v.type, v.data)) != Status::ok) return st;
      }
      for (const std::string &name : r.removed_values) {
        if ((st = absent_is_removed(delete_value_in(db, id, name))) != Status::ok) return st;
      }
    }
    return Status::ok;
  });
}

}  // namespace korutl::store::sqlite
