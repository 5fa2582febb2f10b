#include "platform/unix/store_connection.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <unordered_map>
#include <utility>

#include "platform/unix/store_backend.h"
#include "platform/unix/store_file.h"

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
  std::string source;  // the KORVO_REGISTRY text it was opened for, "" for the default
  std::string file;    // the absolute file
  dev_t device = 0;    // the identity of the file opened, to notice a replaced one
  ino_t inode = 0;
  sqlite3 *db = nullptr;
  std::unordered_map<const char *, sqlite3_stmt *> statements;
  unsigned snapshot_depth = 0;
  bool in_snapshot = false;  // a read transaction is open for the snapshot

  void close() {
    // A child of fork() must not touch its parent's connection: it is
    // dropped without closing (its memory is the child's copy anyway).
    if (db != nullptr && generation == fork_generation.load()) {
      for (auto &[sql, stmt] : statements) sqlite3_finalize(stmt);
      sqlite3_close_v2(db);
    }
    statements.clear();
    db = nullptr;
    in_snapshot = false;
  }
  ~Connection() { close(); }
};

thread_local Connection this_thread;

constexpr const char *begin_sql = "BEGIN";
constexpr const char *commit_sql = "COMMIT";
thread_local std::string error_text;

// Every call may wait for a store that another writer holds until this
// moment (busy_timeout_ms from the call's start), in SQLite's busy handler
// and in the retries below alike, and then fails as busy.
using Clock = std::chrono::steady_clock;
thread_local Clock::time_point deadline;
thread_local long waited_ms_allowed = 0;

bool busy(int rc) { return (rc & 0xFF) == SQLITE_BUSY || (rc & 0xFF) == SQLITE_LOCKED; }

// Sleeps a few milliseconds, never past the deadline; false once it passed.
bool pause_before_retry() {
  const auto left = deadline - Clock::now();
  if (left <= Clock::duration::zero()) return false;
  std::this_thread::sleep_for(std::min<Clock::duration>(left, std::chrono::milliseconds(5)));
  return true;
}

int on_busy(void *, int) { return pause_before_retry() ? 1 : 0; }

// Some lock conflicts (changing the journal mode, WAL recovery, a first
// schema write racing another process) return SQLITE_BUSY without waiting
// in the busy handler; those are retried here until the deadline.
bool exec_retrying(sqlite3 *db, const char *sql) {
  while (true) {
    const int rc = sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
    if (rc == SQLITE_OK) return true;
    if (!busy(rc) || !pause_before_retry()) return false;
  }
}

bool make_folders(const std::string &file) {
  for (size_t pos = file.find('/', 1); pos != std::string::npos; pos = file.find('/', pos + 1)) {
    const std::string dir = file.substr(0, pos);
    if (mkdir(dir.c_str(), 0700) != 0 && errno != EEXIST) return false;
  }
  return true;
}

// A new store file is made here, readable and writable by its owner only,
// before SQLite opens it: SQLite gives its -wal and -shm files the mode of
// the database file, so the whole store stays private.
bool create_private(const std::string &file) {
  const int fd = open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (fd >= 0) return ::close(fd) == 0;
  return errno == EEXIST;
}

bool set_up(sqlite3 *db) {
  sqlite3_busy_handler(db, on_busy, nullptr);
  return exec_retrying(db, "PRAGMA foreign_keys=ON; PRAGMA synchronous=FULL;") &&
         exec_retrying(db, "PRAGMA journal_mode=WAL;") && exec_retrying(db, schema_sql);
}

// Whether `file` is still the file `c` has open: a store replaced (mv) or
// removed since would otherwise take writes that nobody reads again.
bool still_same_file(const Connection &c) {
  struct stat st {};
  return stat(c.file.c_str(), &st) == 0 && st.st_dev == c.device && st.st_ino == c.inode;
}

sqlite3 *fail_with(Status &status, Status why, std::string reason) {
  set_error(std::move(reason));
  status = why;
  return nullptr;
}

// Opens `file` for this thread's connection; null with status set on failure.
sqlite3 *open_file(Connection &c, const std::string &file, Access access, Status &status) {
  struct stat st {};
  if (stat(file.c_str(), &st) != 0) {
    if (access != Access::create) return fail_with(status, Status::no_key, "no store file " + file);
    if (!make_folders(file))
      return fail_with(status, Status::store_error, "cannot create the folder of " + file);
    if (!create_private(file))
      return fail_with(status, Status::store_error,
                       "cannot create " + file + ": " + std::strerror(errno));
  }
  // Whatever may throw (running out of memory) happens while no handle is
  // open or while `opened` owns it, so that a handle is never lost.
  struct Opened {
    sqlite3 *db = nullptr;
    ~Opened() { sqlite3_close_v2(db); }
  } opened;
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;
  if (sqlite3_open_v2(file.c_str(), &opened.db, flags, nullptr) != SQLITE_OK || !set_up(opened.db))
    return fail_with(
        status, Status::store_error,
        file + ": " + (opened.db != nullptr ? sqlite3_errmsg(opened.db) : "cannot open"));
  if (stat(file.c_str(), &st) != 0)
    return fail_with(status, Status::store_error, file + " went away while it was opened");
  c.file = file;
  c.device = st.st_dev;
  c.inode = st.st_ino;
  c.generation = fork_generation.load();
  c.db = std::exchange(opened.db, nullptr);
  return c.db;
}

}  // namespace

const std::string &sqlite::last_error() { return error_text; }

void set_error(std::string reason) { error_text = std::move(reason); }

Status sqlite_failure(sqlite3 *db) {
  const int rc = sqlite3_extended_errcode(db) & 0xFF;
  const std::string &file = this_thread.file;
  if (rc == SQLITE_CORRUPT || rc == SQLITE_NOTADB)
    set_error("the store file " + file + " is damaged: " + sqlite3_errmsg(db));
  else if (busy(rc))
    set_error("store busy: " + file + " stayed locked by another writer for " +
              std::to_string(waited_ms_allowed) + " ms");
  else
    set_error(sqlite3_errmsg(db));
  return Status::store_error;
}

sqlite3 *connection(Access access, Status &status) {
  const bool for_write = access != Access::read;
  Connection &c = this_thread;
  status = Status::ok;
  waited_ms_allowed = busy_timeout_ms();
  deadline = Clock::now() + std::chrono::milliseconds(waited_ms_allowed);
  if (for_write && c.snapshot_depth > 0)
    return fail_with(status, Status::store_error, "a write inside a read snapshot");
  // The common case, an open connection to the file KORVO_REGISTRY names,
  // is settled without building the path.
  const char *env = std::getenv("KORVO_REGISTRY");
  const std::string_view source = env != nullptr ? env : "";
  std::string file, why;
  bool same = c.db != nullptr && c.generation == fork_generation.load() && c.source == source;
  if (same && source.empty()) same = store_file(file, why) && file == c.file;
  if (same && for_write) same = still_same_file(c);
  if (c.db != nullptr && !same) c.close();
  if (c.db == nullptr) {
    if (file.empty() && !store_file(file, why)) return fail_with(status, Status::store_error, why);
    c.source = source;
    if (open_file(c, file, access, status) == nullptr) return nullptr;
  }
  // A snapshot's read transaction starts with its first read. Its BEGIN
  // and COMMIT are cached statements: a point read's cost is the floor.
  if (c.snapshot_depth > 0 && !c.in_snapshot) {
    Statement begin(c.db, begin_sql);
    if (!begin || begin.step() != SQLITE_DONE) {
      sqlite_failure(c.db);
      status = Status::store_error;
      return nullptr;
    }
    c.in_snapshot = true;
  }
  return c.db;
}

Status sqlite::begin_snapshot() {
  ++this_thread.snapshot_depth;
  return Status::ok;
}

Status sqlite::end_snapshot() {
  Connection &c = this_thread;
  if (c.snapshot_depth == 0) return Status::bad_name;
  if (--c.snapshot_depth == 0 && c.in_snapshot) {
    c.in_snapshot = false;
    // Nothing was written: ending the read transaction cannot lose data.
    Statement commit(c.db, commit_sql);
    if (commit) commit.step();
  }
  return Status::ok;
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
    sqlite_failure(db);  // a damaged schema page is said as such
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
  while (true) {
    const int rc = sqlite3_step(stmt_);
    if (!busy(rc) || !pause_before_retry()) return rc;
    sqlite3_reset(stmt_);
  }
}

WriteTransaction::WriteTransaction(sqlite3 *db) : db_(db) {
  begun_ = exec_retrying(db, "BEGIN IMMEDIATE");
  if (!begun_) sqlite_failure(db);
}

WriteTransaction::~WriteTransaction() {
  if (begun_ && !done_) sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
}

bool WriteTransaction::commit() {
  if (!exec_retrying(db_, "COMMIT")) {
    sqlite_failure(db_);
    return false;
  }
  done_ = true;
  return true;
}

}  // namespace korutl::store
