#!/usr/bin/env bash
# Builds libsodium as a static library for Windows from Debian's source package, Debian's patches
# included.
#   build-libsodium-mingw.sh TRIPLET FOLDER   e.g. x86_64-w64-mingw32 build/windows-x64/libsodium
# FOLDER gets libsodium.a and include/. Sources are fetched once, into FOLDER/../../libsodium-source.
# Needs: patch, xz-utils and the MinGW-w64 compiler of the triplet. The package's own build would
# need the autotools; here the portable C of every function is compiled, without its variants for
# single processors.
set -euo pipefail
. "$(dirname "$0")/debian_source.sh"
triplet=$1
mkdir -p "$2"
folder=$(cd "$2" && pwd)
source_root=$(cd "$folder/../.." && pwd)/libsodium-source

prepare_source() {
  tar -xf ../libsodium_*.debian.tar.xz
  local name
  grep -v '^#' debian/patches/series | while read -r name; do
    [ -z "$name" ] || patch -s -p1 <"debian/patches/$name"
  done
  cp builds/msvc/version.h src/libsodium/include/sodium/
}
fetch_debian_source libsodium "$source_root"

if [ ! -f "$folder/libsodium.a" ] || [ "$source_root/done" -nt "$folder/libsodium.a" ]; then
  cd "$source_root/tree/src/libsodium"
  rm -rf "$folder/objects" "$folder/include"
  mkdir "$folder/objects"
  find . -name '*.c' | sort | while read -r file; do
    name=${file#./}
    printf '%s\0%s\0' "$file" "$folder/objects/${name//\//-}.o"
  done | xargs -0 -n 2 -P "$(nproc)" sh -c '"$0" -O2 -DSODIUM_STATIC -DCONFIGURED=1 \
    -DNATIVE_LITTLE_ENDIAN=1 -DTLS=_Thread_local -Iinclude/sodium -Iinclude -c "$1" -o "$2"' "$triplet-gcc-posix"
  rm -f "$folder/libsodium.a"
  "$triplet-ar" rcs "$folder/libsodium.a" "$folder"/objects/*.o
  mkdir "$folder/include"
  cp -r include/sodium.h include/sodium "$folder/include/"
  rm -rf "$folder/include/sodium/private" "$folder/objects"
fi
