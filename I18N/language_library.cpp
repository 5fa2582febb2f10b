// Loading and releasing one language library through the OS-services
// library.
#include <new>

#include "I18N/language_library.h"
#include "siblings/oss/oss.h"

namespace korutl::i18n {

LanguageLibrary *LoadLanguageLibrary(const char *fileName) {
  if (fileName == nullptr || *fileName == '\0') return nullptr;
  intptr_t handle = 0;
  if (oss_load_library(fileName, &handle, kModule, __LINE__) != OSS_OK) return nullptr;
  void *getStringResource = nullptr;
  void *getResource = nullptr;
  if (oss_get_function_address(handle, "GetStringResource", &getStringResource, kModule,
                               __LINE__) != OSS_OK &&
      oss_get_function_address(handle, "get_resource", &getResource, kModule, __LINE__) != OSS_OK) {
    oss_unload_library(handle, kModule, __LINE__);
    return nullptr;
  }
  auto *library = new (std::nothrow) LanguageLibrary;
  if (library == nullptr) {
    oss_unload_library(handle, kModule, __LINE__);
    return nullptr;
  }
  library->libraryHandle = handle;
  library->getStringResource = reinterpret_cast<GetStringResourceEntry>(getStringResource);
  library->getResource = reinterpret_cast<GetResourceEntry>(getResource);
  library->lastUsed.store(std::time(nullptr), std::memory_order_relaxed);
  return library;
}

void ReleaseLanguageLibrary(LanguageLibrary *library) {
  if (library == nullptr) return;
  if (library->libraryHandle != 0) oss_unload_library(library->libraryHandle, kModule, __LINE__);
  delete library;
}

}  // namespace korutl::i18n
