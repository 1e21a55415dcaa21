#!/usr/bin/env bash
# Takes screenshots of every window into docs/screenshots/<front end>-<window>.png, and of one of
# them at 200 %. Fails on an empty picture, on a window that changes its size from one kind of work
# to the next, and on a 200 % that is not twice the size.
#   screenshots.sh [BUILD FOLDER of Linux [BUILD FOLDER of Windows, shown under Wine]]
set -euo pipefail
cd "$(dirname "$0")/.."
linux=$(realpath "${1:-build/linux-debug}")/tests/show_windows
windows=$(realpath "${2:-build/windows-x64}")/tests/show_windows.exe
pictures=$PWD/docs/screenshots
limit=60000 # bytes a picture may have
scratch=$(mktemp -d)
calm=0.25 # seconds between two looks that must be the same
server= manager= shown=
mkdir -p "$pictures"

finish() {
  for process in "$shown" "$manager" "$server"; do
    [ -z "$process" ] || kill "$process" 2>/dev/null || true
  done
  rm -rf "$scratch"
}
trap finish EXIT

fail() {
  echo "screenshots: $*" >&2
  exit 1
}

# start_screen: a screen of its own with a window manager, so that windows have frames.
start_screen() {
  mkfifo "$scratch/number"
  Xvfb -displayfd 3 -screen 0 1920x1200x24 -wr -nolisten tcp 3>"$scratch/number" 2>"$scratch/xvfb.log" &
  server=$!
  read -r -t 20 number <"$scratch/number" || fail "no screen: $(cat "$scratch/xvfb.log")"
  export DISPLAY=:$number
  unset WAYLAND_DISPLAY QT_QPA_PLATFORM TMW_FRONT_END
  openbox --sm-disable --startup "touch $scratch/managed" >"$scratch/manager.log" 2>&1 &
  manager=$!
  for _ in $(seq 100); do
    [ ! -e "$scratch/managed" ] || return 0
    sleep 0.1
  done
  fail "no window manager: $(cat "$scratch/manager.log")"
}

# grab FILE: what stands out from the background of the screen; false while nothing does.
grab() {
  import -silent -window root "$scratch/screen.png"
  [ "$(identify -format %k "$scratch/screen.png")" -gt 1 ] || return 1
  convert "$scratch/screen.png" -fuzz 1% -trim +repage "$1"
}

# take NAME COMMAND...: starts the command and takes its windows once they no longer change.
take() {
  local name=$1 before= now= same=0
  shift
  "$@" 2>"$scratch/program.log" &
  shown=$!
  for _ in $(seq 120); do
    sleep "$calm"
    kill -0 "$shown" 2>/dev/null || fail "$name ended: $(cat "$scratch/program.log")"
    grab "$scratch/new.png" || continue
    now=$(identify -format '%#' "$scratch/new.png")
    if [ "$now" = "$before" ]; then same=$((same + 1)); else same=0; fi
    [ "$same" -lt 2 ] || break
    before=$now
  done
  [ "$same" -ge 2 ] || fail "$name: nothing is seen, or it never comes to rest"
  kill "$shown"
  wait "$shown" 2>/dev/null || true
  shown=
  check "$name" "$scratch/new.png"
  convert "$scratch/new.png" -strip +dither -colors 256 -define png:compression-level=9 \
    "$pictures/$name.png"
  local bytes
  bytes=$(stat -c %s "$pictures/$name.png")
  [ "$bytes" -le "$limit" ] || fail "$name has $bytes bytes"
  echo "$name: $(size "$pictures/$name.png"), $bytes bytes"
}

size() {
  identify -format '%wx%h' "$1"
}

# check NAME FILE: a window has many colours and a sensible size.
check() {
  local colours width height
  read -r colours width height < <(identify -format '%k %w %h\n' "$2")
  [ "$colours" -ge 16 ] || fail "$1 is empty: $colours colours"
  [ "$width" -ge 300 ] && [ "$height" -ge 100 ] && [ "$width" -le 1500 ] && [ "$height" -le 1100 ] ||
    fail "$1 is ${width}x$height"
}

# expect_same_size FILES...
expect_same_size() {
  local sizes
  sizes=$(for file; do size "$file"; echo; done | sort -u | wc -l)
  [ "$sizes" -eq 1 ] || fail "the window changes its size: $*"
}

# expect_different FRONT_END: no two of its windows look the same.
expect_different() {
  local twins
  twins=$(identify -format '%# %f\n' "$pictures/$1"-*.png | sort | uniq -w 64 -D)
  [ -z "$twins" ] || fail "the same picture twice: $twins"
}

# take_all FRONT_END COMMAND...: every window that the command lists.
take_all() {
  local front_end=$1 name states=()
  shift
  for name in $("$@" | tr -d '\r'); do
    take "$front_end-$name" "$@" "$name"
    case $name in
      question | message | error-* | rollback-*) ;;
      *) states+=("$pictures/$front_end-$name.png") ;;
    esac
  done
  expect_same_size "${states[@]}"
  expect_different "$front_end"
}

# expect_twice NAME NAME_AT_200: the frame around a window does not grow, the window does.
expect_twice() {
  local width height width_at_200 height_at_200
  read -r width height < <(identify -format '%w %h\n' "$pictures/$1.png")
  read -r width_at_200 height_at_200 < <(identify -format '%w %h\n' "$pictures/$2.png")
  [ $((2 * width - width_at_200)) -ge 0 ] && [ $((2 * width - width_at_200)) -le 30 ] &&
    [ $((2 * height - height_at_200)) -ge 0 ] && [ $((2 * height - height_at_200)) -le 60 ] ||
    fail "$2 is ${width_at_200}x$height_at_200, not twice ${width}x$height"
}

# wine DPI ARGUMENTS...: the program of Windows on this screen. Replaces this shell where it is asked
# for its windows, so that ending it ends the program.
wine() {
  local dpi=$1
  shift
  TMW_WINE_SCREEN=$dpi TMW_WINE_DISPLAY=$DISPLAY exec scripts/wine-run.sh "$windows" "$@"
}
wine_96() { wine 96 "$@"; }
wine_192() { wine 192 "$@"; }

start_screen
[ -x "$linux" ] || fail "$linux has not been built"
take_all qt "$linux"
QT_SCALE_FACTOR=2 take qt-download-200 "$linux" download
expect_twice qt-download qt-download-200
[ -e "$windows" ] || fail "$windows has not been built"
calm=1
take_all win32 wine_96
take win32-download-200 wine_192 download
expect_twice win32-download win32-download-200
