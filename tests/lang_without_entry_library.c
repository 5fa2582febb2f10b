/* A shared object that loads but exports neither entry point of a language
 * library. */
__attribute__((visibility("default"))) const char *GetString(const char *key) { return key; }
