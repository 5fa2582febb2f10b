#include "tools/reg_platform.h"

#include <windows.h>

namespace korutl_tool {

// A console, not merely a character device: NUL is one too, and a
// question asked of it would be answered by end of input.
bool input_is_terminal() {
  DWORD mode = 0;
  const HANDLE in = GetStdHandle(STD_INPUT_HANDLE);
  return GetFileType(in) == FILE_TYPE_CHAR && GetConsoleMode(in, &mode) != 0;
}

// The tree is the system registry: no file to name.
std::string store_location() { return "the system registry"; }

// The registry service reads and writes named files only.
const char *standard_stream_file(bool) { return nullptr; }

}  // namespace korutl_tool
