// Windows only: the C runtime opens the standard streams in text mode,
// which would turn "\n" into "\r\n" and stop reading at a 0x1A byte. The
// command's input and output are bytes, so all three are switched to
// binary mode before main runs.
#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <initializer_list>

namespace {

[[maybe_unused]] const bool binary_streams = [] {
  for (std::FILE *stream : {stdin, stdout, stderr}) _setmode(_fileno(stream), _O_BINARY);
  return true;
}();

}  // namespace
