// Key paths of the configuration tree, composed into the fixed buffers
// the configuration operations work with. A path that would not fit its
// buffer is refused rather than cut: a cut path names a different key.
#ifndef KORUTL_READCONFIG_CFG_PATHS_H
#define KORUTL_READCONFIG_CFG_PATHS_H

#include <cstddef>

#include "korutl.h"

namespace korutl::cfg {

// Trace modules handed to the registry service with each call.
inline constexpr const char *prodcfg_module = "readconfig/prodcfg";
inline constexpr const char *plugcfg_module = "readconfig/plugcfg";

// A key path buffer: at most 255 characters and the zero.
inline constexpr size_t path_size = KORVO_NAME_SLOT;
// The latest-value search composes its result in a larger one.
inline constexpr size_t latest_path_size = 3 * KORVO_NAME_SLOT;

#define KORUTL_CFG_ROOT "HKEY_LOCAL_MACHINE\\SOFTWARE\\Vantrel\\Halcyra"
inline constexpr const char *product_key = KORUTL_CFG_ROOT "\\Products\\%s";
inline constexpr const char *versions_key = KORUTL_CFG_ROOT "\\Products\\%s\\Versions";
inline constexpr const char *version_key = KORUTL_CFG_ROOT "\\Products\\%s\\Versions\\%s";
inline constexpr const char *version_subkey = KORUTL_CFG_ROOT "\\Products\\%s\\Versions\\%s\\%s";
inline constexpr const char *instances_key =
    KORUTL_CFG_ROOT "\\Products\\%s\\Versions\\%s\\Instances";
inline constexpr const char *agent_key =
    KORUTL_CFG_ROOT "\\Products\\%s\\Versions\\%s\\Instances\\%s\\Agents\\%s";
inline constexpr const char *agent_below_instances = "%s\\%s\\Agents\\%s";
inline constexpr const char *environment_key = KORUTL_CFG_ROOT "\\%s\\Environment";
inline constexpr const char *plugin_key = KORUTL_CFG_ROOT "\\MILayer\\PlugIn";
inline constexpr const char *trap_dest_key = KORUTL_CFG_ROOT "\\SNMPLayer\\Notifications";
inline constexpr const char *global_key = KORUTL_CFG_ROOT "\\Global";
inline constexpr const char *users_key = KORUTL_CFG_ROOT "\\Products\\%s\\Users";
inline constexpr const char *user_key = KORUTL_CFG_ROOT "\\Products\\%s\\Users\\%s";
// The Languages key below an instance path: product, version, then every
// level from the instance down, each followed by a backslash.
inline constexpr const char *instance_languages_key =
    KORUTL_CFG_ROOT "\\Products\\%s\\Versions\\%s\\%sLanguages";
#undef KORUTL_CFG_ROOT

// Formats into buffer (size bytes). False, with buffer holding "", when
// the text and its zero would not fit. Text arguments must not be null.
bool compose(char *buffer, size_t size, const char *format, ...)
    __attribute__((format(printf, 3, 4)));

}  // namespace korutl::cfg

#endif
