// A stand-in language library for the loading tests.
extern "C" __attribute__((visibility("default"))) const char *get_resource() { return "probe"; }
