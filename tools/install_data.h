// Data installed below the command's own prefix: the sample tree and the
// sample language libraries, found from the folder of the running command
// (<prefix>/bin), so that no path of the build machine is compiled in. The
// build tree has the same layout below the build folder.
#ifndef KORUTL_TOOLS_INSTALL_DATA_H
#define KORUTL_TOOLS_INSTALL_DATA_H

#include <string>

namespace korutl_tool {

// The absolute path of `relative` (such as "share/korutl/x.reg") below the
// prefix, or "" when it does not exist there (always "" on Windows, where
// the loader looks beside the program by itself).
std::string installed_data(const std::string &relative);

// Points KORVO_LANGUAGE_PATH at the installed sample language libraries
// when the variable is unset or empty and they are installed. Returns the
// search path in effect ("" when none).
std::string use_installed_language_libraries();

}  // namespace korutl_tool

#endif
