#!/usr/bin/env bash
# Makes the Windows packages twice, which has to give the same bytes, and signed, and tries the signed
# installer of the 64-bit programs under Wine: silently installed, refused while the updater runs,
# installed over itself, removed; what users have put beside the programs stays.
#   scripts/check_installer.sh BUILD_FOLDER
set -euo pipefail
build=$(realpath "$1")
cd "$(dirname "$0")/.."
scratch=$(mktemp -d)
holder=
finish() {
  [ -z "$holder" ] || kill "$holder" 2>/dev/null || true
  rm -rf "$scratch"
}
trap finish EXIT
fail() {
  echo "FAILED: $*" >&2
  exit 1
}

scripts/make_windows_packages.sh "$build" "$scratch/first"
touch "$build"/bin/*
sleep 1
scripts/make_windows_packages.sh "$build" "$scratch/second" >/dev/null
diff -r "$scratch/first" "$scratch/second" || fail "the same build gave other bytes"

# Signed, with a certificate of our own.
openssl req -x509 -newkey rsa:2048 -nodes -keyout "$scratch/key.pem" -out "$scratch/maker.pem" -days 2 \
  -subj '/CN=Test' -addext extendedKeyUsage=codeSigning 2>/dev/null
TMW_SIGN_PASSWORD='with blank$' TMW_SIGN_CERTIFICATE=$scratch/maker.p12
export TMW_SIGN_PASSWORD TMW_SIGN_CERTIFICATE
openssl pkcs12 -export -in "$scratch/maker.pem" -inkey "$scratch/key.pem" -passout env:TMW_SIGN_PASSWORD \
  -out "$scratch/maker.p12"
TMW_SIGN=scripts/sign_windows.sh scripts/make_windows_packages.sh "$build" "$scratch/signed" >/dev/null
signed_by_us() {
  osslsigncode verify -CAfile "$scratch/maker.pem" -in "$1" | grep -qE 'Signature verification: ok|Succeeded' ||
    fail "$(basename "$1") is not signed"
}
signed_by_us "$scratch/signed/"*-setup.exe
(signed_by_us "$scratch/first/"*-setup.exe) 2>/dev/null && fail "anything counts as signed"

run() { scripts/wine-run.sh "$@" </dev/null; }
drive=${TMW_WINEPREFIX:-build/wine}/drive_c
setup=Z:$(echo "$scratch/signed/"*-setup.exe)
folder="$drive/Обновление"
menu="$drive/ProgramData/Microsoft/Windows/Start Menu/Programs/Kestrel Soft"
entry='HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\TamrinUpdate'
value() { run reg query "$entry" /v "$1" 2>/dev/null | tr -d '\r' | sed -nE "s/^ +$1 +REG_[A-Z]+ +//p"; }
# The uninstaller goes on as a copy of itself.
uninstall() {
  run 'C:\Обновление\uninstall.exe' /S
  for _ in $(seq 100); do
    [ -n "$(value DisplayVersion)" ] || return 0
    sleep 0.1
  done
  fail "the uninstaller does not end"
}

run "$setup" /S '/D=C:\Обновление' || fail "the installer ends with $?"
unzip -q "$scratch"/signed/*-win64.zip -d "$scratch/zip"
for name in TmWebUpdate.exe TmSupport.exe TmRollback.exe UnTmz.dll uninstall.exe; do signed_by_us "$folder/$name"; done
for name in TmWebUpdate.exe docs/ru/README.md; do
  cmp "$folder/$name" "$scratch"/zip/*/"$name" || fail "$name is not what the archive has"
done
[ "$(value DisplayVersion)" = "$(sed -nE 's/^project\(.*VERSION ([0-9.]+).*/\1/p' CMakeLists.txt)" ] ||
  fail "the version of the installation is $(value DisplayVersion)"
run 'C:\Обновление\TmSupport.exe' --output 'C:\Обновление\s.zip' && rm "$folder/s.zip" ||
  fail "the installed TmSupport saves nothing"
[ "$(find "$menu" -name '*.lnk' | wc -l)" -eq 3 ] || fail "the menu"

run "$build/tests/child_program.exe" hold 'Local\TMW_WebUpdate_Mutex' "$(basename "$scratch")" \
  sleep 8000 &
holder=$!
for _ in $(seq 100); do [ -e "$(basename "$scratch")" ] && break; sleep 0.1; done
rm -f "$(basename "$scratch")"
code=0
run "$setup" /S || code=$?
[ "$code" -eq 2 ] || fail "beside a running updater the installer ends with $code"
wait "$holder"
holder=

echo books >"$folder/Tamrin.mdb"
echo own >"$folder/docs/mine.txt"
rm "$folder/UnTmz.dll"
run "$setup" /S || fail "over itself the installer ends with $?"
[ -e "$folder/UnTmz.dll" ] || fail "an installed version is not replaced where it lies"
uninstall
[ "$(cd "$folder" && find . -type f | sort | paste -sd ' ')" = "./Tamrin.mdb ./docs/mine.txt" ] ||
  fail "left: $(find "$folder")"
rm -r "$folder"
run "$setup" /S '/D=C:\Обновление'
uninstall
sleep 0.5
[ ! -e "$folder" ] && [ ! -e "$menu" ] || fail "the uninstaller leaves an empty folder"
echo "installer: installed, replaced and removed"
