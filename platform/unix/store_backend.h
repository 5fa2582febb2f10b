// The two stores behind platform/store.h on Linux: the SQLite file
// (namespace sqlite, platform/unix/store*.cpp) and the PostgreSQL server
// (namespace pg, platform/unix/pg/). Each implements every operation of
// store.h under the same name; platform/unix/store_dispatch.cpp picks one
// per process and forwards to it, so nothing above the store knows which
// one holds the tree.
#ifndef KORUTL_PLATFORM_UNIX_STORE_BACKEND_H
#define KORUTL_PLATFORM_UNIX_STORE_BACKEND_H

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/store.h"
#include "platform/store_hosts.h"

// The operations each backend implements, as store.h documents them.
#define KORUTL_STORE_BACKEND_OPERATIONS                                                       \
  const std::string &last_error();                                                            \
  Status begin_snapshot();                                                                    \
  Status end_snapshot();                                                                      \
  Status query_key(std::string_view path, uint32_t *subkeys, uint32_t *values);               \
  Status get_value(std::string_view path, std::string_view name, Value &out);                 \
  Status set_value(std::string_view path, std::string_view name, uint32_t type,               \
                   std::string_view data);                                                    \
  Status delete_value(std::string_view path, std::string_view name);                          \
  Status create_key(std::string_view path, bool *created);                                    \
  Status delete_key(std::string_view path);                                                   \
  Status list_subkeys(std::string_view path, std::vector<std::string> &names);                \
  Status list_values(std::string_view path, std::vector<Value> &values);                      \
  Status for_each_value(std::string_view path, const std::function<void(Value &)> &on_value); \
  Status write_batch(const std::vector<KeyRecord> &records);

namespace korutl::store::sqlite {
KORUTL_STORE_BACKEND_OPERATIONS
// The write-ahead log index's commit count, as store.h's change_counter.
bool change_counter(uint64_t &counter);
}  // namespace korutl::store::sqlite

namespace korutl::store::pg {
KORUTL_STORE_BACKEND_OPERATIONS
// The fleet operations of store_hosts.h that only a server store answers
// beyond this host.
Status list_hosts(std::vector<std::string> &hosts);
Status get_value_all_hosts(std::string_view path, std::string_view name,
                           std::vector<HostValue> &out);
// A number that changes whenever any process commits a change to this
// thread's host's tree; false when it cannot be read.
bool change_counter(uint64_t &counter);
}  // namespace korutl::store::pg

#undef KORUTL_STORE_BACKEND_OPERATIONS

namespace korutl::store {

enum class Backend { sqlite, pg };

// The backend of this process, chosen by the first call from
// KORVO_REGISTRY (a postgresql:// or postgres:// URI: the server; anything
// else: a file) and kept for the life of the process. False, with the
// reason set as the last error, when KORVO_REGISTRY now names the other
// kind of store: a process never moves its tree between backends.
bool backend(Backend &which);

}  // namespace korutl::store

#endif
