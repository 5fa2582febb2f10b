// The read hook of the store module (store.h, set_read_hook), shared by
// both implementations of the store: each read operation calls note_read.
#ifndef KORUTL_PLATFORM_STORE_READ_HOOK_H
#define KORUTL_PLATFORM_STORE_READ_HOOK_H

#include <string_view>

namespace korutl::store {

// Hands `path` to the installed read hook, if any.
void note_read(std::string_view path);

}  // namespace korutl::store

#endif
