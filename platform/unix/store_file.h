// Where the store file is, decided so that nothing surprises: a relative
// KORVO_REGISTRY is made absolute once, when the process first sees it, so
// that a later chdir never moves the store; without KORVO_REGISTRY the file
// lies below an absolute XDG_STATE_HOME or HOME, and without either there
// is no store at all rather than one below the filesystem root or the
// current directory.
#ifndef KORUTL_PLATFORM_UNIX_STORE_FILE_H
#define KORUTL_PLATFORM_UNIX_STORE_FILE_H

#include <string>
#include <string_view>

namespace korutl::store {

// Whether `registry` (a KORVO_REGISTRY text) names a PostgreSQL server, a
// postgresql:// or postgres:// URI, rather than a file.
inline bool is_server_uri(std::string_view registry) {
  return registry.starts_with("postgresql://") || registry.starts_with("postgres://");
}

// The store file: KORVO_REGISTRY, else $XDG_STATE_HOME/halcyra/registry.db,
// else $HOME/.local/state/halcyra/registry.db. False, with the reason in
// `why`, when none of them gives an absolute path.
bool store_file(std::string &file, std::string &why);

// The milliseconds a call waits for a store that another writer holds:
// KORVO_REGISTRY_BUSY_TIMEOUT when it is a whole number from 0 to 3600000,
// else 10000.
long busy_timeout_ms();

}  // namespace korutl::store

#endif
