#!/usr/bin/env bash
# Tries the program jetsql from outside: what it prints, what it leaves, its exit codes.
set -euo pipefail
jetsql=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

# expect CODE OUTPUT ARGUMENTS...: the exit code and the whole standard output.
expect() {
  local code=$1 wanted=$2 output got=0
  shift 2
  output=$("$jetsql" "$@" 2>errors </dev/null) || got=$?
  if [ "$got" != "$code" ] || [ "$output" != "$wanted" ]; then
    printf 'FAILED: jetsql %s\ncode %s instead of %s, output:\n%s\nerrors:\n%s\n' \
      "$*" "$got" "$code" "$output" "$(cat errors)"
    exit 1
  fi
}
# errors TEXT: the last command's standard error has it.
errors() { grep -qF -- "$1" errors || { echo "FAILED: no \"$1\" in:"; cat errors; exit 1; }; }

expect 0 "" create база.mdb
expect 1 "" create база.mdb
errors "error 3204: "
expect 0 $'0 rows\n1 rows\nИмя\tКод\nS;\tT' \
  run база.mdb 'create table Т ([Имя] text(3), Код bit); insert into Т values (";", yes);; select * from Т'
expect 1 "1 rows" run база.mdb "insert into Т values ('1', no); insert into Т values ('long', no)"
errors "insert into Т values ('long', no)"
errors ' поле "Имя".'
expect 0 $'1 rows\n0 rows\nExpr1000\n1' run база.mdb "select * into У from Т; drop table У; select count(*) from Т"
echo "insert into [Т] values ('[;]', no)" | iconv -t cp1251 >script.sql
expect 0 "1 rows" run база.mdb --file script.sql
expect 0 "Т" tables база.mdb
expect 0 $'Table:Т\r\nField:Имя|Text|3|AllowZero\r\nField:Код|Bool|1\r\nEndTable\r' tables база.mdb т
expect 0 "" export база.mdb Т Т.table
iconv -f cp1251 Т.table | grep -qF 'S[;]|F'
expect 0 "" export --structure --utf8 база.mdb Т Т.tablestruct
expect 0 "" import база.mdb Т.tablestruct
expect 0 $'Expr1000\n0' run база.mdb "select count(*) from Т"
sed 's/Table:/Tables:/' Т.tablestruct >broken.tablestruct
expect 1 "" import база.mdb Т.table broken.tablestruct
errors "Ошибка в файле таблицы \"broken.tablestruct\" (строка 1):"
expect 0 $'Expr1000\n0' run база.mdb "select count(*) from Т"
expect 0 "" import база.mdb Т.table
expect 0 $'0 rows\n0 rows\n1 rows\n0 rows' run база.mdb "create table К (Имя text(3) primary key);
  create table С (Имя text(3) references К); insert into К values ('ё'); alter table С add column Н long"
expect 0 "" export база.mdb К К.table
sed '/^S/d' К.table >Пусто.table
expect 0 "" import база.mdb К.table
expect 0 "1 rows" run база.mdb "insert into С (Имя) values ('ё')"
expect 1 "" import база.mdb Пусто.table
errors 'с таблицей "К" (поле "Имя") не восстановлена: в таблице "С" строк'
expect 1 "" run база.mdb "delete from К"
errors "error 3200: "
expect 0 $'1 rows\n0 rows\n0 rows' run база.mdb "delete from С; drop table С; drop table К"
expect 0 "" compact база.mdb новая.mdb
expect 0 "$(iconv -f cp1251 Т.table)" export новая.mdb Т
expect 0 "0 faults, 0 notes, 20 pages" check новая.mdb
"$jetsql" info новая.mdb >info
for line in 'format: Jet 4, engine build ' 'pages: 20 of 4096 bytes, 0 free' '  Т: 2 rows, 12288 bytes'; do
  grep -qF -- "$line" info || { echo "FAILED: no \"$line\" in:"; cat info; exit 1; }
done
head -c -4096 новая.mdb >порча.mdb
"$jetsql" check порча.mdb >faults && { echo "FAILED: no fault found"; exit 1; }
grep -q '^fault: ' faults
expect 1 "" check Т.table
errors "error 3343: "
for wrong in "" "чепуха" "create" "create a b" "export база.mdb" "run база.mdb --file" "tables --x база.mdb"; do
  # shellcheck disable=SC2086  # the words are the arguments
  expect 2 "" $wrong
done
expect 1 "" tables нет.mdb
errors "error 3024: "
"$jetsql" --help | grep -q "Exit codes: 0 done, 1 failed"
echo "jetsql: done"
