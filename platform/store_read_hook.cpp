#include "platform/store_read_hook.h"

#include <atomic>

#include "platform/store.h"

namespace korutl::store {

namespace {
std::atomic<ReadHook> read_hook{nullptr};
}  // namespace

void note_read(std::string_view path) {
  if (ReadHook hook = read_hook.load(std::memory_order_acquire)) hook(path);
}

void set_read_hook(ReadHook hook) { read_hook.store(hook, std::memory_order_release); }

}  // namespace korutl::store
