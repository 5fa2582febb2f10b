// What the registry commands need from the system they run on: whether a
// person can be asked, the name of the store for messages, and the files
// that stand for standard input and output. unix/reg_platform.cpp and
// win/reg_platform.cpp implement it.
#ifndef KORUTL_TOOLS_REG_PLATFORM_H
#define KORUTL_TOOLS_REG_PLATFORM_H

#include <string>

namespace korutl_tool {

// Whether standard input is a terminal, where a person can answer.
bool input_is_terminal();

// Where the store lives, for messages: the store file on Linux ("" when
// there is none: no KORVO_REGISTRY, no absolute XDG_STATE_HOME or HOME),
// "the system registry" on Windows.
std::string store_location();

// The file that stands for standard output (`output`) or standard input,
// given to the registry service's export and import; null where the system
// has none.
const char *standard_stream_file(bool output);

}  // namespace korutl_tool

#endif
