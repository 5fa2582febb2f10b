// The guard-page heap and the memory table, on the library's internal
// objects, so they are tested whatever the build's initial mode.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iomanip>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "memshell/guard_heap.h"
#include "memshell/memory_table.h"
#include "memshell/shell.h"
#include "platform/win32.h"
#include "tests/support/expect_fault.h"

using namespace korutl::memshell;

namespace {

bool operator==(const Totals &a, const Totals &b) { return std::memcmp(&a, &b, sizeof a) == 0; }

class GuardHeap : public ::testing::Test {
 protected:
  void SetUp() override {
    memshell_init();
    setenv("KORVO_MESSAGEBOX_ANSWER", "no", 1);
  }
};

// Every block ends where its guard page begins, after fill bytes and its
// header; nmalloc leaves fill bytes in the block, ncalloc zeros.
TEST_F(GuardHeap, LayoutOversizedRegionsReallocAndMismatchedPointers) {
  const uint32_t P = heap_page_size();
  // P - kHeaderSlot bytes are the most that one data page holds.
  for (const uint32_t request : {0u, 1u, 7u, 8u, P - kHeaderSlot, P - kHeaderSlot + 1, 3 * P})
    for (const bool zeroed : {false, true}) {
      SCOPED_TRACE(testing::Message() << "request " << request << (zeroed ? " zeroed" : ""));
      auto *user = static_cast<unsigned char *>(zeroed ? ncalloc(1, request) : nmalloc(request));
      BlockHeader h;
      ASSERT_TRUE(nblock_find(user, &h));
      const uint32_t n = request == 0 && !zeroed ? 1 : request;  // nmalloc(0) gives one byte
      const auto *base = static_cast<const unsigned char *>(h.region_base);
      EXPECT_EQ(static_cast<size_t>(user + n - base), size_t{(n + kHeaderSlot + P - 1) / P} * P);
      EXPECT_LE(std::count_if(base, static_cast<const unsigned char *>(user),
                              [](unsigned char b) { return b != 0xAA; }),
                std::ptrdiff_t{kHeaderBytes});
      for (size_t i = 0; i < n; ++i) ASSERT_EQ(user[i], zeroed ? 0x00 : 0xAA) << i;
      MEMORY_BASIC_INFORMATION info;
      VirtualQuery(user + n, &info, sizeof info);
      EXPECT_EQ(info.Protect, PAGE_NOACCESS);
      nfree(user);
    }
  // Regions whose size does not fit in 32 bits are refused, counting
  // nothing. What the others count, the report shows (MemoryTableReport).
  const Totals before = totals_snapshot();
  EXPECT_EQ(nmalloc(UINT32_MAX), nullptr);
  EXPECT_EQ(nmalloc(UINT32_MAX - heap_page_size()), nullptr);
  EXPECT_EQ(ncalloc(1, UINT32_MAX - kHeaderSlot + 1), nullptr);
  EXPECT_TRUE(totals_snapshot() == before);
  auto *ten = static_cast<unsigned char *>(nmalloc(10));
  std::memcpy(ten, "0123456789", 10);
  auto *four = static_cast<unsigned char *>(nrealloc(ten, 4));
  ASSERT_NE(four, nullptr);
  EXPECT_EQ(std::memcmp(four, "0123", 4), 0);
  auto *again = static_cast<unsigned char *>(nrealloc(four, 10));
  EXPECT_EQ(std::memcmp(again, "0123\xAA\xAA\xAA\xAA\xAA\xAA", 10), 0);
  BlockHeader h;
  EXPECT_FALSE(nblock_find(four, &h));  // the old block is gone
  EXPECT_EQ(nrealloc(again, 0), nullptr);
  EXPECT_FALSE(nblock_find(again, &h));
  // A stray pointer: both boxes are shown, and nothing is copied.
  int on_stack = 7;
  testing::internal::CaptureStderr();
  void *fresh = nrealloc(&on_stack, 4);
  const std::string err = testing::internal::GetCapturedStderr();
  ASSERT_NE(fresh, nullptr);
  EXPECT_NE(err.find("on nrealloc()!"), std::string::npos);
  EXPECT_NE(err.find("on nfree()!"), std::string::npos);
  EXPECT_EQ(static_cast<unsigned char *>(fresh)[0], 0xAA);
  nfree(fresh);
  void *block = nmalloc(40);
  ASSERT_NE(block, nullptr);
  // Strays: a freed block, one from malloc, a block's inside, the stack.
  void *from_malloc = std::malloc(64);
  void *freed = nmalloc(8);
  nfree(freed);
  const Totals unchanged = totals_snapshot();
  // block + 57: its header would lie in the guard page.
  char *inside = static_cast<char *>(block);
  for (void *stray :
       {freed, from_malloc, static_cast<void *>(inside + 20), static_cast<void *>(&on_stack),
        static_cast<void *>(inside + 57), reinterpret_cast<void *>(uintptr_t{8})}) {
    testing::internal::CaptureStderr();
    nfree(stray);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "DbgHeap\nHeap-Fehler: Missmatched memory block on nfree()!\nActivate breakpoint?\n");
    EXPECT_TRUE(totals_snapshot() == unchanged);
  }
  // The live block survived all of it.
  static_cast<char *>(block)[39] = 1;
  std::free(from_malloc);
  nfree(block);
}

class GuardHeapDeath : public GuardHeap, public ::testing::WithParamInterface<uint32_t> {};

TEST_P(GuardHeapDeath, PastTheEndAndAfterFreeFault) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const uint32_t n = GetParam();
  auto *user = static_cast<volatile unsigned char *>(nmalloc(n));
  ASSERT_NE(user, nullptr);
  user[n - 1] = 1;  // the last byte is the block's own
  EXPECT_FAULT((void)user[n]);
  EXPECT_FAULT(user[n] = 1);
  nfree(const_cast<unsigned char *>(user));
  EXPECT_FAULT((void)user[0]);
  EXPECT_FAULT(user[n - 1] = 1);
}

// Sizes at either side of a 4096-byte page's data, and larger ones.
INSTANTIATE_TEST_SUITE_P(Sizes, GuardHeapDeath,
                         ::testing::Values(1u, 4u, 4077u, 4078u, 48719u, 22642u, 11880u));

TEST_F(GuardHeap, MismatchAnsweredYesBreaks) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  int on_stack = 0;
  EXPECT_BREAKPOINT((setenv("KORVO_MESSAGEBOX_ANSWER", "yes", 1), nfree(&on_stack)),
                    "Activate breakpoint");
}

// A program's life: a million blocks, up to 10,000 live at once. Without
// merging of released ranges this runs out of kernel mappings.
TEST_F(GuardHeap, MillionBlocksOutliveTheMappingLimit) {
#if defined(_WIN32)
  // Wine maps every reserved region of its own, so a process meets the
  // host's mapping limit after some 38000 regions that Windows holds easily.
  if (GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr)
    GTEST_SKIP() << "under Wine, address space reserved by decommitted blocks runs into the "
                    "host's mapping limit";
#endif
  constexpr size_t kLive = 10000;
  constexpr size_t kTotal = 1000000;
  std::vector<void *> live(kLive, nullptr);
  std::mt19937 random(9);
  for (size_t i = 0; i < kTotal; ++i) {
    void *&slot = live[i % kLive];
    if (slot != nullptr) nfree(slot);
    slot = nmalloc(static_cast<uint32_t>(1 + random() % 200));
    ASSERT_NE(slot, nullptr) << "allocation " << i;
  }
  for (void *p : live) nfree(p);
}

// The report, byte for byte, in a fresh process so the totals are known.
// File names: the path is cut to 199 characters, its base name to 99.
TEST(MemoryTableReport, KnownSequence) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  auto run = [] {
    memshell_init();
    void *alpha = nmalloc(100), *beta = ncalloc(1, 7), *zero = nmalloc(0);  // 0 counts 1
    memtab_add(alpha, 100, 12, "..\\src\\alpha.x");
    memtab_add(beta, 7, 40, ("x\\" + std::string(300, 'p')).c_str());
    memtab_add(zero, 0, -3, "dir/with/slashes\\");
    memtab_add(&alpha, 1, 1, nullptr);  // listed, not counted
    nfree(alpha);
    memtab_remove(alpha);
    testing::internal::CaptureStdout();
    const uint32_t listed = memtab_print("a title that is longer than thirty-five characters");
    memtab_remove(nullptr);
    const std::string text = testing::internal::GetCapturedStdout();
    const char *rule = "=========================================================\n";
    std::ostringstream want;  // addresses in hex, at least 8 wide
    want << "\n"
         << rule << "I     Memory table: a title that is longer than thirty-five characters I\n"
         << rule << std::hex << "Addr:" << std::setw(8) << reinterpret_cast<uintptr_t>(beta)
         << " Size:     7 Line:  40 File : " << std::string(99, 'p') << "\nAddr:" << std::setw(8)
         << reinterpret_cast<uintptr_t>(zero)
         << " Size:     0 Line:  -3 File : \nAddr:" << std::setw(8)
         << reinterpret_cast<uintptr_t>(&alpha) << " Size:     1 Line:   1 File : \n"
         << "No. of curr./all/max allocated items:             2             3             3\n"
         << "No. of curr./all/max allocated bytes:             8           108           108\n\n";
    if (listed != 3 || text != want.str()) {
      std::fprintf(stderr, "got:%s\nexpected:%s\n", text.c_str(), want.str().c_str());
      std::_Exit(1);
    }
    std::_Exit(0);
  };
  EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), "");
}

}  // namespace
