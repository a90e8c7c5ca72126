#!/bin/sh
# Prints the names of the tree's files, a NUL behind each: what git tracks or would, in an unpacked
# archive everything but build/. A file that was removed, and not yet committed, is not among them.
# usage: tree_files.sh [GIT_PATTERN...]
set -eu
CDPATH='' cd "$(dirname "$0")/.."
existing() { xargs -0 sh -c 'for file; do [ ! -e "$file" ] || printf "%s\0" "$file"; done' -; }
list=$(mktemp)
trap 'rm -f "$list"' EXIT
# git may refuse somebody else's tree.
if [ -e .git ] && git ls-files -z -co --exclude-standard -- "$@" >"$list" 2>/dev/null; then
  existing <"$list"
else
  # No folder of the tree is left out there: more is looked at, not less.
  find . -path ./build -prune -o -type f -print0
fi
