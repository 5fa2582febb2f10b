/* A language library for the tests that answers every key with the three
 * arguments it was called with, "objectId|language|key" ("(null)" for a
 * null argument), so a test sees what the caller passed. */
#include <stdio.h>

static _Thread_local char answer[1024];

__attribute__((visibility("default"))) const char *GetStringResource(const char *objectId,
                                                                     const char *language,
                                                                     const char *key) {
  snprintf(answer, sizeof answer, "%s|%s|%s", objectId ? objectId : "(null)",
           language ? language : "(null)", key ? key : "(null)");
  return answer;
}
