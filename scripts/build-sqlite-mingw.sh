#!/usr/bin/env bash
# Builds SQLite as a static library for Windows from Debian's source package.
#   build-sqlite-mingw.sh TRIPLET FOLDER      e.g. x86_64-w64-mingw32 build/windows-x64/sqlite
# FOLDER gets libsqlite3.a, sqlite3.h. Sources are fetched once, into FOLDER/../../sqlite-source.
# Needs: gcc, make, tclsh, xz-utils and the MinGW-w64 compiler of the triplet.
set -euo pipefail
. "$(dirname "$0")/debian_source.sh"
triplet=$1
mkdir -p "$2"
folder=$(cd "$2" && pwd)
source_root=$(cd "$folder/../.." && pwd)/sqlite-source

prepare_source() {
  ./configure --disable-tcl --disable-readline >configure.log
  make -s sqlite3.c >make.log
}
fetch_debian_source sqlite3 "$source_root"

if [ ! -f "$folder/libsqlite3.a" ] || [ "$source_root/tree/sqlite3.c" -nt "$folder/libsqlite3.a" ]; then
  cp "$source_root/tree/sqlite3.h" "$folder/"
  "$triplet-gcc-posix" -O2 -DSQLITE_THREADSAFE=1 -DSQLITE_DQS=0 -DSQLITE_OMIT_LOAD_EXTENSION \
    -DSQLITE_DEFAULT_MEMSTATUS=0 \
    -c "$source_root/tree/sqlite3.c" -o "$folder/sqlite3.o"
  "$triplet-ar" rcs "$folder/libsqlite3.a" "$folder/sqlite3.o"
fi
