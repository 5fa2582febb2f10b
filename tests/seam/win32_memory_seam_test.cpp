// The memory side of the Win32 seam, tested directly on the library's
// internal objects. Its message box and breakpoint, and page protection,
// are exercised by the guard heap's tests (guard_heap_test.cpp), its
// critical section by the memory shell's threads test under TSan
// (memshell_test.cpp); argument checks that the library's own calls never
// meet are not tested.
#include <gtest/gtest.h>

#include <vector>

#include "platform/win32.h"

namespace {

// A freed block's address must fault when used, so it is never handed out
// again; a release leaves the range reserved.
TEST(Win32Memory, ReservedOnlyAndAddressesAreNeverReused) {
  SYSTEM_INFO info;
  GetSystemInfo(&info);
  const DWORD p = info.dwPageSize;
  void *reserved = VirtualAlloc(nullptr, p, MEM_RESERVE, PAGE_READWRITE);
  ASSERT_NE(reserved, nullptr);
  MEMORY_BASIC_INFORMATION m;
  ASSERT_EQ(VirtualQuery(reserved, &m, sizeof m), sizeof m);
  EXPECT_EQ(m.State, MEM_RESERVE);
  std::vector<void *> seen;
  for (int i = 0; i < 50; ++i) {
    void *b = VirtualAlloc(nullptr, p, MEM_COMMIT, PAGE_READWRITE);
    ASSERT_NE(b, nullptr);
    for (void *s : seen) ASSERT_NE(s, b);
    seen.push_back(b);
    ASSERT_TRUE(VirtualFree(b, p, MEM_DECOMMIT));
  }
  void *base = VirtualAlloc(nullptr, p, MEM_COMMIT, PAGE_READWRITE);
  EXPECT_TRUE(VirtualFree(base, 0, MEM_RELEASE));
  ASSERT_EQ(VirtualQuery(base, &m, sizeof m), sizeof m);
  EXPECT_EQ(m.State, MEM_RESERVE);
}

}  // namespace
