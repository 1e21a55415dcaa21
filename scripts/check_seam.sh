#!/usr/bin/env bash
# Guards the house's plan: a room includes only rooms below it, and the systems, their macros and the
# libraries are met only in the rooms that may know them. Checks the tree of the given folder
# (default: this one); tests/seam_test.sh plants a fault of every kind.
set -euo pipefail
cd "${1:-$(dirname "$0")/..}"
failures=0

# From the ground up: each room and what it may include beside itself; what it names has to stand
# above it in this table. A room is a folder, or a single file with its header; a file belongs to the
# longest name that fits.
floors='
ports
sha256
signature
foundation                        ports
services                          ports foundation
packing                           ports foundation sha256
packages                          ports foundation services sha256
unzip                             ports foundation packages
companion                         ports/companion_abi foundation/encodings foundation/unique_handle sha256
jet/errors                        ports foundation
jet/values                        ports foundation jet/errors
jet/storage_sql                   ports foundation jet/values
jet/table_info                    ports foundation jet/errors jet/values jet/storage_sql
jet/sql                           ports foundation jet/errors jet/values jet/storage_sql jet/table_info
jet/file                          ports foundation jet/errors jet/values
jet/store                         ports foundation jet/errors jet/values jet/storage_sql jet/table_info jet/sql jet/file
jet/engine                        ports jet/errors jet/store
tools                             ports foundation services
transfer                          ports foundation services
database                          ports foundation services
platform                          ports
platform/linux/linux_texts        foundation
platform/linux/terminal_signals
platform/linux/qt                 ports foundation platform/linux/linux_texts platform/linux/terminal_signals
platform/linux/terminal           ports foundation platform/linux/linux_texts platform/linux/terminal_signals
platform/linux/database           ports jet/engine platform/factories
platform/linux                    ports foundation services platform/factories platform/linux
platform/windows/windows_headers
platform/windows/wide             foundation platform/windows/windows_headers
platform/windows/com              platform/windows/windows_headers platform/windows/wide
platform/windows/dao              ports foundation platform/windows/com platform/windows/wide
platform/windows/embedded_engine  ports jet/engine
platform/windows/database         ports platform/factories platform/windows/dao platform/windows/embedded_engine
platform/windows                  ports foundation services platform/factories platform/windows
product                           ports foundation services sha256 packages
engine                            ports foundation services sha256 signature transfer packages database product
publish                           ports foundation services sha256 signature transfer packages packing database tools
jetsql                            ports foundation services database tools jet/engine jet/file jet/values jet/store/field_properties jet/store/file_definitions
support                           ports foundation services sha256 packages database product tools
rollback                          ports foundation services sha256 unzip packages database product tools
ui                                ports foundation services engine
startup                           ports foundation services product
main                              ports foundation services ui startup
'

# Each header that is not of the standard library, and the rooms that may include it. What stands in
# no line is taken for a header of the system.
libraries='
curl/                platform/linux
libxml/              platform/linux
Q[A-Z]               platform/linux
systemd/             platform/linux
zlib.h               companion unzip
sqlite3.h            jet
sodium               signature
cxxopts.hpp          tools
nlohmann/            tools
(cpuid|immintrin).h  sha256
.                    platform/linux platform/windows companion/linux companion/windows
'

# expect_none WHAT <lines: every line on standard input is a fault.
expect_none() {
  local lines
  lines=$(cat)
  if [ -n "$lines" ]; then
    printf 'FAILED: %s\n%s\n' "$1" "$lines"
    failures=$((failures + 1))
  fi
}

# The C++ files of all rooms.
sources() {
  find src -type f \( -name '*.h' -o -name '*.cpp' \) | sort
}

# find_code PATTERN: lines of the files on standard input that match outside whole-line comments.
find_code() {
  xargs -r grep -nHE "$1" | grep -vE '^[^:]+:[0-9]+:[[:space:]]*//' || true
}

# faulty_includes: every #include that breaks one of the two tables, and every file without a room.
faulty_includes() {
  { sources; sources | find_code '^[[:space:]]*#[[:space:]]*include'; } |
    floors=$floors libraries=$libraries awk '
      function name_of(path) { sub(/^src\//, "", path); sub(/\.(h|cpp)$/, "", path); return path }
      # The longest room that a path lies in; empty when it lies in none.
      function room_of(path, name) {
        for (name = path; name != ""; ) {
          if (name in allowed) return name
          if (!sub(/\/[^\/]*$/, "", name)) name = ""
        }
        return ""
      }
      function is_in(path, place) {
        return path == place || index(path, place "/") == 1
      }
      function is_in_one_of(path, places, list, count, i) {
        count = split(places, list, " ")
        for (i = 1; i <= count; ++i) if (is_in(path, list[i])) return 1
        return 0
      }
      BEGIN {
        count = split(ENVIRON["floors"], lines, "\n")
        for (i = 1; i <= count; ++i) {
          room = lines[i]; sub(/ .*/, "", room)
          if (room == "") continue
          allowed[room] = substr(lines[i], length(room) + 1)
          below = split(allowed[room], list, " ")
          for (j = 1; j <= below; ++j) {
            if (room_of(list[j]) == "") print "the table: " room " stands below " list[j]
          }
        }
        kinds = split(ENVIRON["libraries"], kind, "\n")
      }
      !/:/ { if (room_of(name_of($0)) == "") print $0 ": lies in no room"; next }
      {
        file = name_of(substr($0, 1, index($0, ":") - 1)); room = room_of(file)
        if (match($0, /"[^"]*"/)) {
          included = name_of(substr($0, RSTART + 1, RLENGTH - 2))
          target = room_of(included)
          if (target == "" || (target != room && !is_in_one_of(included, allowed[room]))) print
        } else if (match($0, /<[^>]*>/)) {
          included = substr($0, RSTART + 1, RLENGTH - 2)
          if (included ~ /^[a-z_0-9]+$/) next
          for (i = 1; i <= kinds; ++i) {
            pattern = kind[i]; sub(/ .*/, "", pattern)
            if (pattern != "" && included ~ ("^" pattern)) break
          }
          if (!is_in_one_of(file, substr(kind[i], length(pattern) + 1))) print
        } else {
          print
        }
      }'
}

expect_none "an include leads to a room or library that its own room may not know" < <(
  faulty_includes)
expect_none "a system is known outside its rooms" < <(
  sources | grep -vE '^src/(platform|companion)/(linux|windows)/' |
    find_code '_WIN32|_WIN64|__MINGW|__linux__|__unix__|WINAPI|\b(HWND|DWORD|errno)\b')
expect_none "a library links the systems, which only programs and tests put in" < <(
  find src -name CMakeLists.txt | sort | find_code '\b(PUBLIC|PRIVATE)\b.*\bplatform\b')
expect_none "src/ports holds more than header files" < <(sources | grep '^src/ports/.*\.cpp$')
expect_none "a contractual ending is spelled outside its header" < <(
  sources | grep -v '/contract_names.h$' |
    find_code '"\.(part|packing|tmz|table|tablestruct)"')

if [ "$failures" -gt 0 ]; then exit 1; fi
echo "seam: $(sources | wc -l) files keep to their floors"
