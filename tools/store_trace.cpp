#include "tools/store_trace.h"

#include <string>
#include <vector>

#include "siblings/rsv/rsv.h"
#include "tools/output.h"

namespace korutl_tool {

namespace {

constexpr const char *kTraceModule = "tools/trace";

// The command is single-threaded: one list for the one StoreTrace alive.
std::vector<std::string> &lines() {
  static std::vector<std::string> collected;
  return collected;
}

void collect(const char *line) { lines().emplace_back(line); }

// The registry service's own words for a key or value that is not there.
bool is_missing(const std::string &reason) {
  return reason.rfind("no key ", 0) == 0 || reason == "no such value";
}

}  // namespace

std::string trace_reason(std::string_view line) {
  size_t at = line.find(": ");
  if (at != std::string_view::npos) at = line.find(": ", at + 2);
  std::string_view reason = at == std::string_view::npos ? line : line.substr(at + 2);
  while (!reason.empty() && reason.back() == '\n') reason.remove_suffix(1);
  return std::string(reason);
}

StoreTrace::StoreTrace() {
  lines().clear();
  rsv_set_trace_func(collect, kTraceModule, __LINE__);
}

StoreTrace::~StoreTrace() { rsv_set_trace_func(nullptr, kTraceModule, __LINE__); }

std::string StoreTrace::store_failure() const {
  for (const std::string &line : lines()) {
    std::string reason = trace_reason(line);
    if (!is_missing(reason)) return reason;
  }
  return {};
}

void StoreTrace::fail_lookup(std::string_view what) const {
  const std::string why = store_failure();
  fail(why.empty() ? std::string(what) + " not found" : why);
}

void StoreTrace::check_change(bool failed, std::string_view what) const {
  const std::string why = store_failure();
  if (!failed && why.empty()) return;
  fail("cannot " + std::string(what) + (why.empty() ? "" : ": " + why));
}

}  // namespace korutl_tool
