#!/usr/bin/env bash
# korutl taken into a parent CMake project with FetchContent (which adds it
# with add_subdirectory): the parent links korutl::korutl and the siblings'
# targets, builds only the libraries (no tests, no command, no `docs` or
# packaging targets of korutl's) and runs its programs from its build tree.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
unset LD_LIBRARY_PATH
fail() { echo "subproject test: $*" >&2; exit 1; }

mkdir "$work/parent"
cp "$top/tests/install/app.c" "$top/tests/install/sibling_app.c" "$work/parent/"
cat > "$work/parent/CMakeLists.txt" <<EOF
cmake_minimum_required(VERSION 3.25)
project(korutl_parent LANGUAGES C)
include(FetchContent)
FetchContent_Declare(korutl SOURCE_DIR "$top")
FetchContent_MakeAvailable(korutl)
add_executable(app app.c)
target_link_libraries(app PRIVATE korutl::korutl)
add_executable(sibling_app sibling_app.c)
target_link_libraries(sibling_app PRIVATE korutl::korrsv korutl::korshm)
EOF

cmake -S "$work/parent" -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
targets=$(ninja -C "$work/build" -t targets all)
for unwanted in korutl_tests korutl_internal_tests korutl_tool korutl_language_libraries docs package; do
  if grep -q "^$unwanted: " <<<"$targets"; then fail "the parent got korutl's target $unwanted"; fi
done
[ ! -e "$work/build/CPackConfig.cmake" ] || fail "korutl set up CPack in the parent"
cmake --build "$work/build" >/dev/null
"$work/build/app"
"$work/build/sibling_app"
echo "subproject test: FetchContent parent built korutl::korutl without tests or command, programs ran"
