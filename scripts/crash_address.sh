#!/usr/bin/env bash
# Says where in the source a crash of a Windows program lies. Windows reports "fault offset": the
# distance from the beginning of the program or library that is named with it.
#   scripts/crash_address.sh SYMBOLS OFFSET...     crash_address.sh symbols/UnTmz.dll.debug 0x1a2b
# SYMBOLS has to be of the very build that crashed.
set -euo pipefail
symbols=$1
shift
base=$(objdump -p "$symbols" | awk '$1 == "ImageBase" { print $2 }')
for offset; do
  addr2line --exe "$symbols" --functions --demangle --inlines \
    "$(printf '%x' $((16#$base + offset)))" | sed 's|^[^ ]*/\.\./||'
done
