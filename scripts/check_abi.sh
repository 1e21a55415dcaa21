#!/usr/bin/env bash
# Inspects the 32-bit Windows programs, which are linked but cannot be run here: machine type, no
# run-time library of the compiler beside the system's own, no entry point newer than Windows 7.
#   scripts/check_abi.sh BUILD_FOLDER
set -euo pipefail
folder=$1
objdump=i686-w64-mingw32-objdump
failures=0

fail() {
  echo "FAILED: $1"
  failures=$((failures + 1))
}

checked=0
for program in "$folder"/bin/*.exe "$folder"/bin/*.dll; do
  [ -e "$program" ] || continue
  checked=$((checked + 1))
  name=$(basename "$program")
  headers=$($objdump -p "$program")
  grep -q 'pei-i386' <<<"$headers" || fail "$name is not a 32-bit Windows program"
  # What the compiler brings (libstdc++, libgcc, winpthread, zlib) must be linked in.
  foreign=$(sed -n 's/.*DLL Name: //p' <<<"$headers" |
    grep -iE '^(libstdc|libgcc|libwinpthread|zlib|libz)' || true)
  [ -z "$foreign" ] || fail "$name needs $foreign"
  subsystem=$(sed -n 's/^MajorSubsystemVersion[[:space:]]*//p' <<<"$headers")
  [ "$subsystem" -le 6 ] || fail "$name asks for subsystem version $subsystem"
  [ "$name" != UnTmz.dll ] || "$(dirname "$0")/check_exports.sh" "$program" ||
    fail "$name does not export the published names"
  echo "$name: 32-bit, imports $(grep -c 'DLL Name' <<<"$headers") libraries"
done
[ "$checked" -gt 0 ] || fail "no program found in $folder/bin"
exit $((failures > 0))
