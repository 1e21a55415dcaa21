#!/usr/bin/env bash
# Sets everything up, builds for Linux and both Windows targets and runs every test: those of Linux,
# the Windows ones under Wine, and the inspection of the 32-bit programs. Safe to repeat.
set -euo pipefail
cd "$(dirname "$0")/.."
started=$SECONDS

scripts/setup.sh
scripts/build.sh linux-debug windows-x64 windows-x86
# Makes the Wine prefixes once, so that no test pays for them.
scripts/wine-run.sh cmd /c exit
TMW_WINE_SCREEN=96 scripts/wine-run.sh cmd /c exit
TMW_WINE_LOCALE=C.UTF-8 scripts/wine-run.sh cmd /c exit
TMW_WINE_SCREEN=96 TMW_WINE_COMPONENTS=$PWD/build/windows-x64/tests/dao_server.dll \
  scripts/wine-run.sh cmd /c exit

# One run over all build folders, so that one closing line tells the whole result.
mkdir -p build/all-tests
cat >build/all-tests/CTestTestfile.cmake <<END
subdirs("$PWD/build/linux-debug")
subdirs("$PWD/build/windows-x64")
add_test(windows_x86_abi "$PWD/scripts/check_abi.sh" "$PWD/build/windows-x86")
add_test(windows_x86_pe "$PWD/scripts/check_pe.py" "$PWD/build/windows-x86")
add_test(windows_x86_packages "$PWD/scripts/make_windows_packages.sh" "$PWD/build/windows-x86" "$PWD/build/windows-x86/packages")
add_test(source "$PWD/scripts/check_source.sh" "$PWD/build/windows-x86")
END

echo "test: set up and built in $((SECONDS - started)) s"
exec ctest --test-dir build/all-tests --output-on-failure --no-tests=error --timeout 600 -j 2
