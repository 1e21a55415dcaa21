#!/usr/bin/env bash
# Runs a Windows program under Wine with the settings that its tests rely on: a prefix of its own in
# the build folder, the Russian locale (so that the code pages are 1251 and 866), no debug output.
# Without a display no window can be made there and every box returns at once. TMW_WINE_GRAPHICS=null
# chooses a second prefix, whose windows work but are drawn nowhere: boxes wait for an answer.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
graphics=${TMW_WINE_GRAPHICS:-}
export WINEPREFIX="${TMW_WINEPREFIX:-$root/build/wine}${graphics:+-$graphics}"
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree=;mshtml=" LC_ALL=ru_RU.UTF-8
mkdir -p "$(dirname "$WINEPREFIX")"
if [ ! -f "$WINEPREFIX/.ready" ]; then
  (
    flock 9
    if [ ! -f "$WINEPREFIX/.ready" ]; then
      rm -rf "$WINEPREFIX"
      wineboot --init >/dev/null 2>&1
      if [ -n "$graphics" ]; then
        wine reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d "$graphics" /f >/dev/null 2>&1
      fi
      wineserver --wait
      touch "$WINEPREFIX/.ready"
    fi
  ) 9>"$WINEPREFIX.lock"
fi
exec wine "$@"
