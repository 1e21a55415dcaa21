#!/usr/bin/env bash
# Reading, compacting and opening a genuine database file of 200,000 rows, beside mdb-export and cp
# (with sync) of the same file. Prints times (the best of three rounds, taken in turn), ratios and memory, and
# fails when a bound is exceeded.
#   jet_file.sh [BUILD FOLDER] [ROWS]     (a build with TMW_BUILD_BENCH=ON)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build/linux-release}
rows=${2:-200000}
jetsql=$build/bin/jetsql
bench=$build/bin/jet_file
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

{ printf '\xEF\xBB\xBF'; awk -v rows="$rows" -f "$root/bench/documents.awk"; } >Документы.table
"$jetsql" create big.mdb
"$jetsql" import big.mdb Документы.table
"$jetsql" create many.mdb
for i in $(seq 1 200); do echo "create table Таблица$i (Ид counter primary key, Имя text(40));"; done |
  "$jetsql" run many.mdb >/dev/null
sync

seconds() { # PROGRAM...: its wall time
  local start=$EPOCHREALTIME
  "$@" >/dev/null
  echo "$start $EPOCHREALTIME" | awk '{ printf "%.4f\n", $2 - $1 }'
}
least() { awk 'NR == 1 || $1 < m { m = $1 } END { printf "%.4f", m }' "$1"; }
for _ in 1 2 3; do
  "$bench" read big.mdb >>read.times
  seconds mdb-export big.mdb Документы >>export.times
  rm -f copy.mdb
  # A compacted copy is on the disk itself when it has its name.
  seconds sh -c 'cp big.mdb copy.mdb && sync copy.mdb' >>cp.times
  rm -f compact.mdb
  "$bench" compact big.mdb compact.mdb >>compact.times
  "$bench" list many.mdb >>list.times
done

peak=$(cat read.times compact.times | awk '$2 > m { m = $2 } END { print m }')
awk -v size="$(stat -c %s big.mdb)" -v read="$(least read.times)" -v export="$(least export.times)" \
  -v cp="$(least cp.times)" -v compact="$(least compact.times)" -v list="$(least list.times)" \
  -v peak="$peak" 'BEGIN {
    printf "file: %d MiB, peak of memory %d MiB (bound 128)\n", size / 1048576, peak
    printf "read every value: %.3f s, mdb-export %.3f s, ratio %.2f (bound 1.2)\n", read, export, read / export
    floor = 2 * cp + export
    printf "compact: %.3f s, twice cp and mdb-export %.3f s, ratio %.2f (bound 1); with our reading %.2f\n",
      compact, floor, compact / floor, compact / (2 * cp + read)
    printf "open and list 200 tables: %.1f ms (bound 10)\n", list * 1000
    exit !(peak < 128 && read <= 1.2 * export && list < 0.010 && compact <= floor)
  }'
