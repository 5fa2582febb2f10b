#!/usr/bin/env bash
# Builds the Debian packages from BUILD_DIR (default build/, already built),
# installs them with apt-get, then checks the installed files the way a
# user would: `korutl demo`, the man page, a client program built with
# pkg-config and with find_package, and the README's example program as
# shown. Removes the packages again and checks that nothing is left.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "${1:-$top/build}" && pwd)
packages=(libkorutl2 libkorutl-dev korutl-tools)
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive

rm -rf "$build/packages"
(cd "$build" && cpack -G DEB >/dev/null)
work=$(mktemp -d)
chmod 755 "$work"  # apt reads the files as its own user
cleanup() {
  $sudo apt-get purge -y -qq "${packages[@]}" >/dev/null 2>&1 || true
  rm -rf "$work"
}
trap cleanup EXIT
cp "$build"/packages/*.deb "$work/"
ls "$work"
for deb in "$work"/*.deb; do dpkg-deb -f "$deb" Package Depends; done
tools_files=$(dpkg-deb -c "$work"/korutl-tools_*.deb)
grep -q '/usr/share/man/man1/korutl.1.gz$' <<<"$tools_files"
# Machine code goes below /usr/lib, never /usr/share.
grep -Eq '/usr/lib/([^/]*/)?korutl/lang/hal_en\.so$' <<<"$tools_files"
if grep -q '/usr/share/.*\.so$' <<<"$tools_files"; then
  echo "a shared object below /usr/share" >&2; exit 1
fi
(cd "$work" && $sudo apt-get install -y -qq ./*.deb >/dev/null)

# Everything from here runs on the installed files only.
cd "$work"
[ "$(command -v korutl)" = /usr/bin/korutl ]
env -u KORVO_REGISTRY -u KORVO_LANGUAGE_PATH korutl demo --quiet

cc -Wall -Wextra -Werror -o app-pc "$top/tests/install/app.c" $(pkg-config --cflags --libs korutl)
./app-pc
cmake -S "$top/tests/install" -B cmake-build -G Ninja >/dev/null
cmake --build cmake-build >/dev/null
./cmake-build/app

"$top/scripts/readme-block.sh" example-program > example.c
(bash -euo pipefail -c "$("$top/scripts/readme-block.sh" example-build)")

$sudo apt-get purge -y -qq "${packages[@]}" >/dev/null
for p in "${packages[@]}"; do
  if dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q installed; then
    echo "package $p is still installed" >&2; exit 1
  fi
done
for f in /usr/bin/korutl /usr/include/korutl.h /usr/share/korutl; do
  [ ! -e "$f" ] || { echo "$f is left after removal" >&2; exit 1; }
done
if compgen -G '/usr/lib/libkor*' >/dev/null || compgen -G '/usr/lib/*/libkor*' >/dev/null ||
   [ -e /usr/lib/korutl ] || compgen -G '/usr/lib/*/korutl' >/dev/null; then
  echo "libraries left after removal" >&2; exit 1
fi
echo "package test: built, installed, demo, pkg-config, find_package and README example passed, removed"
