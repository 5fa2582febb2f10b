// One store can hold the trees of many hosts (a PostgreSQL server shared
// by a fleet); each process works on its own host's tree. These calls name
// the host a thread works on and ask about the other hosts. A store that
// holds one machine's tree only (a SQLite file, the system registry on
// Windows) has one host: the process's own.
#ifndef KORUTL_PLATFORM_STORE_HOSTS_H
#define KORUTL_PLATFORM_STORE_HOSTS_H

#include <string>
#include <string_view>
#include <vector>

#include "platform/store.h"

namespace korutl::store {

// The longest host name: a DNS name's limit.
constexpr size_t max_host_length = 253;

// Host names are DNS-like: 1 to max_host_length ASCII letters, digits,
// '-', '.' and '_'. They compare case-insensitively and are kept in lower
// case, so "Web01" and "web01" are one host. False for anything else.
bool fold_host_name(std::string_view name, std::string &folded);

// The host the calling thread works on: the one named with use_host, else
// KORVO_HOST (read on every call, as KORVO_REGISTRY is), else the machine's
// host name; in lower case. False, with `why`, when the name chosen is not
// a host name.
bool thread_host(std::string &host, std::string &why);

// Records the calling thread's chosen host (folded; "" for none). The
// stores' use_host calls it once they accept the name.
void choose_thread_host(std::string folded);

// Makes the calling thread work on `host`'s tree from its next call on;
// "" goes back to KORVO_HOST. bad_name for a name that is not a host name;
// store_error when the store holds this machine's tree only and `host` is
// another one.
Status use_host(std::string_view host);

// Every host that has a tree in the store, in name order (one committed
// state). A store of one machine lists the process's own host.
Status list_hosts(std::vector<std::string> &hosts);

// One value as found in one host's tree.
struct HostValue {
  std::string host;
  Value value;
};

// The value `name` of the key `path` in every host's tree that has it, by
// host name, read in one statement: a fleet inventory. Hosts without the
// key or value are left out; no_key is never returned.
Status get_value_all_hosts(std::string_view path, std::string_view name,
                           std::vector<HostValue> &out);

}  // namespace korutl::store

#endif
