#!/usr/bin/env bash
# The Windows stage of CI: installs the MinGW-w64 cross compilers and Wine,
# builds the x64 DLLs and runs the test suite under Wine, then cross-builds
# the x86 DLLs and checks korutl.dll's exports and version resource with
# objdump. Run from anywhere; builds into build-windows-x64 and -x86.
set -euo pipefail
cd "$(dirname "$0")/.."
start=$SECONDS
jobs=${CMAKE_BUILD_PARALLEL_LEVEL:-2}
step() { printf '\n==== %s (at %d s) ====\n' "$*" $((SECONDS - start)); }

step "Windows: packages"
packages=(g++-mingw-w64-x86-64 g++-mingw-w64-i686 wine wine64 googletest libcli11-dev)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# Wine stays headless and inside the build folder (see cmake/KorutlWindows.cmake).
unset DISPLAY WAYLAND_DISPLAY
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)

step "Windows x64: build"
cmake --preset windows-x64 "${launcher[@]}" >/dev/null
cmake --build --preset windows-x64 -j "$jobs"

step "Windows x64: tests under Wine"
export WINEDEBUG=-all WINEPREFIX=$PWD/build-windows-x64/wineprefix
log=build-windows-x64/ctest.log
export HOME=$PWD/build-windows-x64
# One wineserver for the whole run, with Wine's own background services
# started now: started by the first test instead, they would inherit that
# test's output pipe and keep it open.
wineserver -p </dev/null >/dev/null 2>&1 || true
wine cmd /c exit </dev/null >/dev/null 2>&1 || true
status=0
ctest --preset windows-x64 -j "$jobs" --timeout 120 2>&1 | tee "$log" || status=$?
wineserver -k 2>/dev/null || true
summary=$(grep -E "tests passed, [0-9]+ tests failed out of" "$log" || true)
skipped=$(grep -c "(Skipped)" "$log" || true)
echo "Windows x64 under Wine: ${summary:-no summary} ($skipped skipped, listed above)"
[ "$status" -eq 0 ] || exit "$status"

step "Windows x86: build and check korutl.dll"
cmake --preset windows-x86 "${launcher[@]}" -DKORUTL_BUILD_TESTS=OFF >/dev/null
# Only what the checks below look at: the five DLLs and korutl.exe.
cmake --build --preset windows-x86 -j "$jobs" --target korutl korrsv korshm koross korcpx korutl_tool
dll=build-windows-x86/bin/korutl.dll
i686-w64-mingw32-objdump -f "$dll" | grep -q "file format pei-i386" || { echo "$dll is no 32-bit DLL" >&2; exit 1; }
cmake -DLIBRARY="$dll" -DOBJDUMP=i686-w64-mingw32-objdump -DHEADER=include/korutl.h \
  -P tests/check_exports.cmake
# Undecorated names only: no leading underscore, no @N of stdcall.
if i686-w64-mingw32-objdump -p "$dll" | sed -n '/Ordinal\/Name Pointer\] Table/,/^$/p' | grep -E '\] (_|.*@[0-9])'; then
  echo "decorated export names in $dll" >&2; exit 1
fi
scripts/check-version-resource.sh "$dll" i686-w64-mingw32-objdump
for sibling in korrsv korshm koross korcpx; do
  [ -f "build-windows-x86/bin/$sibling.dll" ] || { echo "missing $sibling.dll" >&2; exit 1; }
done
[ -f build-windows-x86/bin/korutl.exe ] || { echo "missing korutl.exe" >&2; exit 1; }

echo "Windows stage took $((SECONDS - start)) s"
