// Exported functions are called from C, where an exception cannot be
// caught: it would end the caller's process. The only one our code can
// raise is std::bad_alloc, from the C++ containers and texts some
// operations use inside; an operation that runs out of memory gives its
// failure result instead.
#ifndef KORUTL_UTL_NO_THROW_H
#define KORUTL_UTL_NO_THROW_H

namespace korutl {

// Returns body(), or on_failure() when body throws.
template <typename Body, typename OnFailure>
auto without_exceptions(Body &&body, OnFailure &&on_failure) noexcept -> decltype(body()) {
  try {
    return body();
  } catch (...) {
    return on_failure();
  }
}

}  // namespace korutl

#endif
