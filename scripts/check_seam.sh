#!/usr/bin/env bash
# Guards the house's plan: a platform, its headers, macros and libraries are met only in the folders
# that may know them, and a room includes only rooms below it. Checks the tree of the given folder
# (default: this one).
set -euo pipefail
cd "${1:-$(dirname "$0")/..}"
failures=0

# expect_none WHAT <lines: every line on standard input is a fault.
expect_none() {
  local lines
  lines=$(cat)
  if [ -n "$lines" ]; then
    printf 'FAILED: %s\n%s\n' "$1" "$lines"
    failures=$((failures + 1))
  fi
}

# sources_of ROOM [FIND OPTIONS]: the C++ files of a room; "." is all of src.
sources_of() {
  [ -d "src/$1" ] || return 0
  find "src/$1" "${@:2}" -type f \( -name '*.h' -o -name '*.cpp' \) | sort
}

# find_code PATTERN: lines of the files on standard input that match outside whole-line comments.
find_code() {
  xargs -r grep -nHE "$1" | grep -vE '^[^:]+:[0-9]+:[[:space:]]*//' || true
}

systems='_WIN32|_WIN64|__MINGW|__linux__|__unix__|WINAPI|\bHWND\b|\bDWORD\b|\berrno\b'
system_headers='#include <(windows|wininet|winsock|shellapi|ole|oaidl|msxml|commctrl|sys/|unistd|fcntl|spawn|dirent|poll|pwd|dlfcn|iconv|termios|netinet/|arpa/)'
libraries='#include <(curl/|sqlite3|libxml/|Q[A-Z]|zlib)'

expect_none "a system is known outside its folders" < <(
  sources_of . | grep -vE '^src/\.?/?(platform/(linux|windows)|companion)/' |
    find_code "$systems|$system_headers")
expect_none "a library is known outside its folders" < <(
  sources_of . | grep -vE '^src/\.?/?(platform/(linux|windows)|companion|jet)/' |
    find_code "$libraries")
expect_none "the database engine knows more than SQLite" < <(
  sources_of jet | find_code '#include <(curl/|libxml/|Q[A-Z]|zlib)')
expect_none "the companion library knows more than zlib" < <(
  sources_of companion | find_code '#include <(curl/|libxml/|Q[A-Z]|sqlite3)')
expect_none "src/platform itself holds header files only" < <(
  find src/platform -maxdepth 1 -name '*.cpp')
expect_none "an implementation of a port is included from outside its folder" < <(
  sources_of . | grep -vE '^src/\.?/?platform/(linux|windows)/' |
    find_code '#include "platform/(linux|windows)/')
expect_none "a contractual ending is spelled outside its header" < <(
  sources_of . | grep -v contract_names.h | find_code '"\.(part|packing|tmz|table|tablestruct)"')

# floor ROOM ALLOWED [FIND OPTIONS]: a room's includes name itself and what lies below it.
floor() {
  expect_none "src/$1 includes a room that is not below it" < <(
    sources_of "$1" "${@:3}" | find_code '#include "[a-z_]+/' |
      grep -vE "#include \"($1|$2)[/.]" || true)
}
ground='platform|foundation'
services="$ground|startup/services"
floor foundation platform
floor platform 'foundation|companion/abi' -maxdepth 1 # the interface that both sides speak
floor startup/services "$ground"
floor transfer "$services"
floor packages "$services"
floor database "$services"
floor engine "$services|transfer|packages|database"
floor ui "$services|transfer|packages|database|engine"
floor jet "$ground"
floor jetsql "$ground|database"
floor companion 'foundation/encodings|packages/sha256' # the files named so
floor publish "$ground|packages|database|transfer"

if [ "$failures" -gt 0 ]; then exit 1; fi
echo "seam: $(sources_of . | wc -l) files keep to their floors"
