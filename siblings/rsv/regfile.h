// The .reg text format of the Windows registry editor, version 5.00:
// parsing a file into key records, and writing a tree out as such a file.
#ifndef KORUTL_SIBLINGS_RSV_REGFILE_H
#define KORUTL_SIBLINGS_RSV_REGFILE_H

#include <string>
#include <string_view>
#include <vector>

#include "platform/store.h"

namespace korutl::regfile {

// Parses a whole file: UTF-16LE with its byte-order mark (as the editor
// writes it), or UTF-8 with or without one. Text values (quoted strings,
// hex(2) and hex(7), which the editor writes as UTF-16LE bytes) are stored
// as UTF-8 with their terminating zeros. On failure returns false and sets
// `bad_line` to the 1-based line at fault.
bool parse(std::string_view file, std::vector<store::KeyRecord> &records, size_t &bad_line);

// Writes the key at `path` and its subtree as UTF-16LE with a byte-order
// mark and CRLF line ends. False when the key does not exist or the store
// cannot be read.
store::Status write(const std::string &path, std::string &file);

}  // namespace korutl::regfile

#endif
