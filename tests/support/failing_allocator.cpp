// The wrappers the linker puts in place of malloc, calloc, realloc and
// operator new (--wrap, see korutl_allocation_sweep in tests/CMakeLists.txt).
#include "tests/support/failing_allocator.h"

#include <atomic>
#include <cstddef>

namespace korutl_test {

// 0: no call fails; n > 0: the nth call from now fails, later ones do not.
std::atomic<long> countdown{0}, failed{0};

bool fail_this_call() {
  if (countdown.load(std::memory_order_relaxed) <= 0) return false;
  if (countdown.fetch_sub(1, std::memory_order_relaxed) != 1) return false;
  failed.fetch_add(1, std::memory_order_relaxed);
  return true;
}

void fail_allocation(long n) {
  failed = 0;
  countdown = n;
}

long failed_allocations() { return failed.load(); }

}  // namespace korutl_test

// Visible beyond the program: under the sanitizers the linker also routes
// the shared libraries' references through the wrappers.
#define WRAPPER __attribute__((visibility("default")))
extern "C" {
void *__real_malloc(size_t size);
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *block, size_t size);
void *__real__Znwm(size_t size);
WRAPPER void *__wrap_malloc(size_t size) {
  return korutl_test::fail_this_call() ? nullptr : __real_malloc(size);
}
WRAPPER void *__wrap_calloc(size_t count, size_t size) {
  return korutl_test::fail_this_call() ? nullptr : __real_calloc(count, size);
}
WRAPPER void *__wrap_realloc(void *block, size_t size) {
  return korutl_test::fail_this_call() ? nullptr : __real_realloc(block, size);
}
WRAPPER void *__wrap__Znwm(size_t size) {
  if (korutl_test::fail_this_call()) throw std::bad_alloc();
  return __real__Znwm(size);
}
}
