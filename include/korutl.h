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

/* Settings are text values under HKEY_LOCAL_MACHINE in the key
 * "SOFTWARE\Vantrel\<product>\<section>" of the configuration store (the
 * file named by KORVO_REGISTRY; see README). The composed key path must
 * stay under 1024 characters and a value under 1024 bytes with its
 * terminating zero; longer ones are refused, never cut. */

/* Copies the setting's text into outValue, or defaultValue (null counts as
 * "") when the key or value is missing, empty, over 1024 bytes, or the path
 * is too long. outValue must hold 1024 bytes; the copy is cut to 1023
 * characters. Null product, section or valueName give the default. Returns
 * 1 always. */
KORUTL_API int32_t KORVOGetSetting(const char *product, const char *section,
                                   const char *valueName, const char *defaultValue,
                                   char *outValue);

/* Stores value as a text setting, creating the key as needed. Returns 1
 * when written, 0 when an argument is null, the path or value is too long,
 * or the store cannot be written. */
KORUTL_API int32_t KORVOSaveSetting(const char *product, const char *section,
                                    const char *valueName, const char *value);

/* The setting Global\Install_Path of Halcyra ("" when unset) in out, which
 * must hold 1024 bytes. Returns out; null when out is null. */
KORUTL_API char *KORVOGetInstallPath(char *out);

/* The setting MILayer\Hostlist_Path of Halcyra, as KORVOGetInstallPath. */
KORUTL_API char *KORVOGetHostListPath(char *out);

/* The registry mode, always 1; outName (may be null) receives "". */
KORUTL_API int32_t KORVOGetRegMode(char *outName);

/* Composes basePath, "\" unless baseHasSeparator is non-zero, then
 * "localized\<language>\" when language is not null, then fileName, into
 * out. out must hold the whole composed path and its zero. Returns out, or
 * null (out untouched) when out, basePath or fileName is null. */
KORUTL_API char *KORVOMakeLocalizedPath(char *out, const char *basePath,
                                        uint8_t baseHasSeparator, const char *language,
                                        const char *fileName);

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
 * ------------------------------------------------------------------------ */

#ifdef __cplusplus
}
#endif

#endif /* KORUTL_H */
