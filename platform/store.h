// The configuration store: one SQLite file holding the whole registry tree
// (the system registry on Windows). Only the registry service (libkorrsv)
// links it, so a process has one store; the library's Win32 registry layer
// goes through the service. Nothing else in the project talks SQL.
//
// Key paths are full paths such as "HKEY_LOCAL_MACHINE\SOFTWARE\Vantrel";
// names compare case-insensitively (ASCII) and keep the case they were
// created with. Each thread keeps its own connection, reopened when
// KORVO_REGISTRY changes or after a fork.
#ifndef KORUTL_PLATFORM_STORE_H
#define KORUTL_PLATFORM_STORE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "siblings/rsv/rsv.h"

namespace korutl::store {

enum class Status {
  ok,
  no_key,       // the key (or the store file) does not exist
  root_value,   // a root key holds no values and is never removed
  no_value,     // the key exists, the value does not
  bad_name,     // empty path component, name over 255 characters, depth over 512
  too_large,    // value data over max_value_size
  store_error,  // the file cannot be opened, is damaged, or SQLite failed
};

// Windows' own limits, kept so that a tree moves between hosts unchanged.
constexpr size_t max_name_length = 255;
constexpr size_t max_value_name_length = 16383;
constexpr size_t max_depth = 512;
constexpr size_t max_value_size = 1024 * 1024;

// Registry value types, the registry service's codes.
enum ValueType : uint32_t {
  type_none = RSV_REG_NONE,
  type_sz = RSV_REG_SZ,
  type_expand_sz = RSV_REG_EXPAND_SZ,
  type_binary = RSV_REG_BINARY,
  type_dword = RSV_REG_DWORD,
  type_multi_sz = RSV_REG_MULTI_SZ,
  type_qword = RSV_REG_QWORD,
};

struct Value {
  std::string name;
  uint32_t type = type_none;
  std::string data;  // raw bytes; text types keep their terminating zero
};

// Why the last failing call of this thread failed (SQLite's message or ours).
const std::string &last_error();

// Reads of this thread between begin_snapshot and end_snapshot see one
// committed state of the tree. Calls nest; the outermost end releases it.
// A write inside a snapshot fails with store_error. end_snapshot without a
// begin gives bad_name. On Windows, where the registry has no snapshots,
// the calls only count.
Status begin_snapshot();
Status end_snapshot();

// A snapshot for the life of a scope: the store's own operations that read
// more than once (a key's counts, a listing, an export) read inside one.
class SnapshotScope {
 public:
  SnapshotScope() : begun_(begin_snapshot() == Status::ok) {}
  ~SnapshotScope() {
    if (begun_) end_snapshot();
  }
  SnapshotScope(const SnapshotScope &) = delete;
  SnapshotScope &operator=(const SnapshotScope &) = delete;
  bool begun() const { return begun_; }

 private:
  bool begun_;
};

// Called before every read of the tree (query_key, get_value, list_subkeys,
// list_values) with the key path; null removes it. For diagnostics and
// tests that count the reads a code path makes.
using ReadHook = void (*)(std::string_view path);
void set_read_hook(ReadHook hook);

// A number that changes whenever any process commits a change to the
// tree this process works on; false when the backend cannot tell cheaply
// (callers then do not rely on remembered reads). Inside a snapshot it is
// false too: the snapshot's reads may be older than the number. The SQLite
// store reads it from the write-ahead log's index in shared memory
// (no lock, no system call); a store in another journal mode, a missing
// store file and the Windows registry give false.
bool change_counter(uint64_t &counter);

Status query_key(std::string_view path, uint32_t *subkeys, uint32_t *values);
Status get_value(std::string_view path, std::string_view name, Value &out);
// Stores into an existing key; the value keeps its place in the order.
Status set_value(std::string_view path, std::string_view name, uint32_t type,
                 std::string_view data);
Status delete_value(std::string_view path, std::string_view name);
// Creates the key and every missing key above it. `created` (may be null)
// tells whether the key itself is new.
Status create_key(std::string_view path, bool *created = nullptr);
// Removes the key, its values and its whole subtree.
Status delete_key(std::string_view path);
// Subkey names in case-insensitive order; values in first-set order.
Status list_subkeys(std::string_view path, std::vector<std::string> &names);
Status list_values(std::string_view path, std::vector<Value> &values);
// list_values one value at a time, never holding them all (for streaming);
// on_value may take the value's contents.
Status for_each_value(std::string_view path, const std::function<void(Value &)> &on_value);

// One whole tree written in a single transaction: a key with its values.
struct KeyRecord {
  std::string path;
  bool remove = false;  // "[-path]": delete this subtree instead
  std::vector<Value> values;
  std::vector<std::string> removed_values;
};
Status write_batch(const std::vector<KeyRecord> &records);

}  // namespace korutl::store

#endif
