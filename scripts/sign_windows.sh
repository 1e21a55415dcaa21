#!/usr/bin/env bash
# Signs a Windows program, library or installer in its place:
#   TMW_SIGN_CERTIFICATE=maker.p12 scripts/sign_windows.sh FILE
# The certificate with its key is a PKCS #12 file; TMW_SIGN_PASSWORD holds its password, TMW_SIGN_TIMESTAMP
# the address of a server that confirms the time, so that signatures outlive the certificate.
set -euo pipefail
file=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
(umask 077 && printf '%s' "${TMW_SIGN_PASSWORD:-}" >"$scratch/password")
osslsigncode sign -pkcs12 "$TMW_SIGN_CERTIFICATE" -readpass "$scratch/password" -h sha256 -n Tamrin \
  ${TMW_SIGN_TIMESTAMP:+-ts "$TMW_SIGN_TIMESTAMP"} -in "$file" -out "$scratch/signed" >"$scratch/log" 2>&1 ||
  { cat "$scratch/log" >&2; exit 1; }
cat "$scratch/signed" >"$file"
