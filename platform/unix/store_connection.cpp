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

// Every opening of the store in this process gets its own number, which
// goes into the change counter: two files never give one counter.
std::atomic<uint32_t> openings{0};

// Whether the connection's journal is a write-ahead log, whose index in
// shared memory tells every commit (see change_counter).
enum class Journal { unknown, wal, other };

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
  bool set_up = false;       // the pragmas and schema a write needs have run
  uint32_t opening = 0;
  Journal journal = Journal::unknown;
  const uint32_t *wal_index = nullptr;  // SQLite's own mapping of the -shm file's first region

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
    set_up = false;
    journal = Journal::unknown;
    wal_index = nullptr;
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

// What a write needs: cascading deletes, durable commits, the write-ahead
// log (readers never wait for a writer) and the schema. Reads need none of
// it, so a connection that only reads never runs it. The journal is looked
// at again afterwards: it may have become a write-ahead log.
bool set_up(Connection &c) {
  c.set_up = exec_retrying(c.db, "PRAGMA foreign_keys=ON; PRAGMA synchronous=FULL;") &&
             exec_retrying(c.db, "PRAGMA journal_mode=WAL;") && exec_retrying(c.db, schema_sql);
  c.journal = Journal::unknown;
  c.wal_index = nullptr;
  return c.set_up;
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
  if (sqlite3_open_v2(file.c_str(), &opened.db, flags, nullptr) != SQLITE_OK)
    return fail_with(
        status, Status::store_error,
        file + ": " + (opened.db != nullptr ? sqlite3_errmsg(opened.db) : "cannot open"));
  sqlite3_busy_handler(opened.db, on_busy, nullptr);
  const bool empty = st.st_size == 0;  // as it was before opening
  if (stat(file.c_str(), &st) != 0)
    return fail_with(status, Status::store_error, file + " went away while it was opened");
  c.file = file;
  c.device = st.st_dev;
  c.inode = st.st_ino;
  c.generation = fork_generation.load();
  c.opening = openings.fetch_add(1, std::memory_order_relaxed) + 1;
  c.db = std::exchange(opened.db, nullptr);
  // An empty file is a store nobody has set up yet: readers too find
  // the schema (and no keys) in it.
  if ((access != Access::read || empty) && !set_up(c)) {
    const Status why = sqlite_failure(c.db);
    c.close();
    status = why;
    return nullptr;
  }
  return c.db;
}

// SQLite's WAL-index header, as its file format publishes it: two copies
// of these 48 bytes open the -shm file, in the host's byte order. A
// writer updates the second copy, then the first; a reader that finds
// both alike has read a whole header.
struct WalIndexHeader {
  uint32_t version;
  uint32_t unused;
  uint32_t change;  // counts the commits
  uint8_t is_init;
  uint8_t big_endian_checksum;
  uint16_t page_size;
  uint32_t max_frame;  // last committed frame of the log
  uint32_t pages;      // database size in pages
  uint32_t frame_checksum[2];
  uint32_t salt[2];  // change whenever the log starts over
  uint32_t checksum[2];
};
static_assert(sizeof(WalIndexHeader) == 48);
constexpr int header_words = sizeof(WalIndexHeader) / sizeof(uint32_t);
constexpr int wal_index_region = 32768;  // the size SQLite maps the -shm file in

// SQLite's mapping of the connection's WAL index, or null when its journal
// is not a write-ahead log. Asking the journal mode reads the schema, which
// opens the log; from then on SQLite keeps the first region mapped (and a
// shared lock on the file, so that nobody can leave WAL mode under us)
// until the connection closes.
const uint32_t *wal_index(Connection &c) {
  if (c.journal != Journal::unknown) return c.wal_index;
  c.journal = Journal::other;
  {
    Statement mode(c.db, "PRAGMA journal_mode");
    if (!mode || mode.step() != SQLITE_ROW) return nullptr;
    const auto *name = sqlite3_column_text(mode.get(), 0);
    if (name == nullptr || std::strcmp(reinterpret_cast<const char *>(name), "wal") != 0)
      return nullptr;
  }
  sqlite3_file *file = nullptr;
  void volatile *region = nullptr;
  if (sqlite3_file_control(c.db, "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK ||
      file == nullptr || file->pMethods == nullptr || file->pMethods->iVersion < 2 ||
      file->pMethods->xShmMap == nullptr ||
      file->pMethods->xShmMap(file, 0, wal_index_region, 0, &region) != SQLITE_OK ||
      region == nullptr)
    return nullptr;
  c.journal = Journal::wal;
  c.wal_index = static_cast<const uint32_t *>(const_cast<void *>(region));
  return c.wal_index;
}

// A whole header, read as SQLite's readers read it; false while a writer
// is in the middle of updating it.
bool read_header(const uint32_t *index, WalIndexHeader &header) {
  uint32_t first[header_words], second[header_words];
  // Acquiring loads: the second copy is read after the first.
  for (int i = 0; i < header_words; ++i) first[i] = __atomic_load_n(&index[i], __ATOMIC_ACQUIRE);
  for (int i = 0; i < header_words; ++i)
    second[i] = __atomic_load_n(&index[header_words + i], __ATOMIC_RELAXED);
  if (std::memcmp(first, second, sizeof first) != 0) return false;
  std::memcpy(&header, first, sizeof header);
  return header.is_init != 0;
}

}  // namespace

bool sqlite::change_counter(uint64_t &counter) {
  Connection &c = this_thread;
  // A snapshot's reads may be older than the log's present state.
  if (c.snapshot_depth > 0) return false;
  Status status;
  if (connection(Access::read, status) == nullptr) return false;
  const uint32_t *index = wal_index(c);
  if (index == nullptr) return false;
  WalIndexHeader h{};
  bool whole = false;
  for (int attempt = 0; attempt < 3 && !whole; ++attempt) whole = read_header(index, h);
  if (!whole) return false;
  // Every commit adds one to `change`. Frames up to max_frame never change
  // while the salts stay, so the rest tells apart states whose `change`
  // came out alike (a log rebuilt after a crash) and other openings.
  uint32_t rest = c.opening * 0x9E3779B1u;
  for (const uint32_t word : {h.max_frame, h.pages, h.salt[0], h.salt[1]})
    rest = (rest ^ word) * 0x85EBCA77u + 0xC2B2AE3Du;
  counter = uint64_t{h.change} << 32 | rest;
  return true;
}

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
  } else if (for_write && !c.set_up && !set_up(c)) {
    status = sqlite_failure(c.db);
    return nullptr;
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
