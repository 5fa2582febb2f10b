/* The registry service of the product family (libkorrsv.so): the
 * configuration tree reached by full key paths such as
 * "HKEY_LOCAL_MACHINE\SOFTWARE\Vantrel\Halcyra\Products\X".
 *
 * Every operation returns a 16-bit status (RSV_OK on success) and takes a
 * trailing trace pair: the calling module's name and the line of the call.
 * When an operation fails, the function installed with rsv_set_trace_func
 * receives one line "module:line: operation: reason\n"; a null module
 * asks for no trace line.
 *
 * The tree lives in the store file named by KORVO_REGISTRY (default
 * $XDG_STATE_HOME/halcyra/registry.db, else
 * $HOME/.local/state/halcyra/registry.db); a store that does not exist yet
 * is an empty tree. A relative KORVO_REGISTRY is made absolute when the
 * process first uses it; with no KORVO_REGISTRY and neither variable an
 * absolute path, every operation fails with RSV_E_STORE. New store files
 * are readable and writable by their owner only. A call waits at most
 * KORVO_REGISTRY_BUSY_TIMEOUT milliseconds (default 10000) for a store that
 * another writer holds, then fails with RSV_E_STORE ("store busy"). A store
 * file found damaged fails the call with RSV_E_STORE, never a shorter
 * answer. Values cannot be set on a root key, nor is one deleted (RSV_E_BAD_ARGUMENT). Names are
 * case-insensitive and keep their case; a key name has at most 255 characters, a path at most 512
 * levels. */
#ifndef KORUTL_SIBLINGS_RSV_H
#define KORUTL_SIBLINGS_RSV_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Exported from korrsv.dll on Windows, imported by everyone else there. */
#if defined(_WIN32)
#if defined(korrsv_EXPORTS)
#define RSV_API __declspec(dllexport)
#else
#define RSV_API __declspec(dllimport)
#endif
#else
#define RSV_API __attribute__((visibility("default")))
#endif

#define RSV_OK 0
#define RSV_E_NO_VALUE 2     /* the key exists, the value does not */
#define RSV_E_BAD_ARGUMENT 3 /* null where a text or count is needed, bad path */
#define RSV_E_BUFFER_SMALL 4 /* the caller's capacity cannot hold the text */
#define RSV_E_TOO_LONG 5     /* the text does not fit a 16-bit length */
#define RSV_E_STORE 6        /* the store cannot be read or written, or memory ran out */
#define RSV_E_NO_KEY 7       /* the key does not exist */

/* Interface version 1.13; libkorutl.so imports it to load only beside it. */
RSV_API extern const int32_t RSV_V113;

typedef void (*rsv_trace_func)(const char *line);

/* Counts of the key's direct subkeys and values; either pointer may be
 * null. Counts above 65535 are reported as 65535. */
RSV_API uint16_t rsv_query_key(const char *key, uint16_t *subkeys, uint16_t *values,
                               const char *module, int32_t line);

/* Reads a value as text (its bytes up to the first zero, whatever its
 * type). name "" is the key's default value.
 * - buffer and length null: existence test.
 * - buffer null: *length receives the text's length (one byte more holds it
 *   with its terminating zero).
 * - buffer given: *length is its capacity in bytes; the text is written
 *   zero-terminated and *length receives its length. A text that does not
 *   fit gives RSV_E_BUFFER_SMALL (buffer untouched, *length the needed
 *   length); a text of 65535 characters or more gives RSV_E_TOO_LONG. */
RSV_API uint16_t rsv_get_value(const char *key, const char *name, char *buffer, uint16_t *length,
                               const char *module, int32_t line);

/* Stores text (with its terminating zero, as a text value) in an existing
 * key; RSV_E_NO_KEY when the key is missing. */
RSV_API uint16_t rsv_set_value(const char *key, const char *name, const char *text,
                               const char *module, int32_t line);

/* Registry value types, numbered as Windows numbers them. */
#define RSV_REG_NONE 0
#define RSV_REG_SZ 1
#define RSV_REG_EXPAND_SZ 2
#define RSV_REG_BINARY 3
#define RSV_REG_DWORD 4
#define RSV_REG_MULTI_SZ 7
#define RSV_REG_QWORD 11

/* Typed access for tools that carry every registry type (RSV_REG_*).
 * rsv_get_value_ex: *size is the capacity of data in, the data's size out
 * (data may be null to ask for the size); a value larger than the capacity
 * gives RSV_E_BUFFER_SMALL with the needed size. type may be null.
 * rsv_set_value_ex stores size bytes as they are in an existing key; data
 * over 1 MiB gives RSV_E_TOO_LONG. */
RSV_API uint16_t rsv_get_value_ex(const char *key, const char *name, uint32_t *type, void *data,
                                  uint32_t *size, const char *module, int32_t line);
RSV_API uint16_t rsv_set_value_ex(const char *key, const char *name, uint32_t type,
                                  const void *data, uint32_t size, const char *module,
                                  int32_t line);

/* Removes one value of a key: RSV_E_NO_VALUE when it is not there. */
RSV_API uint16_t rsv_delete_value(const char *key, const char *name, const char *module,
                                  int32_t line);

/* Creates the key and every missing key above it; an existing key is
 * success. */
RSV_API uint16_t rsv_create_key(const char *key, const char *module, int32_t line);

/* rsv_create_key, and *created (may be null) receives 1 when the key
 * itself was new, 0 when it existed. */
RSV_API uint16_t rsv_create_key_ex(const char *key, uint8_t *created, const char *module,
                                   int32_t line);

/* Removes the key with its values and its whole subtree. A root key (a
 * path of one name, such as "HKEY_LOCAL_MACHINE") is never removed, as the
 * system registry refuses it: RSV_E_BAD_ARGUMENT, nothing changes. */
RSV_API uint16_t rsv_delete_key(const char *key, const char *module, int32_t line);

/* Bytes of the name slots of rsv_enum_subkeys and rsv_enum_values. */
#define RSV_SUBKEY_SLOT 256
#define RSV_VALUE_SLOT 33

/* Subkey names in case-insensitive name order. names[i] point to slots of
 * RSV_SUBKEY_SLOT bytes; *count is the number of slots in and of names
 * written out. */
RSV_API uint16_t rsv_enum_subkeys(const char *key, char **names, uint16_t *count,
                                  const char *module, int32_t line);

/* Value names in the order they were first set (on Windows: in the system
 * registry's own order). names[i] point to slots of RSV_VALUE_SLOT bytes;
 * a longer name is cut to fit. *count as above. */
RSV_API uint16_t rsv_enum_values(const char *key, char **names, uint16_t *count, const char *module,
                                 int32_t line);

/* Which names rsv_list_names hands out. */
#define RSV_LIST_SUBKEYS 0
#define RSV_LIST_VALUES 1

/* Called by rsv_list_names once per name with the caller's context; a
 * nonzero result stops the listing. */
typedef int32_t (*rsv_name_func)(const char *name, void *context);

/* Every name of a key's subkeys (RSV_LIST_SUBKEYS, in case-insensitive
 * name order) or values (RSV_LIST_VALUES, in first-set order), whole
 * whatever their length or number, where the slot enumerations above cut
 * names and stop at 65535. The names come from one committed state of the
 * tree and are handed out after it was read, so func may call the service
 * (and write). A listing stopped by func is still RSV_OK. Interface 1.14. */
RSV_API uint16_t rsv_list_names(const char *key, int32_t kind, rsv_name_func func, void *context,
                                const char *module, int32_t line);

/* A number that changes whenever any process commits a change to the
 * tree this process works on (the store KORVO_REGISTRY names now), so that
 * a caller can remember what it read and trust it while the number stays.
 * RSV_OK with *counter set when the store can tell cheaply; RSV_E_STORE,
 * without a trace line, when it cannot: no store file yet, a store not in
 * write-ahead-log mode, inside a snapshot of this thread, or on Windows.
 * Such a caller reads afresh. RSV_E_BAD_ARGUMENT for a null counter.
 * Interface 1.14. */
RSV_API uint16_t rsv_change_counter(uint64_t *counter, const char *module, int32_t line);

/* Writes the key and its subtree to `file` in the registry editor's .reg
 * format (version 5.00, UTF-16LE with a byte-order mark, CRLF), from one
 * committed state of the tree, streamed: memory holds one value at a time
 * and the subkey names on the way down, never the file. Every tree the store holds exports, and
 * rsv_import_file gives it back exactly: bytes of a name or text that are not UTF-8, and NUL, LF
 * and CR in a name, are written as the lone surrogates U+DC00 + byte (a
 * leading "-" of a root name as U+DC2D); a REG_SZ the quoted form cannot
 * give back exactly (no single terminating zero, another zero, CR or LF)
 * is written as hex(1) of its UTF-16LE form, REG_EXPAND_SZ and
 * REG_MULTI_SZ always as hex(2) and hex(7) of theirs. A regular file (or a
 * link to one, or a name not there yet) is written under a temporary name
 * beside it and renamed over it on success, keeping its permissions, so a
 * failed export leaves an old file whole; anything else (a pipe, a
 * terminal), and /dev/stdout, /dev/stderr, /dev/fd/N and /proc/... names
 * whatever they lead to, is written straight through, appending (a shell's
 * "> f" or ">> f" keeps its meaning). A file that cannot be written gives
 * RSV_E_STORE. */
RSV_API uint16_t rsv_export_file(const char *key, const char *file, const char *module,
                                 int32_t line);

/* Reads a .reg file and applies it in one transaction: keys are created,
 * "[-key]" deletes a subtree, "name"=- deletes a value. Files: version 5.00
 * (UTF-16LE with a byte-order mark, or UTF-8; hex(1), hex(2), hex(7) data
 * is UTF-16LE) or REGEDIT4 (8-bit text; all bytes kept as they are). A lone
 * U+DC00..U+DCFF stands for one byte, as rsv_export_file writes them (in
 * UTF-8 files also in its 3-byte form). A malformed file changes nothing:
 * RSV_E_BAD_ARGUMENT and *bad_line (may be null) receives the 1-based line
 * at fault; deleting a root key ("[-HKEY_LOCAL_MACHINE]") is such a line.
 * A file that cannot be read, or holds more than 64 MiB (counted while
 * reading, so devices and pipes such as /dev/stdin work and /dev/zero
 * stops there), gives RSV_E_BAD_ARGUMENT with *bad_line 0. Memory: the
 * parsed tree, about the file's size, not the file itself. */
RSV_API uint16_t rsv_import_file(const char *file, uint32_t *bad_line, const char *module,
                                 int32_t line);

/* Reads of the calling thread between rsv_begin_snapshot and
 * rsv_end_snapshot see one committed state of the tree: a listing made of
 * several calls (counts, names, values, subkeys) neither fails nor tears
 * while other threads or processes write. Calls nest; the outermost end
 * releases the snapshot. A write of this thread inside a snapshot fails
 * with RSV_E_STORE. Keep snapshots short: a long one holds back the store's
 * checkpoints. rsv_end_snapshot without a begin gives RSV_E_BAD_ARGUMENT.
 * The service's own multi-read operations (rsv_query_key, the enumerations,
 * rsv_export_file) read inside one by themselves. On Windows the system
 * registry has no snapshots: there the calls only nest. */
RSV_API uint16_t rsv_begin_snapshot(const char *module, int32_t line);
RSV_API uint16_t rsv_end_snapshot(const char *module, int32_t line);

/* Installs a function called before every read of the tree made through
 * this service (key queries, value reads, enumerations) with the key path;
 * null removes it. Always RSV_OK. For diagnostics: counting the store
 * reads a caller makes. */
typedef void (*rsv_read_hook)(const char *key);
RSV_API uint16_t rsv_set_read_hook(rsv_read_hook func, const char *module, int32_t line);

/* One store for many hosts (interface 1.15). KORVO_REGISTRY may name a
 * PostgreSQL server by a connection URI, "postgresql://..." or
 * "postgres://..." (anything libpq accepts: a Unix socket folder or TCP,
 * sslmode, a password from ~/.pgpass or PGPASSWORD; libpq.so.5 is loaded
 * then, and only then); anything else names a store file. The process's
 * first call chooses between file and server for the life of the process; a
 * later KORVO_REGISTRY of the other kind fails every call with RSV_E_STORE.
 * A server holds one tree per host: a thread works on the tree of the host
 * named with rsv_set_host, else KORVO_HOST (read on every call), else the
 * machine's host name. Host names are 1 to 253 ASCII letters, digits, '-',
 * '.' and '_', compared case-insensitively and kept in lower case. The
 * server is reached within KORVO_REGISTRY_CONNECT_TIMEOUT seconds (default
 * 5; a connect_timeout in the URI wins); a server that cannot be reached,
 * or a connection lost mid-call, fails the call with RSV_E_STORE and a
 * trace line naming the server (never the password) and libpq's reason, and
 * the next call connects again. A write is acknowledged only once its
 * commit succeeded. The store's tables (schema "korvo") are made by the
 * first write; under a host's role (fleet_roles.sql) a call on another
 * host's tree fails with RSV_E_STORE, "access denied". A store file holds
 * one host's tree: the process's own, whatever KORVO_HOST says. */

/* Makes the calling thread work on the tree of `host` from its next call
 * on; null or "" goes back to KORVO_HOST. RSV_E_BAD_ARGUMENT for a name
 * that is not a host name; RSV_E_STORE when the store is a file (or, on
 * Windows, the system registry) and `host` is not this machine's. Interface 1.15. */
RSV_API uint16_t rsv_set_host(const char *host, const char *module, int32_t line);

/* Calls func once per host that has a tree in the store, in name order
 * (lower case), from one committed state; a nonzero result stops the
 * listing. A store file lists this machine's host only; a host's role
 * sees its own host only. Interface 1.15. */
RSV_API uint16_t rsv_list_hosts(rsv_name_func func, void *context, const char *module,
                                int32_t line);

/* Called by rsv_get_value_all_hosts once per host: the host's name and the
 * value's type, data and size; a nonzero result stops the calls. */
typedef int32_t (*rsv_host_value_func)(const char *host, uint32_t type, const void *data,
                                       uint32_t size, void *context);

/* The value `name` of `key` in every host's tree that has it, in host name
 * order, read in one statement (a fleet inventory); hosts without the key
 * or the value are left out, which is still RSV_OK. func may call the
 * service. Interface 1.15. */
RSV_API uint16_t rsv_get_value_all_hosts(const char *key, const char *name,
                                         rsv_host_value_func func, void *context,
                                         const char *module, int32_t line);

/* Installs the trace function (null: no trace). Always RSV_OK. */
RSV_API uint16_t rsv_set_trace_func(rsv_trace_func func, const char *module, int32_t line);

#ifdef __cplusplus
}
#endif

#endif
