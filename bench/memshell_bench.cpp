// Allocation pairs with 10,000 blocks live: the memory shell (whichever mode
// the process runs in), a bare page-per-block floor, a guard-page allocator
// peer and the standard heap. Run once from a shell-on build and once more
// with KORVO_MEMORY_SHELL=0 for the off mode.
#include <benchmark/benchmark.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#if defined(KORUTL_BENCH_HAVE_EFENCE)
#include <dlfcn.h>
#endif

#include "korutl.h"

namespace {

constexpr size_t kLive = 10000;

uint32_t block_size(size_t i) { return static_cast<uint32_t>(16 + (i * 37) % 240); }

// Each iteration frees the oldest live block and allocates one in its place.
template <typename Allocate, typename Release>
void run_pairs(benchmark::State &state, Allocate allocate, Release release) {
  std::vector<void *> live(kLive);
  for (size_t i = 0; i < kLive; ++i) live[i] = allocate(block_size(i));
  size_t i = 0;
  for (auto _ : state) {
    void *&slot = live[i % kLive];
    release(slot);
    slot = allocate(block_size(i));
    benchmark::DoNotOptimize(slot);
    ++i;
  }
  for (void *p : live) release(p);
  state.SetItemsProcessed(state.iterations());
}

// The build's initial mode, unless the environment turned it off.
bool shell_is_on() {
  const char *value = std::getenv("KORVO_MEMORY_SHELL");
  return KORUTL_MEMORY_SHELL_DEFAULT_ON && !(value != nullptr && std::strcmp(value, "0") == 0);
}

void BM_ShellPairs(benchmark::State &state) {
  state.SetLabel(shell_is_on() ? "shell on" : "shell off");
  run_pairs(
      state, [](uint32_t n) { return mmalloc(n, __LINE__, __FILE__); }, [](void *p) { mfree(p); });
}
BENCHMARK(BM_ShellPairs);

// The least a guard page per block can cost: map, protect the last page,
// unmap.
void BM_MmapFloorPairs(benchmark::State &state) {
  static const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  struct Block {
    char *base;
    size_t bytes;
  };
  auto allocate = [](uint32_t n) -> void * {
    const size_t data = (n + page - 1) / page * page;
    auto *base = static_cast<char *>(
        mmap(nullptr, data + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
    mprotect(base + data, page, PROT_NONE);
    auto *user = base + data - n;
    user[0] = 1;
    return user;
  };
  auto release = [](void *p) {
    auto addr = reinterpret_cast<uintptr_t>(p);
    auto *base = reinterpret_cast<char *>(addr / page * page);
    // The block ends at the guard page, so its start names the data page.
    munmap(base, 2 * page);
  };
  run_pairs(state, allocate, release);
}
BENCHMARK(BM_MmapFloorPairs);

#if defined(KORUTL_BENCH_HAVE_EFENCE)
using MemalignFn = void *(*)(size_t, size_t);
using FreeFn = void (*)(void *);
struct Efence {
  MemalignFn allocate = nullptr;
  FreeFn release = nullptr;
};
Efence &efence() {
  static Efence e = [] {
    Efence loaded;
    void *handle = dlopen(KORUTL_BENCH_EFENCE_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    if (handle != nullptr) {
      // Its malloc calls memalign through the global scope, which is the
      // standard heap's here; its own memalign is what does the work.
      loaded.allocate = reinterpret_cast<MemalignFn>(dlsym(handle, "memalign"));
      loaded.release = reinterpret_cast<FreeFn>(dlsym(handle, "free"));
    }
    return loaded;
  }();
  return e;
}

void BM_EfencePairs(benchmark::State &state) {
  if (efence().allocate == nullptr) {
    state.SkipWithError("guard-page peer not loadable");
    return;
  }
  run_pairs(
      state, [](uint32_t n) { return efence().allocate(sizeof(int), n); },
      [](void *p) { efence().release(p); });
}
BENCHMARK(BM_EfencePairs);
#endif

void BM_MallocPairs(benchmark::State &state) {
  run_pairs(
      state, [](uint32_t n) { return std::malloc(n); }, [](void *p) { std::free(p); });
}
BENCHMARK(BM_MallocPairs);

}  // namespace
