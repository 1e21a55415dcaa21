#!/usr/bin/env bash
# Tries the program jetsql from outside: what it prints, what it leaves, its exit codes.
set -euo pipefail
jetsql=$1 samples=${2:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export LC_ALL=C.UTF-8

fail() { echo "FAILED: $*"; cat errors; exit 1; }
# expect CODE OUTPUT ARGUMENTS...: the exit code and the whole standard output.
expect() {
  local code=$1 wanted=$2 output got=0
  shift 2
  output=$("$jetsql" "$@" 2>errors </dev/null) || got=$?
  [ "$got" = "$code" ] && [ "$output" = "$wanted" ] ||
    fail "jetsql $*"$'\n'"code $got instead of $code, output:"$'\n'"$output"
}
# errors TEXT: the last command's standard error has it.
errors() { grep -qF -- "$1" errors || fail "no \"$1\" in:"; }
# same A B: no difference, found by jetsql and by mdb-export.
same() {
  expect 0 "0 differences" diff "$1" "$2"
  if ! command -v mdb-export >/dev/null; then return; fi
  "$jetsql" tables "$1" | while IFS= read -r table; do
    cmp -s <(mdb-export -b hex "$1" "$table" 2>&1 | sort) <(mdb-export -b hex "$2" "$table" 2>&1 | sort) ||
      { echo "FAILED: table $table of $1"; exit 1; }
  done
}

expect 0 "" create база.mdb
expect 1 "" create база.mdb
errors "error 3204: "
expect 0 $'Имя\tКод\n;\tyes' \
  run база.mdb 'create table Т ([Имя] text(3), Код bit); insert into Т values (";", yes);; select * from Т'
errors "1 row"
expect 1 "" run база.mdb "insert into Т values ('1', no);
 insert into Т values ('long', no)"
errors "error 3163: statement:2:2: "
errors "insert into Т values ('long', no)"
errors ' поле "Имя".'
expect 0 $'Expr1000\n1' run база.mdb "select * into У from Т; drop table У; select count(*) from Т"

# A script in either encoding, a comment, an error that is passed over.
printf '%s\n' "-- 'начало'" "insert into [Т] values ('[;]', no);" "чепуха; insert into Т values ('ё', no)" >script.sql
iconv -t cp1251 script.sql >script1251.sql
for script in script.sql script1251.sql; do
  expect 1 "" run база.mdb --file $script
  errors "error 3129: $script:3:1: "
done
expect 1 "" run база.mdb --file script.sql --continue
errors "2 rows"
errors "1 statement failed"
expect 1 "" run база.mdb --encoding utf8 --file script1251.sql
errors "has bytes that are not UTF-8"
expect 0 $'Имя\n;\n[;]\nё' run база.mdb "select Имя from Т order by Имя"
LC_ALL=ru_RU.UTF-8 expect 0 "" run база.mdb "delete from Т where Имя = 'ё'"
errors "1 строка"
expect 0 "Т" tables база.mdb
expect 0 '{"tables":["Т"]}' tables база.mdb --json

# Table texts: what is printed is read again as it is.
expect 0 "" export база.mdb Т Т.table
iconv -f cp1251 Т.table | grep -qF 'S[;]|F'
"$jetsql" export база.mdb Т >печать.table
cmp <(iconv -f cp1251 Т.table) печать.table
expect 0 "" export --structure --utf8 база.mdb Т Т.tablestruct
expect 0 "" import база.mdb Т.tablestruct
expect 0 $'Expr1000\n0' run база.mdb "select count(*) from Т"
sed 's/Table:/Tables:/' Т.tablestruct >broken.tablestruct
expect 1 "" import база.mdb Т.table broken.tablestruct
errors "Ошибка в файле таблицы \"broken.tablestruct\" (строка 1):"
expect 0 $'Expr1000\n0' run база.mdb "select count(*) from Т"
expect 0 "" import база.mdb печать.table
errors "2 rows"
expect 0 "$(cat печать.table)" export база.mdb Т
expect 0 "" run база.mdb "create table К (Имя text(3) primary key);
  create table С (Имя text(3) references К); insert into К values ('ё'); alter table С add column Н long"
expect 0 "" export база.mdb К К.table
sed '/^S/d' К.table >Пусто.table
expect 0 "" import база.mdb К.table
expect 0 "" run база.mdb "insert into С (Имя) values ('ё')"
expect 1 "" import база.mdb Пусто.table
errors 'с таблицей "К" (поле "Имя") не восстановлена: в таблице "С" строк'
expect 1 "" run база.mdb "delete from К"
errors "error 3200: "

# Every kind of value, in every mode, through Python, CSV and a dump.
expect 0 "" run база.mdb "create table Всё ([№] counter primary key, Имя text(20), Сумма money,
  Ч double, День datetime, Да bit, Б longbinary, М memo, Г guid, Д decimal(9, 3));
  insert into Всё (Имя, Сумма, Ч, День, Да, Б, М, Г, Д) values ('a,\"б\"', 1234.5, 0.1,
    #2026-01-02 03:04:05#, yes, 0x00FF, 'один' & Chr(13) & Chr(10) & 'два',
    '{01234567-89AB-CDEF-0123-456789ABCDEF}', '-1.25');
  insert into Всё (Имя, Сумма, День, Ч) values ('', '922337203685477.5807', CDate(0.123456789), 1e300);
  insert into Всё (Имя, Ч, М) values (' ё', -0.3333333333333333, Chr(0) & '\\ '' ]')"
expect 0 $'№ = 1\nД = -1.25' run база.mdb --mode lines "select [№], Д from Всё where [№] = 1"
expect 0 $'№  Имя\n-  -----\n1  a,"б"\n2\n3   ё' run база.mdb --mode table "select [№], Имя from Всё"
expect 0 $'a,"б"\t1234.50\t2026-01-02 03:04:05\tyes\t0x00FF\tодин\\r\\nдва\t{01234567-89AB-CDEF-0123-456789ABCDEF}' \
  run база.mdb --no-header "select Имя, Сумма, День, Да, Б, М, Г from Всё where [№] = 1"
expect 0 $'Имя\nSa,"б"' run база.mdb --mode tabletext "select Имя from Всё where [№] = 1"
expect 0 "" export база.mdb Всё всё.csv --mode csv
expect 0 "" export база.mdb Всё всё.json --mode json
if command -v python3 >/dev/null; then
  python3 - <<'PYTHON' || fail "Python read something else"
import csv, json
rows = list(csv.DictReader(open('всё.csv', encoding='utf-8', newline='')))
objects = json.load(open('всё.json', encoding='utf-8'), parse_float=str)
assert [row['Имя'] for row in rows] == [o['Имя'] for o in objects] == ['a,"б"', '', ' ё']
assert rows[0]['М'] == objects[0]['М'] == 'один\r\nдва' and objects[2]['М'] == "\0\\ ' ]"
assert objects[0]['Да'] is True and objects[0]['Сумма'] == '1234.5' and objects[1]['М'] is None
assert objects[1]['Сумма'] == rows[1]['Сумма'] == '922337203685477.5807'
assert float(rows[2]['Ч']) == -1 / 3 == float(objects[2]['Ч'])
PYTHON
fi
expect 0 "" run база.mdb "select * into Ещё from Всё; delete from Ещё"
expect 0 "" import база.mdb всё.csv --into Ещё
errors "3 rows"
expect 0 "" run база.mdb "create unique index П on Ещё ([№]) with primary"
expect 0 $'№\n2' run база.mdb "select a.[№] from Всё as a, Ещё as b where a.[№] = b.[№] and
  not (a.Ч = b.Ч and a.Имя = b.Имя and a.Г & '' = b.Г & '' and a.М & '' = b.М & '' and a.День = b.День)"
printf 'Код;Имя;Цена;День;Да\r\n007;"Лист ""А4""\n";1.5;2020-02-29;yes\r\n\r\n8;;-2;;no\r\n' | iconv -t cp1251 >лист.csv
expect 0 '{"rows":2}' import база.mdb лист.csv --into Лист --create --separator ";" --json
expect 0 "Лист
  Код  TEXT(255)
  Имя  TEXT(255)
  Цена  DOUBLE
  День  DATETIME
  Да  BIT" schema база.mdb Лист
expect 0 $'007\tЛист "А4"\\n\t1.5\t2020-02-29\tyes\n8\tNULL\t-2\tNULL\tno' run база.mdb --no-header "select * from Лист"
printf 'Код\n"1\n' >открыт.csv
expect 1 "" import база.mdb открыт.csv --into Открыт --create
errors "открыт.csv:2: A quote of line 2 is not closed."
printf '\xFE\xFF' >один.csv
printf 'Имя\r\n\r\n"Ё"\r\n""\r\n' | iconv -t utf-16be >>один.csv
expect 0 '{"rows":3}' import база.mdb один.csv --into Один --create --json
got=$(printf '\xEF\xBB\xBFselect * from Один; drop table Один' | "$jetsql" run база.mdb --encoding utf8 2>errors)
[ "$got" = $'Имя\nNULL\nЁ' ] || fail "one column: $got"
{ printf 'М\n' && printf 'а\0%.0s' {1..600} && printf '\n%01100000d' 0; } >длинный.csv
expect 0 "" create длинная.mdb
expect 0 "" import длинная.mdb длинный.csv --into Д --create
expect 0 "" create другая.mdb
"$jetsql" dump длинная.mdb 2>errors | "$jetsql" run другая.mdb 2>errors || fail "long values"
expect 0 "0 differences" diff длинная.mdb другая.mdb
rm длинная.mdb другая.mdb

# A dump makes an equal database of itself.
random_script() { # SEED: a table of fields and rows by chance
  awk -v seed="$1" 'function pick(n) { return int(rand() * n) }
    function text(length_,   t) { t = ""; while (length_-- > 0) t = t part[pick(9)]; return t }
    function value(kind) {
      if (rand() < 0.2) return "Null"
      if (kind == 0) return rand() < 0.5 ? "yes" : "no"
      if (kind == 1) return pick(256)
      if (kind == 2) return pick(65536) - 32768
      if (kind == 3) return sprintf("%.0f", (rand() - 0.5) * 4294967294)
      if (kind == 4) return sprintf("\047%.0f.%04d\047", (rand() - 0.5) * 1e14, pick(10000))
      if (kind < 7) return sprintf("%.17g", (rand() - 0.5) * 10 ^ pick(30))
      if (kind == 7) return rand() < 0.5 ? "CDate(" (rand() - 0.5) * 90000 ")" : "#" 1900 + pick(200) "-02-03#"
      if (kind == 8) return sprintf("0x%08x", pick(2147483647))
      if (kind == 9) return sprintf("\047{%08x-0000-4000-8000-%012x}\047", pick(1e9), pick(1e9))
      return "\047" text(pick(kind == 10 ? 30 : 3000)) "\047"
    }
    BEGIN {
      srand(seed)
      split("a|Ж|é|\047\047|\"|]|;|\n|\\", part, "|"); part[0] = "漢"
      split("byte short long money single double datetime binary(9) guid text(250) memo", type, " ")
      type[0] = "bit"
      fields = 1 + pick(20)
      printf "create table [Т %d] (", seed
      for (i = 0; i < fields; ++i) { kind[i] = pick(12); printf "%s[Поле %d] %s", i ? ", " : "", i, type[kind[i]] }
      print ");"
      for (row = pick(60); row > 0; --row) {
        printf "insert into [Т %d] values (", seed
        for (i = 0; i < fields; ++i) printf "%s%s", i ? ", " : "", value(kind[i])
        print ");"
      }
      printf "create index [И] on [Т %d] ([Поле %d]%s) with ignore null;\n", seed, pick(fields), rand() < 0.5 ? " desc" : ""
    }'
}
"$jetsql" create случай.mdb
for seed in 1 2 3 4 5 6 7 8; do
  random_script $seed >random.sql
  expect 0 "" run случай.mdb --file random.sql --continue
done
expect 0 "" run база.mdb "create index Два on Всё (Имя desc, Ч) with ignore null;
  property [Всё].[Имя].[Description] Text 'Sимя ''^1'''; property [Всё].[Имя].[AllowZeroLength] Bool 'F';
  relation [Слабая] [С] ([Имя]) references [Всё] ([Имя]) 2; drop index П on Ещё"
roundtrip() {
  rm -f снова.mdb
  "$jetsql" dump "$1" --output dump.sql 2>errors || fail "dump of $1"
  "$jetsql" create снова.mdb
  "$jetsql" run снова.mdb --file dump.sql 2>errors || fail "dump of $1 does not run"
  same "$1" снова.mdb
  "$jetsql" check снова.mdb >checked || fail "$(cat checked)"
  cmp -s <("$jetsql" dump "$1" 2>errors | grep -v ^-- | sort) <("$jetsql" dump снова.mdb 2>errors | grep -v ^-- | sort) || fail "dumps of $1"
}
roundtrip база.mdb
roundtrip случай.mdb
"$jetsql" schema --sql база.mdb | grep -qF "PROPERTY [Всё].[Имя].[Description] Text 'Sимя ''^1'''"
for sample in "$samples"/[!r]*.mdb; do
  if [ -f "$sample" ]; then roundtrip "$sample"; fi
done
cp база.mdb другая.mdb
expect 0 "" run другая.mdb "update Всё set Да = no where [№] = 1; delete from Всё where [№] = 3; drop table Ещё;
  create table Новая (Н long); insert into Лист (Код) values ('x')"
expect 1 "* Всё: row 1, Да: yes -> no
- Всё: row 3
- table Ещё
+ Лист: row 'x', Null, Null, Null, False
+ table Новая
5 differences" diff база.mdb другая.mdb

# Health.
expect 0 "" compact база.mdb новая.mdb
same база.mdb новая.mdb
"$jetsql" info новая.mdb >info
grep -qF "format: Jet 4, engine build " info && grep -qF "  Т: 2 rows, 12288 bytes" info || fail "info"
"$jetsql" check новая.mdb --json | grep -qF '{"faults":0,"notes":0,'
expect 0 "6 tables, 12 rows
nothing was lost" recover новая.mdb спасённая.mdb
same новая.mdb спасённая.mdb
# A page of rows that is lost in the middle of a table.
expect 0 "" run новая.mdb "create table П (Н long, Т text(200)); insert into П values (1, 'metka')"
for _ in 1 2 3 4 5 6 7 8 9 10; do echo "insert into П (Н, Т) select Н * 2, Т from П;"; done | "$jetsql" run новая.mdb 2>errors
expect 0 "" run новая.mdb "update П set Т = 'last page' where Н > 1000"
offset=$(LC_ALL=C grep -obUaP 'l\x00a\x00s\x00t\x00 \x00p\x00' новая.mdb | tail -n 1 | cut -d: -f1)
dd if=/dev/zero of=новая.mdb bs=4096 seek=$((offset / 4096)) count=1 conv=notrunc 2>errors
"$jetsql" check новая.mdb >faults && fail "no fault found"
got=0
"$jetsql" recover новая.mdb вновь.mdb >report || got=$?
[ $got = 1 ] || fail "recover gave $got: $(cat report)"
lost=$(sed -n 's/^table П: \([0-9]*\) rows lost$/\1/p' report)
[ "$lost" -gt 10 ] || fail "$(cat report)"
expect 0 $'n\n'$((1024 - lost)) run вновь.mdb "select count(*) as n from П"
expect 0 "0 faults, 0 notes, $(("$(stat -c %s вновь.mdb)" / 4096)) pages" check вновь.mdb
head -c -4096 вновь.mdb >порча.mdb
"$jetsql" check порча.mdb >faults && fail "no fault found"
grep -q '^fault: ' faults
expect 1 "" check Т.table
errors "error 3343: "

for wrong in "" "чепуха" "create" "create a b" "export база.mdb" "run база.mdb --file" "tables --x база.mdb" \
  "run база.mdb x --mode y" "import база.mdb лист.csv" "run база.mdb x --encoding y" "dump база.mdb --engine y"; do
  # shellcheck disable=SC2086  # the words are the arguments
  expect 2 "" $wrong
done
expect 1 "" tables нет.mdb
errors "error 3024: "
expect 1 '{"error":"error 3024: Не найден файл \"нет.mdb\"."}' schema нет.mdb --json
"$jetsql" --help | grep -q "Exit codes: 0 done, 1 failed"
echo "jetsql: done"
