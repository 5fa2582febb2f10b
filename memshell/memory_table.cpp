// The memory table and its report.
#include "memshell/memory_table.h"

#include <algorithm>
#include <atomic>
#include <cinttypes>
#include <cstdlib>
#include <cstring>
#include <new>
#include <unordered_map>

#include "memshell/guard_heap.h"
#include "memshell/shell.h"
#include "platform/win32.h"

namespace korutl::memshell {
namespace {

struct ControlBlock {
  const void *address;
  uint32_t size;
  int32_t line;
  char file[100];
  ControlBlock *next;
  // Beyond the listed fields: the back link lets a removal unlink in
  // constant time while the list keeps its oldest-first order.
  ControlBlock *previous;
};

// All guarded by the shell lock. The index maps a block to its control
// block; guarded blocks never share an address, so one entry per address.
struct Table {
  ControlBlock *head = nullptr;
  ControlBlock *tail = nullptr;
  std::unordered_map<const void *, ControlBlock *> index;
  uint32_t count = 0;
};

Table &table() {
  static Table *t = new Table;  // never torn down
  return *t;
}

std::atomic<std::FILE *> log_file{nullptr};

// Copies at most limit - 1 characters and always terminates.
void copy_cut(char *out, size_t limit, const char *text) {
  const size_t length = std::min(std::strlen(text), limit - 1);
  std::memcpy(out, text, length);
  out[length] = '\0';
}

void base_name(const char *file, char (&out)[100]) {
  char path[200];
  copy_cut(path, sizeof path, file != nullptr ? file : "");
  const char *slash = std::strrchr(path, '\\');
  copy_cut(out, sizeof out, slash != nullptr ? slash + 1 : path);
}

std::FILE *output() {
  std::FILE *f = log_file.load();
  return f != nullptr ? f : stdout;
}

void unlink(Table &t, ControlBlock *cb) {
  (cb->previous != nullptr ? cb->previous->next : t.head) = cb->next;
  (cb->next != nullptr ? cb->next->previous : t.tail) = cb->previous;
  --t.count;
}

}  // namespace

void memtab_add(const void *block, uint32_t size, int32_t line, const char *file) {
  auto *cb = static_cast<ControlBlock *>(std::malloc(sizeof(ControlBlock)));
  if (cb == nullptr) {
    if (dbgheap_ask("Failed to allocated control block")) DebugBreak();
    return;
  }
  cb->address = block;
  cb->size = size;
  cb->line = line;
  base_name(file, cb->file);
  cb->next = nullptr;
  Table &t = table();
  shell_lock();
  bool indexed = false;
  try {
    indexed = t.index.emplace(block, cb).second;
  } catch (const std::bad_alloc &) {
  }
  if (indexed) {
    cb->previous = t.tail;
    (t.tail != nullptr ? t.tail->next : t.head) = cb;
    t.tail = cb;
    ++t.count;
  }
  shell_unlock();
  if (!indexed) {
    std::free(cb);
    if (dbgheap_ask("Failed to allocated control block")) DebugBreak();
  }
}

void memtab_remove(const void *block) {
  Table &t = table();
  ControlBlock *found = nullptr;
  shell_lock();
  auto it = t.index.find(block);
  if (it != t.index.end()) {
    found = it->second;
    t.index.erase(it);
    unlink(t, found);
  }
  shell_unlock();
  std::free(found);
}

uint32_t memtab_count() {
  shell_lock();
  uint32_t n = table().count;
  shell_unlock();
  return n;
}

uint32_t memtab_print(const char *title) {
  std::fprintf(output(),
               "\n=========================================================\n"
               "I     Memory table: %-35s I\n"
               "=========================================================\n",
               title != nullptr ? title : "");
  uint32_t printed = 0;
  shell_lock();
  for (const ControlBlock *cb = table().head; cb != nullptr; cb = cb->next) {
    // The whole address, padded to the 8 digits a 32-bit one has: cut to
    // its low half, two blocks could read alike.
    std::fprintf(output(), "Addr:%8" PRIxPTR " Size:%6u Line:%4d File : %s\n",
                 reinterpret_cast<uintptr_t>(cb->address), static_cast<unsigned>(cb->size),
                 static_cast<int>(cb->line), cb->file);
    ++printed;
  }
  if (printed == 0) std::fputs("*** Memory table empty ***\n", output());
  const Totals &totals = totals_locked();
  std::fprintf(output(), "No. of curr./all/max allocated items: %13lu %13lu %13lu\n",
               static_cast<unsigned long>(totals.current_items),
               static_cast<unsigned long>(totals.all_items),
               static_cast<unsigned long>(totals.maximum_items));
  std::fprintf(output(), "No. of curr./all/max allocated bytes: %13lu %13lu %13lu\n",
               static_cast<unsigned long>(totals.current_bytes),
               static_cast<unsigned long>(totals.all_bytes),
               static_cast<unsigned long>(totals.maximum_bytes));
  shell_unlock();
  std::FILE *out = output();
  std::fputs("\n", out);
  std::fflush(out);
  return printed;
}

void log_stream_set(std::FILE *stream) { log_file.store(stream); }
std::FILE *log_stream() { return log_file.load(); }

}  // namespace korutl::memshell
