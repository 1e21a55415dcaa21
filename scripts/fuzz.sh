#!/usr/bin/env bash
# Fuzzes one target with clang's libFuzzer and the sanitizers, in a build folder of its own. The
# inputs that led somewhere are kept there for the next run; a finding ends the run and is named.
#   scripts/fuzz.sh TARGET SECONDS [FOLDER OF MORE SEEDS]
# Targets: rar_reader, rar_decoder, sql_statements, jet_file
set -euo pipefail
cd "$(dirname "$0")/.."
target=$1
seconds=$2
more_seeds=${3:-}
build=build/fuzz

if ! command -v clang++ >/dev/null; then
  echo "fuzz: clang is not installed"
  exit 77
fi
CC=clang CXX=clang++ cmake -S . -B "$build" -G Ninja -DTMW_FUZZ=ON -DTMW_BUILD_TESTS=OFF >/dev/null
corpus=$build/corpus/$target
seeds=$build/seeds
most_bytes=65536
options=()

# The texts in double quotes of C++ sources, one a line.
texts_of() {
  grep -ohE '"([^"\\]|\\.)*"' "$@" | sed -E 's/^"//; s/"$//; s/\\(.)/\1/g'
}

if [ "$target" = sql_statements ]; then
  cmake --build "$build" --target "$target" -j 2 >/dev/null
  seeds=$build/sql-seeds
  most_bytes=2048
  mkdir -p "$seeds"
  # What the tests of the engine try: statements as they are, the rest as expressions.
  texts_of tests/jet/*_test.cpp | sort -u | grep . | while IFS= read -r text; do
    seed=$seeds/$(printf %s "$text" | md5sum | cut -c 1-16)
    case $text in
      [sS]elect* | insert* | update* | delete* | create* | alter* | drop*) printf %s "$text" ;;
      *) printf 'select %s from Товары' "$text" ;;
    esac | sed 's/ -> /\n/g' >"$seed"
  done
  texts_of src/jet/sql/*.cpp tests/jet/*_test.cpp | grep -oE '[a-zA-Z]{2,}' | tr '[:upper:]' '[:lower:]' |
    sort -u | sed 's/.*/"& "/' >"$build/sql.dict"
  options+=(-dict="$build/sql.dict")
elif [ "$target" = jet_file ]; then
  cmake --build "$build" --target "$target" jetsql -j 2 >/dev/null
  seeds=$build/file-seeds
  most_bytes=524288
  rm -rf "$seeds"
  mkdir -p "$seeds"
  "$build/bin/jetsql" create "$seeds/empty.mdb"
  "$build/bin/jetsql" create "$seeds/full.mdb"
  {
    echo "create table К (Ид counter primary key, Имя text(255), Сумма money, День datetime, Да bit);"
    echo "create table Д (К long references К, Текст memo, Байты binary(9), Ключ guid);"
    echo "create unique index П on К (Имя desc, Сумма);"
    for i in $(seq 1 90); do
      echo "insert into К (Имя, Сумма, Да) values ('$(printf 'общее начало %040d' "$i")', $i, yes);"
      echo "insert into Д (К, Текст) values ($i, String($((i * i)), 'ё'));"
    done
  } | "$build/bin/jetsql" run "$seeds/full.mdb" >/dev/null
else
  cmake --build "$build" --target "$target" fuzz_seed_writer -j 2 >/dev/null
  mkdir -p "$seeds"
  "$build/bin/fuzz_seed_writer" "$seeds"
  if [ -d "$more_seeds" ]; then cp "$more_seeds"/*.rar "$seeds/"; fi
fi
if [ "$target" = jet_file ] && [ -d "$more_seeds" ]; then cp "$more_seeds"/*.mdb "$seeds/"; fi
mkdir -p "$corpus" "$build/findings"

# One input may take five seconds and, in one piece, what the largest model needs; what needs more is
# a finding.
"$build/bin/$target" -max_total_time="$seconds" -timeout=5 -rss_limit_mb=1024 -malloc_limit_mb=272 \
  -max_len="$most_bytes" -print_final_stats=1 -verbosity=1 -artifact_prefix="$build/findings/" \
  ${options[@]+"${options[@]}"} "$corpus" "$seeds" 2>&1 | tail -n 25
