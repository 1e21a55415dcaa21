#!/usr/bin/env bash
# Hashing, extraction and zip backup beside the usual tools, in one run: prints wall times of the
# best of several rounds and their ratios.
#   bench/packages_bench.sh [BUILD_FOLDER]     (a build with TMW_BUILD_BENCH=ON)
set -euo pipefail
cd "$(dirname "$0")/.."
bench=$PWD/${1:-build/linux-release}/bin/packages_bench
rounds=${ROUNDS:-5}
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

# best NAME COMMAND...: the shortest wall time of the rounds, in seconds, into the variable NAME.
best() {
  local start end
  start=$(date +%s.%N)
  "${@:2}" >output.txt
  end=$(date +%s.%N)
  local took
  took=$(echo "$end - $start" | bc)
  if [ -z "${!1:-}" ] || [ "$(echo "$took < ${!1}" | bc)" = 1 ]; then printf -v "$1" %s "$took"; fi
}

# ratio WHAT OURS THEIRS LIMIT
ratio() {
  printf '%-34s %7.2f s / %7.2f s = %.3f (at most %s)\n' "$1" "$2" "$3" \
    "$(echo "$2 / $3" | bc -l)" "$4"
}

head -c 1073741824 /dev/urandom >large.bin
"$bench" pack package.rar large.bin >/dev/null
python3 - <<'END'
import random, sqlite3, os
random.seed(1)
words = "касса приход расход налог банк счёт авансы поставщик покупатель договор отчёт баланс".split()
database = sqlite3.connect("base.mdb")
database.execute("create table t (id integer primary key, amount real, text text, key blob)")
while os.path.getsize("base.mdb") < 100 << 20:
    database.executemany("insert into t (amount, text, key) values (?, ?, ?)",
        [(random.randint(1, 10**9) / 100, " ".join(random.choices(words, k=9)), random.randbytes(24))
         for _ in range(20000)])
    database.commit()
END

for _ in $(seq "$rounds"); do
  best hash_ours "$bench" hash large.bin
  hash_memory=$(grep VmHWM output.txt)
  best hash_theirs openssl dgst -sha256 large.bin
  rm -rf ours theirs && mkdir ours theirs
  best extract_ours "$bench" extract package.rar ours
  extract_memory=$(grep VmHWM output.txt)
  best extract_theirs bsdtar -xf package.rar -C theirs
done
for _ in $(seq "$(((rounds + 1) / 2))"); do
  best zip_ours "$bench" zip ours.zip base.mdb
  zip_memory=$(grep VmHWM output.txt)
  rm -f theirs.zip
  best zip_theirs zip -q -9 theirs.zip base.mdb
done

ratio "hash of 1 GiB / openssl" "$hash_ours" "$hash_theirs" 1.05
ratio "stored package of 1 GiB / bsdtar" "$extract_ours" "$extract_theirs" 1.1
ratio "zip of a 100 MiB database / zip -9" "$zip_ours" "$zip_theirs" 0.6
printf 'size of the zip: %s / %s = %.4f (at most 1.02)\n' "$(stat -c %s ours.zip)" \
  "$(stat -c %s theirs.zip)" "$(echo "$(stat -c %s ours.zip) / $(stat -c %s theirs.zip)" | bc -l)"
echo "memory: hash ${hash_memory#VmHWM:}, extract ${extract_memory#VmHWM:}, zip ${zip_memory#VmHWM:} (at most 64 MiB)"
