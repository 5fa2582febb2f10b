// Makes one allocation fail on purpose. Programs linked with
// korutl_allocation_sweep() (tests/CMakeLists.txt) route malloc, calloc,
// realloc and operator new through failing_allocator.cpp, so a test can
// make exactly the nth call fail (operator new then throws std::bad_alloc).
// sweep() runs an operation with the 1st, 2nd, ... allocation failing until
// a run makes no failing call: every run must end without a crash or an
// escaping exception, and under the sanitizers leave nothing allocated.
#ifndef KORUTL_TESTS_SUPPORT_FAILING_ALLOCATOR_H
#define KORUTL_TESTS_SUPPORT_FAILING_ALLOCATOR_H

#include <gtest/gtest.h>

#include <functional>
#include <new>

namespace korutl_test {

// From now on the nth allocation fails (n > 0), or none (n == 0).
void fail_allocation(long n);
// How many allocations have failed since the last fail_allocation().
long failed_allocations();

// One operation: runs it, releases what it returned, and says whether it
// gave its full, correct answer. It must allocate nothing itself, so that
// only the code under test is counted.
struct SweepCase {
  const char *name;
  std::function<bool()> run;
};

// Returns how many allocations the operation made; the run with none
// failing must give the full answer.
inline long sweep(const SweepCase &c) {
  for (long n = 1; n < 10000; ++n) {
    bool full_answer = false;
    fail_allocation(n);
    try {
      full_answer = c.run();
    } catch (const std::bad_alloc &) {
      // A C caller cannot catch it: the process would end.
      ADD_FAILURE() << c.name << ": std::bad_alloc escaped with allocation " << n << " failing";
    }
    const long failed = failed_allocations();
    fail_allocation(0);
    if (failed == 0) {
      EXPECT_TRUE(full_answer) << c.name << ": wrong answer with no allocation failing";
      return n - 1;
    }
  }
  ADD_FAILURE() << c.name << ": still allocating after 10000 calls";
  return 0;
}

// Sweeps every case; each must allocate something, or it tests nothing.
template <typename Cases>
void sweep_all(const Cases &cases) {
  for (const SweepCase &c : cases) EXPECT_GT(sweep(c), 0) << c.name << " allocates nothing";
}

}  // namespace korutl_test

#endif
