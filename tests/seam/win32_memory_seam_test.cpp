// The memory side of the Win32 seam, tested directly on the library's
// internal objects. Its message box and breakpoint, and page protection,
// are exercised by the guard heap's tests (guard_heap_test.cpp); argument
// checks that the library's own calls never meet are not tested.
#include <gtest/gtest.h>
#include <unistd.h>

#include <thread>
#include <vector>

#include "platform/win32.h"

namespace {

MEMORY_BASIC_INFORMATION query(const void *p) {
  MEMORY_BASIC_INFORMATION info;
  EXPECT_EQ(VirtualQuery(p, &info, sizeof info), sizeof info);
  return info;
}

// A freed block's address must fault when used, so it is never handed out
// again; a release leaves the range reserved.
TEST(Win32Memory, ReservedOnlyAndAddressesAreNeverReused) {
  SYSTEM_INFO info;
  GetSystemInfo(&info);
  const DWORD p = info.dwPageSize;
  EXPECT_EQ(p, static_cast<DWORD>(sysconf(_SC_PAGESIZE)));
  void *reserved = VirtualAlloc(nullptr, p, MEM_RESERVE, PAGE_READWRITE);
  ASSERT_NE(reserved, nullptr);
  EXPECT_EQ(query(reserved).State, MEM_RESERVE);
  std::vector<void *> seen;
  for (int i = 0; i < 50; ++i) {
    void *b = VirtualAlloc(nullptr, p, MEM_COMMIT, PAGE_READWRITE);
    ASSERT_NE(b, nullptr);
    for (void *s : seen) ASSERT_NE(s, b);
    seen.push_back(b);
    ASSERT_TRUE(VirtualFree(b, p, MEM_DECOMMIT));
  }
  void *base = VirtualAlloc(nullptr, p, MEM_COMMIT, PAGE_READWRITE);
  EXPECT_FALSE(VirtualFree(base, p, MEM_RELEASE));  // release takes size 0
  EXPECT_TRUE(VirtualFree(base, 0, MEM_RELEASE));
  EXPECT_EQ(query(base).State, MEM_RESERVE);
}

TEST(Win32Sync, CriticalSectionIsRecursiveAndExclusive) {
  CRITICAL_SECTION section;
  InitializeCriticalSection(&section);
  EnterCriticalSection(&section);
  EnterCriticalSection(&section);
  LeaveCriticalSection(&section);
  LeaveCriticalSection(&section);
  long counter = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&] {
      for (int i = 0; i < 10000; ++i) {
        EnterCriticalSection(&section);
        ++counter;
        LeaveCriticalSection(&section);
      }
    });
  for (auto &t : threads) t.join();
  EXPECT_EQ(counter, 40000);
  DeleteCriticalSection(&section);
}

}  // namespace
