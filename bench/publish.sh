#!/usr/bin/env bash
# Publishes 5,000 files of 1 GiB together and hashes the same files with sha256sum, side by side in
# one run: prints wall times, their ratio and the publisher's memory.
#   bench/publish.sh [FOLDER]     a folder with 3 GiB of room (default: a temporary one)
set -euo pipefail
cd "$(dirname "$0")/.."
bin=$PWD/build/linux-release/bin
folder=$(mktemp -d "${1:-${TMPDIR:-/tmp}}/publish-bench.XXXXXX")
trap 'rm -rf "$folder"' EXIT
cd "$folder"
mkdir -p product scripts
python3 - <<'END'
import os, random
random.seed(1)
sizes = [random.expovariate(1) for _ in range(5000)]
scale = (1 << 30) / sum(sizes)
for i, size in enumerate(sizes):
    os.makedirs(f"product/{i % 50}", exist_ok=True)
    with open(f"product/{i % 50}/file{i}.dll", "wb") as file:
        file.write(os.urandom(int(size * scale)))
END
"$bin/jetsql" create reference.mdb
cat >release.xml <<'END'
<?xml version="1.0" encoding="utf-8"?>
<Release Product="TMW" Version="3.6.0.2" Date="2026-11-20">
  <Updater MinVersion="3.0"/><Servers><Server Url="http://localhost/"/></Servers>
  <Files><Folder Target="{p}"/></Files>
</Release>
END
# seconds COMMAND...
seconds() {
  local start
  start=$(date +%s%N)
  "$@" >/dev/null
  echo "scale=2; ($(date +%s%N) - $start) / 1000000000" | bc
}
cat product/*/* >/dev/null
hashing=$(seconds sh -c 'find product -type f -print0 | xargs -0 -P "$(nproc)" -n 100 sha256sum')
copying=$(seconds sh -c 'cp -r product copy && sync -f copy')
rm -rf copy
publishing=$(seconds /usr/bin/time -f %M -o memory "$bin/tmpublish" publish release.xml --product product \
  --database reference.mdb --scripts scripts --output server)
checking=$(seconds "$bin/tmpublish" check server)
echo "sha256sum on all cores: $hashing s; cp -r and sync: $copying s"
echo "publish: $publishing s, $(cat memory) KiB; check: $checking s"
