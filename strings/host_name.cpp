// Host-name check: letters, digits, dots and hyphens, with no label that
// starts with a dot or hyphen or ends with a hyphen.
#include "korutl.h"

namespace {

bool is_ascii_alnum(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

}  // namespace

extern "C" {

KORUTL_API uint8_t KORVOIsValidHostName(const char *name) {
  if (name == nullptr || name[0] == '\0') return 0;
  bool label_start = true;
  for (const char *p = name; *p != '\0'; ++p) {
    const char c = *p;
    if (!is_ascii_alnum(c) && c != '.' && c != '-') return 0;
    if (label_start && (c == '.' || c == '-')) return 0;
    if (c == '-' && (p[1] == '\0' || p[1] == '.')) return 0;
    label_start = c == '.';
  }
  return 1;
}

}  // extern "C"
