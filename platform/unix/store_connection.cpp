#include "platform/unix/store_connection.h"

#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <unordered_map>
#include <utility>

namespace korutl::store {

namespace {

// Keys keep their full path (for one-step lookups) and their parent (for
// enumeration and cascading deletes). Value ids grow with first setting,
// which gives the values' order; an update keeps the row.
constexpr const char *schema_sql =
    "CREATE TABLE IF NOT EXISTS keys("
    " id INTEGER PRIMARY KEY,"
    " parent INTEGER REFERENCES keys(id) ON DELETE CASCADE,"
    " name TEXT NOT NULL COLLATE NOCASE,"
    " path TEXT NOT NULL UNIQUE COLLATE NOCASE);"
    "CREATE INDEX IF NOT EXISTS keys_by_parent ON keys(parent, name COLLATE NOCASE);"
    "CREATE TABLE IF NOT EXISTS vals("
    " id INTEGER PRIMARY KEY AUTOINCREMENT,"
    " key INTEGER NOT NULL REFERENCES keys(id) ON DELETE CASCADE,"
    " name TEXT NOT NULL COLLATE NOCASE,"
    " type INTEGER NOT NULL,"
    " data BLOB NOT NULL,"
    " UNIQUE(key, name));";

// Bumped in the child after every fork, so that a connection inherited
// from the parent is recognised without asking the kernel for the pid on
// every call.
std::atomic<unsigned> fork_generation{0};
[[maybe_unused]] const int fork_watch =
    pthread_atfork(nullptr, nullptr, [] { fork_generation.fetch_add(1); });

struct Connection {
  unsigned generation = 0;
  std::string file;
  sqlite3 *db = nullptr;
  std::unordered_map<const char *, sqlite3_stmt *> statements;

  void close() {
    // A child of fork() must not touch its parent's connection: it is
    // dropped without closing (its memory is the child's copy anyway).
    if (db != nullptr && generation == fork_generation.load()) {
      for (auto &[sql, stmt] : statements) sqlite3_finalize(stmt);
      sqlite3_close_v2(db);
    }
    statements.clear();
    db = nullptr;
  }
  ~Connection() { close(); }
};

thread_local Connection this_thread;

bool busy(int rc) { return (rc & 0xFF) == SQLITE_BUSY || (rc & 0xFF) == SQLITE_LOCKED; }

// Some lock conflicts (changing the journal mode, WAL recovery, a first
// schema write racing another process) return SQLITE_BUSY without waiting
// in the busy handler; those are retried here for up to about ten seconds.
constexpr int busy_retries = 2000;

void pause_briefly() { usleep(5000); }

bool exec_retrying(sqlite3 *db, const char *sql) {
  for (int i = 0;; ++i) {
    const int rc = sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
    if (rc == SQLITE_OK) return true;
    if (!busy(rc) || i == busy_retries) return false;
    pause_briefly();
  }
}
thread_local std::string error_text;

bool make_folders(const std::string &file) {
  for (size_t pos = file.find('/', 1); pos != std::string::npos; pos = file.find('/', pos + 1)) {
    const std::string dir = file.substr(0, pos);
    if (mkdir(dir.c_str(), 0700) != 0 && errno != EEXIST) return false;
  }
  return true;
}

bool set_up(sqlite3 *db) {
  sqlite3_busy_timeout(db, 10000);
  return exec_retrying(db, "PRAGMA foreign_keys=ON; PRAGMA synchronous=FULL;") &&
         exec_retrying(db, "PRAGMA journal_mode=WAL;") && exec_retrying(db, schema_sql);
}

}  // namespace

const std::string &last_error() { return error_text; }

void set_error(std::string reason) { error_text = std::move(reason); }

std::string store_file() {
  if (const char *env = std::getenv("KORVO_REGISTRY"); env != nullptr && *env != '\0') return env;
  if (const char *xdg = std::getenv("XDG_STATE_HOME"); xdg != nullptr && *xdg == '/')
    return std::string(xdg) + "/halcyra/registry.db";
  const char *home = std::getenv("HOME");
  return std::string(home != nullptr ? home : "") + "/.local/state/halcyra/registry.db";
}

Status sqlite_failure(sqlite3 *db) {
  set_error(sqlite3_errmsg(db));
  return Status::store_error;
}

sqlite3 *connection(bool for_write, Status &status) {
  Connection &c = this_thread;
  status = Status::ok;
  // The common case, an open connection to the file KORVO_REGISTRY names,
  // is settled without building the path.
  const char *env = std::getenv("KORVO_REGISTRY");
  const bool same_file = env != nullptr && *env != '\0' ? c.file == env : c.file == store_file();
  if (c.db != nullptr && (c.generation != fork_generation.load() || !same_file)) c.close();
  if (c.db != nullptr) return c.db;
  const std::string file = store_file();

  struct stat st {};
  if (stat(file.c_str(), &st) != 0) {
    if (!for_write) {
      status = Status::no_key;
      return nullptr;
    }
    if (!make_folders(file)) {
      set_error("cannot create the folder of " + file);
      status = Status::store_error;
      return nullptr;
    }
  }
  // Whatever may throw (running out of memory) happens while no handle is
  // open or while `opened` owns it, so that a handle is never lost.
  c.file = file;
  struct Opened {
    sqlite3 *db = nullptr;
    ~Opened() { sqlite3_close_v2(db); }
  } opened;
  const int flags =
      SQLITE_OPEN_READWRITE | (for_write ? SQLITE_OPEN_CREATE : 0) | SQLITE_OPEN_NOMUTEX;
  if (sqlite3_open_v2(file.c_str(), &opened.db, flags, nullptr) != SQLITE_OK ||
      !set_up(opened.db)) {
    set_error(file + ": " + (opened.db != nullptr ? sqlite3_errmsg(opened.db) : "cannot open"));
    status = Status::store_error;
    return nullptr;
  }
  c.generation = fork_generation.load();
  c.db = std::exchange(opened.db, nullptr);
  return c.db;
}

Statement::Statement(sqlite3 *db, const char *sql) {
  auto &cache = this_thread.statements;
  // The cache's slot is made before the statement, so that running out of
  // memory cannot leave a prepared statement that nothing finalises.
  const auto [slot, made] = cache.try_emplace(sql, nullptr);
  if (!made) {
    stmt_ = slot->second;
    return;
  }
  if (sqlite3_prepare_v3(db, sql, -1, SQLITE_PREPARE_PERSISTENT, &stmt_, nullptr) != SQLITE_OK) {
    cache.erase(slot);
    set_error(sqlite3_errmsg(db));
    stmt_ = nullptr;
    return;
  }
  slot->second = stmt_;
}

Statement::~Statement() {
  if (stmt_ != nullptr) {
    sqlite3_reset(stmt_);
    sqlite3_clear_bindings(stmt_);
  }
}

void Statement::bind(int i, std::string_view text) {
  sqlite3_bind_text(stmt_, i, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
}

void Statement::bind_blob(int i, std::string_view data) {
  // A zero-length blob still binds as a blob, not as NULL.
  if (data.empty())
    sqlite3_bind_zeroblob(stmt_, i, 0);
  else
    sqlite3_bind_blob(stmt_, i, data.data(), static_cast<int>(data.size()), SQLITE_STATIC);
}

void Statement::bind(int i, int64_t v) { sqlite3_bind_int64(stmt_, i, v); }

int Statement::step() {
  for (int i = 0;; ++i) {
    const int rc = sqlite3_step(stmt_);
    if (!busy(rc) || i == busy_retries) return rc;
    sqlite3_reset(stmt_);
    pause_briefly();
  }
}

WriteTransaction::WriteTransaction(sqlite3 *db) : db_(db) {
  begun_ = exec_retrying(db, "BEGIN IMMEDIATE");
  if (!begun_) set_error(sqlite3_errmsg(db));
}

WriteTransaction::~WriteTransaction() {
  if (begun_ && !done_) sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
}

bool WriteTransaction::commit() {
  if (!exec_retrying(db_, "COMMIT")) {
    set_error(sqlite3_errmsg(db_));
    return false;
  }
  done_ = true;
  return true;
}

}  // namespace korutl::store
