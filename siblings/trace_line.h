// The one trace line of a failed sibling-library operation,
// "module:line: operation: reason\n", handed to the trace function that
// library's caller installed. Header-only: each sibling is a shared library
// of its own and keeps its own trace function.
#ifndef KORUTL_SIBLINGS_TRACE_LINE_H
#define KORUTL_SIBLINGS_TRACE_LINE_H

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string_view>

namespace korutl::siblings {

// Formats into a fixed area and allocates nothing, so that running out of
// memory can be traced too. A null module reads "?"; a reason is cut to
// fit the area. A null trace function traces nothing.
template <typename TraceFunc>
void emit_trace_line(TraceFunc func, const char *module, int32_t line, const char *operation,
                     std::string_view reason) {
  if (func == nullptr) return;
  char text[1024];
  std::snprintf(text, sizeof text, "%s:%d: %s: %.*s\n", module != nullptr ? module : "?",
                static_cast<int>(line), operation,
                static_cast<int>(std::min<size_t>(reason.size(), 900)), reason.data());
  func(text);
}

}  // namespace korutl::siblings

#endif
