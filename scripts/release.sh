#!/usr/bin/env bash
# Makes everything that is handed out of a release, from a tag and nothing else, and prints the hashes:
#   scripts/release.sh [--sign CERTIFICATE] [--timestamp URL] [--twice] TAG [OUTPUT]
# The tag is v<version>, the version of CMakeLists.txt. OUTPUT (build/release) gets the source archive,
# the Debian packages, archive, symbols and installer for Windows (32 bits: the product's database
# engine has no other), and SHA256SUMS.
#   --sign       signs the Windows programs, libraries and the installer; CERTIFICATE is a PKCS #12 file,
#                its password is read from the variable TMW_SIGN_PASSWORD
#   --timestamp  lets this server confirm the time, so that signatures outlive the certificate
#   --twice      makes all of it once more in another folder and compares (takes twice as long)
# Nothing of it depends on the machine's time, the folder, or who runs it; the same tag gives the same
# bytes with the same Debian packages of compilers and libraries. Signatures hold the time.
set -euo pipefail
cd "$(dirname "$0")/.."
top=$PWD
certificate='' timestamp='' twice=''
while [ $# -gt 0 ]; do
  case $1 in
    --sign) certificate=$(realpath "$2"); shift 2 ;;
    --timestamp) timestamp=$2; shift 2 ;;
    --twice) twice=yes; shift ;;
    -*) sed -n '2,13s/^# \?//p' "$0"; exit 2 ;;
    *) break ;;
  esac
done
[ $# -ge 1 ] && [ $# -le 2 ] || { sed -n '2,13s/^# \?//p' "$0"; exit 2; }
tag=$1
[ $# -gt 1 ] || rm -rf build/release
output=${2:-build/release}
mkdir -p "$output"
output=$(realpath "$output")

fail() {
  echo "release: $*" >&2
  exit 1
}
[ -z "$(ls -A "$output")" ] || fail "$output is not empty"
commit=$(git rev-parse --verify --quiet "refs/tags/$tag^{commit}") || fail "there is no tag $tag"
version=$(git show "$commit:CMakeLists.txt" | sed -nE 's/^project\(.*VERSION ([0-9.]+).*/\1/p')
[ "$tag" = "v$version" ] || fail "the tag $tag is not of version $version"
git show "$commit:CHANGELOG.md" | grep -q "^## $version (" || fail "CHANGELOG.md has no $version"
SOURCE_DATE_EPOCH=$(git show -s --format=%ct "$commit")
export SOURCE_DATE_EPOCH
# With a base folder the cache would have other paths in the symbols than the compiler alone.
unset CCACHE_BASEDIR CCACHE_NOHASHDIR
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

if [ -n "$certificate" ]; then
  [ -z "$twice" ] || fail "signatures hold the time: --twice compares unsigned releases"
  export TMW_SIGN=$top/scripts/sign_windows.sh TMW_SIGN_CERTIFICATE=$certificate
  export TMW_SIGN_TIMESTAMP=$timestamp
fi

# make_all FOLDER RESULT: builds the tag in the folder.
make_all() {
  local source=$1/tmwebupdate-$version result=$2 preset
  mkdir -p "$1" "$result"
  git -C "$top" archive --format=tar --prefix="tmwebupdate-$version/" "$commit" >"$1/source.tar"
  tar -xf "$1/source.tar" -C "$1"
  xz --threads=1 --stdout "$1/source.tar" >"$result/tmwebupdate-$version.tar.xz"
  for preset in linux-release windows-x86; do
    echo "release: $preset"
    (cd "$source" && cmake --preset $preset -DTMW_BUILD_TESTS=OFF && cmake --build --preset $preset) \
      >"$1/$preset.log" 2>&1 || { tail -n 40 "$1/$preset.log"; fail "$preset does not build"; }
  done
  (cd "$source/build/linux-release" && cpack -B "$result" >/dev/null)
  rm -rf "$result/_CPack_Packages"
  "$source/scripts/make_windows_packages.sh" "$source/build/windows-x86" "$result" >/dev/null
}

# In the build folder: what the cache of the compiler knows of it is known the next time too.
rm -rf build/release-work
make_all "$top/build/release-work" "$output"
if [ -n "$twice" ]; then
  rm -rf build/release-again
  make_all "$top/build/release-again/elsewhere" "$scratch/again"
  diff -r "$output" "$scratch/again" || fail "made twice, the release differs"
  echo "release: made twice, it is the same"
fi
(cd "$output" && sha256sum -- *[!S] >SHA256SUMS && cat SHA256SUMS)
