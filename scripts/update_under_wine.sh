#!/usr/bin/env bash
# Updates an installation with the Windows program as users have it, under Wine: the settings come
# from the registry, the release from nginx, databases are opened through DAO.DBEngine.36 (the tests'
# own), components are registered by regsvr32, and every box is answered with the mouse. One update
# runs undisturbed; the next installation's updater is ended at one stage after another and mended by
# the last run. Fails unless both installations become the release, with the user's rows.
#   scripts/update_under_wine.sh [BUILD FOLDER OF WINDOWS]
# Leaves the log and pictures of the windows in BUILD FOLDER/update.
set -euo pipefail
cd "$(dirname "$0")/.."
build=$(realpath "${1:-build/windows-x64}")
bin=$build/bin tests=$build/tests work=$build/update
old=3.6.0.4 new=3.6.2.1
# Where the updater is ended, in the order of its work.
stages=("Загрузка компонент..." "Формирование справочной базы данных..." "Обновление рабочей базы данных..."
  "Установка новых компонент..." "Резервное копирование базы данных...")

fail() {
  echo "update_under_wine: $*" >&2
  exit 1
}

finish() {
  [ ! -e "$work/nginx.pid" ] || kill "$(cat "$work/nginx.pid")" 2>/dev/null || true
}
trap finish EXIT

tool() { TMW_TEST_DATABASE_ENGINE=embedded scripts/wine-run.sh "$bin/$1.exe" "${@:2}"; }
# path FILE: as Windows programs know it.
path() { printf 'Z:%s' "${1//\//\\}"; }
# key FILE: doubles the backslashes, for a file of the registry editor.
key() { path "$1" | sed 's/\\/\\\\/g'; }

# table NAME FIELDS ROWS-PROGRAM: writes a table's text; the awk program prints its rows.
table() {
  {
    printf '\xEF\xBB\xBFTable:%s\n%s\nIndex:PrimaryKey|Primary|Fields:Ид;\nRows\n' "$1" "$2"
    awk "BEGIN { $3 }"
    printf 'EndRows\nEndTable\n'
  } | sed 's/$/\r/' >"$work/$1.table"
}

# make_product FOLDER VERSION
make_product() {
  local i
  mkdir -p "$1/tm" "$1/Справка"
  for i in $(seq 60); do printf '%s\n' "$i" "$([ $((i % 3)) != 0 ] || echo "$2")" >"$1/Справка/Раздел $i.htm"; done
  cp "$tests/version_server_$2.dll" "$1/tm/TmVersion.dll"
  cp "$tests/registering_library.dll" "$1/tm/Calc.ocx"
  echo "$2" >>"$1/tm/Calc.ocx"
  cp "$bin/TmWebUpdate.exe" "$bin/UnTmz.dll" "$1/tm"
  cp "$tests/child_program.exe" "$1/tm/Tamrin.exe"
  echo "$2" >>"$1/tm/Tamrin.exe"
}

# make_database FILE VERSION RATE
make_database() {
  table Ставки $'Field:Ид|Long|4|NotNull\nField:Ставка|Curr|8' \
    "for (i = 1; i <= 50; i++) printf \"%d|%d\\n\", i, i % 7 == 0 ? $3 : i"
  tool jetsql create "$(path "$1")" --engine embedded
  tool jetsql import "$(path "$1")" "$(path "$work/Ставки.table")" "$(path "$work/Документы.table")" \
    --engine embedded >/dev/null
  tool jetsql run "$(path "$1")" "create table DBVersion (MajorVersion long, MinorVersion long, BuildNumber long);
    insert into DBVersion values (${2//./, });
    alter table Документы add constraint ДокументыСтавки foreign key (Ставка) references Ставки on update cascade" \
    --engine embedded >/dev/null
}

# rows DATABASE STATEMENT
rows() { tool jetsql run "$(path "$1")" "$2" --engine embedded | tail -n +2 | tr -d '\r' | tr '\t' ' '; }

# install FOLDER: the older release.
install() {
  cp -r "$work/product" "$1"
  mkdir -p "$1/db"
  cp "$work/old.mdb" "$1/db/Tamrin.mdb"
}

# settings FOLDER: those of that installation, as a user's machine has them.
settings() {
  { printf '\xFF\xFE'
    iconv -t UTF-16LE <<END
Windows Registry Editor Version 5.00

[HKEY_LOCAL_MACHINE\\SOFTWARE\\WOW6432Node\\Kestrel Soft\\Tamrin\\General]
"RootPath"="$(key "$1")\\\\"
"DataBasePath"="$(key "$1/db")\\\\"

[HKEY_CURRENT_USER\\SOFTWARE\\Kestrel Soft\\Tamrin\\AutoUpdate]
"ProxyType"=dword:00000001
"IsCustomUrl"="yes"
"CustomUrl"="http://127.0.0.1:$port/"
END
  } >"$1.reg"
  steps+=(run "regedit /S \"$(path "$1.reg")\"" run "regsvr32 /s \"$(path "$1/tm/TmVersion.dll")\"")
}

# expect_release FOLDER: its files are the release's, the user's rows are all there.
expect_release() {
  local strange database=$1/db/Tamrin.mdb
  strange=$(diff -rq "$work/newer" "$1" | grep -vE '^Only in .*: (db|TmWebUpdate\.(serial|lock)|started|Предыдущая версия)$' || true)
  [ -z "$strange" ] || fail "$1 is not the release: $strange"
  [ "$(rows "$database" 'select * from DBVersion')" = "3 6 2" ] || fail "$1: the database is of another version"
  rows "$database" "$documents" | cmp - "$work/documents.txt" || fail "$1: the user's rows are not as they were"
  [ "$(rows "$database" 'select count(Примечание) from Документы')" = 146 ] || fail "$1: a step of the database is missing"
  [ "$(rows "$database" 'select sum(Ставка) from Ставки')" = 1233.00 ] || fail "$1: the dictionary is not the release's"
  ! tool jetsql run "$(path "$database")" "delete from Ставки" --engine embedded >/dev/null 2>&1 ||
    fail "$1: the relation is gone"
  find "$1/db" -name '*.zip' | grep -q . || fail "$1: no backup"
  grep -q "^$(basename "$1")|started|regsvr32.exe" "$work/log.txt" || fail "$1: regsvr32 has not been started"
  grep -q "books" "$1/tm/started" || fail "$1: the product has not been started"
}

documents="select Ид, Содержание, Сумма, Ставка from Документы order by Ид"
rm -rf "$work"
mkdir -p "$work/scripts" "$work/tmp"
make_product "$work/product" $old
make_product "$work/newer" $new
# Large enough for the backup to take a moment.
table Документы $'Field:Ид|Long|4|NotNull\nField:Содержание|Memo|0\nField:Сумма|Curr|8\nField:Ставка|Long|4' \
  'for (i = 1; i <= 300; i++) {
     text = ""; for (n = 1; n <= 900; n++) text = text " " (i * n * 7919) % 100003
     printf "%d|SОплата по договору № %d, «Ромашка»%s|%d.%02d|%d\n", i, i, text, i / 10, i % 2 * 10, i % 50 + 1
   }'
make_database "$work/old.mdb" 3.6.0 20
make_database "$work/reference.mdb" 3.6.2 22
rows "$work/old.mdb" "$documents" >"$work/documents.txt"
tool jetsql run "$(path "$work/reference.mdb")" "alter table Документы add column Примечание text(100)" \
  --engine embedded >/dev/null
cat >"$work/scripts/1.xml" <<'END'
<?xml version="1.0" encoding="utf-8"?>
<TMW_Database_Update db_version_from="3.6.0" db_version_to="3.6.1">
  <Action type="addfield" Table="Документы" FieldName="Примечание" Type="text" Size="100" AllowZeroString="yes"/>
</TMW_Database_Update>
END
cat >"$work/scripts/2.xml" <<'END'
<?xml version="1.0" encoding="utf-8"?>
<TMW_Database_Update db_version_from="3.6.1" db_version_to="3.6.2">
  <Action type="sql">update Документы set Примечание = 'Крупный' where Сумма &gt; 15.05</Action>
</TMW_Database_Update>
END
port=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
cat >"$work/release.xml" <<END
<?xml version="1.0" encoding="utf-8"?>
<Release Product="TMW" Version="$new" Date="2026-11-20">
  <Updater MinVersion="1.0"><Component File="tm/TmWebUpdate.exe"/><Component File="tm/UnTmz.dll"/></Updater>
  <Servers><Server Url="http://127.0.0.1:$port/"/></Servers>
  <Files>
    <Folder Source="" Target="{p}"/>
    <File Mask="*.ocx" IsCom="yes"/>
    <File Mask="TmVersion.dll" IsCom="yes"/>
  </Files>
  <Database><Dict Mask="*"/><User Mask="Документы"/></Database>
</Release>
END
tool tmpublish publish "$(path "$work/release.xml")" --product "$(path "$work/newer")" \
  --database "$(path "$work/reference.mdb")" --scripts "$(path "$work/scripts")" \
  --output "$(path "$work/server")" >"$work/publish.txt" 2>&1 || fail "$(cat "$work/publish.txt")"
cat >"$work/nginx.conf" <<END
pid nginx.pid; events {}
$([ "$(id -u)" -ne 0 ] || echo 'user root;') # whoever owns the folder may read it
http {
  access_log access.log;
  client_body_temp_path t; proxy_temp_path t; fastcgi_temp_path t; uwsgi_temp_path t; scgi_temp_path t;
  server { listen 127.0.0.1:$port; root server; limit_rate 8m; }
}
END
PATH=$PATH:/usr/sbin nginx -p "$work" -e error.log -c nginx.conf

steps=()
for name in Целая Прерванная; do
  folder="$work/$name"
  install "$folder"
  settings "$folder"
  # As the product itself starts it.
  update="\"$(path "$folder/tm/TmWebUpdate.exe")\" -e \"$(path "$folder/tm/Tamrin.exe")\" -p \"report started books\""
  if [ "$name" = Прерванная ]; then
    for stage in "${stages[@]}"; do steps+=(kill "$name" "$stage" "$update"); done
  fi
  steps+=(update "$name" "$update" update "$name-снова" "$update")
done
env -u TMW_FRONT_END -u TMW_TEST_DATABASE_ENGINE TMW_WINE_SCREEN=96 \
  TMW_WINE_COMPONENTS="$tests/dao_server.dll" scripts/wine-run.sh "$tests/click_through.exe" \
  "$(path "$work")" "${steps[@]}" 2>"$work/wine.txt" ||
  fail "$(tail -n 30 "$work/log.txt" "$work/wine.txt" "$work"/tmp/Tamrin/*.log)"

for name in Целая Прерванная; do expect_release "$work/$name"; done
for picture in "$work"/*.bmp; do
  convert "$picture" -alpha off "${picture%.bmp}.png"
  rm "$picture"
done
cat "$work/log.txt"
