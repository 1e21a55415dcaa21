#!/usr/bin/env bash
# Kills an update at every call that changes a file: every write, rename, unlink, truncate, link, mkdir
# and fsync of the whole chain of processes, one after another. A small release is published, served by
# nginx on loopback and installed by the real program under strace. Right after each kill the user's
# rows must exist whole and the product's folder must hold an updater; a normal run must then end in
# the same files and the same tables as an undisturbed one (further backups excepted). Prints the
# points counted, chosen and tried, and of those tried the ones where something was lost or torn or
# was not mended; fails unless all points were tried and nothing was.
#   scripts/crash_matrix.sh [--errors | --double] [--sample N] [--stage NAME] [--jobs N] [--bin FOLDER]
#     --errors      the call fails instead, with "no space", "input/output error" and "access denied"
#     --double      the run that mends is killed too, at a spread of points after a spread of points
#     --sample N    N points only, evenly distributed
#     --stage NAME  only this one of scripts/crash_matrix/stages.py
#     --bin FOLDER  the programs to try; without it those of linux-debug, built first
set -euo pipefail
cd "$(dirname "$0")/.."
programs="TmWebUpdate TmRollback companion jetsql newer_updater tmpublish"
if [[ " $* " != *" --bin "* ]]; then
  TMW_TARGETS=$programs scripts/build.sh linux-debug
  set -- --bin build/linux-debug/bin "$@"
fi
exec /usr/bin/python3 -B scripts/crash_matrix/matrix.py "$@"
