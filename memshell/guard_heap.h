// The guard-page heap: every block on pages of its own, its last byte right
// before an inaccessible page. Freed regions are decommitted and their
// addresses never come back.
#ifndef KORUTL_MEMSHELL_GUARD_HEAP_H
#define KORUTL_MEMSHELL_GUARD_HEAP_H

#include <cstdint>

namespace korutl::memshell {

constexpr uint32_t kBlockMagic = 0xAB01CD02u;

// The header's fields, in this order at a multiple of 4 just below the user
// block: region base (pointer-sized), size, page count (data pages plus the
// guard page), magic. With a 64-bit region base it takes 20 bytes (16 on a
// 32-bit build), so it sits 20 to 23 bytes below the user block and a region
// needs room for n + 23 bytes; it is packed (the base only 4-aligned) and accessed bytewise.
struct BlockHeader {
  void *region_base;
  uint32_t size;
  uint32_t page_count;
  uint32_t magic;
};
constexpr uint32_t kHeaderBytes = sizeof(void *) + 3 * sizeof(uint32_t);
// Header plus up to 3 bytes that align it.
constexpr uint32_t kHeaderSlot = kHeaderBytes + 3;

uint32_t heap_page_size();

// Plain region allocation, no accounting. Null for requests whose region
// size does not fit in 32 bits.
void *nalloc_pages(uint32_t n, bool zero);
void *nmalloc(uint32_t n);
void *ncalloc(uint32_t count, uint32_t size);
void *nrealloc(void *block, uint32_t n);
void nfree(void *block);
// True, with the header copied out, when block is a live block of this heap.
bool nblock_find(const void *block, BlockHeader *header);
bool nblock_release(const void *block);
// Shows the heap error box; true when the user asked for a breakpoint.
bool dbgheap_ask(const char *message);

}  // namespace korutl::memshell

#endif
