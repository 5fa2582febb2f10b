#!/usr/bin/env bash
# The prefix install as README.md shows it, with no library path set at
# link or run time: installs the build in BUILD_DIR (default build/) with
# the README's command, into a temporary folder standing for its
# /opt/korutl, then builds and runs the README's example with pkg-config,
# tests/install with pkg-config and with find_package, and the installed
# `korutl demo`, also after moving the whole prefix elsewhere. Checks the
# SONAMEs and RUNPATHs of the installed files, and that no binary of the
# build tree has an empty RUNPATH entry (the current folder).
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "${1:-$top/build}" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/opt/korutl
unset LD_LIBRARY_PATH LIBRARY_PATH
readme() { "$top/scripts/readme-block.sh" "$1" "$top/README.md" | sed "s#/opt/korutl#$prefix#g"; }
fail() { echo "install test: $*" >&2; exit 1; }

# The README's commands, the build folder and /opt/korutl being this
# test's own.
(cd "$work" && bash -euo pipefail -c "$(readme install-command | sed "s#cmake --install build#cmake --install '$build'#")") >/dev/null
eval "$(readme install-environment)"
[ "${PKG_CONFIG_PATH:-}" = "$prefix/lib/pkgconfig" ] || fail "README sets no PKG_CONFIG_PATH for the prefix"
cd "$work"
readme example-program > example.c
bash -euo pipefail -c "$(readme example-build)"

# The libraries: versioned SONAMEs; korutl finds its siblings beside it,
# the command finds the libraries from bin/.
runpath() { readelf -d "$1" | sed -n 's/.*(RUNPATH).*\[\(.*\)\]/\1/p'; }
for soname in libkorutl.so.2 libkorrsv.so.1 libkorshm.so.22 libkoross.so.19 libkorcpx.so.1; do
  [ -e "$prefix/lib/$soname" ] || fail "no $soname"
  readelf -d "$prefix/lib/$soname" | grep -q "Library soname: \[$soname\]" || fail "$soname: wrong SONAME"
done
[ "$(runpath "$prefix/lib/libkorutl.so.2")" = '$ORIGIN' ] || fail "libkorutl.so.2: RUNPATH $(runpath "$prefix/lib/libkorutl.so.2")"
[ "$(runpath "$prefix/bin/korutl")" = '$ORIGIN/../lib' ] || fail "korutl: RUNPATH $(runpath "$prefix/bin/korutl")"

# Client programs, both ways a client builds.
"$top/scripts/client-programs.sh"

# The installed command, then the same prefix moved: nothing in it names
# the folder it was installed to.
env -u KORVO_REGISTRY -u KORVO_LANGUAGE_PATH "$prefix/bin/korutl" demo --quiet
mv "$work/opt" "$work/moved"
env -u KORVO_REGISTRY -u KORVO_LANGUAGE_PATH "$work/moved/korutl/bin/korutl" demo --quiet

# An empty RUNPATH entry would make the loader search the current folder.
while IFS= read -r -d '' f; do
  if readelf -h "$f" >/dev/null 2>&1; then
    path=$(runpath "$f")
    case ":$path:" in
      *::*) [ -z "$path" ] || fail "$f: RUNPATH with an empty entry: $path" ;;
    esac
  fi
done < <(find "$build" -path "$build/_deps" -prune -o -type f -perm -u+x -print0)
echo "install test: README prefix install, example, pkg-config and find_package clients, demo (also moved) passed"
