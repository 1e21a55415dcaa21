#!/usr/bin/env bash
# Builds the measured programs and runs bench/run.py, which explains itself with --help:
#   bench/run.sh
#   bench/run.sh --only packages,update
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset linux-release -DTMW_BUILD_BENCH=ON >/dev/null
targets="TmWebUpdate companion tmpublish jetsql database_build download jet_file jet_statements"
targets+=" packages_bench run_log_bench update_list window_share"
# Only where libarchive's headers are.
if grep -q "rar_extraction" build/linux-release/build.ninja; then targets+=" rar_extraction"; fi
TMW_TARGETS=$targets scripts/build.sh linux-release
exec python3 bench/run.py "$@"
