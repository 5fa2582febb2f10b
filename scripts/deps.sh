#!/usr/bin/env bash
# Installs the Debian 12 packages that building and testing korutl need,
# skipping those already present. Runs apt-get as root, or through sudo.
set -euo pipefail
packages=(
  cmake ninja-build g++ clang libclang-rt-14-dev pkg-config
  libgtest-dev libgmock-dev libbenchmark-dev libcli11-dev
  libsqlite3-dev
  libpq-dev postgresql
  libicu-dev
  libcrypto++-dev libssl-dev
  electric-fence
  gettext
  doxygen help2man dpkg-dev
)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
