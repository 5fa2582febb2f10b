#!/usr/bin/env bash
# Builds and runs the client programs of tests/install against an installed
# korutl, both ways a client builds (pkg-config, find_package), in the
# current folder. The caller has made the install findable (PKG_CONFIG_PATH
# and CMAKE_PREFIX_PATH for a prefix, nothing for the packages); no library
# path is set here, so each program starts only if the install is whole.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
cc -Wall -Wextra -Werror -o app-pc "$top/tests/install/app.c" $(pkg-config --cflags --libs korutl)
./app-pc
cc -Wall -Wextra -Werror -o sibling-pc "$top/tests/install/sibling_app.c" \
  $(pkg-config --cflags --libs korutl) -lkorrsv -lkorshm
./sibling-pc
cmake -S "$top/tests/install" -B cmake-build -G Ninja >/dev/null
cmake --build cmake-build >/dev/null
./cmake-build/app
./cmake-build/sibling_app
