#!/usr/bin/env bash
# Builds the Debian packages with the `package` preset (prefix /usr, into
# build-package/), or from BUILD_DIR when given (a build configured for
# /usr), and checks them as a distribution would: lintian on every package,
# -dbgsym ones included, with no error and no warning; versioned SONAMEs;
# no path of the build machine in any binary. Then installs them with
# apt-get and uses the installed files the way a user would: `korutl demo`,
# `korutl msg` with a locale name, bash completion, the man page, client
# programs built with pkg-config and find_package, the
# README's example program as shown, and dpkg-shlibdeps on those programs
# (each must depend on libkorutl2). Removes the packages again and checks
# that nothing is left.
set -euo pipefail
top=$(cd "$(dirname "$0")/.." && pwd)
packages=(libkorutl2 libkorutl-dev korutl-tools)
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
fail() { echo "package test: $*" >&2; exit 1; }

# What checking the packages needs beyond scripts/deps.sh.
tools=(lintian file binutils)
missing=()
for p in "${tools[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  $sudo apt-get update -qq
  $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

if [ $# -gt 0 ]; then
  build=$(cd "$1" && pwd)
  rm -rf "$build/packages"
  (cd "$build" && cpack -G DEB >/dev/null)
else
  build=$top/build-package
  rm -rf "$build/packages"
  (cd "$top" && cmake --workflow --preset package >/dev/null)
fi

work=$(mktemp -d)
chmod 755 "$work"  # apt reads the files as its own user
cleanup() {
  $sudo apt-get purge -y -qq "${packages[@]}" >/dev/null 2>&1 || true
  rm -rf "$work"
}
trap cleanup EXIT
cp "$build"/packages/*.deb "$build"/packages/*.ddeb "$work/"
cd "$work"
ls
for deb in ./*.deb ./*.ddeb; do dpkg-deb -f "$deb" Package Depends; done

# lintian, as the archive would run it; -dbgsym packages too.
status=0
lintian --fail-on error,warning ./*.deb ./*.ddeb || status=$?
[ "$status" -eq 0 ] || fail "lintian reports errors or warnings (above)"
echo "lintian: no error, no warning on $(ls ./*.deb ./*.ddeb | wc -l) packages"

# The packaged files themselves.
mkdir unpacked
for deb in ./*.deb; do dpkg-deb -x "$deb" unpacked; done
libdir=unpacked/usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)
for soname in libkorutl.so.2 libkorrsv.so.1 libkorshm.so.22 libkoross.so.19 libkorcpx.so.1; do
  readelf -d "$libdir/$soname" | grep -q "Library soname: \[$soname\]" || fail "$soname: wrong SONAME"
done
[ -e "$libdir/korutl/lang/hal_en.so" ] || fail "no language libraries in $libdir/korutl/lang"
[ -e unpacked/usr/share/man/man1/korutl.1.gz ] || fail "no manual page"
if find unpacked/usr/share -name '*.so' | grep -q .; then fail "a shared object below /usr/share"; fi
if grep -rlF "$top" unpacked; then fail "build paths in the packaged files (above)"; fi

(cd "$work" && $sudo apt-get install -y -qq ./*.deb >/dev/null)

# Everything from here runs on the installed files only.
[ "$(command -v korutl)" = /usr/bin/korutl ]
env -u KORVO_REGISTRY -u KORVO_LANGUAGE_PATH korutl demo --quiet
# msg finds the installed sample libraries by itself, for a locale name.
KORVO_REGISTRY=$work/registry.db korutl reg import /usr/share/korutl/halcyra-sample.reg >/dev/null
[ "$(env -u KORVO_LANGUAGE_PATH -u LANGUAGE -u LC_ALL -u LC_MESSAGES LANG=de_DE.UTF-8 \
      KORVO_REGISTRY="$work/registry.db" korutl msg HAL_LANGUAGE)" = Deutsch ] ||
  fail "korutl msg does not find the installed language libraries"
# Bash completion, installed where bash-completion loads it from.
[ "$(bash -c 'source /usr/share/bash-completion/completions/korutl
  COMP_WORDS=(korutl cfg ver); COMP_CWORD=2; _korutl; echo "${COMPREPLY[*]}"')" = versions ] ||
  fail "bash completion does not complete korutl cfg ver"

"$top/scripts/client-programs.sh"

"$top/scripts/readme-block.sh" example-program "$top/README.md" > example.c
(bash -euo pipefail -c "$("$top/scripts/readme-block.sh" example-build "$top/README.md")")

# A package of a program built against the libraries depends on libkorutl2,
# through its symbols file, whichever of the five libraries it calls.
mkdir -p shlibdeps/debian
printf 'Source: client\n\nPackage: client\nArchitecture: any\n' > shlibdeps/debian/control
for program in app-pc sibling-pc; do
  depends=$(cd shlibdeps && dpkg-shlibdeps -O "../$program" 2>/dev/null)
  echo "$program: $depends"
  grep -q 'libkorutl2 (>= ' <<<"$depends" || fail "$program does not depend on libkorutl2"
done

$sudo apt-get purge -y -qq "${packages[@]}" >/dev/null
for p in "${packages[@]}"; do
  if dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q installed; then
    fail "package $p is still installed"
  fi
done
for f in /usr/bin/korutl /usr/include/korutl.h /usr/include/korutl /usr/share/korutl /usr/share/doc/libkorutl2; do
  [ ! -e "$f" ] || fail "$f is left after removal"
done
if compgen -G '/usr/lib/libkor*' >/dev/null || compgen -G '/usr/lib/*/libkor*' >/dev/null ||
   [ -e /usr/lib/korutl ] || compgen -G '/usr/lib/*/korutl' >/dev/null; then
  fail "libraries left after removal"
fi
echo "package test: built, lintian-clean, installed, demo, pkg-config, find_package, README example and dpkg-shlibdeps passed, removed"
