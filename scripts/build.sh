#!/usr/bin/env bash
# Configures and builds the given presets, quietly unless something fails:
#   scripts/build.sh linux-debug windows-x64
set -euo pipefail
cd "$(dirname "$0")/.."

# One compiler cache serves every clone, whatever folder it lies in.
export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1

for preset in "$@"; do
  echo "build: $preset"
  mkdir -p build
  log=build/$preset.log
  if ! { cmake --preset "$preset" && cmake --build --preset "$preset"; } >"$log" 2>&1; then
    tail -n 60 "$log"
    echo "build: $preset failed; the whole log is in $log" >&2
    exit 1
  fi
done
