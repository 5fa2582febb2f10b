// The memory functions of the Win32 seam on mmap/mprotect, plus the error
// box and the debugger break.
//
// Regions are carved from arenas of reserved address space (PROT_NONE,
// MAP_NORESERVE). Committing makes pages read-write; decommitting maps them
// again as reserved, which the kernel merges with the reserved neighbours.
// The bump pointer never goes back, so addresses are never reused.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <mutex>
#include <new>
#include <vector>

#include "platform/win32.h"

namespace {

constexpr size_t kArenaSize = size_t{1} << 30;

// Per page: 0 when only reserved, else its PAGE_* protection.
struct Region {
  size_t pages;
  DWORD initial_protect;
  std::vector<BYTE> page_protect;
};

struct Arena {
  uintptr_t base;
  size_t size;
};

struct RegionTable {
  std::mutex mutex;
  std::map<uintptr_t, Region> regions;  // by base address
  std::vector<Arena> arenas;
  uintptr_t next = 0;  // bump pointer in the newest arena
  uintptr_t end = 0;
};

RegionTable &table() {
  static RegionTable *t = new RegionTable;  // lives to the process end
  return *t;
}

size_t page_size() {
  static const size_t size = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  return size;
}

int posix_protection(DWORD protect) {
  switch (protect) {
    case PAGE_READWRITE:
      return PROT_READ | PROT_WRITE;
    case PAGE_READONLY:
      return PROT_READ;
    case PAGE_NOACCESS:
      return PROT_NONE;
    default:
      return -1;
  }
}

bool reserve_again(uintptr_t address, size_t size) {
  void *p = mmap(reinterpret_cast<void *>(address), size, PROT_NONE,
                 MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED, -1, 0);
  return p != MAP_FAILED;
}

// Caller holds the table's mutex.
uintptr_t carve(RegionTable &t, size_t size) {
  if (t.end - t.next < size) {
    size_t arena = std::max(kArenaSize, size);
    void *p = mmap(nullptr, arena, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (p == MAP_FAILED) return 0;
    t.arenas.push_back({reinterpret_cast<uintptr_t>(p), arena});
    t.next = reinterpret_cast<uintptr_t>(p);
    t.end = t.next + arena;
  }
  uintptr_t result = t.next;
  t.next += size;
  return result;
}

// The region holding address, or end(). Caller holds the mutex.
std::map<uintptr_t, Region>::iterator find_region(RegionTable &t, uintptr_t address) {
  auto it = t.regions.upper_bound(address);
  if (it == t.regions.begin()) return t.regions.end();
  --it;
  if (address - it->first >= it->second.pages * page_size()) return t.regions.end();
  return it;
}

bool in_arena(const RegionTable &t, uintptr_t address) {
  return std::any_of(t.arenas.begin(), t.arenas.end(),
                     [&](const Arena &a) { return address - a.base < a.size; });
}

}  // namespace

void GetSystemInfo(LPSYSTEM_INFO info) {
  if (info == nullptr) return;
  std::memset(info, 0, sizeof *info);
  info->wProcessorArchitecture = 9;  // x64
  info->dwPageSize = static_cast<DWORD>(page_size());
  info->lpMinimumApplicationAddress = reinterpret_cast<LPVOID>(page_size());
  info->lpMaximumApplicationAddress = reinterpret_cast<LPVOID>((uintptr_t{1} << 47) - page_size());
  long cpus = sysconf(_SC_NPROCESSORS_ONLN);
  info->dwNumberOfProcessors = cpus > 0 ? static_cast<DWORD>(cpus) : 1;
  info->dwActiveProcessorMask = info->dwNumberOfProcessors >= 64
                                    ? ~DWORD_PTR{0}
                                    : (DWORD_PTR{1} << info->dwNumberOfProcessors) - 1;
  info->dwAllocationGranularity = static_cast<DWORD>(page_size());
}

LPVOID VirtualAlloc(LPVOID address, SIZE_T size, DWORD allocation_type, DWORD protect) {
  const size_t page = page_size();
  const bool commit = (allocation_type & MEM_COMMIT) != 0;
  if (address != nullptr || size == 0 || size > (size_t{1} << 46)) return nullptr;
  if ((allocation_type & ~(MEM_COMMIT | MEM_RESERVE)) != 0 || (allocation_type == 0))
    return nullptr;
  const int prot = posix_protection(protect);
  if (prot < 0) return nullptr;
  const size_t pages = (size + page - 1) / page;
  RegionTable &t = table();
  std::lock_guard<std::mutex> lock(t.mutex);
  try {
    Region region{pages, protect,
                  std::vector<BYTE>(pages, commit ? static_cast<BYTE>(protect) : 0)};
    uintptr_t base = carve(t, pages * page);
    if (base == 0) return nullptr;
    if (commit && prot != PROT_NONE &&
        mprotect(reinterpret_cast<void *>(base), pages * page, prot) != 0)
      return nullptr;  // the carved range just stays reserved
    t.regions.emplace(base, std::move(region));
    return reinterpret_cast<LPVOID>(base);
  } catch (const std::bad_alloc &) {
    return nullptr;
  }
}

BOOL VirtualProtect(LPVOID address, SIZE_T size, DWORD new_protect, DWORD *old_protect) {
  const size_t page = page_size();
  const int prot = posix_protection(new_protect);
  if (prot < 0 || size == 0) return FALSE;
  const uintptr_t first = reinterpret_cast<uintptr_t>(address) / page * page;
  RegionTable &t = table();
  std::lock_guard<std::mutex> lock(t.mutex);
  auto it = find_region(t, first);
  if (it == t.regions.end()) return FALSE;
  Region &r = it->second;
  const size_t index = (first - it->first) / page;
  const uintptr_t last = reinterpret_cast<uintptr_t>(address) + (size - 1);
  if (last < first || (last - it->first) / page >= r.pages) return FALSE;
  const size_t count = (last - it->first) / page - index + 1;
  for (size_t i = index; i < index + count; ++i)
    if (r.page_protect[i] == 0) return FALSE;  // not committed
  if (mprotect(reinterpret_cast<void *>(first), count * page, prot) != 0) return FALSE;
  if (old_protect != nullptr) *old_protect = r.page_protect[index];
  std::fill_n(r.page_protect.begin() + static_cast<std::ptrdiff_t>(index), count,
              static_cast<BYTE>(new_protect));
  return TRUE;
}

SIZE_T VirtualQuery(LPCVOID address, PMEMORY_BASIC_INFORMATION info, SIZE_T length) {
  if (info == nullptr || length < sizeof *info) return 0;
  const size_t page = page_size();
  const uintptr_t at = reinterpret_cast<uintptr_t>(address) / page * page;
  std::memset(info, 0, sizeof *info);
  info->BaseAddress = reinterpret_cast<LPVOID>(at);
  RegionTable &t = table();
  std::lock_guard<std::mutex> lock(t.mutex);
  auto it = find_region(t, at);
  if (it == t.regions.end()) {
    // Outside every region: reserved inside an arena, else not ours.
    info->State = in_arena(t, at) ? MEM_RESERVE : MEM_FREE;
    info->Type = info->State == MEM_RESERVE ? MEM_PRIVATE : 0;
    info->RegionSize = page;
    return sizeof *info;
  }
  const Region &r = it->second;
  const size_t index = (at - it->first) / page;
  const BYTE value = r.page_protect[index];
  size_t run = 1;
  while (index + run < r.pages && r.page_protect[index + run] == value) ++run;
  info->AllocationBase = reinterpret_cast<LPVOID>(it->first);
  info->AllocationProtect = r.initial_protect;
  info->RegionSize = run * page;
  info->State = value != 0 ? MEM_COMMIT : MEM_RESERVE;
  info->Protect = value;
  info->Type = MEM_PRIVATE;
  return sizeof *info;
}

BOOL VirtualFree(LPVOID address, SIZE_T size, DWORD free_type) {
  const size_t page = page_size();
  const uintptr_t start = reinterpret_cast<uintptr_t>(address);
  RegionTable &t = table();
  std::lock_guard<std::mutex> lock(t.mutex);
  if (free_type == MEM_RELEASE) {
    auto it = t.regions.find(start);
    if (size != 0 || it == t.regions.end()) return FALSE;
    if (!reserve_again(start, it->second.pages * page)) return FALSE;
    t.regions.erase(it);
    return TRUE;
  }
  if (free_type != MEM_DECOMMIT || size == 0) return FALSE;
  const uintptr_t first = start / page * page;
  auto it = find_region(t, first);
  if (it == t.regions.end()) return FALSE;
  Region &r = it->second;
  const uintptr_t last = start + (size - 1);
  if (last < first || (last - it->first) / page >= r.pages) return FALSE;
  const size_t index = (first - it->first) / page;
  const size_t count = (last - it->first) / page - index + 1;
  if (!reserve_again(first, count * page)) return FALSE;
  std::fill_n(r.page_protect.begin() + static_cast<std::ptrdiff_t>(index), count, BYTE{0});
  // A region without committed pages leaves the table; its range stays
  // reserved in the arena and is never carved again.
  if (std::all_of(r.page_protect.begin(), r.page_protect.end(), [](BYTE b) { return b == 0; }))
    t.regions.erase(it);
  return TRUE;
}

int MessageBoxA(HWND, LPCSTR text, LPCSTR caption, UINT type) {
  std::fprintf(stderr, "%s\n%s\n", caption != nullptr ? caption : "", text != nullptr ? text : "");
  std::fflush(stderr);
  if ((type & 0xF) != MB_YESNO) return IDOK;
  const char *answer = std::getenv("KORVO_MESSAGEBOX_ANSWER");
  if (answer != nullptr && std::strcmp(answer, "yes") == 0) return IDYES;
  if (answer != nullptr && std::strcmp(answer, "no") == 0) return IDNO;
  if (!isatty(STDIN_FILENO)) return IDNO;
  std::fputs("[yes/no] ", stderr);
  std::fflush(stderr);
  char line[16];
  if (std::fgets(line, sizeof line, stdin) == nullptr) return IDNO;
  return (line[0] == 'y' || line[0] == 'Y') ? IDYES : IDNO;
}

void DebugBreak() { std::raise(SIGTRAP); }
