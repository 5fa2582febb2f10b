// The per-thread SQLite connection to the store file, with its prepared
// statements. Opening once per thread keeps point reads cheap; a change of
// KORVO_REGISTRY or a fork makes the next call open the file afresh.
#ifndef KORUTL_PLATFORM_STORE_CONNECTION_H
#define KORUTL_PLATFORM_STORE_CONNECTION_H

#include <sqlite3.h>

#include <string>

#include "platform/store.h"

namespace korutl::store {

void set_error(std::string reason);

// What a call does with the store: read it, write to it where the store
// must exist already (a missing store file is an empty tree, left
// uncreated), or write and create the file and its folders when missing.
enum class Access { read, write, create };

// The connection for this thread. Without a store file, reads and writes
// give null with Status::no_key and create nothing. Opening for a read
// runs no statement (unless the file is empty: it gets the schema); the
// pragmas and schema a write needs run before the connection's first write.
sqlite3 *connection(Access access, Status &status);

// A cached statement for `sql` (a string literal: its address is the key),
// reset and unbound when the Statement goes out of scope.
class Statement {
 public:
  Statement(sqlite3 *db, const char *sql);
  ~Statement();
  Statement(const Statement &) = delete;
  Statement &operator=(const Statement &) = delete;
  explicit operator bool() const { return stmt_ != nullptr; }
  sqlite3_stmt *get() const { return stmt_; }
  void bind(int i, std::string_view text);
  void bind_blob(int i, std::string_view data);
  void bind(int i, int64_t v);
  int step();

 private:
  sqlite3_stmt *stmt_ = nullptr;
};

// BEGIN IMMEDIATE ... COMMIT, rolled back unless commit() succeeded.
class WriteTransaction {
 public:
  explicit WriteTransaction(sqlite3 *db);
  ~WriteTransaction();
  bool begun() const { return begun_; }
  bool commit();

 private:
  sqlite3 *db_;
  bool begun_ = false;
  bool done_ = false;
};

Status sqlite_failure(sqlite3 *db);

}  // namespace korutl::store

#endif
