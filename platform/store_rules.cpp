#include "platform/store_rules.h"

#include "platform/store.h"

namespace korutl::store {

bool split_key_path(std::string_view path, std::vector<std::string_view> &parts) {
  parts.clear();
  if (path.empty()) return false;
  size_t start = 0;
  while (true) {
    const size_t end = path.find('\\', start);
    const std::string_view part =
        path.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start);
    if (part.empty() || part.size() > max_name_length || parts.size() == max_depth) return false;
    parts.push_back(part);
    if (end == std::string_view::npos) return true;
    start = end + 1;
  }
}

}  // namespace korutl::store

namespace korutl::store {

bool is_root_key(std::string_view path) {
  return !path.empty() && path.find('\\') == std::string_view::npos;
}

Status check_key_removal(std::string_view path) {
  return is_root_key(path) ? Status::root_value : Status::ok;
}

Status check_value(std::string_view path, std::string_view name, std::string_view data) {
  if (is_root_key(path)) return Status::root_value;
  if (name.size() > max_value_name_length) return Status::bad_name;
  if (data.size() > max_value_size) return Status::too_large;
  return Status::ok;
}

}  // namespace korutl::store
