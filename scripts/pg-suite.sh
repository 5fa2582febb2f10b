#!/usr/bin/env bash
# The whole test suite and `korutl demo` with the store on a throwaway
# PostgreSQL server (scripts/pg-cluster.sh): every test that makes a store
# of its own gets a host of its own on that server instead of a file.
# Usage: pg-suite.sh [BUILD_DIR] (default build, already built).
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
dir=$(mktemp -d "${TMPDIR:-/tmp}/korutl-pg-XXXXXX")
trap 'scripts/pg-cluster.sh stop "$dir"' EXIT
scripts/pg-cluster.sh start "$dir" >/dev/null
if [ -f "$dir/unavailable" ]; then
  cat "$dir/unavailable" >&2
  exit 1
fi
export KORUTL_TEST_PG_DIR=$dir
KORVO_REGISTRY=$(cat "$dir/uri")
export KORVO_REGISTRY
echo "store: $KORVO_REGISTRY"
ctest --test-dir "$build" --output-on-failure -j "${CTEST_PARALLEL_LEVEL:-2}" -LE slow
KORVO_HOST=korutl-demo "$build/tools/korutl" demo
