// The registry service's operations: argument checks, the 16-bit lengths
// and the fixed name slots around the configuration store.
#include "siblings/rsv/rsv.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <string>

#include "platform/store.h"
#include "platform/store_hosts.h"
#include "platform/store_rules.h"
#include "siblings/rsv/regfile.h"
#include "siblings/trace_line.h"
#include "utl/no_throw.h"

namespace store = korutl::store;

namespace {

std::atomic<rsv_trace_func> trace_func{nullptr};
std::atomic<rsv_read_hook> read_hook{nullptr};

// The store's hook hands paths as views; the service's hook takes texts.
void forward_read(std::string_view path) {
  if (rsv_read_hook hook = read_hook.load(std::memory_order_acquire))
    hook(std::string(path).c_str());
}

// Traces one failure and gives its status. A caller that names no module
// asked for none: the library's Win32 registry layer, which stands for
// calls that trace nothing.
uint16_t fail(uint16_t status, const char *operation, const char *module, int32_t line,
              std::string_view reason) {
  if (module != nullptr)
    korutl::siblings::emit_trace_line(trace_func.load(), module, line, operation, reason);
  return status;
}

// Runs an operation; one that runs out of memory fails as the store would.
template <typename Body>
uint16_t run_guarded(const char *operation, const char *module, int32_t line, Body &&body) {
  return korutl::without_exceptions(
      body, [&] { return fail(RSV_E_STORE, operation, module, line, "out of memory"); });
}

// Maps a store status to the service's own, tracing a failure.
uint16_t traced_status(store::Status st, const char *operation, const char *key, const char *module,
                       int32_t line) {
  switch (st) {
    case store::Status::ok:
      return RSV_OK;
    case store::Status::no_key:
      return fail(RSV_E_NO_KEY, operation, module, line, std::string("no key ") + key);
    case store::Status::no_value:
      return fail(RSV_E_NO_VALUE, operation, module, line, "no such value");
    case store::Status::bad_name:
      return fail(RSV_E_BAD_ARGUMENT, operation, module, line, "bad key or value name");
    case store::Status::root_value:
      return fail(RSV_E_BAD_ARGUMENT, operation, module, line,
                  "no values on a root key, and it stays");
    case store::Status::too_large:
      return fail(RSV_E_TOO_LONG, operation, module, line, "value too large");
    case store::Status::store_error:
      break;
  }
  return fail(RSV_E_STORE, operation, module, line, store::last_error());
}

uint16_t bad_argument(const char *operation, const char *module, int32_t line) {
  return fail(RSV_E_BAD_ARGUMENT, operation, module, line, "missing argument");
}

// Copies names into caller slots of `slot` bytes, cutting each to fit.
template <typename Names, typename NameOf>
void fill_slots(const Names &names, NameOf name_of, char **slots, uint16_t *count, size_t slot) {
  const size_t n = std::min<size_t>(*count, names.size());
  for (size_t i = 0; i < n; ++i) {
    const std::string &name = name_of(names[i]);
    const size_t len = std::min(name.size(), slot - 1);
    std::memcpy(slots[i], name.data(), len);
    slots[i][len] = '\0';
  }
  *count = static_cast<uint16_t>(n);
}

}  // namespace

extern "C" {

const int32_t RSV_V113 = 113;

RSV_API uint16_t rsv_query_key(const char *key, uint16_t *subkeys, uint16_t *values,
                               const char *module, int32_t line) {
  return run_guarded("query_key", module, line, [&]() -> uint16_t {
    if (key == nullptr) return bad_argument("query_key", module, line);
    uint32_t s = 0, v = 0;
    const store::Status st = store::query_key(key, &s, &v);
    if (st == store::Status::ok) {
      if (subkeys != nullptr) *subkeys = static_cast<uint16_t>(std::min<uint32_t>(s, 0xFFFF));
      if (values != nullptr) *values = static_cast<uint16_t>(std::min<uint32_t>(v, 0xFFFF));
    }
    return traced_status(st, "query_key", key, module, line);
  });
}

RSV_API uint16_t rsv_get_value(const char *key, const char *name, char *buffer, uint16_t *length,
                               const char *module, int32_t line) {
  return run_guarded("get_value", module, line, [&]() -> uint16_t {
    if (key == nullptr || name == nullptr || (buffer != nullptr && length == nullptr))
      return bad_argument("get_value", module, line);
    store::Value value;
    const store::Status st = store::get_value(key, name, value);
    if (st != store::Status::ok) return traced_status(st, "get_value", key, module, line);
    const size_t text_length = strnlen(value.data.data(), value.data.size());
    if (text_length >= 0xFFFF)
      return fail(RSV_E_TOO_LONG, "get_value", module, line, "value too long for a 16-bit length");
    if (length == nullptr) return RSV_OK;
    if (buffer != nullptr && text_length + 1 > *length) {
      *length = static_cast<uint16_t>(text_length);
      return fail(RSV_E_BUFFER_SMALL, "get_value", module, line, "buffer too small");
    }
    if (buffer != nullptr) {
      std::memcpy(buffer, value.data.data(), text_length);
      buffer[text_length] = '\0';
    }
    *length = static_cast<uint16_t>(text_length);
    return RSV_OK;
  });
}

RSV_API uint16_t rsv_set_value(const char *key, const char *name, const char *text,
                               const char *module, int32_t line) {
  return run_guarded("set_value", module, line, [&]() -> uint16_t {
    if (key == nullptr || name == nullptr || text == nullptr)
      return bad_argument("set_value", module, line);
    const std::string_view data(text, std::strlen(text) + 1);
    return traced_status(store::set_value(key, name, store::type_sz, data), "set_value", key,
                         module, line);
  });
}

RSV_API uint16_t rsv_get_value_ex(const char *key, const char *name, uint32_t *type, void *data,
                                  uint32_t *size, const char *module, int32_t line) {
  return run_guarded("get_value_ex", module, line, [&]() -> uint16_t {
    if (key == nullptr || name == nullptr || size == nullptr)
      return bad_argument("get_value_ex", module, line);
    store::Value value;
    const store::Status st = store::get_value(key, name, value);
    if (st != store::Status::ok) return traced_status(st, "get_value_ex", key, module, line);
    if (type != nullptr) *type = value.type;
    const uint32_t needed = static_cast<uint32_t>(value.data.size());
    if (data != nullptr && needed > *size) {
      *size = needed;
      return fail(RSV_E_BUFFER_SMALL, "get_value_ex", module, line, "buffer too small");
    }
    if (data != nullptr && needed > 0) std::memcpy(data, value.data.data(), needed);
    *size = needed;
    return RSV_OK;
  });
}

RSV_API uint16_t rsv_set_value_ex(const char *key, const char *name, uint32_t type,
                                  const void *data, uint32_t size, const char *module,
                                  int32_t line) {
  return run_guarded("set_value_ex", module, line, [&]() -> uint16_t {
    if (key == nullptr || name == nullptr || (data == nullptr && size > 0))
      return bad_argument("set_value_ex", module, line);
    const std::string_view bytes(static_cast<const char *>(data), data != nullptr ? size : 0);
    return traced_status(store::set_value(key, name, type, bytes), "set_value_ex", key, module,
                         line);
  });
}

RSV_API uint16_t rsv_delete_value(const char *key, const char *name, const char *module,
                                  int32_t line) {
  return run_guarded("delete_value", module, line, [&]() -> uint16_t {
    if (key == nullptr || name == nullptr) return bad_argument("delete_value", module, line);
    return traced_status(store::delete_value(key, name), "delete_value", key, module, line);
  });
}

RSV_API uint16_t rsv_create_key(const char *key, const char *module, int32_t line) {
  return rsv_create_key_ex(key, nullptr, module, line);
}

RSV_API uint16_t rsv_create_key_ex(const char *key, uint8_t *created, const char *module,
                                   int32_t line) {
  return run_guarded("create_key", module, line, [&]() -> uint16_t {
    if (key == nullptr) return bad_argument("create_key", module, line);
    bool made = false;
    const uint16_t rc =
        traced_status(store::create_key(key, &made), "create_key", key, module, line);
    if (rc == RSV_OK && created != nullptr) *created = made ? 1 : 0;
    return rc;
  });
}

RSV_API uint16_t rsv_begin_snapshot(const char *module, int32_t line) {
  return run_guarded("begin_snapshot", module, line, [&]() -> uint16_t {
    return traced_status(store::begin_snapshot(), "begin_snapshot", "", module, line);
  });
}

RSV_API uint16_t rsv_end_snapshot(const char *module, int32_t line) {
  if (store::end_snapshot() != store::Status::ok)
    return fail(RSV_E_BAD_ARGUMENT, "end_snapshot", module, line, "no snapshot to end");
  return RSV_OK;
}

RSV_API uint16_t rsv_delete_key(const char *key, const char *module, int32_t line) {
  return run_guarded("delete_key", module, line, [&]() -> uint16_t {
    if (key == nullptr) return bad_argument("delete_key", module, line);
    store::Status st = store::check_key_removal(key);
    if (st == store::Status::ok) st = store::delete_key(key);
    return traced_status(st, "delete_key", key, module, line);
  });
}

RSV_API uint16_t rsv_enum_subkeys(const char *key, char **names, uint16_t *count,
                                  const char *module, int32_t line) {
  return run_guarded("enum_subkeys", module, line, [&]() -> uint16_t {
    if (key == nullptr || count == nullptr || (names == nullptr && *count > 0))
      return bad_argument("enum_subkeys", module, line);
    std::vector<std::string> found;
    const store::Status st = store::list_subkeys(key, found);
    if (st != store::Status::ok) return traced_status(st, "enum_subkeys", key, module, line);
    fill_slots(
        found, [](const std::string &s) -> const std::string & { return s; }, names, count,
        RSV_SUBKEY_SLOT);
    return RSV_OK;
  });
}

RSV_API uint16_t rsv_enum_values(const char *key, char **names, uint16_t *count, const char *module,
                                 int32_t line) {
  return run_guarded("enum_values", module, line, [&]() -> uint16_t {
    if (key == nullptr || count == nullptr || (names == nullptr && *count > 0))
      return bad_argument("enum_values", module, line);
    std::vector<store::Value> found;
    const store::Status st = store::list_values(key, found);
    if (st != store::Status::ok) return traced_status(st, "enum_values", key, module, line);
    fill_slots(
        found, [](const store::Value &v) -> const std::string & { return v.name; }, names, count,
        RSV_VALUE_SLOT);
    return RSV_OK;
  });
}

RSV_API uint16_t rsv_list_names(const char *key, int32_t kind, rsv_name_func func, void *context,
                                const char *module, int32_t line) {
  return run_guarded("list_names", module, line, [&]() -> uint16_t {
    if (key == nullptr || func == nullptr || (kind != RSV_LIST_SUBKEYS && kind != RSV_LIST_VALUES))
      return bad_argument("list_names", module, line);
    std::vector<std::string> names;
    store::Status st;
    if (kind == RSV_LIST_SUBKEYS) {
      st = store::list_subkeys(key, names);
    } else {
      std::vector<store::Value> values;
      st = store::list_values(key, values);
      names.reserve(values.size());
      for (store::Value &v : values) names.push_back(std::move(v.name));
    }
    if (st != store::Status::ok) return traced_status(st, "list_names", key, module, line);
    for (const std::string &name : names)
      if (func(name.c_str(), context) != 0) break;
    return RSV_OK;
  });
}

RSV_API uint16_t rsv_change_counter(uint64_t *counter, const char *module, int32_t line) {
  return run_guarded("change_counter", module, line, [&]() -> uint16_t {
    if (counter == nullptr) return bad_argument("change_counter", module, line);
    return store::change_counter(*counter) ? RSV_OK : RSV_E_STORE;
  });
}

RSV_API uint16_t rsv_export_file(const char *key, const char *file, const char *module,
                                 int32_t line) {
  return run_guarded("export_file", module, line, [&]() -> uint16_t {
    if (key == nullptr || file == nullptr) return bad_argument("export_file", module, line);
    std::string file_error;
    const store::Status st = korutl::regfile::export_file(key, file, file_error);
    if (st != store::Status::ok) return traced_status(st, "export_file", key, module, line);
    if (!file_error.empty()) return fail(RSV_E_STORE, "export_file", module, line, file_error);
    return RSV_OK;
  });
}

RSV_API uint16_t rsv_import_file(const char *file, uint32_t *bad_line, const char *module,
                                 int32_t line) {
  return run_guarded("import_file", module, line, [&]() -> uint16_t {
    if (bad_line != nullptr) *bad_line = 0;
    if (file == nullptr) return bad_argument("import_file", module, line);
    std::vector<store::KeyRecord> records;
    size_t wrong = 0;
    switch (korutl::regfile::read_file(file, records, wrong)) {
      case korutl::regfile::Parsed::ok:
        break;
      case korutl::regfile::Parsed::malformed:
        if (bad_line != nullptr) *bad_line = static_cast<uint32_t>(wrong);
        return fail(RSV_E_BAD_ARGUMENT, "import_file", module, line,
                    std::string(file) + ":" + std::to_string(wrong) + ": malformed line");
      case korutl::regfile::Parsed::unreadable:
        return fail(RSV_E_BAD_ARGUMENT, "import_file", module, line,
                    std::string("cannot read ") + file);
      case korutl::regfile::Parsed::too_large:
        return fail(RSV_E_BAD_ARGUMENT, "import_file", module, line,
                    std::string(file) + ": larger than " +
                        std::to_string(korutl::regfile::max_file_size >> 20) + " MiB");
    }
    return traced_status(store::write_batch(records), "import_file", file, module, line);
  });
}

RSV_API uint16_t rsv_set_host(const char *host, const char *module, int32_t line) {
  return run_guarded("set_host", module, line, [&]() -> uint16_t {
    const store::Status st = store::use_host(host != nullptr ? host : "");
    if (st == store::Status::bad_name)
      return fail(RSV_E_BAD_ARGUMENT, "set_host", module, line,
                  std::string("not a host name: ") + host);
    return traced_status(st, "set_host", "", module, line);
  });
}

RSV_API uint16_t rsv_list_hosts(rsv_name_func func, void *context, const char *module,
                                int32_t line) {
  return run_guarded("list_hosts", module, line, [&]() -> uint16_t {
    if (func == nullptr) return bad_argument("list_hosts", module, line);
    std::vector<std::string> hosts;
    const store::Status st = store::list_hosts(hosts);
    if (st != store::Status::ok) return traced_status(st, "list_hosts", "", module, line);
    for (const std::string &host : hosts)
      if (func(host.c_str(), context) != 0) break;
    return RSV_OK;
  });
}

RSV_API uint16_t rsv_get_value_all_hosts(const char *key, const char *name,
                                         rsv_host_value_func func, void *context,
                                         const char *module, int32_t line) {
  return run_guarded("get_value_all_hosts", module, line, [&]() -> uint16_t {
    if (key == nullptr || name == nullptr || func == nullptr)
      return bad_argument("get_value_all_hosts", module, line);
    std::vector<store::HostValue> found;
    const store::Status st = store::get_value_all_hosts(key, name, found);
    if (st != store::Status::ok) return traced_status(st, "get_value_all_hosts", key, module, line);
    for (const store::HostValue &h : found)
      if (func(h.host.c_str(), h.value.type, h.value.data.data(),
               static_cast<uint32_t>(h.value.data.size()), context) != 0)
        break;
    return RSV_OK;
  });
}

RSV_API uint16_t rsv_set_read_hook(rsv_read_hook func, const char *, int32_t) {
  read_hook.store(func, std::memory_order_release);
  store::set_read_hook(func != nullptr ? forward_read : nullptr);
  return RSV_OK;
}

RSV_API uint16_t rsv_set_trace_func(rsv_trace_func func, const char *, int32_t) {
  trace_func.store(func);
  return RSV_OK;
}

}  // extern "C"
