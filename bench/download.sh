#!/usr/bin/env bash
# Downloads 1 GiB from nginx on loopback with curl and with the updater's downloader, side by side.
#   bench/download.sh [FOLDER]     a folder with 3 GiB of room (default: a temporary one)
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset linux-release -DTMW_BUILD_BENCH=ON >/dev/null
cmake --build --preset linux-release --target download >/dev/null
. bench/gibibyte_server.sh "$@"

build/linux-release/bin/download "$url" "$folder"
