#!/usr/bin/env bash
# Building the reference and the working database of an update, without the ordered waits, beside
# "sqlite3 .dump | sqlite3" of the same table with the same indexes. Prints wall times (the best of
# three rounds, taken in turn), their ratio and the peak of memory.
#   database_build.sh [BUILD FOLDER] [ROWS]     (a build with TMW_BUILD_BENCH=ON)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build/linux-release}
rows=${2:-200000}
jetsql=$build/bin/jetsql
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
mkdir -p db release/Loaded release/DBUpdates release/DBStruct

mark() { printf '\xEF\xBB\xBF'; }
awk -v rows="$rows" -f "$root/bench/documents.awk" >documents.txt
{ mark; cat documents.txt; } >Документы.table
{ mark; sed '/^Rows/,/^EndRows/d' documents.txt; } >release/DBStruct/Документы.tablestruct
awk -v rows=5000 -f "$root/bench/documents.awk" | sed 's/^Table:.*/Table:Справочник\r/' >dictionary.txt
{ mark; cat dictionary.txt; } >release/Loaded/Справочник.table
"$jetsql" create db/Tamrin.mdb
"$jetsql" import db/Tamrin.mdb Документы.table release/Loaded/Справочник.table
"$jetsql" run db/Tamrin.mdb "create table DBVersion (MajorVersion long, MinorVersion long,
  BuildNumber long); insert into DBVersion values (1, 0, 0)" >/dev/null
cat >release/DBUpdates/1.xml <<'END'
<?xml version="1.0" encoding="utf-8"?>
<TMW_Database_Update db_version_from="1.0.0" db_version_to="1.0.1">
  <Action type="addfield" Table="Документы" FieldName="Год" Type="long"/>
</TMW_Database_Update>
END
printf '\xEF\xBB\xBFREGEDIT4\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Kestrel Soft\\Tamrin\\General]\n"DataBasePath"="%s/db"\n' \
  "$work" >machine.reg
export TAMRIN_MACHINE_REG=$work/machine.reg

# The same values as plain columns.
tr -d '\r' <documents.txt | awk '/^Rows$/ {on = 1; next} /^EndRows$/ {on = 0} on' >rows.txt
sqlite3 plain.db "create table d(a integer not null, b text, c text, d numeric, e real, f real,
  g integer, h integer, i integer, j real, k text, l real, m integer);
  create unique index p on d(a); create index n on d(b);" \
  ".mode list" ".separator |" ".import rows.txt d"

ours=999999999
theirs=999999999
for _ in 1 2 3; do
  read -r took memory <<<"$("$build/bin/database_build" release)"
  if [ "$took" -lt "$ours" ]; then ours=$took; fi
  rm -f copy.db
  start=$(date +%s%N)
  sqlite3 plain.db .dump | sqlite3 copy.db
  took=$((($(date +%s%N) - start) / 1000000))
  if [ "$took" -lt "$theirs" ]; then theirs=$took; fi
done
for built in release/DBUpdates/Tamrin.mdb release/DBStruct/Tamrin_LastVer.mdb; do
  echo "$(basename "$built"): $("$jetsql" run "$built" "select count(*) as n from Документы" | tail -n 1) documents, $(stat -c %s "$built") bytes"
done
awk -v a="$ours" -v b="$theirs" 'BEGIN {
  printf "both databases: %d ms, sqlite3 .dump | sqlite3: %d ms, ratio %.2f (at most 4)\n", a, b, a / b }'
echo "peak memory: $((memory / 1024)) MiB (at most 256)"
