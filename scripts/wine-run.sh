#!/usr/bin/env bash
# Runs a Windows program under Wine with the settings that its tests rely on: a prefix of its own in
# the build folder, the Russian locale (so that the code pages are 1251 and 866), no debug output.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
export WINEPREFIX="${TMW_WINEPREFIX:-$root/build/wine}"
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree=;mshtml=" LC_ALL=ru_RU.UTF-8
mkdir -p "$(dirname "$WINEPREFIX")"
if [ ! -f "$WINEPREFIX/.ready" ]; then
  (
    flock 9
    if [ ! -f "$WINEPREFIX/.ready" ]; then
      rm -rf "$WINEPREFIX"
      wineboot --init >/dev/null 2>&1
      wineserver --wait
      touch "$WINEPREFIX/.ready"
    fi
  ) 9>"$WINEPREFIX.lock"
fi
exec wine "$@"
