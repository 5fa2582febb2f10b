#!/usr/bin/env bash
# Checks the version resource of a korutl.dll against utl/version.h:
#   check-version-resource.sh DLL [OBJDUMP]
# objdump -p must list a version resource (type 0x10); the .rsrc bytes must
# hold the fixed file information with version 2.2.1.3 and the texts.
set -euo pipefail
dll=$1
objdump=${2:-objdump}
cd "$(dirname "$0")/.."
"$objdump" -p "$dll" | grep -A1 "Type Table" | grep -q "Entry: ID: 0x000010" || { echo "$dll: no version resource" >&2; exit 1; }

version=$(sed -n 's/^#define KORUTL_VERSION_TEXT "\(.*\)"/\1/p' utl/version.h)
patch=$(sed -n 's/^#define KORUTL_PATCH_LEVEL \([0-9]*\)/\1/p' utl/version.h)
IFS=. read -r major minor micro <<<"$version"

# The section's bytes as one lower-case hex string.
hex=$("$objdump" -s -j .rsrc "$dll" | awk '/^ [0-9a-f]+ /{for (i = 2; i <= 5; i++) if ($i ~ /^[0-9a-f]+$/) printf "%s", $i}')
le16() { printf '%02x%02x' $(($1 & 255)) $(($1 >> 8)); }
utf16() { local s=$1 out="" i; for ((i = 0; i < ${#s}; i++)); do out+=$(printf '%02x00' "'${s:i:1}"); done; echo "$out"; }

# VS_FIXEDFILEINFO: signature, structure version, then file version MS, LS.
fixed="bd04effe00000100$(le16 "$minor")$(le16 "$major")$(le16 "$patch")$(le16 "$micro")"
fail=0
expect() {
  if [[ $hex == *"$2"* ]]; then echo "  $1: ok"; else echo "  $1: MISSING"; fail=1; fi
}
echo "version resource of $dll:"
expect "fixed file version $version.$patch" "$fixed"
# String entries: the key, padding to 32 bits, the value; checked apart.
for pair in "FileVersion=$version.$patch" CompanyName=Vantrel ProductName=Halcyra \
    OriginalFilename=korutl.dll; do
  expect "${pair%%=*}" "$(utf16 "${pair%%=*}")0000"
  expect "  ${pair#*=}" "$(utf16 "${pair#*=}")0000"
done
exit $fail
