# Turns a message catalogue ("key = text" lines, UTF-8, "#" comments) into
# the C source of a language library, or into a gettext .po file of the same
# texts. Run in script mode:
#   cmake -DCATALOGUE=in.txt -DOUTPUT=out.c -DFORM=c -DENTRY=GetStringResource -P catalogue_convert.cmake
#   cmake -DCATALOGUE=in.txt -DOUTPUT=out.po -DFORM=po -P catalogue_convert.cmake
# ENTRY names the exported entry point: GetStringResource (object
# identifier, language, key) or get_resource (key). A malformed line or a
# key given twice stops the build with the line's number.
cmake_minimum_required(VERSION 3.25)

foreach(required CATALOGUE OUTPUT FORM)
  if(NOT DEFINED ${required})
    message(FATAL_ERROR "catalogue_convert: ${required} is not set")
  endif()
endforeach()

# A text as a C (or .po) string literal. In C "?" is escaped too, so that
# no trigraph forms in strict C99.
function(quoted_literal text out)
  string(REPLACE "\\" "\\\\" text "${text}")
  string(REPLACE "\"" "\\\"" text "${text}")
  if(FORM STREQUAL "c")
    string(REPLACE "?" "\\?" text "${text}")
  endif()
  set(${out} "\"${text}\"" PARENT_SCOPE)
endfunction()

file(STRINGS "${CATALOGUE}" lines ENCODING UTF-8)
set(keys "")
set(number 0)
foreach(line IN LISTS lines)
  math(EXPR number "${number} + 1")
  string(STRIP "${line}" stripped)
  if(stripped STREQUAL "" OR stripped MATCHES "^#")
    continue()
  endif()
  string(FIND "${stripped}" "=" eq)
  if(eq LESS 1)
    message(FATAL_ERROR "${CATALOGUE}:${number}: expected \"key = text\"")
  endif()
  string(SUBSTRING "${stripped}" 0 ${eq} key)
  math(EXPR after "${eq} + 1")
  string(SUBSTRING "${stripped}" ${after} -1 text)
  string(STRIP "${key}" key)
  string(STRIP "${text}" text)
  if(NOT key MATCHES "^[A-Za-z0-9_.-]+$")
    message(FATAL_ERROR "${CATALOGUE}:${number}: a key is made of letters, digits, '_', '.' and '-'")
  endif()
  if(key IN_LIST keys)
    message(FATAL_ERROR "${CATALOGUE}:${number}: key ${key} given twice")
  endif()
  list(APPEND keys "${key}")
  set("text_${key}" "${text}")
endforeach()
# Byte order, the order strcmp gives, for the library's binary search.
list(SORT keys COMPARE STRING CASE SENSITIVE)
get_filename_component(source_name "${CATALOGUE}" NAME)

if(FORM STREQUAL "po")
  set(out "# Generated from ${source_name}; do not edit.\nmsgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n")
  foreach(key IN LISTS keys)
    quoted_literal("${key}" k)
    quoted_literal("${text_${key}}" t)
    string(APPEND out "\nmsgid ${k}\nmsgstr ${t}\n")
  endforeach()
elseif(FORM STREQUAL "c")
  if(NOT ENTRY MATCHES "^(GetStringResource|get_resource)$")
    message(FATAL_ERROR "catalogue_convert: ENTRY must be GetStringResource or get_resource")
  endif()
  set(table "")
  foreach(key IN LISTS keys)
    quoted_literal("${key}" k)
    quoted_literal("${text_${key}}" t)
    string(APPEND table "  {${k}, ${t}},\n")
  endforeach()
  if(ENTRY STREQUAL "GetStringResource")
    set(entry_point
"EXPORTED const char *GetStringResource(const char *objectId, const char *language,
                                       const char *key) {
  (void)objectId; /* one library serves one product and language */
  (void)language;
  return lookup(key);
}")
  else()
    set(entry_point
"EXPORTED const char *get_resource(const char *key) { return lookup(key); }")
  endif()
  set(out "/* Generated from ${source_name}; do not edit. A language library: the
 * texts of one product in one language, found by key. */
#include <stdlib.h>
#include <string.h>

#if defined(_WIN32)
#define EXPORTED __declspec(dllexport)
#else
#define EXPORTED __attribute__((visibility(\"default\")))
#endif

struct entry {
  const char *key;
  const char *text;
};

/* Sorted by key in byte order. */
static const struct entry entries[] = {
${table}};

static int compare_key(const void *key, const void *element) {
  return strcmp((const char *)key, ((const struct entry *)element)->key);
}

/* The text of `key`, or null for an unknown or null key. */
static const char *lookup(const char *key) {
  const struct entry *found;
  if (key == NULL) return NULL;
  found = (const struct entry *)bsearch(key, entries, sizeof entries / sizeof entries[0],
                                        sizeof entries[0], compare_key);
  return found != NULL ? found->text : NULL;
}

${entry_point}
")
else()
  message(FATAL_ERROR "catalogue_convert: FORM must be c or po")
endif()

file(WRITE "${OUTPUT}" "${out}")
