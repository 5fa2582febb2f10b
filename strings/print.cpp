// Formatted print to standard output, for components that have no runtime
// of their own to print with.
#include <cstdarg>
#include <cstdio>

#include "korutl.h"

extern "C" {

KORUTL_API int32_t KORVOprintf(const char *format, ...) {
  if (format == nullptr) return -1;
  va_list args;
  va_start(args, format);
  const int written = std::vprintf(format, args);
  va_end(args);
  return written;
}

}  // extern "C"
