#include "tools/reg_platform.h"

#include <io.h>

#include <cstdio>

namespace korutl_tool {

bool input_is_terminal() { return _isatty(_fileno(stdin)) != 0; }

// The tree is the system registry: no file to name.
std::string store_location() { return "the system registry"; }

// The registry service reads and writes named files only.
const char *standard_stream_file(bool) { return nullptr; }

}  // namespace korutl_tool
