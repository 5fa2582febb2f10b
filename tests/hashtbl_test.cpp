// The hash table: growth points, probing order, zero-filled records that
// hold the caller's key pointer, and iteration.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "korutl.h"

namespace {

struct Record {
  const char *key;
  int value;
};

uint32_t hash_of(const std::string &s) {
  uint32_t h = 0;
  for (unsigned char c : s) h = h * 33 + c;
  return h;
}

class HashTbl : public ::testing::Test {
 protected:
  void SetUp() override { KORVOHashTblInit(&table_); }
  void TearDown() override { KORVOHashTblDestroy(&table_); }
  Record *lookup(const std::string &key, bool create) {
    keys_.push_back(std::make_unique<std::string>(key));
    return static_cast<Record *>(
        KORVOHashTblLookup(&table_, keys_.back()->c_str(), create ? sizeof(Record) : 0));
  }
  KORVOHashTbl table_;
  std::vector<std::unique_ptr<std::string>> keys_;
};

TEST_F(HashTbl, EmptyTableFindsNothingAndAllocatesNothing) {
  EXPECT_EQ(lookup("absent", false), nullptr);
  EXPECT_EQ(table_.slots, nullptr);
  EXPECT_EQ(table_.size, 0u);
  KORVOHashTblIter it;
  KORVOHashTblIterInit(&it, &table_);
  EXPECT_EQ(KORVOHashTblIterNext(&it), nullptr);
}

TEST_F(HashTbl, GrowsAtHalfLoadAndKeepsEveryRecord) {
  struct Step {
    int keys;
    uint32_t size, limit;
  };
  const Step steps[] = {{1, 64, 32}, {32, 64, 32}, {33, 128, 64}, {64, 128, 64}, {65, 256, 128}};
  int made = 0;
  for (const Step &s : steps) {
    for (; made < s.keys; ++made) {
      Record *r = lookup("key" + std::to_string(made), true);
      ASSERT_NE(r, nullptr);
      r->value = made;
    }
    EXPECT_EQ(table_.size, s.size) << s.keys << " keys";
    EXPECT_EQ(table_.limit, s.limit) << s.keys << " keys";
    EXPECT_EQ(table_.count, static_cast<uint32_t>(s.keys));
    for (int i = 0; i < made; ++i) {
      Record *r = lookup("key" + std::to_string(i), false);
      ASSERT_NE(r, nullptr) << i;
      EXPECT_EQ(r->value, i);
    }
  }
}

TEST_F(HashTbl, RecordsHoldTheCallersKeyPointerAndZeros) {
  const char *key = "Alpha";
  auto *r = static_cast<unsigned char *>(KORVOHashTblLookup(&table_, key, 64));
  ASSERT_NE(r, nullptr);
  EXPECT_EQ(*reinterpret_cast<const char **>(r), key);
  for (size_t i = sizeof(char *); i < 64; ++i) EXPECT_EQ(r[i], 0) << i;
  EXPECT_EQ(KORVOHashTblLookup(&table_, "Alpha", 128), r) << "existing record, size ignored";
  EXPECT_EQ(table_.count, 1u);
  EXPECT_NE(lookup("alpha", true), static_cast<void *>(r)) << "case matters";
  EXPECT_NE(lookup("", true), nullptr) << "the empty key is a key";
  EXPECT_EQ(table_.count, 3u);
  EXPECT_EQ(KORVOHashTblLookup(&table_, "tiny", 1), nullptr) << "no room for the key";
  EXPECT_EQ(KORVOHashTblLookup(&table_, nullptr, 16), nullptr);
}

// Keys whose home slot is 0 collide; the second goes to slot 63 (wrap).
TEST_F(HashTbl, ProbesDownwardAndWraps) {
  std::vector<std::string> home0;
  for (int i = 0; home0.size() < 2; ++i) {
    const std::string k = "k" + std::to_string(i);
    if ((hash_of(k) & 63) == 0) home0.push_back(k);
  }
  Record *first = lookup(home0[0], true);
  Record *second = lookup(home0[1], true);
  EXPECT_EQ(table_.slots[0], first);
  EXPECT_EQ(table_.slots[63], second);
  EXPECT_EQ(lookup(home0[1], false), second);
}

TEST_F(HashTbl, IteratesEveryRecordOnceInSlotOrder) {
  std::set<std::string> made;
  for (int i = 0; i < 100; ++i) made.insert(lookup("n" + std::to_string(i), true)->key);
  KORVOHashTblIter it;
  KORVOHashTblIterInit(&it, &table_);
  std::set<std::string> seen;
  void **last = nullptr;
  while (auto *r = static_cast<Record *>(KORVOHashTblIterNext(&it))) {
    EXPECT_TRUE(seen.insert(r->key).second) << r->key;
    EXPECT_GT(it.cur, last);
    last = it.cur;
  }
  EXPECT_EQ(seen, made);
}

}  // namespace
