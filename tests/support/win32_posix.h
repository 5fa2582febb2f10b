// The few POSIX calls the tests use for their scratch state, on Windows.
// Windows test builds include this header ahead of every test source (see
// tests/CMakeLists.txt), so one test source serves both platforms.
#ifndef KORUTL_TESTS_SUPPORT_WIN32_POSIX_H
#define KORUTL_TESTS_SUPPORT_WIN32_POSIX_H

#ifdef __cplusplus
#include <direct.h>
#include <io.h>

#include <cstdlib>
#include <cstring>

inline int setenv(const char *name, const char *value, int overwrite) {
  if (!overwrite && std::getenv(name) != nullptr) return 0;
  return _putenv_s(name, value) == 0 ? 0 : -1;
}

// An empty value removes the variable from the environment on Windows.
inline int unsetenv(const char *name) { return _putenv_s(name, "") == 0 ? 0 : -1; }

// Makes a new folder from a pattern ending in "XXXXXX"; the pattern is
// rewritten to the folder's name.
inline char *mkdtemp(char *pattern) {
  return _mktemp_s(pattern, std::strlen(pattern) + 1) == 0 && _mkdir(pattern) == 0 ? pattern
                                                                                   : nullptr;
}
#endif

#endif
