#!/usr/bin/env bash
# Changes single lines of a room in a copy of the checkout and lists the changes that its tests do
# not notice; see the head of scripts/mutate.py:
#   scripts/mutate.sh startup
#   scripts/mutate.sh companion/rar --sample 100 --seconds 900
set -euo pipefail
exec nice -n 19 python3 "$(dirname "$0")/mutate.py" "$@"
