#!/usr/bin/env bash
# Compares what people read and type with the programs: the manual page of each has every option that
# --help has and is well-formed, and completion offers commands, options and nothing else.
#   scripts/check_man_pages.sh FOLDER_OF_PROGRAMS FOLDER_OF_PAGES
set -euo pipefail
programs=$(realpath "$1") pages=$(realpath "$2")
cd "$(dirname "$0")/.."
export PATH=$programs:$PATH TMW_FRONT_END=terminal MANWIDTH=100 LC_ALL=C.UTF-8
failures=0
fail() {
  echo "FAILED: $*"
  failures=$((failures + 1))
}
# The words of the text on standard input that are options.
options() {
  grep -oE -- '(^|[ |[])--?[a-z0-9]+(-[a-z0-9]+)*' | tr -d ' |[' | sort -u
}
expect() {
  [ "$2" = "$3" ] || fail "$1: '$2' is not '$3'"
}

checked=0
for page in "$pages"/*.1.gz; do
  name=$(basename "$page" .1.gz)
  checked=$((checked + 1))
  warnings=$(man --warnings -l "$page" 2>&1 >/dev/null)
  expect "$name.1" "$warnings" ""
  shown=$(man -l "$page" | sed 's/‐/-/g')
  expect "$name.1, its options" "$(options <<<"$shown")" "$("$name" --help | options)"
  grep -q "$name - " <<<"$shown" || fail "$name.1 has no name for whatis"
done
[ "$checked" -ge 5 ] || fail "pages of $checked programs only"
# Every option of the updater that people type; the others it writes for itself.
typed=$(sed -nE 's/.*kOption(Url|MainExe|MainParams|OldVersion|NoFinalMessage) = "(.*)".*/\2/p' \
  src/foundation/contract_names.h | sort)
expect "TmWebUpdate --help" "$(TmWebUpdate --help | options | grep -v '^--')" "$typed"

# shellcheck source=packaging/completion.bash
source packaging/completion.bash
# complete_as WORD...: what is offered for the last word.
complete_as() {
  COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
  _tamrin_tool "$1" "${!#}"
  echo "${COMPREPLY[*]}"
}
expect "completion" "$(complete_as tmpublish re)" "retract renew"
expect "completion" "$(complete_as tmpublish announce --se)" "--serial"
expect "completion" "$(complete_as tmpublish diff --se)" ""
expect "completion" "$(complete_as jetsql export x.mdb --u)" "--utf8"
expect "completion" "$(complete_as jetsql run x)" ""
expect "completion" "$(complete_as TmWebUpdate -)" "--help --version -e -p -v -w -y"
desktop-file-validate packaging/*.desktop || fail "the menu entry"
[ "$failures" -eq 0 ] || exit 1
echo "manual: $checked pages and the completion fit the programs"
