#!/usr/bin/env bash
# Prints the fenced block that follows the line "<!-- NAME -->" in
# README.md (or FILE), without its fences: CI runs and compiles the
# README's commands and example exactly as written.
set -euo pipefail
name=$1
file=${2:-$(dirname "$0")/../README.md}
awk -v marker="<!-- $name -->" '
  $0 == marker { found = 1; next }
  found && /^```/ { if (inblock) exit; inblock = 1; next }
  inblock { print }' "$file"
