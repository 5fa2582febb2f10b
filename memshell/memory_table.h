// The memory table: one control block per listed block, oldest first, and
// the report written from it.
#ifndef KORUTL_MEMSHELL_MEMORY_TABLE_H
#define KORUTL_MEMSHELL_MEMORY_TABLE_H

#include <cstdint>
#include <cstdio>

namespace korutl::memshell {

// Lists block with its requested size and the base name of file (the part
// after the last backslash; null counts as empty; the path is cut at 199
// characters and the name at 99). When no control block can be had the
// error box is shown and the block stays unlisted.
void memtab_add(const void *block, uint32_t size, int32_t line, const char *file);
// Removes the control block of block, if there is one. Constant time.
void memtab_remove(const void *block);
// Writes the report to the log stream, or to standard output while none is
// set; returns the number of blocks listed.
uint32_t memtab_print(const char *title);
// Number of listed blocks.
uint32_t memtab_count();

// The log stream; null while none is set.
void log_stream_set(std::FILE *stream);
std::FILE *log_stream();

}  // namespace korutl::memshell

#endif
