#!/usr/bin/env bash
# Installs the Debian packages in a clean Debian 12 that holds what they depend on and nothing else,
# publishes a release there and updates a product with it, and removes them again: no file of the
# packages may have been changed by the update, nor be left behind by the removal.
#   scripts/check_packages.sh FOLDER_OF_PACKAGES
# The clean system is made once and kept in build/clean-debian.
set -euo pipefail
packages=$(realpath "$1")
cd "$(dirname "$0")/.."
as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)

fail() {
  echo "FAILED: $*" >&2
  exit 1
}

lintian --fail-on error,warning "$packages"/*.deb 2>&1 | grep -v 'root privileges' || true
[ "${PIPESTATUS[0]}" -eq 0 ] || fail "lintian has found something"

# clean_system: the archive of a system with the packages' dependencies, named after them.
clean_system() {
  local needed archive sources=/etc/apt/sources.list.d/debian.sources
  needed=$(for package in "$packages"/*.deb; do dpkg-deb -f "$package" Depends; done |
    tr ',' '\n' | sed 's/ *(.*//; s/^ *//' | sort -u | paste -sd ,)
  archive=build/clean-debian/$(sha256sum <<<"$needed" | head -c 16).tar
  mkdir -p build/clean-debian
  [ -f "$sources" ] || sources=/etc/apt/sources.list
  if [ ! -e "$archive" ]; then
    echo "making a clean system with $needed" >&2
    "${as_root[@]}" mmdebstrap --quiet --mode=root --variant=essential --include="$needed" \
      --customize-hook='rm -rf "$1"/usr/share/locale "$1"/usr/share/doc/* "$1"/var/cache/apt/*' \
      bookworm --format=tar "$archive.new" "$sources" >&2
    "${as_root[@]}" mv "$archive.new" "$archive"
  fi
  echo "$archive"
}

archive=$(clean_system)
work=$(mktemp -d)
root=$work/root
server=
finish() {
  [ -z "$server" ] || kill "$server"
  "${as_root[@]}" rm -rf "$work"
}
trap finish EXIT
mkdir "$root"
"${as_root[@]}" tar -xf "$archive" -C "$root"
"${as_root[@]}" cp "$packages"/*.deb "$root/"
# within: runs the script on standard input in the clean system, with processes of its own.
within() {
  "${as_root[@]}" unshare --mount --pid --fork --mount-proc="$root/proc" \
    chroot "$root" env -i HOME=/root LC_ALL=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin bash -eu
}
files() {
  "${as_root[@]}" find "$root" -xdev \( -path "$root/proc" -o -path "$root/var" -o -path "$root/tmp" \
    -o -path "$root/root" -o -path "$root/opt" -o -path "$root/srv" -o -path "$root/dev" \) -prune \
    -o -printf '%P\n' | sort
}

files >"$work/before"
port=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
mkdir "$work/srv"
within <<END
dpkg --install /*.deb >/dev/null
for program in TmWebUpdate TmSupport TmRollback tmpublish jetsql; do \$program --version; done
mkdir -p /opt/tamrin/tm /srv/db /srv/new/tm /srv/scripts /etc/tamrin
echo old >/opt/tamrin/tm/Core.dat
echo new >/srv/new/tm/Core.dat
# The product's own copy of the updater, newer than the package's.
for name in TmWebUpdate UnTmz.so; do (cat /usr/libexec/tamrin-update/\$name; echo) >/srv/new/tm/\$name; done
jetsql create /srv/db/Tamrin.mdb
jetsql run /srv/db/Tamrin.mdb "create table DBVersion (MajorVersion long, MinorVersion long, BuildNumber long);
  insert into DBVersion values (3, 6, 0); create table Rates (Id long not null, Rate currency,
  constraint PrimaryKey primary key (Id)); insert into Rates values (1, 18)" >/dev/null 2>&1
cp /srv/db/Tamrin.mdb /srv/reference.mdb
jetsql run /srv/reference.mdb "update Rates set Rate = 20" >/dev/null 2>&1
cat >/srv/release.xml <<XML
<?xml version="1.0" encoding="utf-8"?>
<Release Product="TMW" Version="3.6.0.2" Date="2026-11-20">
  <Updater MinVersion="1.0"><Component File="tm/TmWebUpdate"/><Component File="tm/UnTmz.so"/></Updater>
  <Servers><Server Url="http://127.0.0.1:$port/"/></Servers>
  <Files><Folder Source="" Target="{p}"/><File Mask="TmWebUpdate" Executable="yes"/></Files>
  <Database><Dict Mask="*"/></Database>
</Release>
XML
tmpublish publish /srv/release.xml --product /srv/new --database /srv/reference.mdb \
  --scripts /srv/scripts --output /srv/server >/dev/null
tmpublish check /srv/server >/dev/null
sed 's|/srv/tamrin/db|/srv/db|' /usr/share/doc/tamrin-update/examples/machine.reg >/etc/tamrin/machine.reg
END
python3 -m http.server --bind 127.0.0.1 --directory "$root/srv/server" "$port" >/dev/null 2>&1 &
server=$!
until (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; do
  kill -0 "$server" || fail "no server"
  sleep 0.1
done
within <<END
TmWebUpdate -y -v 3.6.0.1 -w http://127.0.0.1:$port/ </dev/null >/dev/null 2>&1
cmp /opt/tamrin/tm/Core.dat /srv/new/tm/Core.dat
cmp /opt/tamrin/tm/TmWebUpdate /srv/new/tm/TmWebUpdate
jetsql run /srv/db/Tamrin.mdb "select Rate from Rates" 2>&1 | grep -q 20
TmSupport --output /root/support.zip >/dev/null
changed=\$(dpkg --verify tamrin-update tamrin-publish)
[ -z "\$changed" ] || { echo "\$changed"; exit 1; }
rm -r /etc/tamrin
dpkg --purge tamrin-update tamrin-publish >/dev/null
END
files | diff "$work/before" - || fail "the packages leave files behind"
echo "packages: installed, used and removed in a clean Debian"
