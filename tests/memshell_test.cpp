// The memory shell through the public interface. Which tests run depends on
// the mode: a default build tests the off mode, the shell-on build the on
// mode; ctest also runs the mode test under several KORVO_MEMORY_SHELL values.
// The report's layout, byte for byte, is tested on the library's internal
// objects (seam/guard_heap_test.cpp).
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "korutl.h"

namespace {

const char kOffText[] = "\n*** Memory shell turned off ***\n";

std::string report(const char *title, uint32_t *listed = nullptr) {
  testing::internal::CaptureStdout();
  uint32_t n = KORVOPrintMemoryTable(title);
  if (listed != nullptr) *listed = n;
  return testing::internal::GetCapturedStdout();
}

bool shell_on() { return report("probe") != kOffText; }

// Reads one total, e.g. the third number of the "items:" line.
unsigned long total(const std::string &text, const char *line, int column) {
  std::istringstream in(text.substr(text.find(line) + std::strlen(line)));
  unsigned long value = 0;
  for (int i = 0; i <= column; ++i) in >> value;
  return value;
}

TEST(MemShellMode, FollowsBuildSettingAndEnvironmentBlocksBehaveAsStandardHeapsOffListsNothing) {
  const char *value = std::getenv("KORVO_MEMORY_SHELL");
  const bool expected =
      (value != nullptr && std::strcmp(value, "0") == 0) ? false : KORUTL_MEMORY_SHELL_DEFAULT_ON;
  EXPECT_EQ(shell_on(), expected) << "KORVO_MEMORY_SHELL="
                                  << (value != nullptr ? value : "(unset)");
  // Either mode: a calloc product beyond 32 bits is refused, and blocks keep
  // their contents through mrealloc. The guard heap's own copying and zeroing
  // are tested on the library's internal objects.
  EXPECT_EQ(mcalloc(0x10000, 0x10000, 1, "f"), nullptr);
  EXPECT_EQ(mcalloc(UINT32_MAX, 2, 1, "f"), nullptr);
  mfree(mcalloc(0, UINT32_MAX, 1, "f"));  // 0 stays 0
  auto *p = static_cast<char *>(mmalloc(10, 1, "f"));
  std::memcpy(p, "abcdefghij", 10);
  p = static_cast<char *>(mrealloc(p, 20, 2, "f"));
  EXPECT_EQ(std::memcmp(p, "abcdefghij", 10), 0);
  mfree(p);
  mfree(nullptr);
  // Off, nothing is listed and no log file opens (the report's text is the
  // mode check's above).
  if (!shell_on()) {
    uint32_t listed = 99;
    report("t", &listed);
    EXPECT_EQ(listed, 0u);
    const std::string log =
        testing::TempDir() + "memshell_off_" + std::to_string(getpid()) + ".log";
    std::remove(log.c_str());
    KORVOOpenMemoryLogFile(log.c_str());
    EXPECT_NE(access(log.c_str(), F_OK), 0);
    KORVOCloseMemoryLogFile();
  }
}

// Earlier tests of the process may have moved the totals, so this one
// compares differences.
TEST(MemShellOn, ThreadsAgreeWithTableAndTotals) {
  if (!shell_on()) GTEST_SKIP() << "shell off in this build";
  setenv("KORVO_MESSAGEBOX_ANSWER", "no", 1);
  const std::string start = report("start");
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([t] {
      std::vector<void *> mine;
      for (int i = 0; i < 300; ++i) {
        void *p = mmalloc(static_cast<uint32_t>(1 + (i * 7 + t) % 100), i, "thread.c");
        if (i % 3 == 0) p = mrealloc(p, 50, i, "thread.c");
        mine.push_back(p);
        if (i % 2 == 1) {
          mfree(mine.front());
          mine.erase(mine.begin());
        }
      }
      for (void *p : mine) mfree(p);
    });
  for (auto &t : threads) t.join();
  uint32_t listed = 0;
  const std::string end = report("end", &listed);
  EXPECT_EQ(listed, total(end, "items:", 0));
  EXPECT_EQ(total(end, "items:", 0), total(start, "items:", 0));
  EXPECT_EQ(total(end, "bytes:", 0), total(start, "bytes:", 0));
  EXPECT_EQ(total(end, "items:", 1) - total(start, "items:", 1), 4u * (300 + 100));
}

}  // namespace
