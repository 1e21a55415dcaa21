#!/usr/bin/env bash
# Configures and builds the given presets, quietly unless something fails; with TMW_TARGETS only those
# targets of them:
#   scripts/build.sh linux-debug windows-x64
#   TMW_TARGETS="tmpublish companion" scripts/build.sh linux-release
set -euo pipefail
cd "$(dirname "$0")/.."

# One compiler cache serves every clone, whatever folder it lies in.
export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
read -ra targets <<<"${TMW_TARGETS:-all}"

for preset in "$@"; do
  echo "build: $preset"
  mkdir -p build
  log=build/$preset.log
  if ! { cmake --preset "$preset" && cmake --build --preset "$preset" -t "${targets[@]}"; } >"$log" 2>&1; then
    tail -n 60 "$log"
    echo "build: $preset failed; the whole log is in $log" >&2
    exit 1
  fi
done
