// The rules every store keeps, whichever system holds the tree: how key
// paths split and what they may hold, the size limits of values, and what
// removing something absent means. Both stores (unix/ and win/) check
// through these, so a tree that one accepts the other accepts too.
#ifndef KORUTL_PLATFORM_STORE_RULES_H
#define KORUTL_PLATFORM_STORE_RULES_H

#include <string>
#include <string_view>
#include <vector>

#include "platform/store.h"

namespace korutl::store {

// Splits "A\B\C" into its names. Fails (returns false) on an empty path, an
// empty name (leading, doubled or trailing backslash), a name longer than
// max_name_length characters or more than max_depth levels.
bool split_key_path(std::string_view path, std::vector<std::string_view> &parts);

// Whether `path` names a root key (one name, no backslash).
bool is_root_key(std::string_view path);

// Whether the key `path` may be removed: root_value for a root key, which
// stays (as the system registry refuses to delete one), else ok.
Status check_key_removal(std::string_view path);

// Whether a value may be set under the key `path`: root_value for a root
// key (as the system registry refuses values there), bad_name for a value
// name over max_value_name_length, too_large for data over max_value_size,
// else ok.
Status check_value(std::string_view path, std::string_view name, std::string_view data);

// Removing a key or value that is not there leaves the tree as asked: the
// removal is done. Any other status passes through.
inline Status absent_is_removed(Status st) {
  return st == Status::no_key || st == Status::no_value ? Status::ok : st;
}

}  // namespace korutl::store

#endif
