#include "readconfig/cfg_paths.h"

#include <cstdarg>
#include <cstdio>

namespace korutl::cfg {

bool compose(char *buffer, size_t size, const char *format, ...) {
  va_list args;
  va_start(args, format);
  const int n = std::vsnprintf(buffer, size, format, args);
  va_end(args);
  if (n < 0 || static_cast<size_t>(n) >= size) {
    buffer[0] = '\0';
    return false;
  }
  return true;
}

}  // namespace korutl::cfg
