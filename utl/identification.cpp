// The seven identification functions: constants fixed at build time.
#include <cstring>

#include "korutl.h"
#include "utl/version.h"

extern "C" {

KORUTL_API const char *KORVOUtlGetLibName(void) { return KORUTL_LIB_NAME; }

KORUTL_API const char *KORVOUtlGetLibVersion(void) { return KORUTL_VERSION_TEXT; }

KORUTL_API uint16_t KORVOUtlGetLibPatchLevel(void) { return KORUTL_PATCH_LEVEL; }

KORUTL_API char *KORVOUtlGetLibFullVersion(char *buffer) {
  if (buffer == nullptr) return nullptr;
  // The caller's 8 bytes are all this writes.
  static_assert(sizeof KORUTL_FULL_VERSION_TEXT <= 8);
  std::memcpy(buffer, KORUTL_FULL_VERSION_TEXT, sizeof KORUTL_FULL_VERSION_TEXT);
  return buffer;
}

KORUTL_API uint16_t KORVOUtlGetLibRelease(void) { return KORUTL_RELEASE; }

KORUTL_API uint16_t KORVOUtlGetLibFileOS(void) { return KORUTL_FILE_OS; }

// The family exports the file OS code under a second name as well.
KORUTL_API uint16_t KORVOUtlGetLibFileType(void) { return KORVOUtlGetLibFileOS(); }

KORUTL_API const char *KORVOUtlGetLibFileName(void) { return KORUTL_FILE_NAME; }

}  // extern "C"
