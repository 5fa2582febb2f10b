/* The public header must compile as strict C99 on its own. Built, never run. */
#include "korutl.h"

int korutl_header_c99_check(void) { return KORVOHex2Int('0'); }
