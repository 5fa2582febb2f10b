// How the registry commands report: the registry service's own reason for
// a failed call, said in one "korutl: " line with the store it concerns,
// and the question asked before anything is destroyed.
#ifndef KORUTL_TOOLS_REG_REPORT_H
#define KORUTL_TOOLS_REG_REPORT_H

#include <cstdint>
#include <string>

namespace korutl_tool {

// Installs the registry service's trace function, which keeps the reason
// of the last failed call (read-only, disk full, damaged, busy ...).
void watch_store_failures();

// Reports a failed call of the registry service (`status` not RSV_OK) as
// "korutl: <action>: <reason>", naming the store for a store failure, and
// leaves exit status 1.
void fail_call(uint16_t status, const std::string &action);

// Whether the key exists. When it does not, says so ("the key K does not
// exist"), or why it cannot be read, with exit status 1.
bool key_found(const std::string &key);

// A value name as messages show it: "NAME" in quotes, "(Default)" for "".
std::string quoted_value_name(const std::string &name);

// Prints reg.exe's line for a change made.
void report_done();

// Asks before something is destroyed. True when `force` is set or the
// person answered yes. Otherwise false, with exit status 1 and one line:
// with no terminal to ask on, "<what> needs confirmation: <switch_name>"
// hint; answered no, "<what>: cancelled".
bool confirmed(const std::string &question, bool force, const std::string &what,
               const char *switch_name = "/f");

}  // namespace korutl_tool

#endif
