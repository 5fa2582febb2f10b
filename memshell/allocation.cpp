// The memory shell's exports: the four allocation entries, the log file,
// the report and the semaphore stubs.
#include <cstdio>
#include <cstdlib>

#include "korutl.h"
#include "memshell/guard_heap.h"
#include "memshell/memory_table.h"
#include "memshell/shell.h"

using namespace korutl::memshell;

namespace {

// The body behind the five semaphore names: no effect, success.
int32_t semaphore_stub() { return 1; }

}  // namespace

extern "C" {

KORUTL_API void *mmalloc(uint32_t size, int32_t line, const char *file) {
  memshell_init();
  if (!shell_on()) return std::malloc(size);
  void *block = nmalloc(size);
  if (block != nullptr) memtab_add(block, size, line, file);
  return block;
}

KORUTL_API void *mcalloc(uint32_t count, uint32_t size, int32_t line, const char *file) {
  memshell_init();
  // A product that does not fit in 32 bits is refused in both modes.
  if (size != 0 && count > UINT32_MAX / size) return nullptr;
  if (!shell_on()) return std::calloc(count, size);
  void *block = ncalloc(count, size);
  if (block != nullptr) memtab_add(block, count * size, line, file);
  return block;
}

KORUTL_API void *mrealloc(void *block, uint32_t size, int32_t line, const char *file) {
  memshell_init();
  if (!shell_on()) return std::realloc(block, size);
  void *fresh = nrealloc(block, size);
  if (fresh != nullptr) memtab_add(fresh, size, line, file);
  return fresh;
}

KORUTL_API void mfree(void *block) {
  memshell_init();
  if (!shell_on()) {
    std::free(block);
    return;
  }
  nfree(block);
  memtab_remove(block);
}

KORUTL_API void KORVOOpenMemoryLogFile(const char *path) {
  memshell_init();
  if (!shell_on()) return;
  // An earlier log is left open and no longer used: a report on another
  // thread may have picked it up and still be writing to it, and closing it
  // under that writer would free the stream it writes through.
  log_stream_set(path != nullptr ? std::fopen(path, "w") : nullptr);
}

KORUTL_API void KORVOCloseMemoryLogFile(void) {
  memshell_init();
  if (!shell_on()) return;
  std::FILE *stream = log_stream();
  if (stream == nullptr) return;
  log_stream_set(nullptr);
  std::fclose(stream);
}

KORUTL_API uint32_t KORVOPrintMemoryTable(const char *title) {
  memshell_init();
  if (shell_on()) return memtab_print(title);
  std::FILE *out = log_stream() != nullptr ? log_stream() : stdout;
  std::fputs("\n*** Memory shell turned off ***\n", out);
  std::fflush(out);
  return 0;
}

KORUTL_API int32_t KORVOCreateSemaphore(...) { return semaphore_stub(); }
KORUTL_API int32_t KORVODeleteSemaphore(...) { return semaphore_stub(); }
KORUTL_API int32_t KORVOInitSemaphore(...) { return semaphore_stub(); }
KORUTL_API int32_t KORVOSemaphore_P(...) { return semaphore_stub(); }
KORUTL_API int32_t KORVOSemaphore_V(...) { return semaphore_stub(); }

}  // extern "C"
