#!/usr/bin/env bash
# Installs what building, testing and the demonstration need on Debian 12: only what is missing, and
# nothing when nothing is. Safe to repeat.
set -euo pipefail

packages=(
  # building
  g++ cmake make ninja-build ccache git pkg-config clang-format
  g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix libz-mingw-w64-dev
  libcurl4-openssl-dev libcxxopts-dev libsodium-dev libsqlite3-dev libsystemd-dev libxml2-dev zlib1g-dev
  googletest nlohmann-json3-dev
  # the windows: Qt, and the pictures of both front ends
  qt6-base-dev librsvg2-bin
  # screenshots, and clicks into the windows
  fonts-dejavu-core fonts-wine imagemagick openbox xvfb
  # SQLite and libsodium for Windows are built from their source packages
  patch tcl xz-utils
  # running the Windows programs
  wine wine64 locales
  # servers of the tests
  dbus nginx-light openssl python3 python3-dbusmock python3-pyftpdlib tinyproxy
  # judges of what we write, and what tests hold locks and processes with
  bsdutils curl libarchive-dev libarchive-tools mdbtools minisign p7zip-full procps sqlite3 strace unar unzip util-linux
  # what is measured beside them
  mawk time zip
  # packages: making, checking, signing them, and a clean system to try them in
  desktop-file-utils dpkg-dev fakeroot lintian man-db mmdebstrap nsis osslsigncode
  # fuzzing
  clang libclang-rt-14-dev
)

missing=()
for package in "${packages[@]}"; do
  status=$(dpkg-query -W -f '${Status}' "$package" 2>/dev/null || true)
  [ "$status" = "install ok installed" ] || missing+=("$package")
done

as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(sudo)

if [ "${#missing[@]}" -gt 0 ]; then
  echo "setup: installing ${missing[*]}"
  # The servers are started by the tests themselves; a package's own service stays off.
  policy=/usr/sbin/policy-rc.d
  made_policy=no
  if [ ! -e "$policy" ]; then
    printf '#!/bin/sh\nexit 101\n' | "${as_root[@]}" tee "$policy" >/dev/null
    "${as_root[@]}" chmod 755 "$policy"
    made_policy=yes
  fi
  trap '[ "$made_policy" = no ] || "${as_root[@]}" rm -f "$policy"' EXIT
  "${as_root[@]}" apt-get update -qq
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq \
    --no-install-recommends "${missing[@]}" >/dev/null
fi

# Wine takes its code pages (1251 and 866) from this locale.
if ! locale -a 2>/dev/null | grep -qix 'ru_RU.utf8'; then
  echo "setup: generating the locale ru_RU.UTF-8"
  "${as_root[@]}" sed -i 's/^# *\(ru_RU.UTF-8 UTF-8\)/\1/' /etc/locale.gen
  grep -q '^ru_RU.UTF-8 UTF-8' /etc/locale.gen ||
    echo 'ru_RU.UTF-8 UTF-8' | "${as_root[@]}" tee -a /etc/locale.gen >/dev/null
  "${as_root[@]}" locale-gen >/dev/null
fi
echo "setup: everything is installed"
