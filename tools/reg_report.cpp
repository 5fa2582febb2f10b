#include "tools/reg_report.h"

#include <strings.h>

#include <cstdio>
#include <mutex>
#include <utility>

#include "siblings/rsv/rsv.h"
#include "tools/output.h"
#include "tools/reg_platform.h"
#include "tools/reg_values.h"
#include "tools/store_trace.h"

namespace korutl_tool {

namespace {

std::mutex reason_mutex;
std::string last_reason;

// The reason is what the person needs.
void keep_reason(const char *line) {
  std::string reason = trace_reason(line);
  const std::lock_guard lock(reason_mutex);
  last_reason = std::move(reason);
}

std::string reason_of(uint16_t status) {
  {
    const std::lock_guard lock(reason_mutex);
    if (!last_reason.empty()) return std::exchange(last_reason, std::string());
  }
  switch (status) {
    case RSV_E_NO_KEY:
      return "no such key";
    case RSV_E_NO_VALUE:
      return "no such value";
    case RSV_E_BAD_ARGUMENT:
      return "bad key or value name";
    case RSV_E_TOO_LONG:
      return "value too large";
    default:
      return "the store failed";
  }
}

}  // namespace

void watch_store_failures() { rsv_set_trace_func(keep_reason, kRegModule, __LINE__); }

void fail_call(uint16_t status, const std::string &action) {
  std::string message = action + ": " + reason_of(status);
  if (status == RSV_E_STORE) {
    const std::string store = store_location();
    if (!store.empty() && message.find(store) == std::string::npos)
      message += " (store: " + store + ")";
  }
  fail(message);
}

bool key_found(const std::string &key) {
  const uint16_t rc = rsv_query_key(key.c_str(), nullptr, nullptr, kRegModule, __LINE__);
  if (rc == RSV_E_NO_KEY)
    fail("the key " + key + " does not exist");
  else if (rc != RSV_OK)
    fail_call(rc, "cannot read " + key);
  return rc == RSV_OK;
}

std::string quoted_value_name(const std::string &name) {
  return name.empty() ? "(Default)" : "\"" + name + "\"";
}

void report_done() { std::printf("The operation completed successfully.\n"); }

bool confirmed(const std::string &question, bool force, const std::string &what,
               const char *switch_name) {
  if (force) return true;
  if (!input_is_terminal()) {
    fail(what + " needs confirmation and standard input is no terminal: use " + switch_name);
    return false;
  }
  for (;;) {
    std::fprintf(stderr, "%s (Yes/No)? ", question.c_str());
    std::fflush(stderr);
    char line[64];
    if (std::fgets(line, sizeof line, stdin) == nullptr) break;
    std::string word(line);
    while (!word.empty() && (word.back() == '\n' || word.back() == '\r' || word.back() == ' '))
      word.pop_back();
    if (strcasecmp(word.c_str(), "y") == 0 || strcasecmp(word.c_str(), "yes") == 0) return true;
    if (strcasecmp(word.c_str(), "n") == 0 || strcasecmp(word.c_str(), "no") == 0) break;
  }
  fail(what + ": cancelled, nothing changed");
  return false;
}

}  // namespace korutl_tool
