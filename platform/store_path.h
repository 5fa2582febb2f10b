// Splitting and checking key paths before they reach the database.
#ifndef KORUTL_PLATFORM_STORE_PATH_H
#define KORUTL_PLATFORM_STORE_PATH_H

#include <string>
#include <string_view>
#include <vector>

namespace korutl::store {

// Splits "A\B\C" into its names. Fails (returns false) on an empty path, an
// empty name (leading, doubled or trailing backslash), a name longer than
// 255 characters or more than 512 levels.
bool split_key_path(std::string_view path, std::vector<std::string_view> &parts);

}  // namespace korutl::store

#endif
