// Requests for localised texts with arbitrary object identifiers, language
// names and keys, against a small tree with one registered library, and
// the user check with the same texts. Whatever the input, the result is
// null or a readable text, and nothing is written out of bounds.
// Input: identifier, language and key separated by zero bytes.
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "korutl.h"

namespace {

KORVOStack *cache = nullptr;

// The next zero-terminated field from `pos`; empty once the input is used up.
std::string field(const std::string &all, size_t &pos) {
  if (pos >= all.size()) return {};
  const size_t end = std::min(all.find('\0', pos), all.size());
  std::string f = all.substr(pos, end - pos);
  pos = end + 1;
  return f;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
  const std::string store = "/tmp/korutl-fuzz-i18n-" + std::to_string(getpid()) + ".db";
  setenv("KORVO_REGISTRY", store.c_str(), 1);
  setenv("KORVO_LANGUAGE_PATH", KORUTL_LANGUAGE_DIR, 1);
  KORVOCfgRegisterLanguageFile("Halcyra", "2.2.1", "English", "hal_en.dll");
  KORVOCfgRegisterLanguageFile("P", "1.0", "de-DE", "orr_de.dll");
  KORVOInitI18n(&cache);
  std::atexit([] {
    KORVOFiniteI18n(&cache);
    const std::string base = std::getenv("KORVO_REGISTRY");
    for (const char *suffix : {"", "-wal", "-shm"}) unlink((base + suffix).c_str());
  });
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  const std::string all(reinterpret_cast<const char *>(data), size);
  size_t pos = 0;
  const std::string object_id = field(all, pos);
  const std::string language = field(all, pos);
  const std::string key = field(all, pos);
  const char *text = KORVOLoadI18NStringEx(cache, object_id.c_str(), language.c_str(), key.c_str());
  if (text != nullptr && std::strlen(text) > 1000000) std::abort();
  KORVOObjectId *id = KORVOStrCreateObjectId(object_id.c_str(), nullptr);
  if (KORVOCfgCheckAuthorization(language.c_str(), id) > 1) std::abort();
  KORVOStrDestroyObjectId(id);
  return 0;
}
