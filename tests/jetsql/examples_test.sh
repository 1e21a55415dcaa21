#!/usr/bin/env bash
# Runs the examples of a page in the order in which they stand: all succeed.
#   examples_test.sh JETSQL DOCUMENT...
set -euo pipefail
jetsql=$1
shift
for document in "$@"; do
  work=$(mktemp -d)
  sed -n '/^## Examples$/,/^## What/p' "$document" | grep '^jetsql ' >"$work/examples"
  [ "$(wc -l <"$work/examples")" -gt 10 ] || { echo "FAILED: no examples in $document"; exit 1; }
  (
    cd "$work"
    jetsql() { "$jetsql" "$@"; }
    while IFS= read -r line; do
      eval "$line" >output 2>&1 </dev/null || { echo "FAILED: $line"; cat output; exit 1; }
    done <examples
  )
  rm -rf "$work"
done
echo "examples: done"
