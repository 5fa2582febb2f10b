// The .reg text format of the Windows registry editor: writing a subtree
// out as a version 5.00 file, and reading such files (and REGEDIT4 ones)
// into key records.
//
// Every tree the store holds exports, and imports back into an empty store
// as the same tree, whatever bytes its names and data hold:
// - Names and quoted texts carry bytes that are not UTF-8, and in names NUL,
//   LF and CR, as lone surrogates U+DC00 + byte (regfile_text.h). A root
//   key name beginning with "-" writes that "-" as U+DC2D, so its key line
//   never reads as a deletion. No name is refused for its bytes.
// - REG_SZ is written quoted only when the quoted form gives it back
//   exactly: one terminating zero, no other zero, no CR or LF. Otherwise,
//   and always for REG_EXPAND_SZ and REG_MULTI_SZ, a text type is written
//   as hex(N) of its UTF-16LE form (with the same escapes), as the editor
//   writes them; REG_DWORD of 4 bytes as dword:, every other type and size
//   as hex(N) of its bytes.
#ifndef KORUTL_SIBLINGS_RSV_REGFILE_H
#define KORUTL_SIBLINGS_RSV_REGFILE_H

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "platform/store.h"

namespace korutl::regfile {

// The largest file import reads; counted while reading, so devices and
// pipes are bounded too.
constexpr size_t max_file_size = size_t{64} << 20;

enum class Parsed {
  ok,
  malformed,   // bad_line names the line
  unreadable,  // the file cannot be opened or read
  too_large,   // more than max_file_size bytes
};

// Reads a file: UTF-16LE with its byte-order mark, or UTF-8 with or without
// one, beginning "Windows Registry Editor Version 5.00" (hex(1), hex(2) and
// hex(7) data is UTF-16LE, kept as UTF-8); or 8-bit text beginning
// "REGEDIT4" (all data bytes kept as they are). A lone U+DC00..U+DCFF
// anywhere is the byte it stands for. "[-ROOT]", the deletion of a root key,
// is malformed. On malformed returns bad_line, the 1-based line at fault
// (0 otherwise). Memory: the records and one line, not the file.
Parsed parse(std::string_view file, std::vector<store::KeyRecord> &records, size_t &bad_line);
Parsed parse(std::FILE *in, std::vector<store::KeyRecord> &records, size_t &bad_line);

// parse on the file named `file` (devices and pipes too).
Parsed read_file(const char *file, std::vector<store::KeyRecord> &records, size_t &bad_line);

// Writes the key at `path` and its subtree, each key in pre-order with its
// values in their order, as UTF-16LE with a byte-order mark and CRLF line
// ends. Streams: memory holds one value at a time and the subkey names on the
// way down, never the file. Stops early when `out` reports an error (the
// caller checks ferror). Reads through the store as it is: the caller
// holds a snapshot when the tree must be one committed state.
store::Status write(const std::string &path, std::FILE *out);

// Exports the key at `path` to the file named `file` from one snapshot of
// the store. A regular file (or a link to one, or a file not there yet) is
// written beside it under a temporary name and renamed over it on success,
// so a failed export leaves the old file as it was; it keeps the old file's
// permissions. Anything else (a pipe, a terminal), and the names of streams
// the process has open (/dev/stdout, /dev/stderr, /dev/fd/N, /proc/...),
// whatever they are redirected to, is written straight through, appending,
// so a redirection keeps its own meaning. A store failure gives its
// status; a file that cannot be written gives ok with `file_error` saying why (empty on success).
store::Status export_file(const std::string &path, const char *file, std::string &file_error);

}  // namespace korutl::regfile

#endif
