// Hosts on Windows: the system registry is this machine's tree only.
#include "platform/store_hosts.h"

namespace korutl::store {

Status use_host(std::string_view host) {
  std::string folded, own, why;
  if (!host.empty() && !fold_host_name(host, folded)) return Status::bad_name;
  choose_thread_host("");
  if (!thread_host(own, why)) return Status::store_error;
  return folded.empty() || folded == own ? Status::ok : Status::store_error;
}

Status list_hosts(std::vector<std::string> &hosts) {
  hosts.clear();
  std::string own, why;
  if (!thread_host(own, why)) return Status::store_error;
  hosts.push_back(own);
  return Status::ok;
}

Status get_value_all_hosts(std::string_view path, std::string_view name,
                           std::vector<HostValue> &out) {
  out.clear();
  HostValue found;
  std::string why;
  if (!thread_host(found.host, why)) return Status::store_error;
  const Status st = get_value(path, name, found.value);
  if (st == Status::ok) out.push_back(std::move(found));
  return st == Status::no_key || st == Status::no_value ? Status::ok : st;
}

}  // namespace korutl::store
