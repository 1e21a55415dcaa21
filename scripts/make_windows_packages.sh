#!/usr/bin/env bash
# Makes of a Windows build what is handed out: TmWebUpdate-<version>-<win32|win64>.zip with the
# programs, -symbols.zip with what crash_address.sh reads, and -setup.exe, the installer.
#   scripts/make_windows_packages.sh BUILD_FOLDER OUTPUT_FOLDER
# The same build gives the same bytes. TMW_SIGN names a program that signs the file it is given.
set -euo pipefail
build=$(realpath "$1")
mkdir -p "$2"
output=$(realpath "$2")
cd "$(dirname "$0")/.."
sign=${TMW_SIGN:+$(realpath "$TMW_SIGN")}
version=$(sed -nE 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
IFS=. read -r major minor patch <<<"$version"
kind=win32 target=()
if grep -q 'toolchain-mingw-x64' "$build/CMakeCache.txt"; then kind=win64 target=(-DWIN64); fi
name=TmWebUpdate-$version-$kind
export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct 2>/dev/null || echo 1700000000)}
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# zip_folder FOLDER FILE: everything below the folder, in order, all of it as old as the release.
zip_folder() {
  python3 - "$1" "$2" "$SOURCE_DATE_EPOCH" <<'END'
import pathlib, sys, time, zipfile
folder, file, epoch = pathlib.Path(sys.argv[1]), sys.argv[2], int(sys.argv[3])
with zipfile.ZipFile(file, "w", zipfile.ZIP_DEFLATED) as archive:
    for path in sorted(folder.rglob("*"), key=lambda path: path.relative_to(folder).as_posix()):
        if path.is_file():
            entry = zipfile.ZipInfo(path.relative_to(folder).as_posix(), time.gmtime(epoch)[:6])
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.external_attr = 0o644 << 16
            archive.writestr(entry, path.read_bytes())
END
}

all=$scratch/all/$name users=$scratch/users
for component in update publish; do
  cmake --install "$build" --prefix "$all" --component $component >/dev/null
done
cmake --install "$build" --prefix "$users" --component update >/dev/null
if [ -n "$sign" ]; then
  for file in "$all"/*.exe "$all"/*.dll; do
    "$sign" "$file"
    [ ! -e "$users/${file##*/}" ] || cp "$file" "$users/"
  done
fi
rm -f "$output/$name"*
zip_folder "$scratch/all" "$output/$name.zip"
zip_folder "$build/symbols" "$output/$name-symbols.zip"

# What the uninstaller removes: the files by name, then the folders from below.
(
  cd "$users"
  find . -type f -printf '%P\n' | sort | sed 's|/|\\|g; s|.*|Delete "$INSTDIR\\&"|'
  find . -mindepth 1 -type d -printf '%P\n' | sort -r | sed 's|/|\\|g; s|.*|RMDir "$INSTDIR\\&"|'
) >"$scratch/removals.nsh"
makensis -V2 -INPUTCHARSET UTF8 -DVERSION="$version" -DNUMBERS="$major.$minor.0.$patch" \
  -DSTAGE="$users" -DREMOVALS="$scratch/removals.nsh" -DICON="$build/pictures/program.ico" \
  -DSIZE="$(du -sk --apparent-size "$users" | cut -f 1)" -DOUTPUT="$output/$name-setup.exe" \
  ${target[@]+"${target[@]}"} ${sign:+-DSIGN="$sign"} packaging/windows/installer.nsi
[ -z "$sign" ] || "$sign" "$output/$name-setup.exe"
echo "made $name: $(cd "$output" && stat -c '%n %s' "$name"* | paste -sd ',' | sed 's/,/, /g')"
