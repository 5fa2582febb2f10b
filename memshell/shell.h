// State shared by the memory shell's parts: mode, one-time start, the shell
// lock and the usage totals.
#ifndef KORUTL_MEMSHELL_SHELL_H
#define KORUTL_MEMSHELL_SHELL_H

#include <cstdint>

namespace korutl::memshell {

// The six usage totals; 32-bit, wrapping, never reset.
struct Totals {
  uint32_t current_bytes;
  uint32_t current_items;
  uint32_t maximum_bytes;
  uint32_t maximum_items;
  uint32_t all_bytes;
  uint32_t all_items;
};

// Reads KORVO_MEMORY_SHELL once per process and sets up the shell lock.
void memshell_init();
// True when blocks are guarded and listed; valid after memshell_init.
bool shell_on();

void shell_lock();
void shell_unlock();

// Both take the shell lock themselves.
void totals_count_allocation(uint32_t bytes);
void totals_count_release(uint32_t bytes);
Totals totals_snapshot();
// Caller holds the shell lock.
const Totals &totals_locked();

}  // namespace korutl::memshell

#endif
