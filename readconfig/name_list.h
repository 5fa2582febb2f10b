// Name lists of the configuration tree (versions of a product, instances
// of a version): one malloc block of text pointers followed by 256-byte
// name slots, ordered by the numeric version key, greatest first.
#ifndef KORUTL_READCONFIG_NAME_LIST_H
#define KORUTL_READCONFIG_NAME_LIST_H

#include <cstdint>

namespace korutl::cfg {

// The numeric key of a version or instance name: up to four runs of
// decimal digits p1..p4 (missing ones 0, a run beyond 32 bits counts as
// 4294967295) give ((p1*100 + p2)*1000 + p3)*1000 + p4 modulo 2^32.
// Everything between the runs is skipped. A null name has key 0.
uint32_t VersionSortKey(const char *name);

// qsort comparator over an array of text pointers: greater key first.
int CompareVersionsDescending(const void *a, const void *b);

// The subkeys of `key` as a name list in descending version order, with
// the number of names in *count (count may be null): at most 65535, the
// first in name order. Each name's key is computed once and the list
// sorted on them (n log n); names of equal keys stay in name order. Null
// when the key is missing, has no subkeys or cannot be listed; *count is
// then 0, except when the block cannot be allocated, where it holds the
// number of subkeys the key has.
char **list_subkeys_by_version(const char *key, uint16_t *count);

// Value names come in slots of 33 bytes; the service cuts a longer name
// to 32 characters. True when names[i] is such a cut: a 32-character name
// that is no value of `key`, or one seen before in names (two cuts, or a
// cut and a real 32-character name, that come out alike).
bool value_name_was_cut(const char *key, char *const *names, uint16_t i);

}  // namespace korutl::cfg

#endif
