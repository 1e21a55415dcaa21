#!/usr/bin/env bash
# Builds out of a source archive in another folder: the updater for Linux, which has to start, and the
# companion library for Windows, which has to be the same bytes as the one built here. The whole of a
# release is compared by "scripts/release.sh --twice".
#   scripts/check_source.sh BUILD_FOLDER_OF_WINDOWS
set -euo pipefail
build=$(realpath "$1")
cd "$(dirname "$0")/.."
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() {
  echo "FAILED: $*" >&2
  exit 1
}
# What git knows, as it stands in this folder.
git ls-files -z | xargs -0 tar -cf - --transform 's|^|tmwebupdate/|' 2>/dev/null | tar -xf - -C "$scratch"
source=$scratch/tmwebupdate
quietly() {
  "$@" >"$scratch/log" 2>&1 || { tail -n 40 "$scratch/log"; fail "$1 $2"; }
}

(
  cd "$source"
  export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
  quietly cmake --preset linux-debug -DTMW_BUILD_TESTS=OFF
  quietly cmake --build --preset linux-debug -t TmWebUpdate companion
  build/linux-debug/bin/TmWebUpdate --version
)
preset=$(basename "$build")
mkdir -p "$source/build/$preset"
# Libraries from Debian's source packages, which are not part of the archive.
cp -a "$build/sqlite" "$build/libsodium" "$source/build/$preset/"
(
  cd "$source"
  export CCACHE_DISABLE=1 # what the cache has would be the same anyway
  quietly cmake --preset "$preset" -DTMW_BUILD_TESTS=OFF
  quietly cmake --build --preset "$preset" -t companion
)
# The link to the symbols holds their checksum: they name the compiled files as the cache calls them.
for folder in "$build" "$source/build/$preset"; do
  SOURCE_DATE_EPOCH=0 i686-w64-mingw32-objcopy --remove-section .gnu_debuglink \
    "$folder/bin/UnTmz.dll" "$scratch/$(sha256sum <<<"$folder" | head -c 8).dll"
done
cmp "$scratch"/*.dll || fail "UnTmz.dll is another one in another folder"
echo "source: builds in another folder, and the same library"
