// The system's dynamic loader under libkoross: dlopen on Linux
// (unix/loader.cpp), LoadLibraryA on Windows (win/loader.cpp). oss.cpp
// does the searching, the checks and the trace for both.
#ifndef KORUTL_SIBLINGS_OSS_LOADER_H
#define KORUTL_SIBLINGS_OSS_LOADER_H

#include <string>
#include <string_view>

namespace koross {

// Separator of the folders in KORVO_LANGUAGE_PATH: ':' on Linux, ';' on
// Windows (where ':' follows a drive letter).
extern const char kPathListSeparator;

// The suffix tried in place of ".dll" when a ".dll" name is not found, or
// null where ".dll" is the system's own suffix and nothing is retried.
extern const char *const kDllStandIn;

// True when `name` carries a folder and is loaded as given, not searched.
bool names_a_path(std::string_view name);

// Loads the library at `path` (a bare name goes through the system's own
// search). On failure returns null, sets `reason` to the loader's message
// and `missing` when no file of that name exists.
void *open_library(const std::string &path, std::string &reason, bool &missing);

// The address of `name` in `library`, or null with `reason` set.
void *find_symbol(void *library, const char *name, std::string &reason);

// Releases a library; false with `reason` set when the loader refuses.
bool close_library(void *library, std::string &reason);

// The name of the locale that decides the language of messages.
const char *message_locale();

}  // namespace koross

#endif
