// The synchronised stack: positional rules, lock failures, and many threads
// on one stack.
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <vector>

#include "korutl.h"

namespace {

class Stack : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(KORVOStackInit(&stack_), 0); }
  void TearDown() override {
    while (KORVOStackLength(stack_) > 0) KORVOStackPop(stack_);
    EXPECT_EQ(KORVOStackFinite(&stack_), 0);
  }
  // The values from the top down.
  std::vector<intptr_t> contents() {
    std::vector<intptr_t> v;
    for (int32_t i = 0, n = KORVOStackLength(stack_); i < n; ++i) {
      v.push_back(KORVOStackGetNth(stack_, i));
    }
    return v;
  }
  void fill_abc() {
    for (intptr_t v : {'c', 'b', 'a'}) ASSERT_EQ(KORVOStackPush(stack_, v), 0);
  }
  KORVOStack *stack_ = nullptr;
};

using V = std::vector<intptr_t>;

TEST_F(Stack, PushGetNthAppend) {
  for (intptr_t v : {1, 2, 3}) KORVOStackPush(stack_, v);
  EXPECT_EQ(contents(), (V{3, 2, 1}));
  EXPECT_EQ(KORVOStackGetNth(stack_, 3), 0);
  EXPECT_EQ(KORVOStackGetNth(stack_, -1), 0);
  while (KORVOStackPop(stack_) != 0) {
  }
  for (intptr_t v : {1, 2, 3}) EXPECT_EQ(KORVOStackAppend(stack_, v), 0);
  EXPECT_EQ(contents(), (V{1, 2, 3}));
}

TEST_F(Stack, InsertNth) {
  struct Case {
    int32_t position;
    int32_t result;
    V after;
  };
  const Case cases[] = {
      {1, 0, {'a', 'x', 'b', 'c'}},  {3, 0, {'a', 'b', 'c', 'x'}}, {7, -1, {'a', 'b', 'c', 'x'}},
      {-4, 0, {'x', 'a', 'b', 'c'}}, {0, 0, {'x', 'a', 'b', 'c'}},
  };
  for (const Case &c : cases) {
    fill_abc();
    EXPECT_EQ(KORVOStackInsertNth(stack_, c.position, 'x'), c.result) << c.position;
    EXPECT_EQ(contents(), c.after) << c.position;
    while (KORVOStackPop(stack_) != 0) {
    }
  }
  EXPECT_EQ(KORVOStackInsertNth(stack_, 2, 'x'), -1) << "past the end of an empty stack";
  EXPECT_EQ(contents(), (V{'x'}));
}

TEST_F(Stack, DeleteNth) {
  struct Case {
    int32_t position;
    intptr_t removed;
    V after;
  };
  const Case cases[] = {
      {2, 'c', {'a', 'b'}}, {3, 0, {'a', 'b', 'c'}},  {0, 'a', {'b', 'c'}},
      {1, 'b', {'a', 'c'}}, {-1, 0, {'a', 'b', 'c'}},
  };
  for (const Case &c : cases) {
    fill_abc();
    EXPECT_EQ(KORVOStackDeleteNth(stack_, c.position), c.removed) << c.position;
    EXPECT_EQ(contents(), c.after) << c.position;
    while (KORVOStackPop(stack_) != 0) {
    }
  }
  EXPECT_EQ(KORVOStackDeleteNth(stack_, 0), 0);
  EXPECT_EQ(KORVOStackPop(stack_), 0);
  EXPECT_EQ(KORVOStackLength(stack_), 0);
}

TEST_F(Stack, InitOnExistingHandleKeepsIt) {
  KORVOStackPush(stack_, 42);
  KORVOStack *same = stack_;
  EXPECT_EQ(KORVOStackInit(&stack_), 0);
  EXPECT_EQ(stack_, same);
  EXPECT_EQ(KORVOStackGetNth(stack_, 0), 42);
}

TEST(StackHandles, NullHandlesFailCleanly) {
  EXPECT_EQ(KORVOStackInit(nullptr), -2);
  EXPECT_EQ(KORVOStackFinite(nullptr), -2);
  EXPECT_EQ(KORVOStackPush(nullptr, 1), -2);
  EXPECT_EQ(KORVOStackAppend(nullptr, 1), -2);
  EXPECT_EQ(KORVOStackInsertNth(nullptr, 0, 1), -2);
  EXPECT_EQ(KORVOStackPop(nullptr), 0);
  EXPECT_EQ(KORVOStackLength(nullptr), 0);
  EXPECT_EQ(KORVOStackGetNth(nullptr, 0), 0);
  EXPECT_EQ(KORVOStackDeleteNth(nullptr, 0), 0);
}

// Threads push, pop and walk one stack at once; every value pushed is
// popped exactly once.
TEST_F(Stack, ThreadsLoseAndDuplicateNothing) {
  constexpr int kThreads = 4, kPerThread = 2000;
  std::vector<std::vector<intptr_t>> popped(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([this, t, &popped] {
      for (int i = 0; i < kPerThread; ++i) {
        const intptr_t v = t * kPerThread + i + 1;
        if (i % 2 == 0) {
          KORVOStackPush(stack_, v);
        } else {
          KORVOStackAppend(stack_, v);
        }
        KORVOStackLength(stack_);
        KORVOStackGetNth(stack_, i % 7);
        if (i % 3 == 0) {
          if (intptr_t got = KORVOStackPop(stack_)) popped[t].push_back(got);
        }
      }
    });
  }
  for (auto &th : threads) th.join();
  std::vector<intptr_t> all;
  for (auto &p : popped) all.insert(all.end(), p.begin(), p.end());
  while (intptr_t got = KORVOStackPop(stack_)) all.push_back(got);
  std::sort(all.begin(), all.end());
  ASSERT_EQ(all.size(), size_t{kThreads * kPerThread});
  for (size_t i = 0; i < all.size(); ++i) ASSERT_EQ(all[i], static_cast<intptr_t>(i + 1));
}

}  // namespace
