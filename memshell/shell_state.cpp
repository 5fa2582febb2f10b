// The memory shell's process-wide state: mode, one-time start, shell lock
// and totals.
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "memshell/shell.h"
#include "platform/win32.h"

namespace korutl::memshell {
namespace {

#if defined(KORUTL_MEMORY_SHELL_INITIAL_ON) && KORUTL_MEMORY_SHELL_INITIAL_ON
constexpr bool kInitialMode = true;
#else
constexpr bool kInitialMode = false;
#endif

std::atomic<bool> initialised{false};
bool mode_on = kInitialMode;  // written once, before initialised is set
std::once_flag start_once;
CRITICAL_SECTION lock;
Totals totals{};

}  // namespace

// A once-flag guards the start, so two threads making their first call at
// the same time are safe as well; afterwards one atomic load is the cost.
void memshell_init() {
  if (initialised.load(std::memory_order_acquire)) return;
  std::call_once(start_once, [] {
    const char *value = std::getenv("KORVO_MEMORY_SHELL");
    if (value != nullptr && std::strcmp(value, "0") == 0) mode_on = false;
    InitializeCriticalSection(&lock);
    initialised.store(true, std::memory_order_release);
  });
}

bool shell_on() { return mode_on; }

void shell_lock() { EnterCriticalSection(&lock); }
void shell_unlock() { LeaveCriticalSection(&lock); }

void totals_count_allocation(uint32_t bytes) {
  shell_lock();
  totals.current_bytes += bytes;
  totals.all_bytes += bytes;
  totals.current_items += 1;
  totals.all_items += 1;
  if (totals.maximum_bytes < totals.current_bytes) totals.maximum_bytes = totals.current_bytes;
  if (totals.maximum_items < totals.current_items) totals.maximum_items = totals.current_items;
  shell_unlock();
}

void totals_count_release(uint32_t bytes) {
  shell_lock();
  totals.current_bytes -= bytes;
  totals.current_items -= 1;
  shell_unlock();
}

Totals totals_snapshot() {
  shell_lock();
  Totals copy = totals;
  shell_unlock();
  return copy;
}

const Totals &totals_locked() { return totals; }

}  // namespace korutl::memshell
