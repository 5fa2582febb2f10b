/*
 * libkorcpx - the family's code-page conversion library, on iconv.
 *
 * Code sets are numbered as Windows code pages: 437, 850, 1200 (UTF-16LE),
 * 1201 (UTF-16BE), 1250, 1251, 1252, 20127 (US-ASCII), 28591, 28592, 28605
 * (ISO-8859-1, -2, -15), 65001 (UTF-8), and 65456, the family's own code
 * set, which is UTF-8. Any other number fails to open. Results are 0 on
 * success or one of the CPX_E_* statuses. Handles are small positive
 * integers; one handle must not be used by two threads at once.
 */
#ifndef KORUTL_SIBLINGS_CPX_H
#define KORUTL_SIBLINGS_CPX_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Exported from korcpx.dll on Windows, imported by everyone else there. */
#if defined(_WIN32)
#if defined(korcpx_EXPORTS)
#define CPX_API __declspec(dllexport)
#else
#define CPX_API __declspec(dllimport)
#endif
#else
#define CPX_API __attribute__((visibility("default")))
#endif

#define CPX_CODESET_FAMILY 65456 /* the family's code set: UTF-8 */

#define CPX_OK 0
#define CPX_E_NOT_STARTED 1     /* cpx_init / cpx_init_ex has not run */
#define CPX_E_ARGUMENT 2        /* null pointer, bad handle or reserved argument not 0 */
#define CPX_E_UNKNOWN_CODESET 3 /* a code set number this library does not know */
#define CPX_E_TARGET_TOO_SMALL 4
#define CPX_E_INVALID_INPUT 5 /* bytes that are no text in the source code set */
#define CPX_E_SETTING 6       /* an unknown setting, or CPXOBJDIR= names no folder */
#define CPX_E_NO_MEMORY 7     /* memory ran out (cpx_init_ex, open, convert) */

/* Starts the library with its defaults. Calling it again is harmless. */
CPX_API int32_t cpx_init(void);

/* Starts the library with settings: a list of "name=value" texts ended by
 * a null entry. The one setting known is "CPXOBJDIR=" + a folder, which
 * must exist (the folder of the family's conversion objects; iconv needs
 * none, so it is only checked). Anything else fails with CPX_E_SETTING and
 * leaves the library not started. */
CPX_API int32_t cpx_init_ex(const char *const *settings);

/* Ends the library and closes every handle still open. */
CPX_API int32_t cpx_term(void);

/* The number of the current locale's code set (nl_langinfo(CODESET)), or
 * 0 when it has no number here. */
CPX_API int32_t cpx_local_codeset(void);

/* Opens a handle converting from code set `from` to code set `to` into
 * *handle. */
CPX_API int32_t cpx_open_conversion(int32_t from, int32_t to, int32_t *handle);

/* Closes a handle; -1 and unknown handles are ignored. */
CPX_API int32_t cpx_close_conversion(int32_t handle);

/* Converts one text with `handle`. The nine further arguments:
 *   source          address of the source bytes
 *   source_length   their number; negative: up to the source's zero byte
 *   target          address of the target area
 *   target_capacity its size in bytes
 *   written         address of an int32_t that receives the number of bytes
 *                   written (terminator not counted), or 0
 *   reserved1..3    must be 0
 *   flags           bit 0 (CPX_TERMINATE): also write a zero terminator,
 *                   which must fit within target_capacity
 * The whole text converts or nothing counts: CPX_E_TARGET_TOO_SMALL when
 * the result (with its terminator, if asked) does not fit, and
 * CPX_E_INVALID_INPUT for bytes that are not text in the source code set
 * or a source that ends inside a character; on failure *written is not
 * set and nothing beyond target_capacity is ever written. */
#define CPX_TERMINATE 1
CPX_API int32_t cpx_convert_text(int32_t handle, intptr_t source, intptr_t source_length,
                                 intptr_t target, intptr_t target_capacity, intptr_t written,
                                 int32_t reserved1, int32_t reserved2, int32_t reserved3,
                                 intptr_t flags);

#ifdef __cplusplus
}
#endif

#endif
