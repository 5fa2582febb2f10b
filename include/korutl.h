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

/* Conversion results, shared with the UTF-8/16 and UCS-4 conversions. */
#ifndef CONV_OK
#define CONV_OK 0
#define CONV_SOURCE_EXHAUSTED 1
#define CONV_TARGET_EXHAUSTED 2
#define CONV_SOURCE_ILLEGAL 3
#endif

/* UCS-2 (16-bit units, each one character, surrogates not treated apart)
 * to UTF-7. `*source_start` .. `source_end` is the source, `*target_start`
 * .. `target_end` the room for bytes; on return both pointers are stored
 * back (source past the last unit read, target past the last byte written).
 * No terminator is written. `optional_direct` nonzero writes the optional
 * direct characters !"#$%&*;<=>@[]^_`{|} unencoded; `explicit_close`
 * nonzero ends every Base64 run with '-'. A plus sign is written as "+-".
 * Returns CONV_OK, or CONV_TARGET_EXHAUSTED when the room ran out; such a
 * conversion cannot be continued: convert again into a larger target.
 * Null pointers return CONV_OK and convert nothing. Thread-safe. */
KORUTL_API int32_t KORVOConvertUCS2toUTF7(const uint16_t **source_start, const uint16_t *source_end,
                                          uint8_t **target_start, uint8_t *target_end,
                                          int32_t optional_direct, int32_t explicit_close);

/* UTF-7 to UCS-2, same calling pattern. Malformed input (a "+" run that
 * gives no unit, nonzero bits left at the end of a run, a byte from 0x80 up
 * outside a run) does not stop the conversion: the whole source is
 * converted and CONV_SOURCE_ILLEGAL is returned at the end. A byte from
 * 0x80 up outside a run is written as 0xFF00 plus the byte. Returns
 * CONV_OK, CONV_SOURCE_ILLEGAL, or CONV_TARGET_EXHAUSTED when the room ran
 * out (not continuable, as above). Null pointers return CONV_OK.
 * Thread-safe. */
KORUTL_API int32_t KORVOConvertUTF7toUCS2(const uint8_t **source_start, const uint8_t *source_end,
                                          uint16_t **target_start, uint16_t *target_end);

/* ------------------------------------------------------------------------
 * SAFER buffer encryption
 * ------------------------------------------------------------------------ */

/* Encrypts or decrypts `input` (`input_length` bytes, below 8,192) with
 * SAFER in CBC mode, zero initial vector per call, zero padding and one
 * trailing encrypted block holding the plaintext length in bits (64-bit,
 * least significant byte first). Encrypting n bytes writes
 * 8 * ceil(n / 8) + 8 bytes (8 for empty input, at most 8,200); decrypting
 * n bytes writes at most n - 8 bytes. No terminating zero is written.
 *
 * `mode`: 1, 3, 5, 7 decrypt, anything else encrypts; 2, 3, 6, 7 use the
 * strengthened (SK) key schedule, anything else the K schedule. Rounds: 10
 * for a key text of 9 or more characters (128-bit key); for a shorter key
 * 8 with modes 2 and 3 and 6 otherwise (so 4/5 equal 0/1, and 6/7 are SK
 * with 6 rounds).
 *
 * `key_text`: a zero-terminated number in base 95, digits ' ' (0) to '~'
 * (94), most significant first, taken modulo 2^128; the empty text is the
 * all-zero key. Any other character makes the call fail.
 *
 * Returns 1 on success with `*output_length` set; 0 on failure (invalid
 * key text, input of 8,192 bytes or more, a ciphertext whose length is
 * zero or no multiple of 8 or whose length block does not fit it, null
 * pointers), and then neither `output` nor `*output_length` is touched.
 * A wrong key is noticed only when the length block fails its checks.
 * Ciphertexts fall under the same 8,192-byte input limit, so plaintexts
 * of more than 8,176 bytes encrypt to texts that cannot be decrypted.
 * No shared state: callable from any thread. */
KORUTL_API int32_t KORVOSaferCrypt(int32_t mode, const uint8_t *input, uint32_t input_length,
                                   uint8_t *output, uint32_t *output_length, const char *key_text);

/* ------------------------------------------------------------------------
 * Buffer crypt front end, XOR scrambler, Base64 and hexadecimal
 * ------------------------------------------------------------------------ */

/* Protects `input` by `method`: 1 the XOR scrambler (KORVOObxCrypt with the
 * key text as key), 2 SAFER (KORVOSaferCrypt mode 6), anything else a copy.
 * The outcome is told by `*output_length`.
 *
 * Method 1 reads the input like strncpy: bytes after the first zero byte
 * are lost and replaced by zeros; the scrambled bytes are copied out the
 * same way (stopping at a zero the scrambling made), a zero byte is written
 * at output[input_length] and `*output_length` is `input_length`. `output`
 * must hold input_length + 1 bytes. Input longer than 2,048 bytes, or a
 * null key, is refused: output[0] = 0 and `*output_length` = 0.
 * Method 2: output and length as KORVOSaferCrypt gives them; on failure
 * output[0] = 0 and `*output_length` = 0.
 * Other methods: strncpy-like copy of `input_length` bytes (no terminator
 * added), `*output_length` = `input_length`.
 * Null `output` or `output_length` does nothing. */
KORUTL_API void KORVOCSCryptBuffer(int32_t method, const uint8_t *input, uint32_t input_length,
                                   uint8_t *output, uint32_t *output_length, const char *key);

/* Restores a buffer protected by KORVOCSCryptBuffer with the same method
 * and key (SAFER mode 7 for method 2). Same arguments, limits and results:
 * a SAFER restore that fails (wrong key noticed, malformed ciphertext)
 * leaves output[0] = 0 and `*output_length` = 0. */
KORUTL_API void KORVOCSDecryptBuffer(int32_t method, const uint8_t *input, uint32_t input_length,
                                     uint8_t *output, uint32_t *output_length, const char *key);

/* The XOR scrambler, in place on `buffer_length` bytes of `buffer`. The
 * keystream starts at the sum of i * key[i-1] for i = 1..key_length
 * (mod 256) and grows by 7, 14, 21, ... per byte. Applying it twice with
 * the same key restores the buffer; `direction` (1 scramble, 2 unscramble)
 * does not change the result. A length of 0 or less changes nothing; a
 * null or empty key starts the keystream at 0. Obfuscation, not
 * encryption. */
KORUTL_API void KORVOObxCrypt(int32_t direction, const uint8_t *key, int32_t key_length,
                              uint8_t *buffer, int32_t buffer_length);

/* Base64 (alphabet A-Z a-z 0-9 + /, pad '='). `direction` 1 encodes
 * `input_length` bytes into 4 * ceil(n / 3) characters and a terminating
 * zero (`output` must hold 4 * ceil(n / 3) + 1 bytes); any other value
 * decodes: every group of 4 characters gives 3 bytes, characters beyond
 * the last whole group are ignored, characters outside the alphabet (the
 * pad, whitespace, codes 128-255) count as 0 and nothing is rejected, and
 * a zero byte follows (`output` must hold 3 * (n / 4) + 1 bytes). Returns
 * the number of characters or bytes written, without the terminator. An
 * input length of 0 or less, or a null pointer, returns 0 and writes
 * nothing. Tables are constants: callable from any thread. */
KORUTL_API int32_t KORVOBase64Crypt(int32_t direction, const void *input, void *output,
                                    int32_t input_length);

/* Binary buffers to text and back:
 *   mode 2: bytes to upper-case hexadecimal and a terminating zero;
 *           `*output_length` = 2 * input_length; `output` holds 2n + 1.
 *   mode -2: hexadecimal to bytes, pairs of characters, a non-digit counting
 *           as 0 and an odd last character paired with 0; a zero byte
 *           follows; `*output_length` = ceil(n / 2); `output` holds that + 1.
 *   mode 1: at most 255 bytes to Base64 of one length byte followed by the
 *           bytes ("abc" gives "A2FiYw=="), with a terminating zero;
 *           `output` holds 4 * ceil((n + 1) / 3) + 1 bytes (at most 345).
 *           Longer input gives output[0] = 0 and `*output_length` = 0.
 *   mode -1: that Base64 form back to the payload bytes and a zero byte;
 *           `output` holds 256 bytes. A text that does not hold the payload
 *           its length byte announces, or is longer than 2,735 characters,
 *           gives output[0] = 0 and `*output_length` = 0.
 *   any other mode: nothing is done.
 * A negative input length in modes -2 to 2 gives the empty result
 * (output[0] = 0, length 0); null `output` or `output_length` does
 * nothing. */
KORUTL_API void KORVOCSPrepareBinaryBuffer(int32_t mode, const void *input, int32_t input_length,
                                           void *output, uint32_t *output_length);

/* ------------------------------------------------------------------------
 * Memory shell
 * ------------------------------------------------------------------------ */

#ifdef __cplusplus
}
#endif

#endif /* KORUTL_H */
