// Key paths of the configuration tree, composed into the fixed-size buffers
// the family uses (256, 768 or 1024 bytes).
#ifndef KORUTL_READCONFIG_KEY_PATH_H
#define KORUTL_READCONFIG_KEY_PATH_H

#include <cstddef>

namespace korutl {

// The root of every path: "HKEY_LOCAL_MACHINE\SOFTWARE\Vantrel\Halcyra".
#define KORUTL_TREE_ROOT "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra"

// printf-style composition into `out` of `size` bytes. False, with `out`
// holding the empty text, when the path would not fit: a cut path would
// name another key, so callers refuse the operation instead.
bool ComposeKeyPath(char *out, size_t size, const char *format, ...)
    __attribute__((format(printf, 3, 4)));

}  // namespace korutl

#endif
