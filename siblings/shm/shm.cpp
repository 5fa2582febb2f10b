// Spin locks of libkorshm. Locks live in chunks that are never freed, so a
// handle (index + 1) always names valid memory even while another thread
// allocates; freed handles go on a free list for reuse.
#include "siblings/shm/shm.h"

#include <array>
#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include "utl/no_throw.h"

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#define SHM_PAUSE() _mm_pause()
#else
#define SHM_PAUSE() std::atomic_signal_fence(std::memory_order_seq_cst)
#endif

extern "C" SHM_API const int32_t SHM_V22 = 22;

namespace {

struct SpinLock {
  std::atomic<bool> held{false};
  std::atomic<std::thread::id> owner{};
  std::atomic<bool> in_use{false};
};

constexpr uint32_t kChunkSize = 1024;
constexpr uint32_t kMaxChunks = 1024;  // about a million live locks

std::array<std::atomic<SpinLock *>, kMaxChunks> chunks{};
std::mutex registry_mutex;  // guards allocation, freeing and the lists below
uint32_t next_unused = 0;
std::vector<uint32_t> free_handles;

SpinLock *lock_of(uint32_t handle) {
  if (handle == 0) return nullptr;
  const uint32_t index = handle - 1;
  if (index / kChunkSize >= kMaxChunks) return nullptr;
  SpinLock *chunk = chunks[index / kChunkSize].load(std::memory_order_acquire);
  if (chunk == nullptr) return nullptr;
  SpinLock *l = &chunk[index % kChunkSize];
  return l->in_use.load(std::memory_order_acquire) ? l : nullptr;
}

}  // namespace

extern "C" {

SHM_API int32_t shm_spin_alloc(uint32_t *lock, int32_t, int32_t, int32_t, const char *, int32_t) {
  if (lock == nullptr) return SHM_E_ARGUMENT;
  std::lock_guard guard(registry_mutex);
  uint32_t index;
  if (!free_handles.empty()) {
    index = free_handles.back() - 1;
    free_handles.pop_back();
  } else {
    if (next_unused >= kChunkSize * kMaxChunks) return SHM_E_NO_MEMORY;
    index = next_unused;
    auto &slot = chunks[index / kChunkSize];
    if (slot.load(std::memory_order_relaxed) == nullptr) {
      auto *chunk = new (std::nothrow) SpinLock[kChunkSize];
      if (chunk == nullptr) return SHM_E_NO_MEMORY;
      slot.store(chunk, std::memory_order_release);
    }
    ++next_unused;
  }
  SpinLock &l = chunks[index / kChunkSize].load(std::memory_order_relaxed)[index % kChunkSize];
  l.held.store(false, std::memory_order_relaxed);
  l.owner.store(std::thread::id{}, std::memory_order_relaxed);
  l.in_use.store(true, std::memory_order_release);
  *lock = index + 1;
  return SHM_OK;
}

SHM_API int32_t shm_spin_free(uint32_t lock, const char *, int32_t) {
  return korutl::without_exceptions(
      [&]() -> int32_t {
        std::lock_guard guard(registry_mutex);
        SpinLock *l = lock_of(lock);
        if (l == nullptr) return SHM_E_ARGUMENT;
        if (l->held.load(std::memory_order_acquire)) return SHM_E_HELD;
        // Listed first: a list that cannot grow leaves the lock as it was.
        free_handles.push_back(lock);
        l->in_use.store(false, std::memory_order_release);
        return SHM_OK;
      },
      [&] { return SHM_E_NO_MEMORY; });
}

SHM_API int32_t shm_spin_lock(uint32_t lock, int32_t, const char *, int32_t) {
  SpinLock *l = lock_of(lock);
  if (l == nullptr) return SHM_E_ARGUMENT;
  const auto self = std::this_thread::get_id();
  if (l->held.load(std::memory_order_relaxed) && l->owner.load(std::memory_order_relaxed) == self) {
    return SHM_E_HELD;
  }
  for (unsigned spins = 0;; ++spins) {
    // Test before test-and-set: waiters read a shared cache line instead of
    // bouncing it between cores with writes.
    if (!l->held.load(std::memory_order_relaxed) &&
        !l->held.exchange(true, std::memory_order_acquire)) {
      l->owner.store(self, std::memory_order_relaxed);
      return SHM_OK;
    }
    if (spins < 64) {
      SHM_PAUSE();
    } else {
      std::this_thread::yield();
    }
  }
}

SHM_API int32_t shm_spin_unlock(uint32_t lock, const char *, int32_t) {
  SpinLock *l = lock_of(lock);
  if (l == nullptr) return SHM_E_ARGUMENT;
  if (!l->held.load(std::memory_order_relaxed) ||
      l->owner.load(std::memory_order_relaxed) != std::this_thread::get_id()) {
    return SHM_E_NOT_HOLDER;
  }
  l->owner.store(std::thread::id{}, std::memory_order_relaxed);
  l->held.store(false, std::memory_order_release);
  return SHM_OK;
}

}  // extern "C"
