/* A client program built against an installed korutl, both through
 * pkg-config and through find_package. Exits 0 when the library answers. */
#include <stdio.h>
#include <string.h>

#include <korutl.h>

int main(void) {
  char full[8];
  if (strcmp(KORVOUtlGetLibFullVersion(full), "2.2.1.3") != 0) return 1;
  if (KORVOHex2Int('f') != 15) return 1;
  printf("%s %s\n", KORVOUtlGetLibName(), full);
  return 0;
}
