// The configuration store on Windows: the system registry itself, so that
// korrsv.dll and the library's own registry calls see the one tree every
// other Windows program sees. Full key paths begin with a root key name
// ("HKEY_LOCAL_MACHINE\..."); names compare as the registry compares them.
//
// The registry has no transactions: write_batch checks every record before
// it writes the first one, so a malformed batch changes nothing, but a
// failure of the registry itself part way leaves the records before it
// written. Texts pass through the "A" functions, i.e. the ANSI code page.
#include <windows.h>

#include <strings.h>
#include <algorithm>
#include <cstring>

#include "platform/store.h"
#include "platform/store_read_hook.h"
#include "platform/store_rules.h"

namespace korutl::store {

namespace {

thread_local std::string error_text;

struct Root {
  const char *name;
  HKEY key;
};
const Root kRoots[] = {
    {"HKEY_LOCAL_MACHINE", HKEY_LOCAL_MACHINE},   {"HKEY_CURRENT_USER", HKEY_CURRENT_USER},
    {"HKEY_CLASSES_ROOT", HKEY_CLASSES_ROOT},     {"HKEY_USERS", HKEY_USERS},
    {"HKEY_CURRENT_CONFIG", HKEY_CURRENT_CONFIG},
};

Status failure(LONG rc, Status not_found = Status::no_key) {
  if (rc == ERROR_FILE_NOT_FOUND || rc == ERROR_PATH_NOT_FOUND) return not_found;
  error_text = "registry error " + std::to_string(rc);
  return Status::store_error;
}

// A key path checked and split into its root key and the names below it.
struct Place {
  HKEY root = nullptr;
  std::vector<std::string> names;  // empty for the root key itself
};

Status place_of(std::string_view path, Place &place) {
  std::vector<std::string_view> parts;
  if (!split_key_path(path, parts)) {
    error_text = "bad key path";
    return Status::bad_name;
  }
  for (const Root &r : kRoots) {
    if (parts[0].size() == std::strlen(r.name) &&
        strncasecmp(parts[0].data(), r.name, parts[0].size()) == 0) {
      place.root = r.key;
      place.names.assign(parts.begin() + 1, parts.end());
      return Status::ok;
    }
  }
  return Status::no_key;  // no such root: an empty tree
}

// Opens, or with `create` creates, the first `depth` names of `place` one
// name at a time: the "A" functions of some systems take no more than
// MAX_PATH characters of path in one call. `access` is for the last key.
LONG walk(const Place &place, size_t depth, REGSAM access, bool create, HKEY *out,
          DWORD *disposition = nullptr) {
  HKEY current = place.root;
  if (depth == 0) return RegOpenKeyExA(place.root, "", 0, access, out);
  for (size_t i = 0; i < depth; ++i) {
    const REGSAM want = i + 1 == depth ? access : KEY_READ | (create ? KEY_CREATE_SUB_KEY : 0);
    HKEY next = nullptr;
    const LONG rc = create ? RegCreateKeyExA(current, place.names[i].c_str(), 0, nullptr,
                                             REG_OPTION_NON_VOLATILE, want, nullptr, &next,
                                             i + 1 == depth ? disposition : nullptr)
                           : RegOpenKeyExA(current, place.names[i].c_str(), 0, want, &next);
    if (current != place.root) RegCloseKey(current);
    if (rc != ERROR_SUCCESS) return rc;
    current = next;
  }
  *out = current;
  return ERROR_SUCCESS;
}

// An open key, closed when it goes out of scope.
class OpenKey {
 public:
  ~OpenKey() {
    if (key_ != nullptr) RegCloseKey(key_);
  }
  Status open(std::string_view path, REGSAM access) {
    Place place;
    if (const Status st = place_of(path, place); st != Status::ok) return st;
    const LONG rc = walk(place, place.names.size(), access, false, &key_);
    return rc == ERROR_SUCCESS ? Status::ok : failure(rc);
  }
  HKEY get() const { return key_; }

 private:
  HKEY key_ = nullptr;
};

// Values are checked (check_value) before they come here.
Status set_in(HKEY key, const std::string &name, uint32_t type, std::string_view data) {
  const LONG rc =
      RegSetValueExA(key, name.c_str(), 0, type, reinterpret_cast<const BYTE *>(data.data()),
                     static_cast<DWORD>(data.size()));
  return rc == ERROR_SUCCESS ? Status::ok : failure(rc);
}

Status create_in(std::string_view path, HKEY *opened, bool *created) {
  Place place;
  if (const Status st = place_of(path, place); st != Status::ok)
    return st == Status::no_key ? Status::bad_name : st;  // no root to create it under
  HKEY key = nullptr;
  DWORD disposition = REG_OPENED_EXISTING_KEY;
  const LONG rc = walk(place, place.names.size(), KEY_ALL_ACCESS, true, &key, &disposition);
  if (rc != ERROR_SUCCESS) return failure(rc);
  if (created != nullptr) *created = disposition == REG_CREATED_NEW_KEY;
  if (opened != nullptr) {
    *opened = key;
  } else {
    RegCloseKey(key);
  }
  return Status::ok;
}

Status delete_in(std::string_view path) {
  Place place;
  if (const Status st = place_of(path, place); st != Status::ok) return st;
  if (place.names.empty()) {
    // A root key itself stays; deleting it empties it.
    const LONG rc = RegDeleteTreeA(place.root, nullptr);
    return rc == ERROR_SUCCESS ? Status::ok : failure(rc);
  }
  HKEY parent = nullptr;
  LONG rc = walk(place, place.names.size() - 1, KEY_ALL_ACCESS, false, &parent);
  if (rc != ERROR_SUCCESS) return failure(rc);
  rc = RegDeleteTreeA(parent, place.names.back().c_str());
  RegCloseKey(parent);
  return rc == ERROR_SUCCESS ? Status::ok : failure(rc);
}

}  // namespace

const std::string &last_error() { return error_text; }

// The system registry has no snapshots: the calls only keep count, so that
// callers pair them as on Linux.
thread_local unsigned snapshot_depth = 0;

Status begin_snapshot() {
  ++snapshot_depth;
  return Status::ok;
}

Status end_snapshot() {
  if (snapshot_depth == 0) return Status::bad_name;
  --snapshot_depth;
  return Status::ok;
}

// The system registry keeps no count of commits that can be read cheaply.
bool change_counter(uint64_t &) { return false; }

Status query_key(std::string_view path, uint32_t *subkeys, uint32_t *values) {
  note_read(path);
  OpenKey key;
  if (const Status st = key.open(path, KEY_QUERY_VALUE); st != Status::ok) return st;
  DWORD s = 0, v = 0;
  const LONG rc = RegQueryInfoKeyA(key.get(), nullptr, nullptr, nullptr, &s, nullptr, nullptr, &v,
                                   nullptr, nullptr, nullptr, nullptr);
  if (rc != ERROR_SUCCESS) return failure(rc);
  if (subkeys != nullptr) *subkeys = s;
  if (values != nullptr) *values = v;
  return Status::ok;
}

Status get_value(std::string_view path, std::string_view name, Value &out) {
  note_read(path);
  OpenKey key;
  if (const Status st = key.open(path, KEY_QUERY_VALUE); st != Status::ok) return st;
  const std::string value_name(name);
  DWORD type = 0, size = 0;
  LONG rc = RegQueryValueExA(key.get(), value_name.c_str(), nullptr, &type, nullptr, &size);
  // The value may grow between asking for its size and reading it.
  while (rc == ERROR_SUCCESS || rc == ERROR_MORE_DATA) {
    out.data.resize(size);
    rc = RegQueryValueExA(key.get(), value_name.c_str(), nullptr, &type,
                          reinterpret_cast<BYTE *>(out.data.data()), &size);
    if (rc == ERROR_SUCCESS) {
      out.data.resize(size);
      out.type = type;
      out.name = value_name;
      return Status::ok;
    }
  }
  return failure(rc, Status::no_value);
}

Status set_value(std::string_view path, std::string_view name, uint32_t type,
                 std::string_view data) {
  if (const Status st = check_value(path, name, data); st != Status::ok) return st;
  OpenKey key;
  if (const Status st = key.open(path, KEY_SET_VALUE); st != Status::ok) return st;
  return set_in(key.get(), std::string(name), type, data);
}

Status delete_value(std::string_view path, std::string_view name) {
  OpenKey key;
  if (const Status st = key.open(path, KEY_SET_VALUE); st != Status::ok) return st;
  const LONG rc = RegDeleteValueA(key.get(), std::string(name).c_str());
  return rc == ERROR_SUCCESS ? Status::ok : failure(rc, Status::no_value);
}

Status create_key(std::string_view path, bool *created) {
  return create_in(path, nullptr, created);
}

Status delete_key(std::string_view path) {
  OpenKey key;
  if (const Status st = key.open(path, KEY_READ); st != Status::ok) return st;
  return delete_in(path);
}

Status list_subkeys(std::string_view path, std::vector<std::string> &names) {
  note_read(path);
  names.clear();
  OpenKey key;
  if (const Status st = key.open(path, KEY_READ); st != Status::ok) return st;
  char name[max_name_length + 1];
  for (DWORD i = 0;; ++i) {
    DWORD length = sizeof name;
    const LONG rc = RegEnumKeyExA(key.get(), i, name, &length, nullptr, nullptr, nullptr, nullptr);
    if (rc == ERROR_NO_MORE_ITEMS) break;
    if (rc != ERROR_SUCCESS) return failure(rc);
    names.emplace_back(name, length);
  }
  std::sort(names.begin(), names.end(), [](const std::string &a, const std::string &b) {
    return strcasecmp(a.c_str(), b.c_str()) < 0;
  });
  return Status::ok;
}

Status list_values(std::string_view path, std::vector<Value> &values) {
  values.clear();
  return for_each_value(path, [&](Value &v) { values.push_back(std::move(v)); });
}

Status for_each_value(std::string_view path, const std::function<void(Value &)> &on_value) {
  note_read(path);
  OpenKey key;
  if (const Status st = key.open(path, KEY_READ); st != Status::ok) return st;
  DWORD name_max = 0, data_max = 0;
  LONG rc = RegQueryInfoKeyA(key.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                             nullptr, &name_max, &data_max, nullptr, nullptr);
  if (rc != ERROR_SUCCESS) return failure(rc);
  std::string name(name_max + 1, '\0');
  for (DWORD i = 0;; ++i) {
    Value v;
    v.data.resize(data_max);
    DWORD name_length = static_cast<DWORD>(name.size());
    DWORD size = data_max, type = 0;
    rc = RegEnumValueA(key.get(), i, name.data(), &name_length, nullptr, &type,
                       reinterpret_cast<BYTE *>(v.data.data()), &size);
    if (rc == ERROR_NO_MORE_ITEMS) break;
    if (rc != ERROR_SUCCESS) return failure(rc);  // also a value grown meanwhile
    v.name.assign(name.data(), name_length);
    v.type = type;
    v.data.resize(size);
    on_value(v);
  }
  return Status::ok;
}

Status write_batch(const std::vector<KeyRecord> &records) {
  for (const KeyRecord &r : records) {
    Place place;
    const Status st = place_of(r.path, place);
    if (st == Status::bad_name || (st == Status::no_key && !r.remove)) return Status::bad_name;
    for (const Value &v : r.values)
      if (const Status vs = check_value(r.path, v.name, v.data); vs != Status::ok) return vs;
  }
  for (const KeyRecord &r : records) {
    if (r.remove) {
      if (const Status st = absent_is_removed(delete_in(r.path)); st != Status::ok) return st;
      continue;
    }
    HKEY key = nullptr;
    if (const Status st = create_in(r.path, &key, nullptr); st != Status::ok) return st;
    Status st = Status::ok;
    for (const Value &v : r.values)
      if (st == Status::ok) st = set_in(key, v.name, v.type, v.data);
    for (const std::string &name : r.removed_values) {
      if (st != Status::ok) break;
      const LONG rc = RegDeleteValueA(key, name.c_str());
      if (rc != ERROR_SUCCESS && rc != ERROR_FILE_NOT_FOUND) st = failure(rc);
    }
    RegCloseKey(key);
    if (st != Status::ok) return st;
  }
  return Status::ok;
}

}  // namespace korutl::store
