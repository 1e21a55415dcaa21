#!/usr/bin/env bash
# Shows what the program does today, on this machine, with nothing left behind but its folder.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/setup.sh
scripts/build.sh linux-release

updater=$PWD/build/linux-release/bin/TmWebUpdate
demo=$PWD/build/demo
rm -rf "$demo"
mkdir -p "$demo/product/tm"
export TMW_FRONT_END=terminal # what it says is read here, not in windows
export TAMRIN_MACHINE_REG=$demo/machine.reg TAMRIN_USER_REG=$demo/user.reg
cat >"$TAMRIN_MACHINE_REG" <<END
REGEDIT4

[HKEY_LOCAL_MACHINE\\SOFTWARE\\Kestrel Soft\\Tamrin\\General]
"RootPath"="$demo/product/"
"DataBasePath"="$demo/product/db/"
END
cat >"$demo/product/Tamrin" <<'END'
#!/bin/sh
echo "Tamrin started with: $*"
END
chmod +x "$demo/product/Tamrin"

show() {
  printf '\n$ TmWebUpdate'
  printf ' %s' "$@"
  printf '\n'
  "$updater" "$@" </dev/null || printf '(exit code %d)\n' "$?"
}

echo
echo "=== An unknown option is refused; nothing else happens"
show -z

echo
echo "=== A network installation is refused, and the product is started again"
touch "$demo/product/tm/client01.cln"
show -e "$demo/product/Tamrin" -p "-open books"
sleep 0.3
rm "$demo/product/tm/client01.cln"

echo
echo "=== A client installation is brought up to date"
# The product as it is installed, and the release that is newer: one file is changed, one is new,
# one is current. The program and its library are part of the product.
bin=$PWD/build/linux-release/bin
mkdir -p "$demo/release/tm" "$demo/release/help" "$demo/product/db" "$demo/tmp"
cp "$bin/TmWebUpdate" "$bin/UnTmz.so" "$demo/product/tm/"
printf '#!/bin/sh\necho "Tamrin 3.6.0.1 started with: $*"\n' >"$demo/product/tm/Tamrin"
printf '#!/bin/sh\necho "Tamrin 3.6.0.2 started with: $*"\n' >"$demo/release/tm/Tamrin"
chmod +x "$demo/product/tm/Tamrin" "$demo/release/tm/Tamrin"
echo 'Rates, unchanged' | tee "$demo/product/tm/Ставки.txt" >"$demo/release/tm/Ставки.txt"
echo 'Help of 3.6.0.2' >"$demo/release/help/Справка.txt"
"$bin/jetsql" create "$demo/product/db/Tamrin.mdb"
cat >>"$TAMRIN_MACHINE_REG" <<'END'
"InstallationType"="Client"

[HKEY_CLASSES_ROOT\Tm_Version.VersionInfo]
"VersionEx"="3.6.0.1"
END
port=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
build/linux-release/tests/release_writer "$demo/server" "http://127.0.0.1:$port/" 3.6.0.2 "$demo/release"
cat >"$demo/nginx.conf" <<END
pid nginx.pid; events {}
http {
  log_format plain '\$request_uri \$status \$body_bytes_sent'; access_log access.log plain;
  client_body_temp_path t; proxy_temp_path t; fastcgi_temp_path t; uwsgi_temp_path t; scgi_temp_path t;
  server { listen 127.0.0.1:$port; root server; }
}
END
nginx -p "$demo" -e error.log -c nginx.conf
trap 'kill "$(cat "$demo/nginx.pid")"' EXIT

contents() {
  (cd "$demo/product" && find . -type f ! -path './db/*' ! -name 'TmWebUpdate' ! -name 'UnTmz.so' \
    -exec sh -c 'printf "  %s: " "$1"; tail -n 1 "$1"' sh {} \; | sort)
}
echo "before:"
contents
cd "$demo/product/tm"
export TMPDIR=$demo/tmp
updater=./TmWebUpdate
show -y -w "http://127.0.0.1:$port/" -e "$demo/product/tm/Tamrin" -p "-after-update"
# The program has restarted itself from the temporary folder: the product's start ends the chain.
for _ in $(seq 100); do
  ! [ -e "$demo/tmp/TMW_WebUpdate" ] && break
  sleep 0.1
done
sleep 0.5
echo "after:"
contents
echo "asked of the server:"
sed 's/^/  /' "$demo/access.log"
