#!/usr/bin/env bash
# Runs a Windows program under Wine with the settings that its tests rely on: a prefix of its own in
# the build folder, the Russian locale (so that the code pages are 1251 and 866), no debug output.
# Without a display no window can be made there and every box returns at once.
#
# TMW_WINE_LOCALE=C.UTF-8 (or another one of this machine) stands in for a system that is not Russian;
# such programs have a prefix of their own too.
#
# TMW_WINE_SCREEN=96 (or another number of dots per inch) gives the program a screen of that scale
# that nobody sees, and windows that are really drawn and clicked. Such programs share a second
# prefix and run one after another. TMW_WINE_DISPLAY=:N shows them on that display instead.
#
# TMW_WINE_COMPONENTS=LIBRARY gives the program a prefix of its own in which that library's components
# are registered: what the other programs find does not change.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
screen=${TMW_WINE_SCREEN:-}
components=${TMW_WINE_COMPONENTS:-}
export LC_ALL=${TMW_WINE_LOCALE:-ru_RU.UTF-8}
export WINEPREFIX="${TMW_WINEPREFIX:-$root/build/wine}${TMW_WINE_LOCALE:+-$TMW_WINE_LOCALE}${components:+-components}${screen:+-screen}"
export WINEDEBUG=-all WINEDLLOVERRIDES="mscoree=;mshtml="
unset DISPLAY
mkdir -p "$(dirname "$WINEPREFIX")"
if [ ! -f "$WINEPREFIX/.ready" ]; then
  (
    flock 9
    if [ ! -f "$WINEPREFIX/.ready" ]; then
      rm -rf "$WINEPREFIX"
      wineboot --init >/dev/null 2>&1 9>&-
      # Debian's Wine overlooks its own font of the signs on the title bar's buttons.
      cp /usr/share/wine/fonts/marlett.ttf "$WINEPREFIX/drive_c/windows/Fonts/" 2>/dev/null || true
      # Without this Wine waits two seconds at every window for a window manager to answer.
      wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null 2>&1 9>&-
      wineserver --wait
      touch "$WINEPREFIX/.ready"
    fi
  ) 9>"$WINEPREFIX.lock"
fi
# Registers the components if that has not been done; with the descriptor 9 closed in what it starts.
register_components() {
  [ -n "$components" ] && [ "$(cat "$WINEPREFIX/.components" 2>/dev/null)" != "$components" ] || return 0
  wine regsvr32 /s "$components" >/dev/null 2>&1 9>&- ||
    { echo "wine-run: $components cannot be registered" >&2; exit 1; }
  echo "$components" >"$WINEPREFIX/.components"
}

state=$(mktemp -d)
if [ -z "$screen" ]; then
  trap 'rm -rf "$state"' EXIT
  # Through a file: Wine's services, which the first program starts, keep what it writes to open
  # until the last one has ended, and whoever reads a pipe to its end would wait for them.
  : >"$state/output"
  wine "$@" >>"$state/output" 2>&1 <&0 &
  program=$!
  tail -c +1 -f -s 0.05 --pid=$program "$state/output"
  wait $program
  exit
fi

exec 9>"$WINEPREFIX.lock"
flock 9
server=
clean_up() {
  wineserver --kill 9>&- || true
  [ -z "$server" ] || kill "$server" 2>/dev/null || true
  rm -rf "$state"
}
trap clean_up EXIT
trap 'exit 143' INT TERM HUP
# Before there is a screen: it would end with this server, its last client.
if [ "$screen" != "$(cat "$WINEPREFIX/.dpi" 2>/dev/null || echo 96)" ]; then
  wine reg add 'HKCU\Control Panel\Desktop' /v LogPixels /t REG_DWORD /d "$screen" /f \
    >/dev/null 2>&1 9>&-
  wineserver --kill 9>&- || true
  wineserver --wait 9>&-
  echo "$screen" >"$WINEPREFIX/.dpi"
fi
DISPLAY=${TMW_WINE_DISPLAY:-}
if [ -z "$DISPLAY" ]; then
  # -displayfd: the server takes a free number itself. -terminate: it ends with its last client,
  # also when this script is killed.
  mkfifo "$state/number"
  Xvfb -displayfd 3 -screen 0 1920x1200x24 -dpi "$screen" -nolisten tcp -terminate \
    3>"$state/number" >/dev/null 2>&1 9>&- &
  server=$!
  read -r -t 20 number <"$state/number" || { echo "wine-run: no screen" >&2; exit 1; }
  DISPLAY=:$number
fi
export DISPLAY
register_components
# In the background: a signal to this script is heard while the program runs.
wine "$@" <&0 9>&- &
wait $!
