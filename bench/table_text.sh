#!/usr/bin/env bash
# Table texts against the storage's own shell, side by side in one run: a table of 200,000 rows of
# 13 fields is exported against "sqlite3 .dump" and imported against "sqlite3 .import" of the same
# data with the same indexes. Prints wall times (the best of three) and their ratios.
#   table_text.sh [BUILD FOLDER] [ROWS]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build/linux-release}
rows=${2:-200000}
jetsql=$build/bin/jetsql
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# best COMMAND...: wall milliseconds of the fastest of three runs.
best() {
  local least=999999999 start end
  for _ in 1 2 3; do
    start=$(date +%s%N)
    "$@"
    end=$(date +%s%N)
    if [ $(((end - start) / 1000000)) -lt "$least" ]; then least=$(((end - start) / 1000000)); fi
  done
  echo "$least"
}

awk -v rows="$rows" -f "$root/bench/documents.awk" >utf8.txt
{ printf '\xEF\xBB\xBF'; cat utf8.txt; } >Документы.table

run_import() {
  rm -f db.mdb
  "$jetsql" create db.mdb
  "$jetsql" import db.mdb Документы.table
}
run_export() { "$jetsql" export --utf8 db.mdb Документы out.txt; }

# The same values as plain columns.
tr -d '\r' <utf8.txt | awk '/^Rows$/ {on = 1; next} /^EndRows$/ {on = 0} on' >rows.txt
structure="create table d(a integer not null, b text, c text, d numeric, e real, f real, g integer,
  h integer, i integer, j real, k text, l real, m integer);
  create unique index p on d(a); create index n on d(b);"
run_sqlite_import() {
  rm -f plain.db
  sqlite3 plain.db "$structure" ".mode list" ".separator |" ".import rows.txt d"
}
run_sqlite_dump() { sqlite3 plain.db .dump >dump.txt; }

import=$(best run_import)
sqlite_import=$(best run_sqlite_import)
export_=$(best run_export)
sqlite_dump=$(best run_sqlite_dump)
cmp -s out.txt Документы.table || { echo "the exported text differs from the imported one" >&2; exit 1; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'; }
echo "rows: $rows, text: $(stat -c %s out.txt) bytes"
echo "export: $export_ ms, sqlite3 .dump: $sqlite_dump ms, ratio $(ratio "$export_" "$sqlite_dump") (at most 1.5)"
echo "import: $import ms, sqlite3 .import: $sqlite_import ms, ratio $(ratio "$import" "$sqlite_import") (at most 2)"
