#include "readconfig/key_path.h"

#include <cstdarg>
#include <cstdio>

namespace korutl {

bool ComposeKeyPath(char *out, size_t size, const char *format, ...) {
  if (out == nullptr || size == 0) return false;
  va_list args;
  va_start(args, format);
  const int n = std::vsnprintf(out, size, format, args);
  va_end(args);
  if (n < 0 || static_cast<size_t>(n) >= size) {
    out[0] = '\0';
    return false;
  }
  return true;
}

}  // namespace korutl
