/* A language library for the tests that answers every key with the three
 * arguments it was called with, "objectId|language|key" ("(null)" for a
 * null argument), so a test sees what the caller passed. */
#if defined(_WIN32)
#define PROBE_EXPORT __declspec(dllexport)
#else
#define PROBE_EXPORT __attribute__((visibility("default")))
#endif
#include <stdio.h>

static _Thread_local char answer[1024];

PROBE_EXPORT const char *GetStringResource(const char *objectId, const char *language,
                                           const char *key) {
  snprintf(answer, sizeof answer, "%s|%s|%s", objectId ? objectId : "(null)",
           language ? language : "(null)", key ? key : "(null)");
  return answer;
}
