#!/usr/bin/env bash
# Table texts and CSV against the usual tools, side by side in one run: a table of 200,000 rows of 13
# fields is exported against "sqlite3 .dump" and mdb-export, and imported against "sqlite3 .import" of
# the same data with the same indexes. Prints wall times (the best of three), their ratios and the
# peak of memory of the imports.
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
  "$jetsql" import db.mdb Документы.table 2>/dev/null
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

"$jetsql" create csv.mdb
"$jetsql" import csv.mdb Документы.table 2>/dev/null
run_csv_export() { "$jetsql" export csv.mdb Документы rows.csv --mode csv; }
run_mdb_export() { mdb-export csv.mdb Документы >mdb.csv; }
run_csv_import() {
  rm -f from_csv.mdb
  "$jetsql" create from_csv.mdb
  "$jetsql" schema csv.mdb --sql | "$jetsql" run from_csv.mdb
  "$jetsql" import from_csv.mdb rows.csv --into Документы 2>/dev/null
}
run_sqlite_csv() {
  rm -f csv.db
  sqlite3 csv.db "$structure" ".mode csv" ".import --skip 1 rows.csv d"
}
peak() { /usr/bin/time -f %M "$@" 2>&1 >/dev/null | tail -n 1; }

import=$(best run_import)
sqlite_import=$(best run_sqlite_import)
export_=$(best run_export)
sqlite_dump=$(best run_sqlite_dump)
cmp -s out.txt Документы.table || { echo "the exported text differs from the imported one" >&2; exit 1; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { printf "%.2f", a / b }'; }
csv_export=$(best run_csv_export)
mdb_export=$(best run_mdb_export)
csv_import=$(best run_csv_import)
sqlite_csv=$(best run_sqlite_csv)
rm -f db.mdb from_csv.mdb
"$jetsql" create db.mdb
"$jetsql" create from_csv.mdb
"$jetsql" schema csv.mdb --sql | "$jetsql" run from_csv.mdb
text_peak=$(peak "$jetsql" import db.mdb Документы.table)
csv_peak=$(peak "$jetsql" import from_csv.mdb rows.csv --into Документы)
echo "rows: $rows, text: $(stat -c %s out.txt) bytes"
echo "export: $export_ ms, sqlite3 .dump: $sqlite_dump ms, ratio $(ratio "$export_" "$sqlite_dump") (at most 1.0)"
echo "import: $import ms, sqlite3 .import: $sqlite_import ms, ratio $(ratio "$import" "$sqlite_import") (at most 1.2)"
echo "csv export: $csv_export ms, mdb-export: $mdb_export ms, ratio $(ratio "$csv_export" "$mdb_export") (at most 1.2)"
echo "csv import: $csv_import ms, sqlite3 .import: $sqlite_csv ms, ratio $(ratio "$csv_import" "$sqlite_csv") (at most 1.3)"
echo "peak memory: table text $((text_peak / 1024)) MiB, csv $((csv_peak / 1024)) MiB"
