/* A shared object that loads but exports neither entry point of a language
 * library. */
#if defined(_WIN32)
#define PROBE_EXPORT __declspec(dllexport)
#else
#define PROBE_EXPORT __attribute__((visibility("default")))
#endif
PROBE_EXPORT const char *GetString(const char *key) { return key; }
