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
 * Sections, in the order of the library's layers: identification, digit
 * values, then one section per family below. docs/design.md names the
 * source files behind each section.
 */
#ifndef KORUTL_H
#define KORUTL_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#if defined(KORUTL_BUILDING)
#define KORUTL_API __declspec(dllexport)
#else
#define KORUTL_API __declspec(dllimport)
#endif
#else
#define KORUTL_API __attribute__((visibility("default")))
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
#define KORVO_DIGIT_END 95     /* the terminating zero byte */
#define KORVO_DIGIT_COLON 96   /* the colon (KORVOHex2Int only) */
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
KORUTL_API int32_t KORVOGetSetting(const char *product, const char *section, const char *valueName,
                                   const char *defaultValue, char *outValue);

/* Stores value as a text setting, creating the key as needed. Returns 1
 * when written, 0 when an argument is null, the path or value is too long,
 * or the store cannot be written. */
KORUTL_API int32_t KORVOSaveSetting(const char *product, const char *section, const char *valueName,
                                    const char *value);

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
 * null (out untouched) when out, basePath or fileName is null or memory
 * runs out. */
KORUTL_API char *KORVOMakeLocalizedPath(char *out, const char *basePath, uint8_t baseHasSeparator,
                                        const char *language, const char *fileName);

/* Installs the library's trace function (which writes each line to
 * standard error) in the registry service and the OS-services library,
 * then starts the code-page conversion library: with cpx_init when the
 * setting "Cpx_Objects_Path" (section "Global" of "Halcyra") is empty,
 * else with cpx_init_ex("CPXOBJDIR=" + that path), a folder that must
 * exist. Returns 1 when the conversion library started, 0 when it did not
 * (it is then ended again; the trace functions stay installed). Call it
 * once, on one thread, before code-page conversion; the other operations
 * do not need it. */
KORUTL_API int32_t KORVOInitRegistry(void);

/* ------------------------------------------------------------------------
 * Internal products and code-page conversion
 *
 * Programs that convert texts between the local code set and the family's
 * code set 65456 (UTF-8) keep two conversion handles of libkorcpx in a
 * KORVOIntProdData record. The conversion library must have been started
 * (KORVOInitRegistry, or KORVOInitInternalProducts which calls it) before
 * a record is created; start-up and cleanup run once, on one thread, while
 * no conversion runs. A handle holding -1 converts nothing.
 * ------------------------------------------------------------------------ */

/* Two conversion handles of one program, with room for its own data. */
typedef struct KORVOIntProdData {
  uint8_t readyFlag1;    /* 0 after creation, 1 after KORVOInitInternalProducts */
  uint8_t readyFlag2;    /* likewise; the library never reads either flag */
  int32_t *cpxFromLocal; /* handle local code set -> 65456, or -1; owned by the record */
  int32_t *cpxToLocal;   /* handle 65456 -> local code set, or -1; owned by the record */
  char workArea[256];    /* zero-filled, for the record's users */
} KORVOIntProdData;

/* Sets `*data` to null, starts the registry and the conversion library
 * with KORVOInitRegistry, creates a record with both ready flags set to 1
 * and stores it in `*data`. Returns 1, or 0 when the conversion library
 * does not start or memory runs out (`*data` then stays null). A null
 * `data` returns 0. End with KORVOCleanupInternalProducts. */
KORUTL_API int32_t KORVOInitInternalProducts(KORVOIntProdData **data);

/* Creates a record (zero-filled, both handles opened with
 * KORVOGetCpxHandles) or returns null when memory runs out, leaving nothing
 * allocated. A handle that cannot be opened holds -1; the record is still
 * returned. Release it with KORVODestroyIntProdData. */
KORUTL_API KORVOIntProdData *KORVOCreateIntProdData(void);

/* Closes both handles (from-local first) and releases the record; null is
 * accepted. The conversion library keeps running. */
KORUTL_API void KORVODestroyIntProdData(KORVOIntProdData *record);

/* Sets both handles to -1, then opens local -> 65456 into `*fromLocal` and
 * 65456 -> local into `*toLocal`; one that fails stays -1. A null address
 * is skipped. Returns 1 in every case. */
KORUTL_API int32_t KORVOGetCpxHandles(int32_t *toLocal, int32_t *fromLocal);

/* Converts one text with the handle `*handle` (one of a record's two):
 * calls cpx_convert_text(*handle, a1, a2, a3, a4, a5, 0, 0, 0, a6), whose
 * arguments mean: a1 source address, a2 source length in bytes (negative:
 * up to its zero byte), a3 target address, a4 target capacity in bytes, a5
 * address of an int32_t receiving the bytes written (or 0), a6 flags (1:
 * also write a zero terminator within the capacity). Returns 1 when the
 * whole text converted, 0 otherwise (a null `handle`, a handle of -1 --
 * then the conversion library is not called -- a target too small, or
 * bytes that are not text in the source code set). Never writes past a4. */
KORUTL_API int32_t KORVOCpxConversion(int32_t *handle, intptr_t a1, intptr_t a2, intptr_t a3,
                                      intptr_t a4, intptr_t a5, intptr_t a6);

/* Destroys `record` when it is not null, then ends the conversion library
 * (cpx_term) in every case. */
KORUTL_API void KORVOCleanupInternalProducts(KORVOIntProdData *record);

/* ------------------------------------------------------------------------
 * Configuration tree: versions, values, instances, agents
 *
 * The tree lives in the configuration store under
 * "HKEY_LOCAL_MACHINE\SOFTWARE\Vantrel\Halcyra": per product
 * "Products\<product>", its versions "...\Versions\<version>", their
 * instances "...\Instances\<instance>" and agents "...\Agents\<agent>".
 * Every read goes through the registry service (libkorrsv); nothing is
 * cached, so each call sees the store as it is.
 *
 * A name list (versions of a product, instances of a version) is one
 * malloc block: n text pointers followed by n name slots of
 * KORVO_NAME_SLOT (256) bytes,
 * with the count n delivered separately. It is ordered by the version
 * key, greatest first: up to four runs of decimal digits p1..p4 of the
 * name (other characters skipped, missing runs 0) give
 * ((p1*100 + p2)*1000 + p3)*1000 + p4 modulo 2^32, so 3 comes before 2.10
 * before 2.2.1, and "V2.3-beta" sorts as 2.3. Equal keys keep no defined
 * order. Release a list with KORVOCfgFreeProductVersions (or its twin
 * KORVOCfgFreeVersionInstances), never element by element.
 *
 * Key paths are composed in buffers of 256 bytes (768 for the latest-value
 * search): a product, version, instance or agent name that would make a
 * path longer than 255 (767) characters is refused with the function's
 * failure result, never cut. Failure is a null result: a missing key or
 * value, a store error and exhausted memory are not told apart, and a
 * failing call leaves nothing allocated.
 * ------------------------------------------------------------------------ */

/* Bytes of one name slot of a name list, and of a composed key path. */
#define KORVO_NAME_SLOT 256

/* The versions of `product` (subkeys of its "Versions" key) as a name
 * list, greatest version first; *count (count may be null) receives the
 * number of names. Null with *count 0 when product is null, the product
 * has no "Versions" key or it has no subkeys, or the key path is too long.
 * When memory for the list runs out the result is null and *count holds
 * the number of versions the store reported. */
KORUTL_API char **KORVOCfgGetProductVersions(const char *product, uint16_t *count);

/* Releases a name list from KORVOCfgGetProductVersions or
 * KORVOCfgGetVersionInstances (one block, one free). Null does nothing.
 * The two names are the same operation. */
KORUTL_API void KORVOCfgFreeProductVersions(char **list);
KORUTL_API void KORVOCfgFreeVersionInstances(char **list);

/* The text of value `valueName` ("" is the key's default value) of the
 * key `keyPath` (a full path such as
 * "HKEY_LOCAL_MACHINE\SOFTWARE\Vantrel\Halcyra\Global"), in a new
 * block of exactly its length plus the zero; release it with free. Any
 * value type is read as the bytes up to its first zero. Null when either
 * argument is null, the key or value is missing, the text has 65535
 * characters or more, or memory runs out. */
KORUTL_API char *KORVOCfgGetValue(const char *keyPath, const char *valueName);

/* The value `valueName` of the key "Products\<product>", as
 * KORVOCfgGetValue gives it (release with free). Null when product is
 * null or too long for the key path, or as KORVOCfgGetValue. Empty texts
 * are taken as they are. */
KORUTL_API char *KORVOCfgGetProductConfig(const char *product, const char *valueName);

/* The value `valueName` of the key "Products\<product>\Versions\<version>",
 * as KORVOCfgGetProductConfig. Null when product or version is null. */
KORUTL_API char *KORVOCfgGetProductVersionConfig(const char *product, const char *version,
                                                 const char *valueName);

/* The value `valueName` of the agent key `agentKey` (a full path as
 * KORVOCfgLocateAgentKey returns it); when the agent has no such value,
 * that of the product version above it (the path with its last four
 * levels -- agent, "Agents", instance, "Instances" -- removed). Release
 * the result with free. Null when neither holds the value, when the
 * agent key has fewer than four backslashes, and, since no agent key is
 * longer than 255 characters, for a null or longer agentKey. */
KORUTL_API char *KORVOCfgGetAgentConfig(const char *agentKey, const char *valueName);

/* Searches the versions of `product`, greatest first, for the first whose
 * key (or its subkey `subkey`, when subkey is neither null nor "") holds
 * the value `valueName`, and returns that key's full path in a new block
 * of 768 bytes (release with free). A null or empty product or valueName
 * stands for "Default". Null when no version holds the value, the product
 * has no versions, or its setting "Use_Strict_Version" (see
 * KORVOGetSetting, section "Products\<product>") is a number that is
 * not 0 modulo 256: a strict product is never searched. That setting is
 * a number of at most three characters; a longer text is no valid
 * setting and counts as unset (the search runs). A version whose path
 * would exceed 767 characters ends the search with null rather than
 * being skipped, as every over-long path of this family is refused. */
KORUTL_API char *KORVOCfgGetProductVersionLatestValue(const char *product, const char *subkey,
                                                      const char *valueName);

/* The instances of a product version (subkeys of its "Instances" key) as
 * a name list in version order, greatest instance key first (instances
 * 10, 2, 1); *count (count may be null) receives the number of names.
 * Release with KORVOCfgFreeVersionInstances. Null with *count 0 when
 * product or version is null, the version has no instances or the key
 * path is too long; when memory runs out, null with *count the number of
 * instances the store reported. */
KORUTL_API char **KORVOCfgGetVersionInstances(const char *product, const char *version,
                                              uint16_t *count);

/* The full key path of agent `agent`, searched through the versions of
 * `product`, greatest first, under each version's first instance only
 * (first in the store's order, which is case-insensitive name order): an
 * agent registered only under a later instance is not found. Returns a
 * malloc copy of the path, such as
 * "HKEY_LOCAL_MACHINE\SOFTWARE\Vantrel\Halcyra\Products\P\Versions\2.2.1\Instances\3\Agents\A";
 * release it with free. Null when no such agent key exists, product or
 * agent is null, or a path would exceed 255 characters (the search then
 * ends). */
KORUTL_API char *KORVOCfgLocateAgentKey(const char *product, const char *agent);

/* The key path of agent `agent` under instance `instance` of version
 * `version` of `product`, when that key exists; a malloc copy, release it
 * with free. A null version searches as KORVOCfgLocateAgentKey (instance
 * is then ignored); a null instance stands for the version's greatest
 * instance key (the first of KORVOCfgGetVersionInstances), and a version
 * without instances gives null. Null also when product or agent is null,
 * the agent key does not exist, or its path would exceed 255 characters. */
KORUTL_API char *KORVOCfgLocateAgentKeyEx(const char *product, const char *version,
                                          const char *instance, const char *agent);

/* ------------------------------------------------------------------------
 * Language and message file registration, user authorisation
 *
 * Language libraries are registered as values of the version's key
 * "...\Products\<product>\Versions\<version>\Languages" (value name: the
 * language, data: the library's file name); event-layer message files as
 * values of "...\Versions\<version>\EventLayerMessages". A product whose
 * key has a subkey "Users" admits only the users listed there, one subkey
 * per user ("...\Products\<product>\Users\<user>"), with every "\" of a
 * user name stored as "/" (domain\user is the key domain/user).
 *
 * Paths are composed in 256-byte areas: a path of 256 characters or more
 * is refused with the failure result, never cut. No state, no lock: any
 * thread may call these; two registrations of one version at once may both
 * create the key, which is harmless.
 * ------------------------------------------------------------------------ */

/* Registers `fileName` (the library file, e.g. "hal_de.dll") under the
 * value name `language` in the Languages key of `product` and `version`,
 * creating the key when needed. A null or empty product, version or
 * language stands for "Default". Returns 0 when registered, 1 on failure
 * (a null `fileName`, a path too long, a store error). A registration whose
 * value cannot be set leaves a key it created in place. */
KORUTL_API uint8_t KORVOCfgRegisterLanguageFile(const char *product, const char *version,
                                                const char *language, const char *fileName);

/* Removes the whole Languages key of `product` and `version` ("Default"
 * for null or empty), every language at once. Returns 0 when removed or
 * when there was none, 1 when the store fails or the path is too long. */
KORUTL_API uint8_t KORVOCfgDeRegisterLanguageFile(const char *product, const char *version);

/* As KORVOCfgRegisterLanguageFile, in the version's EventLayerMessages key:
 * `valueName` is the registrant's own name for the file. */
KORUTL_API uint8_t KORVOCfgRegisterMessageFile(const char *product, const char *version,
                                               const char *valueName, const char *fileName);

/* Removes the whole EventLayerMessages key of `product` and `version`.
 * Returns 0 when removed, when there was none and also when the key cannot
 * be reached for another reason; 1 only when the delete itself fails or
 * the path is too long. */
KORUTL_API uint8_t KORVOCfgDeRegisterMessageFile(const char *product, const char *version);

/* 1 when `product` has a "Users" key (access is restricted to the users
 * listed there), else 0; 0 for a null product. An empty product is taken
 * as it is (no "Default"). */
KORUTL_API uint8_t KORVOCfgAuthorizationToBeChecked(const char *product);

struct KORVOObjectId; /* the parsed object identifier, see below */

/* 1 when `userName` is listed in the Users key of the product named by
 * `objectId` (part 1), else 0. At most the first 255 characters of the
 * name count, with "\" read as "/"; a user path of 256 characters or more
 * is refused with 0. 0 also for a null user name, a null identifier or
 * one without a product part. */
KORUTL_API uint8_t KORVOCfgCheckAuthorization(const char *userName,
                                              const struct KORVOObjectId *objectId);

/* ------------------------------------------------------------------------
 * Enumerations and environment variables
 *
 * The values stored under one key of the configuration tree, in the order
 * they were first set. Value names have at most 32 characters here (they
 * travel in slots of KORVO_VALUE_NAME_SLOT bytes); a value with a longer
 * name is never reported
 * under a cut name. Value data are read as text of at most 1535
 * characters.
 * ------------------------------------------------------------------------ */

/* Bytes of one value-name slot: 32 characters and the terminating zero. */
#define KORVO_VALUE_NAME_SLOT 33

/* Called once per value with its name and its text (both zero-terminated,
 * valid only during the call, owned by the library). The result is not
 * used. */
typedef int32_t (*KORVOCfgEnumCallback)(const char *name, const char *data);

/* Calls `callback` for each value of the key `keyPath` (a full path), on
 * the caller's thread, before returning. A value that cannot be read --
 * data of 1536 bytes or more, a value removed meanwhile, a name longer
 * than 32 characters -- is skipped silently. Nothing is called when the
 * key is missing, has no values, keyPath is null or memory runs out; a
 * null callback returns at once without reading the store. */
KORUTL_API void KORVOCfgEnumerate(const char *keyPath, KORVOCfgEnumCallback callback);

/* KORVOCfgEnumerate of the management layer's plug-ins,
 * "HKEY_LOCAL_MACHINE\SOFTWARE\Vantrel\Halcyra\MILayer\PlugIn". */
KORUTL_API void KORVOCfgEnumerateMilPlugIn(KORVOCfgEnumCallback callback);

/* KORVOCfgEnumerate of the SNMP trap destinations,
 * "HKEY_LOCAL_MACHINE\SOFTWARE\Vantrel\Halcyra\SNMPLayer\Notifications". */
KORUTL_API void KORVOCfgEnumerateSnmpTrapDest(KORVOCfgEnumCallback callback);

/* The names of the environment variables of `component`: the value names
 * of "HKEY_LOCAL_MACHINE\SOFTWARE\Vantrel\Halcyra\<component>\Environment".
 * Returns an array of *count pointers, each to its own malloc block of 33
 * bytes holding one name; release it with KORVOCfgFreeEnvironmentVars and
 * the same count. Only names are read, not the values' data.
 * Null with *count 0 when component is null or "", the key is missing or
 * has no values, memory runs out, or the key path would exceed 255
 * characters. A null count returns null. A value name longer than 32
 * characters cannot be returned whole, so the whole list is refused (null,
 * *count 0) rather than holding a cut name that names no variable. */
KORUTL_API char **KORVOCfgGetEnvironmentVars(const char *component, uint16_t *count);

/* Releases the first `count` names of `vars` and then the array; a null
 * array does nothing. */
KORUTL_API void KORVOCfgFreeEnvironmentVars(char **vars, uint16_t count);

/* ------------------------------------------------------------------------
 * Synchronised stack
 *
 * A singly linked list of pointer-sized values, used as a stack (push and
 * pop at the top, position 0) and as a small indexed list. Every operation
 * runs under the stack's spin lock from libkorshm, so one stack may be used
 * from several threads; KORVOStackInit and KORVOStackFinite take no lock and
 * must not overlap other calls on the same stack. The stack never
 * interprets, copies or frees the stored values. No element count is kept:
 * Length and every positional operation walk the list.
 *
 * Results of the changing operations: 0 success; -1 no memory for an
 * element (and, for InsertNth, "stored at the end instead"); -2 the lock
 * could not be created, released or taken, or the handle is null. The
 * reading operations return 0 when there is nothing to return, when the
 * lock cannot be taken or the handle is null; a stored 0 cannot be told
 * apart from these.
 * ------------------------------------------------------------------------ */

/* One element of a stack. */
typedef struct KORVOStackNode {
  struct KORVOStackNode *next; /* following element, null for the last */
  intptr_t data;               /* the caller's value, unchanged */
} KORVOStackNode;

/* A stack's head, made by KORVOStackInit. */
typedef struct KORVOStack {
  KORVOStackNode *top; /* position 0, null when empty */
  uint32_t lock;       /* the stack's libkorshm spin lock handle */
} KORVOStack;

/* Creates a stack into the caller's handle variable `*handle`, which must
 * be null: a non-null variable counts as an existing stack and the call
 * returns 0 doing nothing. -1: no memory. -2: the lock cannot be created;
 * then the head is released again and `*handle` stays null, so the call
 * may simply be repeated. A null `handle` gives -2. */
KORUTL_API int32_t KORVOStackInit(KORVOStack **handle);

/* Destroys the stack's lock and releases the head: 0, or -2 when the lock
 * cannot be destroyed (for instance another thread holds it), leaving the
 * stack intact. Elements still on the stack are NOT released and `*handle`
 * is NOT reset: empty the stack first, set the variable to null after. */
KORUTL_API int32_t KORVOStackFinite(KORVOStack **handle);

/* Puts `value` on top (position 0). */
KORUTL_API int32_t KORVOStackPush(KORVOStack *stack, intptr_t value);

/* Puts `value` at the end (highest position); on an empty stack it becomes
 * the top. */
KORUTL_API int32_t KORVOStackAppend(KORVOStack *stack, intptr_t value);

/* Removes the top element and returns its value; 0 when empty. */
KORUTL_API intptr_t KORVOStackPop(KORVOStack *stack);

/* Number of elements. */
KORUTL_API int32_t KORVOStackLength(KORVOStack *stack);

/* Value at `position` (0 = top); 0 for a negative position or one not
 * below the length. */
KORUTL_API intptr_t KORVOStackGetNth(KORVOStack *stack, int32_t position);

/* Inserts `value` so that it takes `position`. A position of 0 or below
 * pushes (result as Push). A position up to the length inserts there (equal
 * to the length: at the end), 0. A position beyond the length stores the
 * value at the end and returns -1. */
KORUTL_API int32_t KORVOStackInsertNth(KORVOStack *stack, int32_t position, intptr_t value);

/* Removes the element at `position` and returns its value; a position from
 * the length upward removes nothing and returns 0. A negative position
 * removes nothing and returns 0 (a position is never taken for another). */
KORUTL_API intptr_t KORVOStackDeleteNth(KORVOStack *stack, int32_t position);

/* ------------------------------------------------------------------------
 * Hash table
 *
 * A string-keyed table of caller-defined records with open addressing. The
 * table allocates each record zero-filled (calloc) at the first lookup of
 * its key and frees them all in KORVOHashTblDestroy. A record's first field
 * is the key pointer the caller passed (the text is not copied: the caller
 * keeps it alive and unchanged while the table exists); the rest is the
 * caller's. Hash: h = h * 33 + byte (unsigned, modulo 2^32) over the key;
 * home slot h & (size - 1); probing goes downward, wrapping to size - 1.
 * Slots: 0 until the first record, then 64, doubling when a new record
 * would pass `limit` (half of `size`). No lock: callers serialise all calls
 * on one table, iteration included. An iterator is invalid after any call
 * that creates a record (growth replaces the slot array).
 * ------------------------------------------------------------------------ */

/* A table's header, in the caller's memory. */
typedef struct KORVOHashTbl {
  void **slots;   /* slot array of record pointers, null until first record */
  uint32_t size;  /* number of slots: 0, 64, 128, ... */
  uint32_t count; /* records in the table */
  uint32_t limit; /* count at which the next new record grows the table */
} KORVOHashTbl;

/* A position in a table, for KORVOHashTblIterNext. */
typedef struct KORVOHashTblIter {
  void **cur; /* next slot to examine */
  void **end; /* one past the last slot */
} KORVOHashTblIter;

/* Sets all four fields of the caller's header to 0 (an empty table). */
KORUTL_API void KORVOHashTblInit(KORVOHashTbl *table);

/* Returns the record of `key`. When the key is absent: with `create_size`
 * 0 returns null; otherwise creates a zero-filled record of `create_size`
 * bytes holding `key` in its first field and returns it. `create_size`
 * must be at least sizeof(void *); a smaller non-zero size returns null and
 * creates nothing. Null also when memory runs out (the table stays as it
 * was), when `table` or `key` is null, or when the table cannot grow past
 * 2^31 slots. */
KORUTL_API void *KORVOHashTblLookup(KORVOHashTbl *table, const char *key, uint32_t create_size);

/* Frees every record (in slot order) and the slot array; key texts are not
 * freed. Call KORVOHashTblInit before using the header again. */
KORUTL_API void KORVOHashTblDestroy(KORVOHashTbl *table);

/* Positions `iter` before the first slot of `table`. */
KORUTL_API void KORVOHashTblIterInit(KORVOHashTblIter *iter, KORVOHashTbl *table);

/* The next record in slot order (not insertion order), or null after the
 * last. */
KORUTL_API void *KORVOHashTblIterNext(KORVOHashTblIter *iter);

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
KORUTL_API uint32_t KORVOStrGetWord(const char *text, char *word, char separator, int32_t index);

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
  char **parts;          /* the parts, unescaped */
  char *objectIdString;  /* the canonical text */
  int32_t numberOfParts; /* entries of parts */
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
KORUTL_API char *KORVOStrGetQuotedString(const char *text, char *buffer, uint32_t size, char quote);

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
 *
 * Message texts come from language libraries: shared objects, one per
 * product, version (optionally instance) and language, registered as values
 * of the version's Languages key (see KORVOCfgRegisterLanguageFile) and
 * loaded through libkoross, which resolves a file name along
 * KORVO_LANGUAGE_PATH and retries a name ending in ".dll" with ".so". A
 * library exports, with C linkage,
 *   const char *GetStringResource(const char *objectId, const char *language,
 *                                 const char *key);
 * or, if it lacks that,
 *   const char *get_resource(const char *key);
 * A library with neither, or a file that does not load, is skipped (the
 * OS-services trace, when installed, gets one line per failure).
 *
 * A cache (a KORVOStack of loaded libraries, newest on top) keeps every
 * library it loaded until the cache is ended: a library is loaded once and
 * then found in the cache by every matching request, which reads nothing
 * from the configuration store. Libraries are never released while the
 * cache lives, however long unused, so every text handed out stays valid
 * until KORVOFiniteI18n (or KORVOFiniteI18NStrings for the library's own
 * cache); the texts are the libraries' own: never free or change them.
 *
 * Threads: any number of threads may call KORVOLoadI18NStringEx on one
 * cache at once, and KORVOLoadI18NString at once. Two threads missing the
 * same library both load it and both add it; both records stay valid.
 * Callers must serialise: KORVOInitI18n and KORVOFiniteI18n with every
 * other call that uses that cache, and KORVOFiniteI18NStrings with every
 * other call of this section (the library's own cache is created safely
 * by whichever call comes first). The step of the chain that reads the
 * current locale sets the process locale from the environment
 * (setlocale(LC_ALL, "")), which must not race other threads' use of the
 * locale; it runs only when every earlier step found nothing.
 * ------------------------------------------------------------------------ */

/* Creates a cache into `*cache` when `*cache` is null; an existing cache is
 * left as it is. On failure (no memory, no lock) `*cache` stays null and
 * KORVOLoadI18NStringEx with it returns null. A null `cache` does
 * nothing. */
KORUTL_API void KORVOInitI18n(KORVOStack **cache);

/* Ends the cache `*cache`: unloads every library it holds and releases
 * every record (all of them, not only the newest), destroys the stack and
 * sets `*cache` to null. Texts obtained through the cache become invalid.
 * A null `cache` or `*cache` does nothing. */
KORUTL_API void KORVOFiniteI18n(KORVOStack **cache);

/* The text of message `key` for the object named by `objectId` (such as
 * "\localhost\Orrery\2.10\main": product, version, instance and deeper
 * levels) in `language`, from the language library that the following
 * chain finds first, loading it into `cache` when needed. A missing or
 * empty product or version stands for "Default"; a null or empty language
 * is "Default" (the requested language below). Language names are looked
 * up with each of " .-_@" read as "-": "en_US.ISO8859-1" as
 * "en-US-ISO8859-1", then "en-US", then "en".
 *   a. the requested language in the Languages key of the version (with
 *      the identifier's levels from the instance down, when it has any:
 *      "...\Versions\1.0\i1\sub\Languages");
 *   b. the Languages key of the product's highest version that has one
 *      (not when the product's setting "Use_Strict_Version" is a number of
 *      one to three digits whose value modulo 256 is not 0; a longer value
 *      counts as unset); from here on the request names that version;
 *   c. the language "Default" there; d. as b;
 *   e. a library file named after the requested language, "de.dll" for
 *      "de" (found as de.so);
 *   f. the language of Halcyra's setting Global\Language, when it is set;
 *      g. as b;
 *   h. the current locale's name (e.g. "de_DE.UTF-8"); i. as b.
 * The library's entry point is called with `objectId` as passed (null
 * included), the requested language and `key`; its text, null included, is
 * the result, and no further step is tried. When no step finds a library:
 * for a product other than "Halcyra" (any letter case) Halcyra's own text
 * for "_RC_LANG_NOT_FOUND" in the requested language (KORVOLoadI18NString);
 * for Halcyra itself "(KOR0301) Cannot find language library (language not
 * installed for product).", a constant of this library.
 * Limits: a key path, instance path or file name of 768 characters or
 * more is never cut: that step finds nothing and the chain goes on;
 * language names of 96 characters or more have no registered library. An
 * identifier that cannot be parsed counts as one without parts.
 * Returns null for a null `cache` or `key`, and when memory runs out.
 * Not tried: the language given by the identifier text itself. */
KORUTL_API const char *KORVOLoadI18NStringEx(KORVOStack *cache, const char *objectId,
                                             const char *language, const char *key);

/* KORVOLoadI18NStringEx with the library's own cache (created at the first
 * call) and Halcyra's own identifier "\localhost\Halcyra\2.2.1.3". A null
 * or empty `language` is Halcyra's setting Global\Language, or "Default"
 * when that is not set. */
KORUTL_API const char *KORVOLoadI18NString(const char *language, const char *key);

/* Ends the library's own cache (KORVOFiniteI18n); the next
 * KORVOLoadI18NString creates it afresh. */
KORUTL_API void KORVOFiniteI18NStrings(void);

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

/* The results are the CONV_* values of the Unicode conversions above. */

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

/* The flags a KORVOSaferCrypt mode from 0 to 7 is the sum of. */
#define KORVO_SAFER_ENCRYPT 0            /* no flag: encrypt, K schedule */
#define KORVO_SAFER_DECRYPT 1            /* decrypt */
#define KORVO_SAFER_SK 2                 /* the strengthened key schedule */
#define KORVO_SAFER_SHORT_KEY_6_ROUNDS 4 /* a key text of up to 8 characters gets 6 rounds */

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
 * with 6 rounds). Within 0-7 a mode is the sum of the KORVO_SAFER_* flags
 * below; values outside 0-7 encrypt with the K schedule.
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

/* Methods of KORVOCSCryptBuffer and KORVOCSDecryptBuffer, and the
 * KORVOSaferCrypt mode behind KORVO_CRYPT_SAFER (6; restoring adds
 * KORVO_SAFER_DECRYPT, 7). */
#define KORVO_CRYPT_SCRAMBLE 1 /* the XOR scrambler */
#define KORVO_CRYPT_SAFER 2    /* SAFER in KORVO_CRYPT_SAFER_MODE */
#define KORVO_CRYPT_SAFER_MODE (KORVO_SAFER_SK | KORVO_SAFER_SHORT_KEY_6_ROUNDS) /* mode 6 */

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

/* Directions of KORVOObxCrypt; both give the same result. */
#define KORVO_OBX_SCRAMBLE 1   /* scramble */
#define KORVO_OBX_UNSCRAMBLE 2 /* unscramble */

/* The XOR scrambler, in place on `buffer_length` bytes of `buffer`. The
 * keystream starts at the sum of i * key[i-1] for i = 1..key_length
 * (mod 256) and grows by 7, 14, 21, ... per byte. Applying it twice with
 * the same key restores the buffer; `direction` (1 scramble, 2 unscramble)
 * does not change the result. A length of 0 or less changes nothing; a
 * null or empty key starts the keystream at 0. Obfuscation, not
 * encryption. */
KORUTL_API void KORVOObxCrypt(int32_t direction, const uint8_t *key, int32_t key_length,
                              uint8_t *buffer, int32_t buffer_length);

/* Directions of KORVOBase64Crypt. */
#define KORVO_BASE64_ENCODE 1 /* bytes to Base64 */
#define KORVO_BASE64_DECODE 0 /* Base64 to bytes, as any value other than KORVO_BASE64_ENCODE */

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

/* Modes of KORVOCSPrepareBinaryBuffer. */
#define KORVO_BINARY_TO_HEX 2       /* bytes to upper-case hexadecimal */
#define KORVO_HEX_TO_BINARY (-2)    /* hexadecimal to bytes */
#define KORVO_BINARY_TO_BASE64 1    /* bytes to length-prefixed Base64 */
#define KORVO_BASE64_TO_BINARY (-1) /* length-prefixed Base64 to bytes */

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
 * where the address column is the block's whole address (pointer-sized)
 * in lower-case hexadecimal padded with blanks to 8, then the item and byte
 * totals (current, cumulative, maximum; 32-bit, wrapping; a 0-byte mmalloc
 * counts 1 byte). Shell off: "\n*** Memory shell turned off ***\n", result 0. */
KORUTL_API uint32_t KORVOPrintMemoryTable(const char *title);

#ifdef __cplusplus
#define KORUTL_ANY_ARGUMENTS ...
#else
#define KORUTL_ANY_ARGUMENTS
#endif
/* Semaphore stubs: take any arguments, ignore them, do nothing, return 1. */
KORUTL_API int32_t KORVOCreateSemaphore(KORUTL_ANY_ARGUMENTS);
KORUTL_API int32_t KORVODeleteSemaphore(KORUTL_ANY_ARGUMENTS);
KORUTL_API int32_t KORVOInitSemaphore(KORUTL_ANY_ARGUMENTS);
KORUTL_API int32_t KORVOSemaphore_P(KORUTL_ANY_ARGUMENTS);
KORUTL_API int32_t KORVOSemaphore_V(KORUTL_ANY_ARGUMENTS);

#ifdef __cplusplus
}
#endif

#endif /* KORUTL_H */
