// Why a call into the library failed. The library and the registry service
// trace each failed store operation as one line "module:line: operation:
// reason" to the trace function installed in the registry service; while a
// StoreTrace lives, those lines are kept here instead of printed, so that a
// subcommand can tell a key or value that is not there from a store that
// cannot be read or written (read-only, full, damaged, busy), and say which.
#ifndef KORUTL_TOOLS_STORE_TRACE_H
#define KORUTL_TOOLS_STORE_TRACE_H

#include <string>
#include <string_view>

namespace korutl_tool {

// The reason of one trace line "module:line: operation: reason\n": what
// follows the second ": " (module names and operations hold none).
std::string trace_reason(std::string_view line);

class StoreTrace {
 public:
  // Installs the collecting trace function (one StoreTrace at a time).
  StoreTrace();
  // Removes it again: the registry service traces nothing afterwards.
  ~StoreTrace();
  StoreTrace(const StoreTrace &) = delete;
  StoreTrace &operator=(const StoreTrace &) = delete;

  // The reason of the first collected line that reports something other
  // than a missing key or value (the store's own reason, which names the
  // store file); empty when every failure was a missing key or value.
  std::string store_failure() const;

  // Reports a failed lookup with fail(): the store failure when there was
  // one, else "<what> not found".
  void fail_lookup(std::string_view what) const;

  // Reports a change (a registration, a removal) with fail() as "cannot
  // <what>: <reason>" when it failed, or when a store failure was traced
  // although the library answered done (its removals answer done when the
  // store cannot be reached).
  void check_change(bool failed, std::string_view what) const;
};

}  // namespace korutl_tool

#endif
