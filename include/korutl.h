/*
 * korutl.h - the Halcyra utility library (korutl), its whole public interface.
 *
 * Plain C99, usable from C++. Every function is exported unmangled; nothing
 * else of the library is visible. Results the library allocates come from
 * the standard heap and belong to the caller, who releases them with the
 * release function named at each declaration. Texts are zero-terminated
 * 8-bit strings unless a declaration names UTF-8, UTF-16, UCS-2 or UCS-4.
 *
 * Failure is told by the return value alone: no function throws, prints or
 * aborts on bad input. Where a declaration gives a buffer size the caller
 * must provide, that size is a hard requirement: the function writes up to
 * it and never beyond.
 *
 * Sections, in the order of the library's layers:
 *   identification, digit values, then one section per family below;
 *   a section without declarations is still to come.
 */
#ifndef KORUTL_H
#define KORUTL_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#  if defined(KORUTL_BUILDING)
#    define KORUTL_API __declspec(dllexport)
#  else
#    define KORUTL_API __declspec(dllimport)
#  endif
#else
#  define KORUTL_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------
 * Library identification
 *
 * Fixed when the library is built; nothing is looked up at run time. The
 * returned texts are constants of the library: read them, never change or
 * free them. The same values stand in the version-stamp block inside the
 * library file and in the Windows version resource.
 * ------------------------------------------------------------------------ */

/* The library's name, "Halcyra Utility Library". */
KORUTL_API const char *KORVOUtlGetLibName(void);

/* The version text, "2.2.1". */
KORUTL_API const char *KORVOUtlGetLibVersion(void);

/* The patch level, 3. */
KORUTL_API uint16_t KORVOUtlGetLibPatchLevel(void);

/* Writes the full version, "2.2.1.3" (version, a dot, patch level: 7
 * characters and a terminating zero), into `buffer` and returns `buffer`.
 * `buffer` must hold at least 8 bytes. A null `buffer` returns null and
 * writes nothing. */
KORUTL_API char *KORVOUtlGetLibFullVersion(char *buffer);

/* The release number, 8. */
KORUTL_API uint16_t KORVOUtlGetLibRelease(void);

/* The file OS code, 2. KORVOUtlGetLibFileType is the same function under a
 * second name and returns the same code (the file type code, also 2). */
KORUTL_API uint16_t KORVOUtlGetLibFileOS(void);
KORUTL_API uint16_t KORVOUtlGetLibFileType(void);

/* The library's file name as its family knows it, "korutl.dll" (also on
 * Linux, where the file is libkorutl.so.2: callers compare against the
 * family's name). */
KORUTL_API const char *KORVOUtlGetLibFileName(void);

/* ------------------------------------------------------------------------
 * Digit values
 *
 * The value of one character as a digit. The argument is a character whose
 * byte codes 128 to 255 count as invalid whatever the signedness of `char`.
 * No state; callable from any thread.
 * ------------------------------------------------------------------------ */

/* Codes of KORVOHex2Int and KORVOChar2Int beside the digit values. */
#define KORVO_DIGIT_END     95 /* the terminating zero byte */
#define KORVO_DIGIT_COLON   96 /* the colon (KORVOHex2Int only) */
#define KORVO_DIGIT_INVALID 97 /* any character that is no digit */

/* Hexadecimal digit: 0-9, a-f and A-F give 0 to 15; the zero byte gives
 * KORVO_DIGIT_END, the colon KORVO_DIGIT_COLON, anything else
 * KORVO_DIGIT_INVALID. For scanning colon-separated hexadecimal texts. */
KORUTL_API int32_t KORVOHex2Int(char c);

/* Base-95 digit of a key text: each printable character (codes 32 to 126)
 * gives its code minus 32 (blank 0, '0' 16, 'A' 33, 'a' 65, '~' 94); the
 * zero byte gives KORVO_DIGIT_END, anything else KORVO_DIGIT_INVALID. */
KORUTL_API int32_t KORVOChar2Int(char c);

/* Hexadecimal digit that never fails: 0-9, a-f and A-F give 0 to 15 and
 * every other character, the zero byte included, gives 0. */
KORUTL_API uint8_t KORVOGetValueOfHexDigit(char c);

/* ------------------------------------------------------------------------
 * Settings, paths and registry start-up
 * ------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------
 * Internal products and code-page conversion
 * ------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------
 * Configuration tree: versions, values, instances, agents
 * ------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------
 * Language and message file registration, user authorisation
 * ------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------
 * Enumerations and environment variables
 * ------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------
 * Synchronised stack
 * ------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------
 * Hash table
 * ------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------
 * Word splitting and special-character escaping
 * ------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------
 * Object identifiers
 * ------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------
 * Quoting, markup escaping and other string utilities
 * ------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------
 * Localised texts
 * ------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------
 * Unicode conversions: UTF-8, UTF-16, UCS-4
 * ------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------
 * UTF-7 and UCS-2
 * ------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------
 * SAFER buffer encryption
 * ------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------
 * Buffer crypt front end, XOR scrambler, Base64 and hexadecimal
 * ------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------
 * Memory shell
 *
 * A debugging allocator for client programs. With the shell on, every block
 * lies on pages of its own, its last byte right before an inaccessible
 * guard page, so reading or writing past its end faults at once; a freed
 * block's pages become inaccessible and its addresses are never handed out
 * again. Every block is listed with the caller's line and file (the part
 * after the last backslash) until it is freed, and KORVOPrintMemoryTable
 * reports the list. With the shell off the four functions are malloc,
 * calloc, realloc and free.
 *
 * The mode is fixed at the first call of any of these functions: the
 * library's build setting (off unless built with KORUTL_MEMORY_SHELL_ON),
 * turned off when the environment variable KORVO_MEMORY_SHELL is exactly
 * "0". That first call must complete before other threads call the shell;
 * afterwards any thread may call it.
 *
 * Heap errors (freeing or reallocating a pointer that is not a live block
 * of the shell, e.g. a second free) leave everything as it was and show a
 * box on standard error, "DbgHeap" / "Heap-Fehler: ...\nActivate
 * breakpoint?". It is answered from KORVO_MESSAGEBOX_ANSWER ("yes" or "no";
 * otherwise a terminal on standard input is asked, and without one the
 * answer is no); "yes" raises SIGTRAP.
 *
 * Blocks of these functions go back only through mrealloc and mfree, never
 * through free, and vice versa.
 * ------------------------------------------------------------------------ */

/* A block of size bytes (shell on: size 0 gives a 1-byte block, listed with
 * size 0; its contents are 0xAA bytes). line and file name the caller's
 * source position; file may be null (listed as empty), longer paths are cut
 * at 199 characters and names at 99. Null when no memory or when the block's
 * region would exceed 4 GiB. */
KORUTL_API void *mmalloc(uint32_t size, int32_t line, const char *file);

/* A zero-filled block of count * size bytes, else as mmalloc. A product
 * count * size that does not fit in 32 bits is refused with null (in both
 * modes). */
KORUTL_API void *mcalloc(uint32_t count, uint32_t size, int32_t line, const char *file);

/* Resizes block (null or a block of these functions) to size bytes, keeping
 * the first min(old, new) bytes; the result is a new block and block is
 * freed. Size 0 frees block and gives null (shell on; with block null it
 * gives a 1-byte block). When the new block cannot be had, null comes back
 * and block stays valid and listed. */
KORUTL_API void *mrealloc(void *block, uint32_t size, int32_t line, const char *file);

/* Frees block (null does nothing). */
KORUTL_API void mfree(void *block);

/* Shell on: opens path for writing (created or truncated) and sends the
 * report there; a log already open is left open and no longer used. When
 * path cannot be opened the report goes to standard output. Shell off:
 * nothing. */
KORUTL_API void KORVOOpenMemoryLogFile(const char *path);

/* Shell on: closes the log file, if any; the report goes to standard output
 * again. Shell off: nothing. */
KORUTL_API void KORVOCloseMemoryLogFile(void);

/* Writes the report titled title (null as empty) to the log file or
 * standard output and returns the number of blocks listed. Shell on: a
 * framed title, one line per listed block, oldest first,
 *   "Addr:%8x Size:%6u Line:%4d File : %s"
 * where the address column is the low 32 bits of the block's address in
 * lower-case hexadecimal padded with blanks to 8, then the item and byte
 * totals (current, cumulative, maximum; 32-bit, wrapping; a 0-byte mmalloc
 * counts 1 byte). Shell off: "\n*** Memory shell turned off ***\n", result 0. */
KORUTL_API uint32_t KORVOPrintMemoryTable(const char *title);

/* Semaphore stubs: take any arguments, ignore them, do nothing, return 1. */
#ifdef __cplusplus
#define KORUTL_ANY_ARGUMENTS ...
#else
#define KORUTL_ANY_ARGUMENTS
#endif
KORUTL_API int32_t KORVOCreateSemaphore(KORUTL_ANY_ARGUMENTS);
KORUTL_API int32_t KORVODeleteSemaphore(KORUTL_ANY_ARGUMENTS);
KORUTL_API int32_t KORVOInitSemaphore(KORUTL_ANY_ARGUMENTS);
KORUTL_API int32_t KORVOSemaphore_P(KORUTL_ANY_ARGUMENTS);
KORUTL_API int32_t KORVOSemaphore_V(KORUTL_ANY_ARGUMENTS);

#ifdef __cplusplus
}
#endif

#endif /* KORUTL_H */
