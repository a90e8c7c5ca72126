#!/bin/sh
# Removes the build folders of a tree that was moved or copied since: CMake refuses them. Every goal
# comes by here, through scripts/setup.sh.
set -eu
CDPATH='' cd "$(dirname "$0")/.."
real() { CDPATH='' cd "$1" 2>/dev/null && pwd -P; }
find build/ -maxdepth 4 -name CMakeCache.txt 2>/dev/null | while IFS= read -r cache; do
  folder=${cache%/CMakeCache.txt}
  made_in=$(sed -n 's/^CMAKE_CACHEFILE_DIR:INTERNAL=//p' "$cache")
  [ "$(real "$made_in")" != "$(real "$folder")" ] || continue
  echo "removed: $folder, which was made in ${made_in:-no known place}" >&2
  rm -rf "$folder"
done
