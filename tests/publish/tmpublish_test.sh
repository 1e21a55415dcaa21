#!/usr/bin/env bash
# Tries the program tmpublish from outside: what it prints, what it leaves, its exit codes.
#   tmpublish_test.sh TMPUBLISH JETSQL
set -euo pipefail
tmpublish=$1 jetsql=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export TMPDIR=$work/tmp

# expect CODE PATTERN ARGUMENTS...: the exit code and an extended pattern of the standard output.
expect() {
  local code=$1 wanted=$2 output got=0
  shift 2
  output=$("$tmpublish" "$@" 2>errors </dev/null) || got=$?
  if [ "$got" != "$code" ] || ! grep -qE -- "$wanted" <<<"$output"; then
    printf 'FAILED: tmpublish %s\ncode %s instead of %s, output:\n%s\nerrors:\n%s\n' \
      "$*" "$got" "$code" "$output" "$(cat errors)"
    exit 1
  fi
}
# errors TEXT: the last command's standard error has it, and nothing of a progress line.
errors() {
  if ! grep -qF -- "$1" errors || grep -q $'\r' errors; then echo "FAILED: no \"$1\" in:"; cat errors; exit 1; fi
}

mkdir -p product scripts
echo program >product/Программа.exe
"$jetsql" create reference.mdb
"$jetsql" run reference.mdb "create table DBVersion (MajorVersion long)" >output
for version in 3.6.0.2 3.6.0.3; do
  cat >release.xml <<END
<?xml version="1.0" encoding="utf-8"?>
<Release Product="TMW" Version="$version" Date="2026-11-20">
  <Updater MinVersion="3.0"/><Servers><Server Url="http://localhost/"/></Servers>
  <Files><Folder Target="{p}"/></Files>
</Release>
END
  publish=(publish release.xml --product product --database reference.mdb --scripts scripts --output server)
  expect 0 "files: 1, dictionaries: 0, user tables: 0, scripts: 0" "${publish[@]}"
  echo "program $version" >product/Программа.exe
done
expect 1 "^faults: 1$" "${publish[@]}"
mkdir beside
ln -s .. product/up && ln -s "$work/beside" product/ && ln -s "$work/product" beside/back
expect 1 "^faults: 2$" "${publish[@]/%server/product-server}"
rm product/up product/beside
echo 9 >product/tmwebupdate.serial
expect 1 "in which the updater keeps" "${publish[@]}" --replace
rm product/tmwebupdate.serial
expect 0 '^\{"version":"3.6.0.3","folder":".*","files":1,.*"faults":\[\]\}$' "${publish[@]}" --replace --json
[ "$(ls -A server)" = $'TMW_3.6.0.2\nTMW_3.6.0.3\nTMW_links.dat\nTMW_version.dat\n_Announcing.lock' ]
expect 0 "release 3.6.0.3 is in order: files: 1" check server
expect 1 "scripts: No script leads on from version 3.5.0 to 3.6.0" check --from 3.5.0 server
expect 0 "file.\{p\} Программа.exe" diff server/TMW_3.6.0.2 server
"$tmpublish" diff --json server/TMW_3.6.0.2 server | python3 -m json.tool >output
grep -qF '"name": "{p} ' output
expect 3 "" check нет
errors 'tmpublish: No folder "'
expect 3 "" check http://127.0.0.1:1/
grep -qF "tmpublish: The server cannot be reached: " errors
for wrong in "" "чепуха" "publish release.xml" "check" "check a b" "diff a" "check --x a" "check --from 3 a"; do
  # shellcheck disable=SC2086  # the words are the arguments
  expect 2 "" $wrong
  errors "see tmpublish --help"
done
expect 0 "^Exit codes: 0 done" --help
expect 0 "^      --from VERSION" check --help
{ "$tmpublish" check нет --json 2>errors || true; } | python3 -m json.tool >output

# Signatures, made and verified beside the program minisign.
expect 0 "^public key: maker.key.pub$" keygen --no-password maker.key
expect 3 "" keygen --no-password maker.key
errors 'It exists already: "maker.key"'
for password in '\xEF\xBB\xBF\r\nx' 'p\0w\0'; do
  printf "$password" >password
  expect 3 "" keygen other.key --password-file password
  errors 'The first line is no password'
done
[ "$(stat -c %a maker.key)" = 600 ]
expect 0 "^signed by the key [0-9A-F]{16}: serial 1, last day " renew --output server --sign maker.key
name=TMW_version.dat.$(sha256sum server/TMW_version.dat | head -c 16).minisig
for file in "$name" TMW_version.dat.minisig; do
  minisign -Vqm server/TMW_version.dat -x "server/$file" -p maker.key.pub
done
expect 0 "^trusted comment: TMW 3.6.0.3 serial:1 expires:" check server --key maker.key.pub
minisign -G -W -p other.pub -s other.key >output
expect 1 "is of the key .*, which is not given" check server --key "$(tail -n 1 other.pub)"
minisign -S -s other.key -m server/TMW_version.dat -x "server/$name" -t "by hand"
expect 0 "^trusted comment: by hand$" check server --key other.pub
expect 0 '"serial":9,"expires":"2[0-9-]*","key":"[0-9A-F]{16}"' renew --output server --sign other.key --serial 9 --expires 20 --json
expect 0 "^warning: TMW_version.dat: It expires on 2" check server --key other.pub
for i in 1 2 3 4 5; do echo >product/$i.ocx; done
sed 's|</Files>|<File Mask="*.ocx" IsCom="yes"/></Files>|' release.xml >com.xml
expect 1 "^5 files, for example .* marks it as IsCom" "${publish[@]/release.xml/com.xml}" --replace
rm product/*.ocx
expect 1 "sign this one too" announce 3.6.0.3 --output server
expect 1 "retract announces an older one" announce 3.6.0.2 --output server --sign maker.key
expect 0 "^announced: 3.6.0.2$" retract --output server --sign maker.key
expect 1 "There is no older release" retract --output server --sign maker.key
expect 0 "^announced: 3.6.0.3$" announce 3.6.0.3 --output server --sign maker.key
expect 0 "tmpublish announce 3.6.0.3 --output server does it" "${publish[@]}" --replace --no-announce
for wrong in "renew --output server" "publish release.xml --sign k --no-announce" "announce 3 --output server" \
  "retract --output server --expires 9" "retract --output server --sign k --expires 2020-01-01" \
  "retract --output server --sign k --serial 0" "keygen k --no-password --password-file p"; do
  # shellcheck disable=SC2086
  expect 2 "" $wrong
done
expect 3 "" check server --key нет
errors 'No public key, and no file of one: "нет"'
# Nothing that is announced, newer or being replaced goes; what a killed run has left does.
mkdir server/TMW_3.6.0.1 server/TMW_3.6.0.9 server/TMW_3.6.0.0.pruned
ln -s "$work/product" server/TMW_3.5.0.0
expect 0 "^removed: 3.6.0.1, bytes: 0$" prune --output server --keep 2
[ "$(ls server | grep TMW_3)" = $'TMW_3.6.0.2\nTMW_3.6.0.3\nTMW_3.6.0.9' ] && [ -e product/Программа.exe ]
flock --no-fork server/_Announcing.lock sleep 30 &
until ! flock -n server/_Announcing.lock true; do sleep 0.1; done
expect 3 "" prune --output server --keep 1
errors "Another announcement is being made here"
kill $! && rmdir server/TMW_3.6.0.9
sed 's/3.6.0.3/3.6.0.4/' release.xml >newest.xml
head -c 100M /dev/zero >product/large
"$tmpublish" "${publish[@]/release.xml/newest.xml}" --sign maker.key 2>errors &
until [ -e server/TMW_3.6.0.4.new/work ]; do sleep 0.01; done
kill $!
if wait $! || [ $? != 3 ]; then echo "FAILED: a stopped run"; exit 1; fi
errors "Stopped"
[ "$(ls server | grep -cv 'minisig\|lock')" = 4 ]
[ -z "$(ls -A tmp)" ] || { echo "FAILED: files were left in the folder for temporary files"; exit 1; }
echo "tmpublish: done"
