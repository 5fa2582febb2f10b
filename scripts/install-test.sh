#!/usr/bin/env bash
# Installs the build in BUILD_DIR (default build/) into a temporary prefix
# and builds tests/install/app.c against it both ways a client would:
# pkg-config and CMake's find_package. Runs both programs.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$top/build}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

cmake --install "$build" --prefix "$prefix" >/dev/null
libdir=$(dirname "$(find "$prefix" -name 'libkorutl.so' | head -n1)")
export LD_LIBRARY_PATH=$libdir

export PKG_CONFIG_PATH=$libdir/pkgconfig
cc -Wall -Wextra -Werror -o "$work/app-pc" "$top/tests/install/app.c" $(pkg-config --cflags --libs korutl)
"$work/app-pc"

cmake -S "$top/tests/install" -B "$work/cmake-build" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/cmake-build" >/dev/null
"$work/cmake-build/app"

"$prefix/bin/korutl" version >/dev/null
echo "install test: pkg-config and find_package clients passed"
