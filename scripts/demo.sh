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
echo "=== A normal start: settings, waiting for other programs, the lock; up to the progress window"
show -W http://127.0.0.1/ -e "$demo/product/Tamrin"
sleep 0.3
