#include "platform/store_path.h"

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
