#!/bin/sh
# Lays out every C and C++ file as .clang-format says. usage: format.sh [--check]
#   --check  changes nothing, and fails where something would change
set -eu
cd "$(dirname "$0")/.."
action=-i
[ "${1:-}" != --check ] || action="--dry-run -Werror"
# A file that was removed and is not yet committed is still listed.
# shellcheck disable=SC2086
git ls-files -z -co --exclude-standard -- '*.c' '*.cpp' '*.h' '*.hpp' |
  xargs -0 sh -c 'for file; do [ ! -e "$file" ] || printf "%s\0" "$file"; done' - |
  xargs -0 clang-format-14 $action
