#!/usr/bin/env bash
# Compares what the companion library exports with the published list: exactly those names, on
# Windows without decoration.
#   scripts/check_exports.sh LIBRARY
set -euo pipefail
library=$1
list=$(dirname "$0")/../src/companion/untmz.def

case $library in
*.dll)
  machine=$(head -c 4096 "$library" | grep -aq 'PE..d' && echo x86_64 || echo i686)
  # The name table: "	[   0] +base[   1]  0000 Name".
  found=$("$machine-w64-mingw32-objdump" -p "$library" |
    sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' | sed -nE 's/^[[:space:]]+\[.*[[:space:]]([^[:space:]]+)$/\1/p')
  ;;
*)
  found=$(nm -D --defined-only "$library" | awk '{print $3}')
  ;;
esac
diff <(tail -n +2 "$list" | tr -d ' ' | sort) <(sort <<<"$found")
echo "exports: $(wc -l <<<"$found") names, as published"
