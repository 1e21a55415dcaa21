#!/usr/bin/env bash
# Fuzzes one target with clang's libFuzzer and the sanitizers, in a build folder of its own. The
# inputs that led somewhere are kept there for the next run; a finding ends the run and is named.
#   scripts/fuzz.sh TARGET SECONDS [FOLDER OF MORE SEEDS]
# Targets: rar_reader, rar_decoder
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
cmake --build "$build" --target "$target" fuzz_seed_writer -j 2 >/dev/null

corpus=$build/corpus/$target
mkdir -p "$corpus" "$build/seeds" "$build/findings"
"$build/bin/fuzz_seed_writer" "$build/seeds"
if [ -d "$more_seeds" ]; then cp "$more_seeds"/*.rar "$build/seeds/"; fi

# One input may take five seconds and, in one piece, what the largest model needs; what needs more is
# a finding.
"$build/bin/$target" -max_total_time="$seconds" -timeout=5 -rss_limit_mb=1024 -malloc_limit_mb=272 \
  -max_len=65536 -print_final_stats=1 -verbosity=1 -artifact_prefix="$build/findings/" \
  "$corpus" "$build/seeds" 2>&1 | tail -n 25
