#!/usr/bin/env bash
# Formats every C++ file; with --check only reports what is not formatted and exits with 1.
set -euo pipefail
cd "$(dirname "$0")/.."
mode=(-i)
[ "${1:-}" != --check ] || mode=(--dry-run -Werror)
git ls-files -z --cached --others --exclude-standard '*.h' '*.cpp' |
  xargs -0 --no-run-if-empty clang-format "${mode[@]}"
[ "${1:-}" != --check ] || echo "format: every file is formatted"
