#!/usr/bin/env bash
# Builds the measured programs and runs bench/run.py, which explains itself with --help:
#   bench/run.sh
#   bench/run.sh --only packages,update
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake --preset linux-release -DTMW_BUILD_BENCH=ON >/dev/null
targets="TmWebUpdate companion tmpublish jetsql database_build download jet_file jet_statements"
targets+=" packages_bench rar_extraction run_log_bench update_list window_share"
TMW_TARGETS=$targets scripts/build.sh linux-release
exec python3 bench/run.py "$@"
