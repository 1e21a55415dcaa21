#!/usr/bin/env bash
# Shows a whole update on this machine: a product is installed in its older release, the newer one is
# published, served by nginx on loopback and fetched by the real updater from the product's folder.
# Nothing is left behind but build/demo.
#   scripts/demo.sh [--window]     with --window the updater shows its window on $DISPLAY and asks
set -euo pipefail
cd "$(dirname "$0")/.."
window=
if [ "${1:-}" = --window ]; then
  window=yes
  if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    echo "--window needs a display" >&2
    exit 2
  fi
elif [ $# -gt 0 ]; then
  echo "usage: scripts/demo.sh [--window]" >&2
  exit 2
fi

scripts/setup.sh
TMW_TARGETS="TmWebUpdate TmRollback companion tmpublish jetsql" scripts/build.sh linux-release

bin=$PWD/build/linux-release/bin
demo=$PWD/build/demo
# A server that an aborted demonstration has left.
for process in $(cat "$demo/nginx.pid" 2>/dev/null); do
  [ "$(cat "/proc/$process/comm" 2>/dev/null)" != nginx ] || kill "$process"
done
rm -rf "$demo"
mkdir -p "$demo/tmp" "$demo/db" "$demo/scripts"
export TAMRIN_MACHINE_REG=$demo/machine.reg TAMRIN_USER_REG=$demo/user.reg TMPDIR=$demo/tmp
export TMW_LOCK_FOLDER=$demo/locks XDG_STATE_HOME=$demo/state
export TAMRIN_DEMO_LOG=$demo/registrations.txt
old=3.6.0.4 new=3.6.2.1

title() { printf '\n=== %s\n' "$1"; }
run() {
  local line
  line=$(printf ' %q' "$@")
  line=${line//"$demo/"/}
  printf '$%s\n' "${line//"$bin/"/}"
  "$@"
}

# make_component FILE NAME VERSION: a library that can be registered, and notes it down.
make_component() {
  cc -shared -fPIC -o "$1" -x c - <<END
#include <stdio.h>
#include <stdlib.h>
static int Note(const char *what) {
  FILE *log = fopen(getenv("TAMRIN_DEMO_LOG"), "a");
  if (log == NULL) return 1;
  fprintf(log, "%s: $2 $3\n", what);
  return fclose(log);
}
int DllRegisterServer(void) { return Note("registered"); }
int DllUnregisterServer(void) { return Note("unregistered"); }
END
}

# make_product FOLDER VERSION: about 200 files; a tenth of them differ from release to release.
make_product() {
  local folder=$1 version=$2 i name last=60
  mkdir -p "$folder/tm" "$folder/Шаблоны" "$folder/Справка"
  [ "$version" = "$old" ] || last=63
  for i in $(seq 1 $last); do
    name=$folder/tm/Module$i.dll
    seq "$i" $((i * 300)) >"$name"
    [ $((i % 9)) != 0 ] || echo "$version" >>"$name"
  done
  for i in $(seq 1 80); do
    name="$folder/Шаблоны/Форма $i.txt"
    printf 'Форма %s, листов: %s\n' "$i" "$((i % 5 + 1))" >"$name"
    [ $((i % 10)) != 0 ] || echo "Действует с версии $version" >>"$name"
  done
  for i in $(seq 1 50); do
    echo "<p>Раздел $i справки</p>" >"$folder/Справка/Раздел $i.htm"
  done
  make_component "$folder/tm/Calc.ocx" Calc "$version"
  make_component "$folder/tm/Exchange.ocx" Exchange "$version"
  make_component "$folder/tm/Print.ocx" Print 1.0
  cat >"$folder/tm/Tamrin" <<END
#!/bin/sh
echo "Tamrin $version started with: \$*" >"$demo/started.txt"
END
  chmod +x "$folder/tm/Tamrin"
  # As products are delivered, without what only debuggers read.
  for name in TmWebUpdate TmRollback UnTmz.so; do strip -o "$folder/tm/$name" "$bin/$name"; done
}

# table NAME FIELDS ROWS-PROGRAM: writes a table's text; the awk program prints its rows.
table() {
  printf '\xEF\xBB\xBF' >"$demo/db/$1.table"
  {
    printf 'Table:%s\n%s\nIndex:PrimaryKey|Primary|Fields:Ид;\nRows\n' "$1" "$2"
    awk "BEGIN { $3 }"
    printf 'EndRows\nEndTable\n'
  } | sed 's/$/\r/' >>"$demo/db/$1.table"
}

# make_database FILE VERSION RATE: dictionaries and the user's tables, which refer to each other.
make_database() {
  table Ставки $'Field:Ид|Long|4|NotNull\nField:Название|Text|40\nField:Ставка|Curr|8\nField:Регион|Long|4' \
    "for (i = 1; i <= 200; i++) printf \"%d|SСтавка налога № %d|%s|%d\\n\", i, i, i % 7 == 0 ? $3 : i, i % 89 + 1"
  table Регионы $'Field:Ид|Long|4|NotNull\nField:Название|Text|40' \
    'for (i = 1; i <= 89; i++) printf "%d|SРегион %02d\n", i, i'
  "$bin/jetsql" create "$1"
  "$bin/jetsql" import "$1" "$demo/db/Ставки.table" "$demo/db/Регионы.table" \
    "$demo/db/Документы.table" "$demo/db/Контрагенты.table"
  "$bin/jetsql" run "$1" "create table DBVersion (MajorVersion long, MinorVersion long, BuildNumber long);
    insert into DBVersion values (${2//./, });
    alter table Документы add constraint ДокументыСтавки foreign key (Ставка) references Ставки on update cascade;
    alter table Документы add constraint ДокументыКонтрагенты foreign key (Контрагент) references Контрагенты;
    alter table Ставки add constraint СтавкиРегионы foreign key (Регион) references Регионы" >/dev/null
}

# publish VERSION PRODUCT DATABASE
publish() {
  sed "s/VERSION/$1/" "$demo/release.xml" >"$demo/release-$1.xml"
  [ -e "$2/db" ] || sed -i '/db\/\*/d' "$demo/release-$1.xml"
  run "$bin/tmpublish" publish "$demo/release-$1.xml" --product "$2" --database "$3" \
    --scripts "$demo/scripts" --output "$demo/server" --sign "$demo/maker.key" | sed "s|$demo/||"
}

title "Two releases of a product"
make_product "$demo/product" $old
make_product "$demo/newer" $new
table Документы $'Field:Ид|Long|4|NotNull\nField:Номер|Text|20\nField:Содержание|Text|80|AllowZero\nField:Сумма|Curr|8\nField:Дата|Date|8\nField:Ставка|Long|4\nField:Контрагент|Long|4' \
  'for (i = 1; i <= 5000; i++) printf "%d|SА-%05d|SОплата по договору № %d, «Ромашка»|%d.%02d|d%d|%d|%d\n", i, i, i % 97, i % 9000, i % 100, i % 2500, i % 200 + 1, i % 2000 + 1'
table Контрагенты $'Field:Ид|Long|4|NotNull\nField:Название|Text|60\nField:Активен|Bool|1' \
  'for (i = 1; i <= 2000; i++) printf "%d|SОбщество «Ёлка %d»|%s\n", i, i, i % 2 ? "T" : "F"'
make_database "$demo/old.mdb" 3.6.0 20
make_database "$demo/reference.mdb" 3.6.2 22
"$bin/jetsql" run "$demo/reference.mdb" "alter table Документы add column Примечание text(100)" >/dev/null
mkdir -p "$demo/product/db"
cp "$demo/old.mdb" "$demo/product/db/Tamrin.mdb"
cat >"$demo/scripts/3.6.1.xml" <<'END'
<?xml version="1.0" encoding="utf-8"?>
<TMW_Database_Update db_version_from="3.6.0" db_version_to="3.6.1">
  <Action type="addfield" Table="Документы" FieldName="Примечание" Type="text" Size="100" AllowZeroString="yes"/>
</TMW_Database_Update>
END
cat >"$demo/scripts/3.6.2.xml" <<'END'
<?xml version="1.0" encoding="utf-8"?>
<TMW_Database_Update db_version_from="3.6.1" db_version_to="3.6.2">
  <Action type="sql">update Документы set Примечание = 'Крупный' where Сумма &gt; 4000</Action>
</TMW_Database_Update>
END
port=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
url=http://127.0.0.1:$port/
cat >"$demo/release.xml" <<END
<?xml version="1.0" encoding="utf-8"?>
<Release Product="TMW" Version="VERSION" Date="2026-11-20">
  <Updater MinVersion="1.0"><Component File="tm/TmWebUpdate"/><Component File="tm/UnTmz.so"/></Updater>
  <Servers><Server Url="$url"/></Servers>
  <Files>
    <Folder Source="" Target="{p}"/>
    <File Mask="*.ocx" IsCom="yes"/>
    <File Mask="Tamrin" Executable="yes"/>
    <File Mask="TmWebUpdate" Executable="yes"/>
    <File Mask="TmRollback" Executable="yes"/>
    <File Mask="db/*" Skip="yes"/>
  </Files>
  <Database>
    <Dict Mask="*"/>
    <User Mask="Документы"/>
    <User Mask="Контрагенты"/>
  </Database>
</Release>
END
run "$bin/tmpublish" keygen --no-password "$demo/maker.key" | sed "s|$demo/||"
publish $old "$demo/product" "$demo/old.mdb"
publish $new "$demo/newer" "$demo/reference.mdb"

title "The newer release is served, checked as an updater reads it, and compared with the older one"
cat >"$demo/nginx.conf" <<END
pid nginx.pid; events {}
$([ "$(id -u)" -ne 0 ] || echo 'user root;') # whoever owns the folder may read it
http {
  log_format plain '\$uri \$status \$body_bytes_sent'; access_log access.log plain;
  client_body_temp_path t; proxy_temp_path t; fastcgi_temp_path t; uwsgi_temp_path t; scgi_temp_path t;
  server { listen 127.0.0.1:$port; root server; }
}
END
PATH=$PATH:/usr/sbin nginx -p "$demo" -e error.log -c nginx.conf
trap 'kill "$(cat "$demo/nginx.pid")" 2>/dev/null || true' EXIT
run "$bin/tmpublish" check "$url" --from 3.6.0 --key "$demo/maker.key.pub"
run "$bin/tmpublish" diff "$demo/server/TMW_$old" "$demo/server/TMW_$new" >"$demo/difference.txt"
head -n 6 "$demo/difference.txt"
echo "..."
tail -n 4 "$demo/difference.txt"
: >"$demo/access.log"

cat >"$TAMRIN_MACHINE_REG" <<END
REGEDIT4

[HKEY_LOCAL_MACHINE\\SOFTWARE\\Kestrel Soft\\Tamrin\\General]
"RootPath"="$demo/product/"
"DataBasePath"="$demo/product/db/"
"UpdateKeys"="$(tail -n 1 "$demo/maker.key.pub")"

[HKEY_CLASSES_ROOT\\Tm_Version.VersionInfo]
"VersionEx"="$old"
END

# The state of the installation, in a few lines.
state() {
  local database=$demo/product/db/Tamrin.mdb
  printf '  program: %s\n' "$(grep -o 'Tamrin [0-9.]*' "$demo/product/tm/Tamrin")"
  printf '  files: %s, of which as in %s: %s\n' "$(find "$demo/product" -type f ! -path '*/db/*' ! -name 'TmWebUpdate.*' ! -name 'TMW_*' ! -path '*/Предыдущая версия/*' | wc -l)" \
    $new "$(cd "$demo/newer" && find . -type f -exec cmp -s {} "$demo/product/{}" \; -print | wc -l)"
  printf '  database: version %s\n' "$("$bin/jetsql" run "$database" 'select * from DBVersion' | tail -n 1 | tr '\t' .)"
  "$bin/jetsql" run "$database" 'select count(*), sum(Сумма) from Документы; select count(*), max(Название) from Контрагенты;
    select count(*), sum(Ставка) from Ставки' | grep -v Expr |
    paste -d '|' - <(printf 'documents, their sum\npartners, the last one\nrates, their sum (changed)\n') |
    sed 's/^\(.*\)|\(.*\)$/  \2: \1/' | tr '\t' ' '
  # Nothing that other rows refer to can be deleted.
  for table in Ставки Контрагенты Регионы; do
    printf '  relations: rows of %s: %s\n' $table \
      "$(LC_ALL=C "$bin/jetsql" run "$database" "delete from $table" 2>&1 | grep -oE 'error 3200|[0-9]+ rows?')"
  done
}

# Every file of the installation by its hash, without what programs remember there.
hashes() {
  (cd "$demo/product" && find . -type f ! -name 'TmWebUpdate.*' ! -name 'TMW_LastRollback.txt' \
    ! -path './Предыдущая версия/*' ! -name '*.zip' ! -name '* (до отката *' -exec sha256sum {} + | sort -k 2)
}

title "Before"
state | tee "$demo/before.txt"
hashes >"$demo/before.sha256"

title "The update, from the product's folder"
[ -z "$window" ] || echo "(Its window asks and waits for the answer.)"
cd "$demo/product/tm"
options=(-w "$url" -e "$demo/product/tm/Tamrin" -p "-open books")
if [ -z "$window" ]; then
  unset DISPLAY WAYLAND_DISPLAY
  options=(-y "${options[@]}")
fi
patience=$([ -z "$window" ] && echo 60 || echo 900)
started=$SECONDS
# It ends with its last copy; the product that this one has started is on its own.
run ./TmWebUpdate "${options[@]}" </dev/null 2>&1 | cat
until [ -e "$demo/started.txt" ]; do
  if [ $((SECONDS - started)) -gt "$patience" ]; then
    echo "FAILED: the product has not been started" >&2
    exit 1
  fi
  sleep 0.1
done
sleep 0.3

title "After"
state | tee "$demo/after.txt"
cat "$demo/started.txt" "$TAMRIN_DEMO_LOG" | sed 's/^/  /'
echo "  requests to the server: $(wc -l <"$demo/access.log"), bytes: $(awk '{ n += $3 } END { print n }' "$demo/access.log")"
(cd "$demo/product/db" && find . -type f -printf '  %P\n' | sort)
for backup in "$demo"/product/db/*.zip "$demo"/product/db/*/*.zip; do
  [ ! -e "$backup" ] || unzip -l "$backup" | sed -n 's/^/  /; /mdb/p'
done

# What has been shown must also be so.
for line in documents partners relations; do
  diff <(grep "^  $line" "$demo/before.txt") <(grep "^  $line" "$demo/after.txt")
done
grep -q "version 3.6.2" "$demo/after.txt"
[ "$(grep -c '^  relations: .* error 3200$' "$demo/after.txt")" = 3 ]
grep -q "Tamrin $new started with: -open books" "$demo/started.txt"
strange=$(diff -r "$demo/newer" "$demo/product" |
  grep -vE '^Only in .*/product: (db|Предыдущая версия|TmWebUpdate\.(serial|lock))$' || true)
if [ -n "$strange" ]; then
  echo "FAILED: the installation is not the release: $strange" >&2
  exit 1
fi

title "The way back: yesterday's program with yesterday's books"
"$bin/jetsql" run "$demo/product/db/Tamrin.mdb" "update Документы set Сумма = 1 where Ид = 1" >/dev/null
run ./TmRollback --dry-run | sed 's/^/  /'
run ./TmRollback --yes </dev/null 2>&1 | sed 's/^/  /'
state | tee "$demo/back.txt"
tail -n 4 "$TAMRIN_DEMO_LOG" | sed 's/^/  /'
(cd "$demo/product/db" && find . -type f -printf '  %P\n' | sort)
diff "$demo/before.txt" "$demo/back.txt"
hashes | diff "$demo/before.sha256" -
[ "$("$bin/jetsql" run "$(echo "$demo"/product/db/*отката*.mdb)" 'select Сумма from Документы where Ид = 1' |
  tail -n 1)" = 1.00 ]
[ ! -e "$demo/product/Предыдущая версия" ]
echo
echo "The installation is the release $old again; all is in ${demo#"$OLDPWD"/}."
