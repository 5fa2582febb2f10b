# Compares the library's defined dynamic symbols with the functions that the
# public header declares (every declaration carries KORUTL_API). Fails on an
# export the header does not declare and on a declaration the library lacks.
find_program(NM nm REQUIRED)
execute_process(COMMAND ${NM} -D --defined-only ${LIBRARY}
  OUTPUT_VARIABLE nm_out RESULT_VARIABLE nm_rc)
if(NOT nm_rc EQUAL 0)
  message(FATAL_ERROR "nm failed on ${LIBRARY}")
endif()

set(exported "")
string(REPLACE "\n" ";" nm_lines "${nm_out}")
foreach(line IN LISTS nm_lines)
  # "address type name@@NODE"; the version nodes themselves are absolute (A).
  if(line MATCHES "^[0-9a-fA-F]* ([A-Za-z]) ([^@ ]+)")
    if(NOT CMAKE_MATCH_1 STREQUAL "A")
      list(APPEND exported ${CMAKE_MATCH_2})
    endif()
  endif()
endforeach()

file(READ ${HEADER} header)
# Drop comments so that an example in a comment is not taken for a declaration.
string(REGEX REPLACE "/\\*([^*]|\\*+[^*/])*\\*+/" "" header "${header}")
string(REGEX REPLACE "#[ \t]*(define|if|else|endif)[^\n]*" "" header "${header}")
string(REGEX MATCHALL "KORUTL_API[^;(]*\\(" decls "${header}")
set(declared "")
foreach(decl IN LISTS decls)
  if(decl MATCHES "([A-Za-z_][A-Za-z0-9_]*)[ \t\r\n]*\\($")
    list(APPEND declared ${CMAKE_MATCH_1})
  endif()
endforeach()
list(REMOVE_ITEM declared KORUTL_API)

list(REMOVE_DUPLICATES exported)
list(REMOVE_DUPLICATES declared)
set(undeclared ${exported})
list(REMOVE_ITEM undeclared ${declared})
set(missing ${declared})
list(REMOVE_ITEM missing ${exported})
list(LENGTH declared n)
if(undeclared OR missing)
  message(FATAL_ERROR "exports and header differ\n  exported but not declared: ${undeclared}\n  declared but not exported: ${missing}")
endif()
if(n EQUAL 0)
  message(FATAL_ERROR "no declarations found in ${HEADER}")
endif()
message(STATUS "${n} exported functions match the header")
