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
  sources_of . | grep -vE '^src/\.?/?(platform/(linux|windows)|companion)/|ports/companion_abi.h$' |
    find_code "$systems|$system_headers")
expect_none "a library is known outside its folders" < <(
  sources_of . | grep -vE '^src/\.?/?(platform/(linux|windows)|companion|jet)/' |
    find_code "$libraries")
expect_none "the database engine knows more than SQLite" < <(
  sources_of jet | find_code '#include <(curl/|libxml/|Q[A-Z]|zlib)')
expect_none "the companion library knows more than zlib" < <(
  sources_of companion | find_code '#include <(curl/|libxml/|Q[A-Z]|sqlite3)')
expect_none "src/ports holds more than header files" < <(find src/ports -name '*.cpp')
expect_none "the systems are included from outside their wing" < <(
  sources_of . | grep -vE '^src/\.?/?platform/' | find_code '#include "platform/')
expect_none "one system includes the other" < <(
  sources_of platform/linux | find_code '#include "platform/windows/'
  sources_of platform/windows | find_code '#include "platform/linux/')
expect_none "a contractual ending is spelled outside its header" < <(
  sources_of . | grep -v contract_names.h | find_code '"\.(part|packing|tmz|table|tablestruct)"')

# floor ROOM ALLOWED [FIND OPTIONS]: a room's includes name itself and what lies below it.
floor() {
  expect_none "src/$1 includes a room that is not below it" < <(
    sources_of "$1" "${@:3}" | find_code '#include "[a-z_]+/' |
      grep -vE "#include \"($1${2:+|$2})[/.]" || true)
}
# From the ground up.
floor ports ''
floor sha256 ''
floor foundation 'ports|sha256'
ground='ports|sha256|foundation'
floor services "$ground"
services="$ground|services"
floor companion 'ports/companion_abi|foundation|sha256'
floor packing "$ground"
floor packages "$services"
floor jet "$ground"
expect_none "what jet's rooms share includes one of them" < <(
  sources_of jet -maxdepth 1 | find_code '#include "jet/(sql|file|store)/')
floor jet/values "$ground|jet/errors"
jet_ground="$ground|jet/(errors|values|table_info)"
floor jet/sql "$jet_ground"
floor jet/file "$ground|jet/(errors|values)"
floor jet/store "$jet_ground|jet/(sql|file|engine)"
floor transfer "$services"
floor database "$services"
floor platform "$ground|jet/engine"
expect_none "jet is included outside the factory of the database port" < <(
  sources_of . | grep -vE '^src/\.?/?(jet/|platform/(linux|windows)/database\.cpp$)' |
    find_code '#include "jet/')
floor engine "$services|transfer|packages|database"
floor publish "$ground|packing|packages|database|transfer"
floor jetsql "$ground|database"
floor ui "$services|transfer|packages|database|engine"
floor startup "$services"

if [ "$failures" -gt 0 ]; then exit 1; fi
echo "seam: $(sources_of . | wc -l) files keep to their floors"
