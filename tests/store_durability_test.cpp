// The store file: several writers at once, and writers killed mid-run --
// every write that was acknowledged must be in the store afterwards, and
// the file stays sound --, a damaged file, and a change of KORVO_REGISTRY
// between calls.
#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "siblings/rsv/rsv.h"
#include "tests/support/temp_store.h"

namespace {

constexpr const char *M = "tests/durability";
const std::string base = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra\\Load";

class DurabilityTest : public korutl_test::TempStore {};

std::string key_of(int writer) { return base + "\\W" + std::to_string(writer); }

// Writes `count` values under its own key; returns false on any failure.
bool write_run(int writer, int count) {
  const std::string key = key_of(writer);
  if (rsv_create_key(key.c_str(), M, __LINE__) != RSV_OK) return false;
  for (int i = 0; i < count; ++i) {
    const std::string v = std::to_string(i);
    if (rsv_set_value(key.c_str(), ("v" + v).c_str(), v.c_str(), M, __LINE__) != RSV_OK)
      return false;
    // Interleave reads with the other writers' work.
    if (rsv_get_value(key.c_str(), ("v" + v).c_str(), nullptr, nullptr, M, __LINE__) != RSV_OK)
      return false;
  }
  return true;
}

bool has_value(int writer, int i) {
  return rsv_get_value(key_of(writer).c_str(), ("v" + std::to_string(i)).c_str(), nullptr, nullptr,
                       M, __LINE__) == RSV_OK;
}

bool run_threads(int first_writer, int threads, int count) {
  std::vector<std::thread> pool;
  std::vector<char> ok(threads, 0);
  for (int t = 0; t < threads; ++t)
    pool.emplace_back([&, t] { ok[t] = write_run(first_writer + t, count); });
  for (auto &th : pool) th.join();
  for (char c : ok)
    if (!c) return false;
  return true;
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
    if (child == 0) {
      close(ack[0]);
      const std::string key = key_of(round);
      if (rsv_create_key(key.c_str(), M, __LINE__) != RSV_OK) _exit(1);
      for (int i = 0;; ++i) {
        const std::string v = std::to_string(i);
        if (rsv_set_value(key.c_str(), ("v" + v).c_str(), v.c_str(), M, __LINE__) != RSV_OK)
          _exit(1);
        if (write(ack[1], &i, sizeof i) != sizeof i) _exit(1);
      }
    }
    close(ack[1]);
    int acknowledged = -1, i;
    // Let a varying number of writes through, then kill mid-stream.
    while (acknowledged < 5 + round * 3 && read(ack[0], &i, sizeof i) == sizeof i) acknowledged = i;
    kill(child, SIGKILL);
    while (read(ack[0], &i, sizeof i) == sizeof i) acknowledged = i;
    close(ack[0]);
    waitpid(child, nullptr, 0);

    ASSERT_EQ(integrity(file()), "ok");
    for (int j = 0; j <= acknowledged; ++j) ASSERT_TRUE(has_value(round, j)) << round << " " << j;
  }
}

std::vector<std::string> traced;
void collect(const char *line) { traced.emplace_back(line); }

TEST_F(DurabilityTest, DamagedStoreFailsWithATraceAndIsLeftAlone) {
  std::filesystem::create_directories(std::filesystem::path(file()).parent_path());
  const std::string garbage(8192, 'G');
  std::ofstream(file(), std::ios::binary) << garbage;
  rsv_set_trace_func(collect, "readconfig/settings", __LINE__);
  EXPECT_EQ(rsv_create_key(base.c_str(), "readconfig/prodcfg", 42), RSV_E_STORE);
  EXPECT_EQ(rsv_query_key(base.c_str(), nullptr, nullptr, "I18N/korstrng", 7), RSV_E_STORE);
  rsv_set_trace_func(nullptr, M, __LINE__);
  ASSERT_EQ(traced.size(), 2u);
  EXPECT_EQ(traced[0].rfind("readconfig/prodcfg:42: create_key: ", 0), 0u) << traced[0];
  EXPECT_EQ(traced[1].rfind("I18N/korstrng:7: query_key: ", 0), 0u) << traced[1];
  std::ifstream in(file(), std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), garbage);
  // Another store file named between calls is the one used.
  setenv("KORVO_REGISTRY", scratch("other.db").c_str(), 1);
  ASSERT_EQ(rsv_create_key(base.c_str(), M, __LINE__), RSV_OK);
  setenv("KORVO_REGISTRY", file().c_str(), 1);
  EXPECT_EQ(rsv_query_key(base.c_str(), nullptr, nullptr, M, __LINE__), RSV_E_STORE);
}

}  // namespace
