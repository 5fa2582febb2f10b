#include "tools/reg_platform.h"

#include <unistd.h>

#include <cstdlib>

#include "platform/unix/store_file.h"

namespace korutl_tool {

bool input_is_terminal() { return isatty(STDIN_FILENO) != 0; }

std::string store_location() {
  // A server's own trace line names it, without the URI's password.
  const char *registry = std::getenv("KORVO_REGISTRY");
  if (registry != nullptr && korutl::store::is_server_uri(registry)) return "";
  std::string file, why;
  return korutl::store::store_file(file, why) ? file : "";
}

const char *standard_stream_file(bool output) { return output ? "/dev/stdout" : "/dev/stdin"; }

}  // namespace korutl_tool
