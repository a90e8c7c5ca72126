#!/bin/sh
# Compares what a built library asks of the C library with the list that it may ask for.
# usage: check_symbols.sh LIBRARY...
set -eu
export LC_ALL=C
list=$(dirname "$0")/../packaging/abi/undefined_symbols.txt
wanted=$(mktemp)
trap 'rm -f "$wanted"' EXIT
grep -v '^#' "$list" | sort >"$wanted"

for library; do
  # A C library's own spelling of a function counts as the function: __isoc99_sscanf, __memcpy_chk.
  extra=$(nm -D --undefined-only "$library" | awk '{print $NF}' |
    sed -E 's/@.*//; s/^__isoc[0-9]+_//; s/^__(.*)_chk$/\1/' | sort -u | comm -23 - "$wanted")
  [ -z "$extra" ] || { echo "$library asks for" $extra; exit 1; }
  needed=$(objdump -p "$library" 2>/dev/null | awk '/NEEDED/ {print $2}' | grep -v '^libc\.so' || true)
  [ -z "$needed" ] || { echo "$library needs $needed"; exit 1; }
done
