#!/bin/sh
# Lays out every C and C++ file as .clang-format says. usage: format.sh [--check]
#   --check  changes nothing, and fails where something would change
set -eu
CDPATH='' cd "$(dirname "$0")/.."
action=-i
[ "${1:-}" != --check ] || action="--dry-run -Werror"
# shellcheck disable=SC2086
scripts/tree_files.sh '*.c' '*.cpp' '*.h' '*.hpp' | grep -zE '\.(c|cpp|h|hpp)$' |
  xargs -0 clang-format-14 $action
