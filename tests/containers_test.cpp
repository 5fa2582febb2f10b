// The synchronised stack, the hash table and the spin locks of libkorshm:
// positional rules, growth, and many threads at once.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "korutl.h"
#include "siblings/shm/shm.h"

namespace {

using V = std::vector<intptr_t>;

class Stack : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(KORVOStackInit(&stack_), 0); }
  void TearDown() override {
    clear();
    EXPECT_EQ(KORVOStackFinite(&stack_), 0);
  }
  void clear() {
    while (KORVOStackLength(stack_) > 0) KORVOStackPop(stack_);
  }
  // The values from the top down, as digits.
  std::string contents() {
    std::string s;
    for (int32_t i = 0, n = KORVOStackLength(stack_); i < n; ++i)
      s += std::to_string(KORVOStackGetNth(stack_, i));
    return s;
  }
  KORVOStack *stack_ = nullptr;
};

TEST_F(Stack, PositionalRulesAndNullHandles) {
  for (intptr_t v : {1, 2, 3}) EXPECT_EQ(KORVOStackAppend(stack_, v), 0);
  EXPECT_EQ(contents(), "123");
  EXPECT_EQ(KORVOStackGetNth(stack_, 3), 0);
  EXPECT_EQ(KORVOStackGetNth(stack_, -1), 0);
  // Inserting 9 and deleting at positions of "123": past the end, an
  // insertion goes to the end but reports -1, a deletion does nothing;
  // negative positions insert at the top and delete nothing.
  const std::tuple<int32_t, int32_t, const char *, intptr_t, const char *> cases[] = {
      {0, 0, "9123", 1, "23"},
      {1, 0, "1923", 2, "13"},
      {3, 0, "1239", 0, "123"},
      {7, -1, "1239", 0, "123"},
      {-4, 0, "9123", 0, "123"}};
  for (const auto &[position, inserted, after_insert, deleted, after_delete] : cases) {
    for (const bool insert : {true, false}) {
      clear();
      for (intptr_t v : {3, 2, 1}) KORVOStackPush(stack_, v);
      EXPECT_EQ(
          insert ? KORVOStackInsertNth(stack_, position, 9) : KORVOStackDeleteNth(stack_, position),
          insert ? inserted : deleted)
          << position;
      EXPECT_EQ(contents(), insert ? after_insert : after_delete) << position;
    }
  }
  clear();
  EXPECT_EQ(KORVOStackDeleteNth(stack_, 0), 0);
  EXPECT_EQ(KORVOStackPop(stack_), 0);
  EXPECT_EQ((std::vector<int32_t>{KORVOStackInit(nullptr), KORVOStackFinite(nullptr),
                                  KORVOStackPush(nullptr, 1), KORVOStackAppend(nullptr, 1),
                                  KORVOStackInsertNth(nullptr, 0, 1)}),
            std::vector<int32_t>(5, -2));
  EXPECT_EQ((V{KORVOStackPop(nullptr), KORVOStackLength(nullptr), KORVOStackGetNth(nullptr, 0),
               KORVOStackDeleteNth(nullptr, 0)}),
            V(4, 0));
}

// Threads push, pop and walk one stack at once; every value pushed is
// popped exactly once.
TEST_F(Stack, ThreadsLoseAndDuplicateNothing) {
  constexpr int kThreads = 4, kPerThread = 2000;
  std::vector<V> popped(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t)
    threads.emplace_back([this, t, &popped] {
      for (int i = 0; i < kPerThread; ++i) {
        const intptr_t v = t * kPerThread + i + 1;
        (i % 2 == 0 ? KORVOStackPush : KORVOStackAppend)(stack_, v);
        KORVOStackLength(stack_);
        KORVOStackGetNth(stack_, i % 7);
        if (intptr_t got = i % 3 == 0 ? KORVOStackPop(stack_) : 0)
          popped[static_cast<size_t>(t)].push_back(got);
      }
    });
  for (auto &th : threads) th.join();
  V all;
  for (auto &p : popped) all.insert(all.end(), p.begin(), p.end());
  while (intptr_t got = KORVOStackPop(stack_)) all.push_back(got);
  std::sort(all.begin(), all.end());
  ASSERT_EQ(all.size(), size_t{kThreads * kPerThread});
  for (size_t i = 0; i < all.size(); ++i) ASSERT_EQ(all[i], static_cast<intptr_t>(i + 1));
}

// The table grows as records are added: every record stays findable, and
// iteration gives each once.
TEST(HashTbl, GrowsKeepsEveryRecordOnceAndRecordsHoldTheCallersKeyAndZeros) {
  KORVOHashTbl table;
  KORVOHashTblInit(&table);
  std::set<std::string> keys;  // the table keeps the caller's key texts
  // The record of `key` with room for an int after the key pointer.
  const auto lookup = [&](int key, bool create) {
    const char *text = keys.insert("key" + std::to_string(key)).first->c_str();
    auto *r = static_cast<const char **>(KORVOHashTblLookup(&table, text, create ? 16 : 0));
    return r == nullptr ? nullptr : reinterpret_cast<int *>(r + 1);
  };
  EXPECT_EQ(lookup(0, false), nullptr);
  EXPECT_EQ(table.slots, nullptr) << "an empty table allocates nothing";
  for (int i = 0; i < 300; ++i) *lookup(i, true) = i;
  for (int i = 0; i < 300; ++i) ASSERT_EQ(*lookup(i, false), i);
  // Iteration gives every record once.
  KORVOHashTblIter it;
  KORVOHashTblIterInit(&it, &table);
  std::set<std::string> seen;
  while (auto *r = static_cast<const char **>(KORVOHashTblIterNext(&it)))
    EXPECT_TRUE(seen.insert(*r).second) << *r;
  EXPECT_EQ(seen, keys);
  const char *alpha = "Alpha";
  auto *r = static_cast<unsigned char *>(KORVOHashTblLookup(&table, alpha, 64));
  ASSERT_NE(r, nullptr);
  EXPECT_EQ(*reinterpret_cast<const char **>(r), alpha);
  for (size_t i = sizeof(char *); i < 64; ++i) EXPECT_EQ(r[i], 0) << i;
  EXPECT_EQ(KORVOHashTblLookup(&table, "Alpha", 128), r) << "existing record, size ignored";
  EXPECT_NE(KORVOHashTblLookup(&table, "alpha", 16), r) << "case matters";
  EXPECT_NE(KORVOHashTblLookup(&table, "", 16), nullptr) << "the empty key is a key";
  EXPECT_EQ(table.count, 303u);
  EXPECT_EQ(KORVOHashTblLookup(&table, "tiny", 1), nullptr) << "no room for the key";
  EXPECT_EQ(KORVOHashTblLookup(&table, nullptr, 16), nullptr);
  KORVOHashTblDestroy(&table);
}

// One holder, no re-entry, only the holder unlocks, a freed handle names
// no lock.
TEST(SpinLock, HolderRulesAndExclusionOfOtherThreads) {
  uint32_t lock = 0;
  ASSERT_EQ(shm_spin_alloc(&lock, 0, -1, 0, "test", __LINE__), SHM_OK);
  EXPECT_EQ(shm_spin_lock(lock, 0, "test", __LINE__), SHM_OK);
  EXPECT_EQ(shm_spin_lock(lock, 0, "test", __LINE__), SHM_E_HELD) << "no re-entry, no deadlock";
  int32_t other = -1;
  std::thread([&] { other = shm_spin_unlock(lock, "test", __LINE__); }).join();
  EXPECT_EQ(other, SHM_E_NOT_HOLDER);
  EXPECT_EQ(shm_spin_free(lock, "test", __LINE__), SHM_E_HELD);
  EXPECT_EQ(shm_spin_unlock(lock, "test", __LINE__), SHM_OK);
  EXPECT_EQ(shm_spin_free(lock, "test", __LINE__), SHM_OK);
  EXPECT_EQ(shm_spin_lock(lock, 0, "test", __LINE__), SHM_E_ARGUMENT);
  EXPECT_EQ(shm_spin_alloc(nullptr, 0, -1, 0, "test", __LINE__), SHM_E_ARGUMENT);
  EXPECT_EQ(shm_spin_lock(0, 0, "test", __LINE__), SHM_E_ARGUMENT);
  ASSERT_EQ(shm_spin_alloc(&lock, 0, -1, 0, "test", __LINE__), SHM_OK);
  long counter = 0;  // plain: only the lock orders the increments
  std::thread threads[3];
  for (auto &t : threads)
    t = std::thread([&] {
      for (int i = 0; i < 20000; ++i) {
        shm_spin_lock(lock, 0, "test", __LINE__);
        ++counter;
        shm_spin_unlock(lock, "test", __LINE__);
      }
    });
  for (auto &t : threads) t.join();
  EXPECT_EQ(counter, 60000);
  EXPECT_EQ(shm_spin_free(lock, "test", __LINE__), SHM_OK);
}

}  // namespace
