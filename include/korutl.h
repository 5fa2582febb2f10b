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

/* Number of words of `text`: maximal runs of characters other than
 * `separator`; runs of separators count as one gap and leading or trailing
 * separators make no word. A null or empty text has 0 words. */
KORUTL_API int32_t KORVOStrGetWordCount(const char *text, char separator);

/* Copies field `index` (from 0) of `text` into `word` and returns the number
 * of characters copied (terminator not counted). Every separator ends a
 * field, except one in the very first position, which is skipped; so two
 * adjacent separators enclose an empty field. An index past the last field
 * gives an empty word. A null text, null word or negative index returns 0
 * and writes nothing. `word` must hold strlen(text) + 1 bytes. */
KORUTL_API uint32_t KORVOStrGetWord(const char *text, char *word, char separator,
                                    int32_t index);

/* Escapes backslash as "%5C" and space as "%20" (nothing else, the percent
 * sign included) and returns the number of characters escaped. With a null
 * `escaped` only counts. Otherwise `escaped` must hold strlen(text) + 2 *
 * count + 1 bytes (get the count first with a null `escaped`). A null `text`
 * returns 0. */
KORUTL_API int32_t KORVOStrStoreSpecialChars(const char *text, char *escaped);

/* Restores in place "%XY" escapes (one byte 16*X+Y; a non-hexadecimal digit
 * counts as 0, so "%zz" gives a zero byte that ends the text) and then the
 * "%uWXYZ" escapes as KORVOStrRestoreEscapedUnicodeChars does. A "%" with
 * fewer than two characters after it, or followed by "u", is left for the
 * second pass. Returns 0; a null text is left alone. */
KORUTL_API int32_t KORVOStrRestoreSpecialChars(char *text);

/* As KORVOStrRestoreSpecialChars, for a text followed by one more byte
 * after its terminator (a double-zero-terminated text): when the byte pass
 * shortens the text, that byte is copied along so it still follows the new
 * terminator. `text` must have that byte. Returns 0. */
KORUTL_API int32_t KORVOStrRestoreSpecialChars1(char *text);

/* Restores in place each "%u" followed by four characters as the UTF-8 form
 * of that one UTF-16 code unit (digits as in the byte form; "%u0000" is
 * removed). Units from U+0800 upward, surrogates included, are written as
 * their three-byte form: it is never longer than the six-character escape,
 * so the text does not grow. A unit is never paired with a neighbour.
 * Returns 0; a null text is left alone. */
KORUTL_API int32_t KORVOStrRestoreEscapedUnicodeChars(char *text);

/* ------------------------------------------------------------------------
 * Object identifiers
 * ------------------------------------------------------------------------ */

/* A parsed object identifier such as "\localhost\Halcyra\2.2.1.3": parts
 * 0 host, 1 product, 2 version, 3 instance, further levels after. Created
 * by the functions below, released with KORVOStrDestroyObjectId, never
 * changed after it is returned. `parts` holds `numberOfParts` unescaped
 * texts; `objectIdString` is the canonical text: each part preceded by a
 * backslash, with backslash and space in a part written "%5C" and "%20". */
typedef struct KORVOObjectId {
  char **parts;
  char *objectIdString;
  int32_t numberOfParts;
} KORVOObjectId;

/* At most this many further parts may follow the text of
 * KORVOStrCreateObjectId. */
#define KORVO_OBJECTID_MAX_FURTHER_PARTS 100

/* Parses `text` and appends the further parts (texts, taken as they are,
 * escapes not restored), ended by a null pointer. The text's parts are its
 * backslash-separated words with both escape forms restored; a missing
 * leading or a trailing backslash is accepted. Runs of backslashes count as
 * one separator, so empty fields are skipped and no word of the text is
 * lost ("\a\\b" gives "a" and "b"). Returns a new record, or null for a
 * null text, more than KORVO_OBJECTID_MAX_FURTHER_PARTS further parts, or
 * exhausted memory (never a half-built record). */
KORUTL_API KORVOObjectId *KORVOStrCreateObjectId(const char *text, ...);

/* Releases a record and everything it owns; null is ignored. */
KORUTL_API void KORVOStrDestroyObjectId(KORVOObjectId *id);

/* A new record parsed from `id`'s canonical text; null for a null record or
 * exhausted memory. */
KORUTL_API KORVOObjectId *KORVOStrCopyObjectId(const KORVOObjectId *id);

/* 1 when both records are non-null and their canonical texts are equal byte
 * for byte, else 0. */
KORUTL_API uint8_t KORVOStrCompareObjectId(const KORVOObjectId *a, const KORVOObjectId *b);

/* numberOfParts, or -1 for a null record. */
KORUTL_API int32_t KORVOStrGetNumberOfParts(const KORVOObjectId *id);

/* Part `index`, owned by the record; null for a null record or an index
 * outside 0 .. numberOfParts - 1. */
KORUTL_API const char *KORVOStrGetPart(const KORVOObjectId *id, int32_t index);

/* The canonical text, owned by the record; null for a null record. */
KORUTL_API const char *KORVOStrGetObjectIdString(const KORVOObjectId *id);

/* Parts 0 (host), 1 (product), 2 (version), 3 (instance); null when the
 * record is null or has no such part. */
KORUTL_API const char *KORVOStrGetHostFromObjectId(const KORVOObjectId *id);
KORUTL_API const char *KORVOStrGetProductFromObjectId(const KORVOObjectId *id);
KORUTL_API const char *KORVOStrGetVersionFromObjectId(const KORVOObjectId *id);
KORUTL_API const char *KORVOStrGetInstanceFromObjectId(const KORVOObjectId *id);

/* A new record without the last part ("\localhost" gives the record of no
 * parts). Null for a null record, a record of no parts or an empty text,
 * a record whose text re-parses to no parts (the text of a single empty
 * part, "\"), or exhausted memory. */
KORUTL_API KORVOObjectId *KORVOGetParentObjectId(const KORVOObjectId *id);

/* ------------------------------------------------------------------------
 * Quoting, markup escaping and other string utilities
 * ------------------------------------------------------------------------ */

/* Removes leading and trailing spaces (code 32 only) in place. Returns 0, or
 * -1 for a null text. */
KORUTL_API int32_t KORVOStrTrim(char *text);

/* Quotes `text` as a script string literal: `quote` around it; inside, the
 * quote as backslash-quote, backslash as two backslashes, line feed as
 * backslash-n, carriage return as backslash-r. A null text gives "null"
 * (unquoted).
 * With a null `buffer` the result is newly allocated (free it with free())
 * and never cut. With a caller `buffer` the result takes at most `size`
 * bytes: characters that do not fit are dropped, the closing quote is always
 * written. `size` must be at least 3, and at least 5 when `text` may be
 * null; a smaller size returns null and writes nothing. Returns the buffer
 * holding the result, or null when memory is exhausted. */
KORUTL_API char *KORVOStrGetQuotedString(const char *text, char *buffer, uint32_t size,
                                         char quote);

/* KORVOStrGetQuotedString with the apostrophe as quote. */
KORUTL_API char *KORVOStrGetQuotedJSString(const char *text, char *buffer, uint32_t size);

/* KORVOStrGetQuotedString with the double quote as quote. */
KORUTL_API char *KORVOStrGetQuotedParm(const char *text, char *buffer, uint32_t size);

/* Undoes the quoting: the first character (apostrophe or double quote)
 * opens; backslash-n gives a line feed, a backslash before any other
 * character gives that character; the unescaped opening quote ends the text
 * and what follows is ignored; without a closing quote the text runs to its
 * end. Returns null for a null text, the text "null", or a text that does
 * not begin with a quote (nothing allocated then). With a null `buffer` the
 * result is allocated (free it with free()); a caller buffer must hold
 * strlen(text) bytes. */
KORUTL_API char *KORVOStrGetUnquotedJSString(const char *text, char *buffer);

/* 1 when `text` matches `pattern`, else 0. "*" matches any run of
 * characters, "?" any one character; there is no escape. When the low 8
 * bits of `ignoreCase` are not 0, upper-case letters of the current locale
 * compare as lower case; codes 128 to 255 always compare exactly. Runs in
 * time proportional to length(text) * length(pattern) at worst, however
 * many asterisks. A null text or pattern gives 0. */
KORUTL_API uint8_t KORVOStrMatchesPattern(const char *text, const char *pattern,
                                          int32_t ignoreCase);

/* 1 when `name` is a valid host name: ASCII letters, digits, dots and
 * hyphens; no label starts with a dot or hyphen or ends with a hyphen; a
 * final dot is accepted; lengths are not limited. 0 for null or empty. */
KORUTL_API uint8_t KORVOIsValidHostName(const char *name);

/* New text with & < > " ' replaced by &amp; &lt; &gt; &quot; &apos;.
 * Release with KORVOStrFreeEscapedXMLString. Null for a null text or
 * exhausted memory. */
KORUTL_API char *KORVOStrGetEscapedXMLString(const char *text);

/* As KORVOStrGetEscapedXMLString, but the apostrophe stays as it is. */
KORUTL_API char *KORVOStrGetEscapedHTMLString(const char *text);

/* Releases a text of the two functions above; null is ignored. Both names
 * are the same function. */
KORUTL_API void KORVOStrFreeEscapedXMLString(char *text);
KORUTL_API void KORVOStrFreeEscapedHTMLString(char *text);

/* printf to standard output; returns vprintf's result (characters written,
 * negative on error). */
KORUTL_API int32_t KORVOprintf(const char *format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 1, 2)))
#endif
    ;

/* ------------------------------------------------------------------------
 * Localised texts
 * ------------------------------------------------------------------------ */

/* ------------------------------------------------------------------------
 * Unicode conversions: UTF-8, UTF-16, UCS-4
 * ------------------------------------------------------------------------ */

/* Conversion results, shared with the UTF-7 and UCS-2 conversions. */
#define CONV_OK 0               /* the whole source was converted */
#define CONV_SOURCE_EXHAUSTED 1 /* the source ends inside a UTF-8 sequence */
#define CONV_TARGET_EXHAUSTED 2 /* no room for the next character */
#define CONV_SOURCE_ILLEGAL 3   /* malformed UTF-7 input */

/* The six conversions share one calling pattern: `*sourceStart` .. sourceEnd
 * is read, `*targetStart` .. targetEnd receives the output; on return both
 * pointers stand where the conversion stopped (after result 1 at the first
 * byte of the incomplete sequence, after result 2 at the first unit of the
 * character that did not fit), so a further call carries on. Output already
 * written stays; no terminator is written; nothing is allocated. Units are
 * in host byte order, without byte-order mark.
 * They are lenient: nothing is rejected except a UTF-8 sequence cut by the
 * source end. A high surrogate followed by a low one is joined; other
 * surrogates pass as values of their own. UTF-8 is the six-byte form for
 * values up to 0x7FFFFFFF; trailing bytes are not checked and overlong forms
 * decode to their value. A value the target cannot hold becomes U+FFFD.
 * Results: CONV_OK, CONV_TARGET_EXHAUSTED, and CONV_SOURCE_EXHAUSTED from
 * the two UTF-8 decoders. */
KORUTL_API int32_t KORVOConvertUCS4toUTF16(const uint32_t **sourceStart, const uint32_t *sourceEnd,
                                           uint16_t **targetStart, uint16_t *targetEnd);
KORUTL_API int32_t KORVOConvertUTF16toUCS4(const uint16_t **sourceStart, const uint16_t *sourceEnd,
                                           uint32_t **targetStart, uint32_t *targetEnd);
KORUTL_API int32_t KORVOConvertUTF16toUTF8(const uint16_t **sourceStart, const uint16_t *sourceEnd,
                                           uint8_t **targetStart, uint8_t *targetEnd);
KORUTL_API int32_t KORVOConvertUTF8toUTF16(const uint8_t **sourceStart, const uint8_t *sourceEnd,
                                           uint16_t **targetStart, uint16_t *targetEnd);
KORUTL_API int32_t KORVOConvertUCS4toUTF8(const uint32_t **sourceStart, const uint32_t *sourceEnd,
                                          uint8_t **targetStart, uint8_t *targetEnd);
KORUTL_API int32_t KORVOConvertUTF8toUCS4(const uint8_t **sourceStart, const uint8_t *sourceEnd,
                                          uint32_t **targetStart, uint32_t *targetEnd);

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
