#!/usr/bin/env bash
# Takes screenshots of every window of Windows, under Wine, into docs/screenshots/win32-<window>.png,
# and of one of them at 200 %. Fails on an empty picture, on a window that changes its size from one
# kind of work to the next, and on a 200 % that is not twice the size.
#   screenshots_win32.sh [BUILD FOLDER of Windows]
set -euo pipefail
cd "$(dirname "$0")/.."
program=$(realpath "${1:-build/windows-x64}")/tests/show_windows.exe
pictures=$PWD/docs/screenshots
scratch=$(mktemp -d)
server= shown=
mkdir -p "$pictures"

finish() {
  for process in "$shown" "$server"; do
    [ -z "$process" ] || kill "$process" 2>/dev/null || true
  done
  rm -rf "$scratch"
}
trap finish EXIT

fail() {
  echo "screenshots: $*" >&2
  exit 1
}

# grab FILE: what stands out from the black screen; false while nothing does.
grab() {
  import -silent -window root "$scratch/screen.png"
  [ "$(identify -format %k "$scratch/screen.png")" -ge 64 ] || return 1
  convert "$scratch/screen.png" -fuzz 1% -trim +repage "$1"
}

# take NAME DPI WINDOW: the window once it has not changed for two seconds.
take() {
  local before= now= same=0 width height
  TMW_WINE_SCREEN=$2 TMW_WINE_DISPLAY=$DISPLAY scripts/wine-run.sh "$program" "$3" \
    >"$scratch/log" 2>&1 &
  shown=$!
  for _ in $(seq 120); do
    sleep 0.5
    kill -0 "$shown" 2>/dev/null || fail "$1 ended: $(cat "$scratch/log")"
    grab "$scratch/new.png" || continue
    now=$(identify -format '%#' "$scratch/new.png")
    if [ "$now" = "$before" ]; then same=$((same + 1)); else same=0; fi
    [ "$same" -lt 4 ] || break
    before=$now
  done
  [ "$same" -ge 4 ] || fail "$1: nothing is seen, or it never comes to rest"
  kill "$shown"
  wait "$shown" 2>/dev/null || true
  shown=
  read -r width height < <(identify -format '%w %h\n' "$scratch/new.png")
  [ "$width" -ge 300 ] && [ "$height" -ge 100 ] && [ "$width" -le 1500 ] && [ "$height" -le 1100 ] ||
    fail "$1 is ${width}x$height"
  convert "$scratch/new.png" -strip -colors 256 -define png:compression-level=9 "$pictures/$1.png"
  echo "$1: ${width}x$height, $(stat -c %s "$pictures/$1.png") bytes"
}

[ -x "$program" ] || fail "$program has not been built"
mkfifo "$scratch/number"
Xvfb -displayfd 3 -screen 0 1920x1200x24 -nolisten tcp 3>"$scratch/number" 2>/dev/null &
server=$!
read -r -t 20 number <"$scratch/number" || fail "no screen"
export DISPLAY=:$number

states=()
for name in $(scripts/wine-run.sh "$program" | tr -d '\r'); do
  take "win32-$name" 96 "$name"
  case $name in
    question | error-*) ;;
    *) states+=("$pictures/win32-$name.png") ;;
  esac
done
sizes=$(identify -format '%wx%h\n' "${states[@]}" | sort -u | wc -l)
[ "$sizes" -eq 1 ] || fail "the window changes its size from one kind of work to the next"
twins=$(identify -format '%# %f\n' "$pictures"/win32-*.png | sort | uniq -w 64 -D)
[ -z "$twins" ] || fail "the same picture twice: $twins"

take win32-download-200 192 download
read -r width height < <(identify -format '%w %h\n' "$pictures/win32-download.png")
read -r width_200 height_200 < <(identify -format '%w %h\n' "$pictures/win32-download-200.png")
# The frame grows less than the window.
[ $((2 * width - width_200)) -ge 0 ] && [ $((2 * width - width_200)) -le 30 ] &&
  [ $((2 * height - height_200)) -ge 0 ] && [ $((2 * height - height_200)) -le 60 ] ||
  fail "200 % is ${width_200}x$height_200, not twice ${width}x$height"
