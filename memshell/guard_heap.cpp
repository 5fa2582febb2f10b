// The guard-page heap on the Win32 seam's virtual memory functions.
#include "memshell/guard_heap.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "memshell/memory_table.h"
#include "memshell/shell.h"
#include "platform/win32.h"

namespace korutl::memshell {
namespace {

constexpr unsigned char kFill = 0xAA;

std::atomic<uint32_t> page_size_cache{0};

unsigned char *header_address(const void *block) {
  uintptr_t at = reinterpret_cast<uintptr_t>(block) - kHeaderBytes;
  return reinterpret_cast<unsigned char *>(at & ~uintptr_t{3});
}

// The 32-bit fields follow the pointer-sized region base directly.
constexpr size_t kSizeAt = sizeof(void *);

void write_header(unsigned char *at, const BlockHeader &h) {
  std::memcpy(at, &h.region_base, sizeof h.region_base);
  std::memcpy(at + kSizeAt, &h.size, 4);
  std::memcpy(at + kSizeAt + 4, &h.page_count, 4);
  std::memcpy(at + kSizeAt + 8, &h.magic, 4);
}

BlockHeader read_header(const unsigned char *at) {
  BlockHeader h;
  std::memcpy(&h.region_base, at, sizeof h.region_base);
  std::memcpy(&h.size, at + kSizeAt, 4);
  std::memcpy(&h.page_count, at + kSizeAt + 4, 4);
  std::memcpy(&h.magic, at + kSizeAt + 8, 4);
  return h;
}

// True when every byte of [at, at + length) is committed and readable.
bool readable(const unsigned char *at, size_t length) {
  while (length > 0) {
    MEMORY_BASIC_INFORMATION info;
    if (VirtualQuery(at, &info, sizeof info) != sizeof info) return false;
    if (info.State != MEM_COMMIT || info.Protect == PAGE_NOACCESS) return false;
    const auto *end = static_cast<const unsigned char *>(info.BaseAddress) + info.RegionSize;
    const size_t here = std::min<size_t>(length, static_cast<size_t>(end - at));
    at += here;
    length -= here;
  }
  return true;
}

}  // namespace

uint32_t heap_page_size() {
  uint32_t size = page_size_cache.load(std::memory_order_relaxed);
  if (size == 0) {
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    size = info.dwPageSize;
    page_size_cache.store(size, std::memory_order_relaxed);
  }
  return size;
}

void *nalloc_pages(uint32_t n, bool zero) {
  const uint64_t page = heap_page_size();
  const uint64_t needed = uint64_t{n} + kHeaderSlot;
  const uint64_t data_pages = (needed + page - 1) / page;
  const uint64_t region_bytes = (data_pages + 1) * page;
  // The header records 32-bit sizes; a region beyond them is refused.
  if (needed > UINT32_MAX || region_bytes > UINT32_MAX) return nullptr;
  // Within 32 bits from here on, so the sizes fit a 32-bit SIZE_T too.
  const auto data_bytes = static_cast<size_t>(data_pages * page);
  auto *base = static_cast<unsigned char *>(
      VirtualAlloc(nullptr, static_cast<size_t>(region_bytes), MEM_COMMIT, PAGE_READWRITE));
  if (base == nullptr) return nullptr;
  DWORD old_protect;
  VirtualProtect(base + data_bytes, static_cast<size_t>(page), PAGE_NOACCESS, &old_protect);
  std::memset(base, kFill, data_bytes);
  const auto r = static_cast<size_t>(needed % page);
  const size_t slot = r != 0 ? static_cast<size_t>(page) - r : 0;
  unsigned char *user = base + slot + kHeaderSlot;
  write_header(header_address(user), {base, n, static_cast<uint32_t>(data_pages + 1), kBlockMagic});
  if (zero) std::memset(user, 0, n);
  return user;
}

void *nmalloc(uint32_t n) {
  if (n == 0) n = 1;
  void *block = nalloc_pages(n, false);
  if (block != nullptr) totals_count_allocation(n);
  return block;
}

void *ncalloc(uint32_t count, uint32_t size) {
  memshell_init();
  const uint32_t n = count * size;  // callers refuse products that wrap
  void *block = nalloc_pages(n, true);
  if (block != nullptr) totals_count_allocation(n);
  return block;
}

bool nblock_find(const void *block, BlockHeader *header) {
  if (block == nullptr) return false;
  const unsigned char *at = header_address(block);
  // Asking the region table first means a stray pointer is never read.
  if (!readable(at, kHeaderBytes)) return false;
  BlockHeader h = read_header(at);
  if (h.magic != kBlockMagic) return false;
  if (header != nullptr) *header = h;
  return true;
}

bool nblock_release(const void *block) {
  BlockHeader h;
  if (!nblock_find(block, &h)) return false;
  return VirtualFree(h.region_base, size_t{h.page_count} * heap_page_size(), MEM_DECOMMIT) != FALSE;
}

void nfree(void *block) {
  if (block == nullptr) return;
  BlockHeader h{};
  const uint32_t size = nblock_find(block, &h) ? h.size : 0;
  if (nblock_release(block)) {
    totals_count_release(size);
  } else if (dbgheap_ask("Missmatched memory block on nfree()!")) {
    DebugBreak();
  }
}

// A failed allocation keeps the old block: null comes back and nothing is
// freed, so a caller following the usual realloc contract still owns it.
void *nrealloc(void *block, uint32_t n) {
  memshell_init();
  if (n == 0 && block != nullptr) {
    nfree(block);
    memtab_remove(block);
    return nullptr;
  }
  if (block == nullptr) return nmalloc(n);
  void *fresh = nmalloc(n);
  if (fresh == nullptr) return nullptr;
  BlockHeader h{};
  uint32_t old_size = 0;
  if (nblock_find(block, &h)) {
    old_size = h.size;
  } else if (dbgheap_ask("Missmatched memory block on nrealloc()!")) {
    DebugBreak();
  }
  std::memcpy(fresh, block, std::min(old_size, n));
  nfree(block);
  memtab_remove(block);
  return fresh;
}

bool dbgheap_ask(const char *message) {
  char text[512];
  std::snprintf(text, sizeof text, "Heap-Fehler: %s\nActivate breakpoint?", message);
  return MessageBoxA(nullptr, text, "DbgHeap", MB_YESNO) == IDYES;
}

}  // namespace korutl::memshell
