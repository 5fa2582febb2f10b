/*
 * libkoross - the family's OS-services library: loading shared libraries,
 * the current locale, and the trace function.
 *
 * Statuses are 16-bit, 0 meaning success. Every operation takes a trace
 * position (calling module, line) last; a failed operation hands one line
 * "module:line: operation: reason" to the installed trace function, if any.
 */
#ifndef KORUTL_SIBLINGS_OSS_H
#define KORUTL_SIBLINGS_OSS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Exported from koross.dll on Windows, imported by everyone else there. */
#if defined(_WIN32)
#if defined(koross_EXPORTS)
#define OSS_API __declspec(dllexport)
#else
#define OSS_API __declspec(dllimport)
#endif
#else
#define OSS_API __attribute__((visibility("default")))
#endif

#define OSS_OK 0
#define OSS_E_ARGUMENT 1  /* a null or empty argument */
#define OSS_E_NOT_FOUND 2 /* no loadable library of that name */
#define OSS_E_NO_SYMBOL 3 /* the library has no such entry point */
/* An operation that runs out of memory fails with its usual failure status
 * and the trace reason "out of memory". */

typedef void (*oss_trace_func)(const char *line);

/* Interface version; libkorutl references it. */
OSS_API extern const int32_t OSS_V19;

/* Loads a shared library and stores its handle (pointer-sized, never 0) in
 * *handle. A name containing '/' is loaded as given. Otherwise each folder
 * of KORVO_LANGUAGE_PATH (colon-separated, empty entries skipped) is tried,
 * then the dynamic linker's own search. A name ending in ".dll" (any case)
 * that none of these finds is tried again, the same way, with ".so" in its
 * place, so registrations made on Windows keep working. On failure *handle
 * is untouched and the trace gets the loader's own reason: that of a file
 * that exists but does not load when there is one, else the first "not
 * found". */
OSS_API uint16_t oss_load_library(const char *file, intptr_t *handle, const char *module,
                                  int32_t line);

/* Looks up `name` in a loaded library; 0 and *address filled, or
 * OSS_E_NO_SYMBOL with *address untouched. */
OSS_API uint16_t oss_get_function_address(intptr_t handle, const char *name, void **address,
                                          const char *module, int32_t line);

/* Releases a library loaded by oss_load_library. */
OSS_API uint16_t oss_unload_library(intptr_t handle, const char *module, int32_t line);

/* Sets the process locale from the environment (setlocale(LC_ALL, "")).
 * The two numbers (the family passes 0, 0) are accepted and ignored. Like
 * setlocale itself this must not race other threads' locale use. */
OSS_API uint16_t oss_setlocale(int32_t category, int32_t flags, const char *module, int32_t line);

/* Copies the name of the current message locale (for example
 * "de_DE.UTF-8") into `area` of `size` bytes, zero-terminated; a name that
 * does not fit leaves `area` empty and returns OSS_E_ARGUMENT. `which`
 * (the family passes 1) is accepted and ignored. */
OSS_API uint16_t oss_getlocale(int32_t which, char *area, int32_t size, const char *module,
                               int32_t line);

/* Installs the function that receives this library's trace lines (null
 * switches the trace off). */
OSS_API uint16_t oss_set_trace_func(oss_trace_func func, const char *module, int32_t line);

#ifdef __cplusplus
}
#endif

#endif
