#!/usr/bin/env bash
# Publishes and checks products of 1,000 and 30,000 files, and one of 5,000 files of 1 GiB together, side
# by side in one run with what the system needs for the same files: copying them and bringing the copy to
# the disk, and hashing them on all cores. Prints seconds, the ratio to the copy, and memory.
#   bench/publish.sh [FOLDER]     a folder with 4 GiB of room (default: a temporary one)
set -euo pipefail
cd "$(dirname "$0")/.."
bin=$PWD/build/linux-release/bin
folder=$(mktemp -d "${1:-${TMPDIR:-/tmp}}/publish-bench.XXXXXX")
trap 'rm -rf "$folder"' EXIT
cd "$folder"
mkdir scripts
"$bin/jetsql" create reference.mdb
cat >release.xml <<'END_OF_RELEASE'
<?xml version="1.0" encoding="utf-8"?>
<Release Product="TMW" Version="3.6.0.2" Date="2026-11-20">
  <Updater MinVersion="3.0"/><Servers><Server Url="http://localhost/"/></Servers>
  <Files><Folder Target="{p}"/></Files>
</Release>
END_OF_RELEASE

# product COUNT BYTES: so many files of so many bytes together, small and large ones.
product() {
  rm -rf product server
  python3 - "$1" "$2" <<'END_OF_PROGRAM'
import os, random, sys
count, whole = int(sys.argv[1]), int(sys.argv[2])
random.seed(1)
sizes = [random.expovariate(1) for _ in range(count)]
scale = whole / sum(sizes)
for i, size in enumerate(sizes):
    os.makedirs(f"product/{i % 50}", exist_ok=True)
    with open(f"product/{i % 50}/file{i}.dat", "wb") as file:
        file.write(os.urandom(int(size * scale)))
END_OF_PROGRAM
  cat product/*/* >/dev/null
  sync -f product
}
# seconds COMMAND...
seconds() {
  local start
  start=$(date +%s%N)
  "$@" >/dev/null
  echo "scale=2; ($(date +%s%N) - $start) / 1000000000" | bc
}
measured() { seconds /usr/bin/time -f %M -o memory "$bin/tmpublish" "$@"; }

printf '%8s %8s %8s %8s %10s %8s %10s %8s\n' files cp+sync publish ratio KiB check KiB hashing
for size in "1000 $((16 << 20))" "30000 $((480 << 20))" "5000 $((1 << 30))"; do
  # shellcheck disable=SC2086  # two numbers
  product $size
  # The second of two copies: the first one finds the disk busy with the product.
  for _ in 1 2; do
    rm -rf copy
    copying=$(seconds sh -c 'cp -r product copy && sync -f copy')
  done
  rm -rf copy
  publishing=$(measured publish release.xml --product product --database reference.mdb \
    --scripts scripts --output server)
  publish_memory=$(cat memory)
  checking=$(measured check server)
  hashing=$(seconds sh -c 'find product -type f -print0 | xargs -0 -P "$(nproc)" -n 100 sha256sum')
  printf '%8s %8s %8s %8s %10s %8s %10s %8s\n' "${size% *}" "$copying" "$publishing" \
    "$(echo "scale=2; $publishing / $copying" | bc)" "$publish_memory" "$checking" "$(cat memory)" "$hashing"
done
