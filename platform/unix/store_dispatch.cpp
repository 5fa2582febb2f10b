// The store of store.h on Linux: each operation goes to the backend the
// process chose at its first call, the SQLite file or the PostgreSQL
// server (store_backend.h).
#include <atomic>
#include <cstdlib>

#include "platform/store.h"
#include "platform/store_hosts.h"
#include "platform/unix/store_backend.h"
#include "platform/unix/store_file.h"

namespace korutl::store {

namespace {

// 0 until the first call chooses; then 1 + the Backend chosen.
std::atomic<int> chosen{0};

// Why the last call of this thread failed before it reached a backend.
thread_local std::string refused;
thread_local bool last_refused = false;

template <typename OnFile, typename OnServer>
Status dispatch(OnFile on_file, OnServer on_server) {
  Backend b;
  if (!backend(b)) return Status::store_error;
  return b == Backend::pg ? on_server() : on_file();
}

// Forwards one call of store.h to the same function of the backend.
#define KORUTL_FORWARD(call) dispatch([&] { return sqlite::call; }, [&] { return pg::call; })

}  // namespace

bool backend(Backend &which) {
  const char *env = std::getenv("KORVO_REGISTRY");
  const Backend named = env != nullptr && is_server_uri(env) ? Backend::pg : Backend::sqlite;
  int expected = 0;
  chosen.compare_exchange_strong(expected, 1 + static_cast<int>(named));
  which = static_cast<Backend>(chosen.load() - 1);
  last_refused = which != named;
  if (last_refused)
    refused = which == Backend::pg
                  ? "KORVO_REGISTRY no longer names a PostgreSQL server; this process keeps the "
                    "server store it started with"
                  : "KORVO_REGISTRY now names a PostgreSQL server; this process keeps the store "
                    "file it started with";
  return !last_refused;
}

const std::string &last_error() {
  if (last_refused) return refused;
  return chosen.load() == 1 + static_cast<int>(Backend::pg) ? pg::last_error()
                                                            : sqlite::last_error();
}

bool change_counter(uint64_t &counter) {
  Backend b;
  if (!backend(b)) return false;
  return b == Backend::pg ? pg::change_counter(counter) : sqlite::change_counter(counter);
}

Status begin_snapshot() { return KORUTL_FORWARD(begin_snapshot()); }
Status end_snapshot() { return KORUTL_FORWARD(end_snapshot()); }

Status query_key(std::string_view path, uint32_t *subkeys, uint32_t *values) {
  return KORUTL_FORWARD(query_key(path, subkeys, values));
}

Status get_value(std::string_view path, std::string_view name, Value &out) {
  return KORUTL_FORWARD(get_value(path, name, out));
}

Status set_value(std::string_view path, std::string_view name, uint32_t type,
                 std::string_view data) {
  return KORUTL_FORWARD(set_value(path, name, type, data));
}

Status delete_value(std::string_view path, std::string_view name) {
  return KORUTL_FORWARD(delete_value(path, name));
}

Status create_key(std::string_view path, bool *created) {
  return KORUTL_FORWARD(create_key(path, created));
}

Status delete_key(std::string_view path) { return KORUTL_FORWARD(delete_key(path)); }

Status list_subkeys(std::string_view path, std::vector<std::string> &names) {
  return KORUTL_FORWARD(list_subkeys(path, names));
}

Status list_values(std::string_view path, std::vector<Value> &values) {
  return KORUTL_FORWARD(list_values(path, values));
}

Status for_each_value(std::string_view path, const std::function<void(Value &)> &on_value) {
  return KORUTL_FORWARD(for_each_value(path, on_value));
}

Status write_batch(const std::vector<KeyRecord> &records) {
  return KORUTL_FORWARD(write_batch(records));
}

// ---- Hosts: a store file holds this machine's tree only.

namespace {

Status own_host(std::string &host) {
  std::string why;
  if (thread_host(host, why)) return Status::ok;
  refused = why;
  last_refused = true;
  return Status::store_error;
}

}  // namespace

Status use_host(std::string_view host) {
  std::string folded;
  if (!host.empty() && !fold_host_name(host, folded)) return Status::bad_name;
  Backend b;
  if (!backend(b)) return Status::store_error;
  if (b == Backend::sqlite && !folded.empty()) {
    choose_thread_host("");
    std::string own;
    if (own_host(own) != Status::ok) return Status::store_error;
    if (folded != own) {
      refused = "a store file holds this host's tree only (" + own + ")";
      last_refused = true;
      return Status::store_error;
    }
  }
  choose_thread_host(folded);
  return Status::ok;
}

Status list_hosts(std::vector<std::string> &hosts) {
  hosts.clear();
  return dispatch(
      [&] {
        std::string own;
        const Status st = own_host(own);
        if (st == Status::ok) hosts.push_back(own);
        return st;
      },
      [&] { return pg::list_hosts(hosts); });
}

Status get_value_all_hosts(std::string_view path, std::string_view name,
                           std::vector<HostValue> &out) {
  out.clear();
  return dispatch(
      [&] {
        HostValue found;
        Status st = own_host(found.host);
        if (st == Status::ok) st = sqlite::get_value(path, name, found.value);
        if (st == Status::ok) out.push_back(std::move(found));
        return st == Status::no_key || st == Status::no_value ? Status::ok : st;
      },
      [&] { return pg::get_value_all_hosts(path, name, out); });
}

}  // namespace korutl::store
