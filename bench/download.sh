#!/usr/bin/env bash
# Downloads 1 GiB from nginx on loopback with curl and with the updater's downloader, side by side.
#   bench/download.sh [FOLDER]     a folder with 3 GiB of room (default: a temporary one)
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset linux-release -DTMW_BUILD_BENCH=ON >/dev/null
cmake --build --preset linux-release --target download >/dev/null

folder=$(mktemp -d "${1:-${TMPDIR:-/tmp}}/download-bench.XXXXXX")
server=
trap '[ -z "$server" ] || kill "$server"; rm -rf "$folder"' EXIT
head -c 1G /dev/urandom >"$folder/file"
port=$(shuf -i 20000-30000 -n 1)
cat >"$folder/nginx.conf" <<END
daemon off; master_process off; pid nginx.pid; events {}
http { access_log off; sendfile on; client_body_temp_path tmp; proxy_temp_path tmp;
  fastcgi_temp_path tmp; uwsgi_temp_path tmp; scgi_temp_path tmp;
  server { listen 127.0.0.1:$port; root .; } }
END
nginx -p "$folder" -e error.log -c nginx.conf &
server=$!
curl -s -f --retry 20 --retry-connrefused --retry-delay 1 -o /dev/null -r 0-0 \
  "http://127.0.0.1:$port/file"
build/linux-release/bin/download "http://127.0.0.1:$port/file" "$folder"
