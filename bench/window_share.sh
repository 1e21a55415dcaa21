#!/usr/bin/env bash
# Downloads 1 GiB from nginx on loopback under the window of a run, three times, and prints the
# window's share of the processor time. TMW_FRONT_END chooses the window, as it does for the updater.
#   bench/window_share.sh [FOLDER]     a folder with 3 GiB of room (default: a temporary one)
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset linux-release -DTMW_BUILD_BENCH=ON >/dev/null
cmake --build --preset linux-release --target window_share >/dev/null
. bench/gibibyte_server.sh "$@"

for _ in 1 2 3; do
  rm -f "$folder/downloaded"
  build/linux-release/bin/window_share "$url" "$folder" $((1 << 30))
done
