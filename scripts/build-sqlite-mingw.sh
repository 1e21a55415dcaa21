#!/usr/bin/env bash
# Builds SQLite as a static library for Windows from Debian's source package.
#   build-sqlite-mingw.sh TRIPLET FOLDER      e.g. x86_64-w64-mingw32 build/windows-x64/sqlite
# FOLDER gets libsqlite3.a, sqlite3.h. Sources are fetched once, into FOLDER/../../sqlite-source,
# with package lists of the script's own: the system's configuration is left alone.
# Needs: gcc, make, tclsh, xz-utils and the MinGW-w64 compiler of the triplet.
set -euo pipefail
triplet=$1
mkdir -p "$2"
folder=$(cd "$2" && pwd)
source_root=$(cd "$folder/../.." && pwd)/sqlite-source
mkdir -p "$source_root"

fetch() {
  local apt=$source_root/apt
  mkdir -p "$apt/lists/partial" "$apt/parts"
  if [ -f /etc/apt/sources.list.d/debian.sources ]; then
    sed 's/^Types:.*/Types: deb-src/' /etc/apt/sources.list.d/debian.sources >"$apt/parts/src.sources"
  else
    sed -n 's/^deb /deb-src /p' /etc/apt/sources.list >"$apt/parts/src.list"
  fi
  local options=(-qq -o Dir::Etc::sourcelist=/dev/null -o "Dir::Etc::sourceparts=$apt/parts"
    -o "Dir::State::lists=$apt/lists" -o Dir::Cache::pkgcache= -o Dir::Cache::srcpkgcache=
    -o APT::Sandbox::User=root)
  apt-get "${options[@]}" update
  (cd "$source_root" && apt-get "${options[@]}" --download-only source sqlite3)
  mkdir -p "$source_root/tree"
  tar -xf "$source_root"/sqlite3_*.orig.tar.xz -C "$source_root/tree" --strip-components=1
  (cd "$source_root/tree" && ./configure --disable-tcl --disable-readline >configure.log &&
    make -s sqlite3.c >make.log)
}

(
  flock 9
  [ -f "$source_root/tree/sqlite3.c" ] || fetch
) 9>"$source_root/lock"

if [ ! -f "$folder/libsqlite3.a" ] || [ "$source_root/tree/sqlite3.c" -nt "$folder/libsqlite3.a" ]; then
  cp "$source_root/tree/sqlite3.h" "$folder/"
  "$triplet-gcc-posix" -O2 -DSQLITE_THREADSAFE=1 -DSQLITE_DQS=0 -DSQLITE_OMIT_LOAD_EXTENSION \
    -DSQLITE_DEFAULT_MEMSTATUS=0 \
    -c "$source_root/tree/sqlite3.c" -o "$folder/sqlite3.o"
  "$triplet-ar" rcs "$folder/libsqlite3.a" "$folder/sqlite3.o"
fi
