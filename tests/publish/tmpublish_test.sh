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
expect 0 '^\{"version":"3.6.0.3","folder":".*","files":1,.*"faults":\[\]\}$' "${publish[@]}" --replace --json
[ "$(ls -A server)" = $'TMW_3.6.0.2\nTMW_3.6.0.3\nTMW_links.dat\nTMW_version.dat' ]
expect 0 "release 3.6.0.3 is in order: files: 1" check server
expect 1 "scripts: No script leads on from version 3.5.0 to 3.6.0" check --from 3.5.0 server
expect 0 "file.\{p\} Программа.exe" diff server/TMW_3.6.0.2 server
"$tmpublish" diff --json server/TMW_3.6.0.2 server | python3 -m json.tool >output
grep -qF '"name": "{p} ' output
expect 3 "" check нет
errors 'tmpublish: error 1001: No folder "'
expect 1 "TMW_version.dat: Cannot be had" check http://127.0.0.1:1/
for wrong in "" "чепуха" "publish release.xml" "check" "check a b" "diff a" "check --x a" "check --from 3 a"; do
  # shellcheck disable=SC2086  # the words are the arguments
  expect 2 "" $wrong
  errors "see tmpublish --help"
done
expect 0 "^Exit codes: 0 done" --help
expect 0 "^      --from VERSION" check --help
{ "$tmpublish" check нет --json 2>errors || true; } | python3 -m json.tool >output
sed 's/3.6.0.3/3.6.0.4/' release.xml >newest.xml
head -c 100M /dev/zero >product/large
"$tmpublish" "${publish[@]/release.xml/newest.xml}" 2>errors &
until [ -e server/TMW_3.6.0.4.new/work ]; do sleep 0.01; done
kill $!
if wait $! || [ $? != 3 ]; then echo "FAILED: a stopped run"; exit 1; fi
errors "Stopped"
[ "$(ls server | wc -l)" = 4 ]
[ -z "$(ls -A tmp)" ] || { echo "FAILED: files were left in the folder for temporary files"; exit 1; }
echo "tmpublish: done"
