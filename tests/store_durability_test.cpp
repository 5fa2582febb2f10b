// The store file: several writers at once, and writers killed mid-run --
// every write that was acknowledged must be in the store afterwards, and
// the file stays sound --, a damaged file, a change of KORVO_REGISTRY
// between calls, listings that see one committed state while others
// write, and a store path, wait and file mode that cannot surprise.
#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "siblings/rsv/rsv.h"
#include "tests/support/run_tool.h"
#include "tests/support/temp_store.h"

namespace {

// Where a call comes from, for the store's trace lines.
#define AT "tests/durability", __LINE__
const std::string base = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Load";

using DurabilityTest = korutl_test::TempStore;

std::string key_of(int writer) { return base + "\\W" + std::to_string(writer); }

// Writes `count` values under its own key, each read back and, with an
// `ack` pipe, acknowledged there once written; false on any failure.
bool write_run(int writer, int count, int ack = -1) {
  const std::string key = key_of(writer);
  if (rsv_create_key(key.c_str(), AT) != RSV_OK) return false;
  for (int i = 0; i < count; ++i) {
    const std::string v = std::to_string(i);
    if (rsv_set_value(key.c_str(), ("v" + v).c_str(), v.c_str(), AT) != RSV_OK) return false;
    if (ack >= 0 && write(ack, &i, sizeof i) != sizeof i) return false;
    // Interleave reads with the other writers' work.
    if (rsv_get_value(key.c_str(), ("v" + v).c_str(), nullptr, nullptr, AT) != RSV_OK) return false;
  }
  return true;
}

bool has_value(int writer, int i) {
  return rsv_get_value(key_of(writer).c_str(), ("v" + std::to_string(i)).c_str(), nullptr, nullptr,
                       AT) == RSV_OK;
}

bool run_threads(int first_writer, int threads, int count) {
  std::atomic<int> failed{0};
  std::vector<std::thread> pool;
  for (int t = 0; t < threads; ++t)
    pool.emplace_back([&, t] { failed += write_run(first_writer + t, count) ? 0 : 1; });
  for (auto &th : pool) th.join();
  return failed == 0;
}

TEST_F(DurabilityTest, ProcessesAndThreadsWritingAtOnceLoseNothing) {
  constexpr int threads = 3, count = 40;
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) _exit(run_threads(100, threads, count) ? 0 : 1);
  EXPECT_TRUE(run_threads(0, threads, count));
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  for (int writer : {0, 1, 2, 100, 101, 102})
    for (int i = 0; i < count; ++i) ASSERT_TRUE(has_value(writer, i)) << writer << " " << i;
}

std::string integrity(const std::string &file) {
  sqlite3 *db = nullptr;
  std::string result = "cannot open";
  if (sqlite3_open_v2(file.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK) {
    sqlite3_stmt *s = nullptr;
    if (sqlite3_prepare_v2(db, "PRAGMA integrity_check", -1, &s, nullptr) == SQLITE_OK &&
        sqlite3_step(s) == SQLITE_ROW)
      result = reinterpret_cast<const char *>(sqlite3_column_text(s, 0));
    sqlite3_finalize(s);
  }
  sqlite3_close(db);
  return result;
}

TEST_F(DurabilityTest, KilledWriterLeavesASoundStoreWithEveryAcknowledgedWrite) {
  for (int round = 0; round < 8; ++round) {
    int ack[2];
    ASSERT_EQ(pipe(ack), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) _exit(close(ack[0]) == 0 && write_run(round, INT_MAX, ack[1]) ? 0 : 1);
    close(ack[1]);
    int acknowledged = -1, i;
    // Let a varying number of writes through, then kill mid-stream.
    while (acknowledged < 5 + round * 3 && read(ack[0], &i, sizeof i) == sizeof i) acknowledged = i;
    kill(child, SIGKILL);
    while (read(ack[0], &i, sizeof i) == sizeof i) acknowledged = i;
    close(ack[0]);
    waitpid(child, nullptr, 0);

    if (!on_server()) {
      ASSERT_EQ(integrity(file()), "ok");
    }
    for (int j = 0; j <= acknowledged; ++j) ASSERT_TRUE(has_value(round, j)) << round << " " << j;
  }
}

std::vector<std::string> traced;
void collect(const char *line) { traced.emplace_back(line); }

TEST_F(DurabilityTest, DamagedStoreFailsWithATraceAndIsLeftAlone) {
  KORUTL_FILE_STORE_ONLY();
  std::filesystem::create_directories(std::filesystem::path(file()).parent_path());
  const std::string garbage(8192, 'G');
  std::ofstream(file(), std::ios::binary) << garbage;
  rsv_set_trace_func(collect, "readconfig/settings", __LINE__);
  EXPECT_EQ(rsv_create_key(base.c_str(), "readconfig/prodcfg", 42), RSV_E_STORE);
  EXPECT_EQ(rsv_query_key(base.c_str(), nullptr, nullptr, "I18N/korstrng", 7), RSV_E_STORE);
  rsv_set_trace_func(nullptr, AT);
  ASSERT_EQ(traced.size(), 2u);
  EXPECT_EQ(traced[0].rfind("readconfig/prodcfg:42: create_key: ", 0), 0u) << traced[0];
  EXPECT_EQ(traced[1].rfind("I18N/korstrng:7: query_key: ", 0), 0u) << traced[1];
  std::ifstream in(file(), std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), garbage);
  // Another store file named between calls is the one used.
  setenv("KORVO_REGISTRY", scratch("other.db").c_str(), 1);
  ASSERT_EQ(rsv_create_key(base.c_str(), AT), RSV_OK);
  setenv("KORVO_REGISTRY", file().c_str(), 1);
  EXPECT_EQ(rsv_query_key(base.c_str(), nullptr, nullptr, AT), RSV_E_STORE);
}

// ---- One snapshot per listing, a path that cannot surprise, bounded waits.

const std::string shelf = base + "\\Shelf";
constexpr int shelf_keys = 8, shelf_values = 3;

std::string shelf_key(int i) { return shelf + "\\S" + std::to_string(i); }

// Puts subkey i back whole (its values in the same transaction), so every
// committed state holds each subkey either whole or not at all.
bool restore_shelf_key(const std::string &reg_file, int i) {
  std::string text = "Windows Registry Editor Version 5.00\r\n\r\n[" + shelf_key(i) + "]\r\n";
  for (int v = 0; v < shelf_values; ++v) text += "\"v" + std::to_string(v) + "\"=\"x\"\r\n";
  std::ofstream(reg_file, std::ios::binary | std::ios::trunc) << text;
  return rsv_import_file(reg_file.c_str(), nullptr, AT) == RSV_OK;
}

// Deletes and restores the shelf's subkeys round after round.
bool churn_shelf(const std::string &reg_file, int rounds, int seed) {
  for (int r = 0; r < rounds; ++r) {
    const int i = (r * 7 + seed) % shelf_keys;
    // The other writers may have deleted it first.
    const uint16_t rc = rsv_delete_key(shelf_key(i).c_str(), AT);
    if (rc != RSV_OK && rc != RSV_E_NO_KEY) return false;
    if (!restore_shelf_key(reg_file, i)) return false;
  }
  return true;
}

// An export (UTF-16LE) as ASCII text: every second byte.
std::string export_text(const std::string &file) {
  std::ifstream in(file, std::ios::binary);
  const std::string wide(std::istreambuf_iterator<char>(in), {});
  std::string text;
  for (size_t i = 2; i < wide.size(); i += 2) text += wide[i];
  return text;
}

// Every subkey an export shows must be whole: a torn export would show a
// key without its values.
bool whole_shelf(const std::string &text) {
  size_t keys = 0, values = 0;
  for (size_t at = 0; (at = text.find("[" + shelf + "\\S", at)) != std::string::npos; ++at) ++keys;
  for (size_t at = 0; (at = text.find("\"v", at)) != std::string::npos; ++at) ++values;
  return values == keys * shelf_values;
}

TEST_F(DurabilityTest, ExportsDuringConcurrentDeletesAreWholeCommittedStates) {
  for (int i = 0; i < shelf_keys; ++i) ASSERT_TRUE(restore_shelf_key(scratch("put.reg"), i));
  const pid_t child = fork();  // before any thread of this test starts
  ASSERT_GE(child, 0);
  if (child == 0) _exit(churn_shelf(scratch("child.reg"), 300, 3) ? 0 : 1);
  std::atomic<bool> writers_ok{true};
  std::thread writer([&] { writers_ok = churn_shelf(scratch("thread.reg"), 300, 5); });
  int failed = 0, torn = 0;
  for (int n = 0; n < 1000; ++n) {
    const std::string out = scratch("export.reg");
    if (rsv_export_file(shelf.c_str(), out.c_str(), AT) != RSV_OK)
      ++failed;
    else if (!whole_shelf(export_text(out)))
      ++torn;
  }
  writer.join();
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  EXPECT_TRUE(writers_ok);
  EXPECT_EQ(failed, 0);
  EXPECT_EQ(torn, 0);
}

// The change counter stays while nobody commits, says nothing inside a
// snapshot (whose reads may be older), and moves with every commit of
// another thread or process, a checkpoint that starts the log over
// included.
uint64_t change_counter() {
  uint64_t counter = 0;
  EXPECT_EQ(rsv_change_counter(&counter, AT), RSV_OK);
  return counter;
}

TEST_F(DurabilityTest, SnapshotHoldsOneStateAndRefusesWrites) {
  // The server store has no counter cheaper than a read: it says none.
  const bool counted = !on_server();
  uint64_t counter = 0;
  EXPECT_EQ(rsv_change_counter(&counter, AT), RSV_E_STORE) << "no store file yet";
  ASSERT_EQ(rsv_create_key(shelf_key(0).c_str(), AT), RSV_OK);
  const uint64_t first = counted ? change_counter() : 0;
  if (counted) {
    EXPECT_EQ(change_counter(), first);
  }
  ASSERT_EQ(rsv_begin_snapshot(AT), RSV_OK);
  EXPECT_EQ(rsv_change_counter(&counter, AT), RSV_E_STORE);
  uint16_t subkeys = 0;
  ASSERT_EQ(rsv_query_key(shelf.c_str(), &subkeys, nullptr, AT), RSV_OK);
  std::thread([] { rsv_create_key(shelf_key(1).c_str(), AT); }).join();
  uint16_t again = 0;
  EXPECT_EQ(rsv_query_key(shelf.c_str(), &again, nullptr, AT), RSV_OK);
  EXPECT_EQ(again, subkeys);
  EXPECT_EQ(rsv_set_value(shelf.c_str(), "v", "x", AT), RSV_E_STORE);
  EXPECT_EQ(rsv_end_snapshot(AT), RSV_OK);
  EXPECT_EQ(rsv_end_snapshot(AT), RSV_E_BAD_ARGUMENT);
  EXPECT_EQ(rsv_query_key(shelf.c_str(), &again, nullptr, AT), RSV_OK);
  EXPECT_EQ(again, subkeys + 1);
  if (!counted) return;
  const uint64_t second = change_counter();
  EXPECT_NE(second, first);
  sqlite3 *db = nullptr;
  ASSERT_EQ(sqlite3_open(file().c_str(), &db), SQLITE_OK);
  EXPECT_EQ(sqlite3_exec(db, "PRAGMA wal_checkpoint(TRUNCATE)", nullptr, nullptr, nullptr),
            SQLITE_OK);
  sqlite3_close(db);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) _exit(rsv_set_value(shelf.c_str(), "v", "x", AT) == RSV_OK ? 0 : 1);
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  const uint64_t third = change_counter();
  EXPECT_NE(third, second);
  EXPECT_NE(third, first);
}

TEST_F(DurabilityTest, DamagedPagesFailAListingInsteadOfShorteningIt) {
  KORUTL_FILE_STORE_ONLY();
  constexpr int count = 300;
  std::thread([&] {  // the thread's connection closes when it ends
    ASSERT_EQ(rsv_create_key(shelf.c_str(), AT), RSV_OK);
    const std::string data(200, 'd');
    for (int i = 0; i < count; ++i)
      ASSERT_EQ(rsv_set_value(shelf.c_str(), ("v" + std::to_string(i)).c_str(), data.c_str(), AT),
                RSV_OK);
  })
      .join();
  sqlite3 *db = nullptr;
  ASSERT_EQ(sqlite3_open(file().c_str(), &db), SQLITE_OK);
  sqlite3_exec(db, "PRAGMA wal_checkpoint(TRUNCATE)", nullptr, nullptr, nullptr);
  sqlite3_close(db);
  std::fstream f(file(), std::ios::binary | std::ios::in | std::ios::out);
  f.seekp(static_cast<long>(std::filesystem::file_size(file()) / 2 / 4096 * 4096));
  std::mt19937 random(7);
  for (int i = 0; i < 4096; ++i) f.put(static_cast<char>(random()));
  f.close();
  std::thread([&] {
    std::vector<std::vector<char>> slots(count, std::vector<char>(RSV_VALUE_SLOT));
    std::vector<char *> names;
    for (auto &s : slots) names.push_back(s.data());
    uint16_t n = count;
    const uint16_t rc = rsv_enum_values(shelf.c_str(), names.data(), &n, AT);
    EXPECT_TRUE(rc == RSV_E_STORE || (rc == RSV_OK && n == count)) << rc << " " << n;
  }).join();
#ifdef KORUTL_TOOL_FILE  // the command's tree says what it could not read and fails
  const korutl_test::ToolRun tree = korutl_test::run_tool({"reg", "tree", shelf});
  EXPECT_EQ(tree.status, 1) << tree.out;
  EXPECT_NE(tree.out.find("korutl: cannot read"), std::string::npos) << tree.out;
#endif
}

TEST_F(DurabilityTest, RelativeStorePathStaysPutAcrossChdir) {
  KORUTL_FILE_STORE_ONLY();
  const auto before = std::filesystem::current_path();
  std::filesystem::create_directories(scratch("a"));
  std::filesystem::create_directories(scratch("b"));
  std::filesystem::current_path(scratch("a"));
  setenv("KORVO_REGISTRY", ("relative-" + std::to_string(getpid()) + ".db").c_str(), 1);
  EXPECT_EQ(rsv_create_key(base.c_str(), AT), RSV_OK);
  std::filesystem::current_path(scratch("b"));
  uint16_t rc = 0;
  std::thread([&] { rc = rsv_query_key(base.c_str(), nullptr, nullptr, AT); }).join();
  std::filesystem::current_path(before);
  EXPECT_EQ(rc, RSV_OK);
  EXPECT_TRUE(std::filesystem::is_empty(scratch("b")));
}

TEST_F(DurabilityTest, NoUsableHomeCreatesNothing) {
  KORUTL_FILE_STORE_ONLY();
  const char *home = std::getenv("HOME");
  const std::string saved = home != nullptr ? home : "";
  unsetenv("KORVO_REGISTRY");
  setenv("XDG_STATE_HOME", "relative/state", 1);
  unsetenv("HOME");
  traced.clear();
  rsv_set_trace_func(collect, AT);
  EXPECT_EQ(rsv_create_key(base.c_str(), AT), RSV_E_STORE);
  EXPECT_EQ(rsv_query_key(base.c_str(), nullptr, nullptr, AT), RSV_E_STORE);
  rsv_set_trace_func(nullptr, AT);
  unsetenv("XDG_STATE_HOME");
  if (home != nullptr) setenv("HOME", saved.c_str(), 1);
  ASSERT_EQ(traced.size(), 2u);
  EXPECT_NE(traced[0].find("no store file"), std::string::npos) << traced[0];
  EXPECT_FALSE(std::filesystem::exists("relative"));
}

TEST_F(DurabilityTest, ReplacedStoreFileTakesTheNextWrite) {
  KORUTL_FILE_STORE_ONLY();
  ASSERT_EQ(rsv_create_key(base.c_str(), AT), RSV_OK);
  std::filesystem::rename(file(), scratch("moved.db"));
  ASSERT_EQ(rsv_create_key(shelf.c_str(), AT), RSV_OK);
  uint16_t rc = 0;
  std::thread([&] { rc = rsv_query_key(shelf.c_str(), nullptr, nullptr, AT); }).join();
  EXPECT_EQ(rc, RSV_OK);
}

TEST_F(DurabilityTest, BusyStoreFailsAfterTheSetWait) {
  KORUTL_FILE_STORE_ONLY();
  ASSERT_EQ(rsv_create_key(base.c_str(), AT), RSV_OK);
  sqlite3 *db = nullptr;
  ASSERT_EQ(sqlite3_open(file().c_str(), &db), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(db, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
  setenv("KORVO_REGISTRY_BUSY_TIMEOUT", "200", 1);
  traced.clear();
  rsv_set_trace_func(collect, AT);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(rsv_set_value(base.c_str(), "v", "x", AT), RSV_E_STORE);
  const auto waited = std::chrono::steady_clock::now() - start;
  rsv_set_trace_func(nullptr, AT);
  unsetenv("KORVO_REGISTRY_BUSY_TIMEOUT");
  sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
  sqlite3_close(db);
  EXPECT_LT(waited, std::chrono::seconds(5));  // bounded, not the default 10 s
  ASSERT_EQ(traced.size(), 1u);
  EXPECT_NE(traced[0].find("store busy"), std::string::npos) << traced[0];
}

TEST_F(DurabilityTest, StoreFilesArePrivateAndRootsHoldNoValues) {
  ASSERT_EQ(rsv_create_key(base.c_str(), AT), RSV_OK);
  ASSERT_EQ(rsv_set_value(base.c_str(), "v", "x", AT), RSV_OK);
  for (const std::string suffix : {"", "-wal", "-shm"}) {
    if (on_server()) break;
    struct stat st {};
    ASSERT_EQ(stat((file() + suffix).c_str(), &st), 0) << suffix;
    EXPECT_EQ(st.st_mode & 0777, 0600u) << suffix;
  }
  EXPECT_EQ(rsv_set_value("HKEY_LOCAL_MACHINE", "v", "x", AT), RSV_E_BAD_ARGUMENT);
  std::ofstream(scratch("root.reg"))
      << "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE]\n\"v\"=\"x\"\n";
  EXPECT_EQ(rsv_import_file(scratch("root.reg").c_str(), nullptr, AT), RSV_E_BAD_ARGUMENT);
  uint16_t values = 1;
  EXPECT_EQ(rsv_query_key("HKEY_LOCAL_MACHINE", nullptr, &values, AT), RSV_OK);
  EXPECT_EQ(values, 0u);
}

// ---- Backups: a file replaced whole or not at all; pipes and devices.

std::string contents(const std::string &file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

TEST_F(DurabilityTest, ExportReplacesAFileOnlyWhenWhole) {
  ASSERT_EQ(rsv_create_key(base.c_str(), AT), RSV_OK);
  ASSERT_EQ(rsv_set_value(base.c_str(), "v", std::string(20000, 'x').c_str(), AT), RSV_OK);
  const std::string backup = scratch("backup.reg"), link = scratch("link.reg");
  std::ofstream(backup) << "good";
  ASSERT_EQ(chmod(backup.c_str(), 0640), 0);
  ASSERT_EQ(symlink(backup.c_str(), link.c_str()), 0);
  // A missing key, and a write that fails midway (past the file size
  // limit), leave the old file as it was and nothing beside it.
  EXPECT_EQ(rsv_export_file((base + "\\absent").c_str(), link.c_str(), AT), RSV_E_NO_KEY);
  rlimit old{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
  rlimit small = old;
  small.rlim_cur = 4096;
  signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  const uint16_t cut = rsv_export_file(base.c_str(), link.c_str(), AT);
  setrlimit(RLIMIT_FSIZE, &old);
  signal(SIGXFSZ, SIG_DFL);
  EXPECT_EQ(cut, RSV_E_STORE);
  EXPECT_EQ(contents(backup), "good");
  size_t entries = 0;
  for ([[maybe_unused]] const auto &e : std::filesystem::directory_iterator(scratch(""))) ++entries;
  EXPECT_EQ(entries, 3u) << "store folder, backup, link";
  // Done, it replaces the file behind the link and keeps its mode.
  ASSERT_EQ(rsv_export_file(base.c_str(), link.c_str(), AT), RSV_OK);
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  struct stat st {};
  ASSERT_EQ(stat(backup.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0640u);
  EXPECT_GT(contents(backup).size(), 40000u);
  // Anything else is written straight through.
  EXPECT_EQ(rsv_export_file(base.c_str(), "/dev/full", AT), RSV_E_STORE);
}

TEST_F(DurabilityTest, ImportReadsPipesAndStopsDevicesAtTheLimit) {
  uint32_t bad_line = 99;
  EXPECT_EQ(rsv_import_file("/dev/zero", &bad_line, AT), RSV_E_BAD_ARGUMENT);
  EXPECT_EQ(bad_line, 0u);
  const std::string fifo = scratch("pipe.reg");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  std::thread writer([&] {
    std::ofstream(fifo) << "Windows Registry Editor Version 5.00\n[" << base
                        << "]\n\"p\"=\"piped\"\n";
  });
  EXPECT_EQ(rsv_import_file(fifo.c_str(), nullptr, AT), RSV_OK);
  writer.join();
  std::string exported;
  std::thread reader([&] { exported = contents(fifo); });
  EXPECT_EQ(rsv_export_file(base.c_str(), fifo.c_str(), AT), RSV_OK);
  reader.join();
  EXPECT_NE(exported.find(std::string("p\0i\0p\0e\0d\0", 10)), std::string::npos);
}

}  // namespace
